#include "orvexarchivetransfer.h"

#include "orvexarchivesession.h"
#include "orvexcontenthash.h"
#include "orvexstorageerror.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QIODevice>
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

OrvexArchiveTransfer::OpenSource OrvexArchiveTransfer::localFile(const QString &path)
{
    return [path](QString &error) -> std::unique_ptr<QIODevice> {
        auto file = std::make_unique<QFile>(path);
        if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            error = tr("Cannot read %1: %2").arg(path, file->errorString());
            return {};
        }
        return file;
    };
}

OrvexArchiveTransfer::OpenSink OrvexArchiveTransfer::newLocalFile(const QString &path)
{
    return [path](QString &error) -> std::unique_ptr<OrvexArchiveBackend::Sink> {
        auto sink = std::make_unique<OrvexArchiveBackend::FileSink>(path);
        if (!sink->open(error))
            return {};
        return sink;
    };
}

bool OrvexArchiveTransfer::copy(const OpenSource &openSource, const QString &sourceName, const OpenSink &openSink,
                                qint64 total, OrvexContentHash *hash, const QString &notStored)
{
    return stream([&] { return copyChunked(openSource, sourceName, openSink, total, hash, notStored); });
}

bool OrvexArchiveTransfer::copyChunked(const OpenSource &openSource, const QString &sourceName,
                                       const OpenSink &openSink, qint64 total, OrvexContentHash *hash,
                                       const QString &notStored)
{
    QString error;
    const std::unique_ptr<QIODevice> source = openSource(error);
    if (!source)
        return m_session.fail(error);
    const auto notWritten = [&](const QString &reason) {
        return m_session.fail(OrvexStorageError::describe(reason, notStored));
    };
    // Whatever the sink holds when it goes unfinished is thrown away.
    std::unique_ptr<OrvexArchiveBackend::Sink> sink = openSink(error);
    if (!sink)
        return notWritten(error);
    const int chunk = m_chunkSize.loadAcquire();
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
            return m_session.fail(tr("The transfer was canceled."));
        const qint64 read = source->read(buffer.data(), chunk);
        if (read < 0)
            return m_session.fail(tr("Cannot read %1: %2").arg(sourceName, source->errorString()));
        if (read == 0)
            break;
        if (!sink->write(buffer.constData(), read, error))
            return notWritten(error);
        if (hash)
            hash->addData(buffer.constData(), read);
        done += read;
        if (!sinceReport.isValid() || sinceReport.hasExpired(kProgressInterval))
            report();
    }
    if (done != reported)
        report();
    if (m_cancel.loadAcquire())
        return m_session.fail(tr("The transfer was canceled."));
    if (!sink->finish(error))
        return notWritten(error);
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
