#include "orvexarchivetransfer.h"

#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexcontenthash.h"
#include "orvexstorageerror.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QThread>

#include <memory>

namespace {
constexpr qint64 kProgressInterval = 50; // ms between two byte counts of a transfer
} // namespace

OrvexArchiveTransfer::OrvexArchiveTransfer(OrvexArchiveSession &session, ByteCount totalBytes, ByteCount bytesDone)
    : m_session(session)
    , m_totalBytes(std::move(totalBytes))
    , m_bytesDone(std::move(bytesDone))
{
}

void OrvexArchiveTransfer::setChunkSize(int bytes)
{
    m_chunkSize.storeRelease(qMax(1, bytes));
}

bool OrvexArchiveTransfer::copy(const QString &from, const QString &to, qint64 total, OrvexContentHash *hash,
                                const QString &notStored)
{
    return stream([&] { return copyChunked(from, to, total, hash, notStored); });
}

bool OrvexArchiveTransfer::copyChunked(const QString &from, const QString &to, qint64 total, OrvexContentHash *hash,
                                       const QString &notStored)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return m_session.fail(tr("Cannot read %1: %2").arg(from, source.errorString()));
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return m_session.fail(OrvexStorageError::describe(target.errorString(), notStored));
    const int chunk = m_chunkSize.loadAcquire();
    const auto abandon = [&](const QString &error) {
        target.close();
        target.remove();
        return m_session.fail(error);
    };
    m_totalBytes(QString::number(total));
    qint64 done = 0;
    // The byte counts reach GUI objects queued, and one per chunk would flood
    // the GUI thread on a fast disk: the first, then one per interval, and the last.
    qint64 reported = 0;
    QElapsedTimer sinceReport;
    const auto report = [&] {
        reported = done;
        sinceReport.start();
        m_bytesDone(QString::number(done));
    };
    QByteArray buffer(chunk, Qt::Uninitialized);
    for (;;) {
        if (m_cancel.loadAcquire())
            return abandon(tr("The transfer was canceled."));
        const qint64 read = source.read(buffer.data(), chunk);
        if (read < 0)
            return abandon(tr("Cannot read %1: %2").arg(from, source.errorString()));
        if (read == 0)
            break;
        QString reason;
        if (!OrvexArchiveStore::writeFully(target, buffer.constData(), read, &reason))
            return abandon(OrvexStorageError::describe(reason, notStored));
        if (hash)
            hash->addData(buffer.constData(), read);
        done += read;
        if (!sinceReport.isValid() || sinceReport.hasExpired(kProgressInterval))
            report();
    }
    if (done != reported)
        report();
    if (m_cancel.loadAcquire())
        return abandon(tr("The transfer was canceled."));
    if (!target.flush())
        return abandon(OrvexStorageError::describe(target.errorString(), notStored));
    return true;
}

bool OrvexArchiveTransfer::stream(const std::function<bool()> &copy)
{
    if (!m_streaming.testAndSetAcquire(0, 1))
        return m_session.fail(tr("Another transfer of this client is still running."));
    // A cancel stops the transfer it was meant for, never a later one.
    m_cancel.storeRelease(0);
    bool ok = false;
    const QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() != app->thread()) {
        ok = copy();
    } else {
        QEventLoop loop;
        std::unique_ptr<QThread> thread(QThread::create([&ok, &copy] { ok = copy(); }));
        // finished is queued behind the thread's last byte counts, so the caller
        // has seen all of them when the call returns.
        QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
        thread->start();
        loop.exec();
        // The loop also ends when the application quits: the copy goes then too.
        if (!thread->isFinished())
            m_cancel.storeRelease(1);
        thread->wait();
    }
    m_streaming.storeRelease(0);
    return ok;
}

void OrvexArchiveTransfer::cancel()
{
    m_cancel.storeRelease(1);
}
