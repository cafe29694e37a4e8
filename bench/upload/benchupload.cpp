// Upload throughput: uploads one large PDF into a fresh embedded archive through
// the archive worker (progress dialog shown, network part on the pool) and
// copies the same file with a plain file copy. A 5 ms timer on the GUI thread
// measures how long the GUI stalls meanwhile.
//
//   bench_upload [size=209715200] [runs=1]
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexdirutils.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <ctime>
#include <limits>

namespace {

QTextStream out(stdout);

// Processor time of the whole process (all threads) in ms: on a loaded machine
// it tells the work apart from the waiting for a processor.
qint64 cpuMs()
{
    return qint64(std::clock() * 1000.0 / CLOCKS_PER_SEC);
}

double megabytesPerSecond(qint64 bytes, qint64 ms)
{
    return ms > 0 ? bytes / (1024.0 * 1024.0) / (ms / 1000.0) : 0.0;
}

// A one-page PDF with a line of text, made large by an unreferenced stream of
// random bytes: the archive inspects and renders only the page, but every byte
// is streamed, hashed and stored.
bool writeLargePdf(const QString &path, qint64 size, quint32 seed)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QList<qint64> offsets;
    const auto object = [&](const QByteArray &body) {
        offsets << file.pos();
        file.write(QByteArray::number(offsets.size()) + " 0 obj\n" + body + "\nendobj\n");
    };
    file.write("%PDF-1.4\n");
    object("<< /Type /Catalog /Pages 2 0 R >>");
    object("<< /Type /Pages /Kids [3 0 R] /Count 1 >>");
    object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R "
           "/Resources << /Font << /F1 << /Type /Font /Subtype /Type1 /BaseFont /Helvetica >> >> >> >>");
    const QByteArray text = "BT /F1 24 Tf 72 700 Td (Benchmark upload " + QByteArray::number(seed) + ") Tj ET";
    object("<< /Length " + QByteArray::number(text.size()) + " >>\nstream\n" + text + "\nendstream");
    const qint64 padding = qMax<qint64>(0, size - 1024);
    offsets << file.pos();
    file.write("5 0 obj\n<< /Length " + QByteArray::number(padding) + " >>\nstream\n");
    QRandomGenerator generator(seed);
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    for (qint64 written = 0; written < padding;) {
        generator.fillRange(reinterpret_cast<quint32 *>(chunk.data()), chunk.size() / 4);
        const qint64 n = qMin<qint64>(chunk.size(), padding - written);
        if (file.write(chunk.constData(), n) != n)
            return false;
        written += n;
    }
    file.write("\nendstream\nendobj\n");
    const qint64 xref = file.pos();
    file.write("xref\n0 " + QByteArray::number(offsets.size() + 1) + "\n0000000000 65535 f \n");
    for (qint64 offset : offsets)
        file.write(QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n");
    file.write("trailer\n<< /Size " + QByteArray::number(offsets.size() + 1) + " /Root 1 0 R >>\nstartxref\n"
               + QByteArray::number(xref) + "\n%%EOF\n");
    return file.flush();
}

// Lateness of a 5 ms timer on the GUI thread: the longest stall and when it began.
class StallMeter : public QObject
{
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            tick();
        });
    }
    void start()
    {
        m_longest = m_longestAfter = 0;
        m_mark = std::numeric_limits<qint64>::max();
        m_sinceStart.start();
        m_sinceTick.start();
        m_timer.start();
    }
    // A stall that lasts until the end counts too, though no tick follows it.
    void stop()
    {
        tick();
        m_timer.stop();
    }
    // Stalls that begin before the mark and those that begin after it are kept apart.
    void setMark(qint64 msSinceStart) { m_mark = msSinceStart; }
    qint64 longest() const { return m_longest; }
    qint64 longestAfterMark() const { return m_longestAfter; }

private:
    void tick()
    {
        const qint64 gap = m_sinceTick.restart();
        const qint64 at = m_sinceStart.elapsed() - gap;
        qint64 &longest = at < m_mark ? m_longest : m_longestAfter;
        longest = qMax(longest, gap - 5);
    }

    QTimer m_timer;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceTick;
    qint64 m_longest = 0;
    qint64 m_longestAfter = 0;
    qint64 m_mark = std::numeric_limits<qint64>::max();
};

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "orvex.workbench.debug=false");
    const QMap<QString, QString> parameters = getParameters(argv, argc);
    QApplication app(argc, argv);
    const qint64 size = qMax<qint64>(4096, parameters.value(QStringLiteral("size"), QStringLiteral("209715200")).toLongLong());
    const int runs = qMax(1, parameters.value(QStringLiteral("runs"), QStringLiteral("1")).toInt());

    QTemporaryDir work;
    StallMeter meter;
    qint64 sentAt = 0;
    QElapsedTimer clock;
    out << "upload of " << size / (1024 * 1024) << " MB, " << runs << " run(s)" << Qt::endl;
    for (int run = 0; run < runs; ++run) {
        // A fresh archive per run: an earlier run's file would be found as a duplicate of this one.
        OrvexArchive archive;
        if (!archive.open(work.filePath(QStringLiteral("archive%1").arg(run)), false)) {
            out << "cannot create the archive: " << archive.lastError() << Qt::endl;
            return 1;
        }
        const OrvexConnectionValues values = archive.connectionValues();
        OrvexArchiveWorker worker;
        worker.setArchiveClient(archive.archiveClient());
        worker.setConnectionSettings(values.server, values.port, values.login1, values.login2, values.login3);
        worker.selectArchive(values.archiveName);
        if (!worker.getLastError().isEmpty()) {
            out << "cannot connect: " << worker.getLastError() << Qt::endl;
            return 1;
        }

        QObject::connect(worker.getArchiveClient(), &kelArchiveClientInterface::saveDocEnd, &app,
                         [&] {
                             sentAt = clock.elapsed();
                             meter.setMark(sentAt);
                         },
                         Qt::QueuedConnection);
        const QString source = work.filePath(QStringLiteral("upload%1.pdf").arg(run));
        if (!writeLargePdf(source, size, quint32(run + 1))) {
            out << "cannot write " << source << Qt::endl;
            return 1;
        }
        const qint64 bytes = QFileInfo(source).size();

        qint64 cpu = cpuMs();
        clock.start();
        if (!QFile::copy(source, work.filePath(QStringLiteral("copy%1.pdf").arg(run)))) {
            out << "plain copy failed" << Qt::endl;
            return 1;
        }
        const qint64 copyMs = clock.elapsed();
        const qint64 copyCpu = cpuMs() - cpu;
        QFile::remove(work.filePath(QStringLiteral("copy%1.pdf").arg(run)));

        // What the GUI thread sees without any upload, on this machine at this moment.
        meter.start();
        QTimer::singleShot(2000, &app, &QCoreApplication::quit);
        app.exec();
        meter.stop();
        const qint64 idleStall = meter.longest();

        meter.start();
        cpu = cpuMs();
        clock.start();
        const bool ok = worker.uploadFile(QString(), source, false);
        const qint64 uploadMs = clock.elapsed();
        const qint64 uploadCpu = cpuMs() - cpu;
        meter.stop();
        if (!ok) {
            out << "upload failed: " << worker.getLastError() << Qt::endl;
            return 1;
        }
        const double copySpeed = megabytesPerSecond(bytes, copyMs);
        const double uploadSpeed = megabytesPerSecond(bytes, uploadMs);
        out << QStringLiteral("run %1: plain copy %2 MB/s (%3 ms, %11 ms CPU); upload %4 MB/s (%5 ms, %12 ms CPU, "
                              "%6 % of the copy; file handed over after %7 ms)\n  longest GUI stall: %8 ms while streaming, %9 ms "
                              "after the hand-over (duplicate check and commit); %10 ms when idle")
                   .arg(run + 1).arg(copySpeed, 0, 'f', 1).arg(copyMs).arg(uploadSpeed, 0, 'f', 1).arg(uploadMs)
                   .arg(copySpeed > 0 ? 100.0 * uploadSpeed / copySpeed : 0.0, 0, 'f', 0).arg(sentAt)
                   .arg(meter.longest()).arg(meter.longestAfterMark()).arg(idleStall).arg(copyCpu).arg(uploadCpu)
            << Qt::endl;

        // Where the time goes: the client's three steps called one by one, on a file of new content.
        writeLargePdf(source, size, quint32(1000 + run));
        kelArchiveClientInterface *client = worker.getArchiveClient();
        QString uploadId;
        clock.start();
        client->sendFile(source, uploadId);
        const qint64 sendMs = clock.restart();
        const QStringList reply = client->checkDuplicates({}, source, uploadId, false, 0, 0, 1, 1);
        const qint64 checkMs = clock.restart();
        const bool committed = !uploadId.isEmpty() && client->commitUpload(uploadId);
        out << QStringLiteral("  client steps: sendFile %1 ms, checkDuplicates %2 ms, commitUpload %3 ms%4")
                   .arg(sendMs).arg(checkMs).arg(clock.elapsed())
                   .arg(committed ? QString() : QStringLiteral(" (not committed: %1 reply lines)").arg(reply.size()))
            << Qt::endl;
        QFile::remove(source);
    }
    return 0;
}
