// Export throughput: exports documents from a fresh embedded archive into a
// folder through the archive worker (progress dialog shown, client loaded from
// the client library) and copies the same bytes with a plain file copy.
//
//   bench_export [count=200] [size=1048576] [runs=3]
#include "orvexarchive.h"
#include "orvexarchiveworker.h"
#include "orvexdirutils.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

namespace {

QTextStream out(stdout);

double megabytes(qint64 bytes)
{
    return bytes / (1024.0 * 1024.0);
}

bool writeRandomFile(const QString &path, int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(quint32(qHash(path)));
    generator.fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / int(sizeof(quint32)));
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == size;
}

void freshFolder(const QString &path)
{
    QString error;
    if (QDir(path).exists())
        removeCompleteDir(path, error);
    QDir().mkpath(path);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "orvex.workbench.debug=false");
    const QMap<QString, QString> parameters = getParameters(argv, argc);
    QApplication app(argc, argv);
    const int count = qMax(1, parameters.value(QStringLiteral("count"), QStringLiteral("200")).toInt());
    const int size = qMax(4, parameters.value(QStringLiteral("size"), QStringLiteral("1048576")).toInt());
    const int runs = qMax(1, parameters.value(QStringLiteral("runs"), QStringLiteral("3")).toInt());

    QTemporaryDir work;
    const QString archiveDir = work.filePath(QStringLiteral("archive"));
    const QString sourceDir = work.filePath(QStringLiteral("source"));
    QDir().mkpath(sourceDir);
    OrvexArchive archive;
    if (!archive.open(archiveDir, false)) {
        out << "cannot open the archive: " << archive.lastError() << Qt::endl;
        return 1;
    }
    QList<qlonglong> ids;
    QStringList sources;
    for (int i = 0; i < count; ++i) {
        const QString path = sourceDir + QStringLiteral("/doc_%1.bin").arg(i, 4, 10, QLatin1Char('0'));
        if (!writeRandomFile(path, size)) {
            out << "cannot write " << path << Qt::endl;
            return 1;
        }
        const qlonglong id = archive.importFile(path);
        if (id == 0) {
            out << "cannot import " << path << ": " << archive.lastError() << Qt::endl;
            return 1;
        }
        ids << id;
        sources << path;
    }
    const qint64 total = qint64(count) * size;

    qputenv("ORVEX_ARCHIVE_DIR", QFile::encodeName(archiveDir));
    const OrvexConnectionValues values = archive.connectionValues();
    OrvexArchiveWorker worker;
    worker.setConnectionSettings(values.server, values.port, values.login1, values.login2, values.login3);
    worker.selectArchive(values.archiveName);
    if (!worker.getLastError().isEmpty()) {
        out << "cannot connect: " << worker.getLastError() << Qt::endl;
        return 1;
    }

    out << "exporting " << count << " documents of " << size << " bytes, best of " << runs << " runs" << Qt::endl;
    const QString exportDir = work.filePath(QStringLiteral("exported"));
    const QString copyDir = work.filePath(QStringLiteral("copied"));
    qint64 bestExport = -1, bestCopy = -1;
    for (int run = 0; run < runs; ++run) {
        freshFolder(exportDir);
        QStringList result;
        QElapsedTimer timer;
        timer.start();
        const bool ok = worker.exportDocuments(ids, {}, {}, {}, exportDir, false, result, -1, false, true, false,
                                               QStringLiteral("IGNORE"));
        const qint64 exportMs = qMax<qint64>(1, timer.elapsed());
        if (!ok || result.size() != count) {
            out << "export failed: " << worker.getLastError() << " (" << result.size() << " files)" << Qt::endl;
            return 1;
        }

        freshFolder(copyDir);
        timer.restart();
        for (const QString &source : qAsConst(sources))
            QFile::copy(source, copyDir + QLatin1Char('/') + QFileInfo(source).fileName());
        const qint64 copyMs = qMax<qint64>(1, timer.elapsed());
        bestExport = bestExport < 0 ? exportMs : qMin(bestExport, exportMs);
        bestCopy = bestCopy < 0 ? copyMs : qMin(bestCopy, copyMs);
        out << QStringLiteral("run %1: export %2 ms, plain copy %3 ms").arg(run + 1).arg(exportMs).arg(copyMs) << Qt::endl;
    }

    const double exportRate = megabytes(total) / (bestExport / 1000.0);
    const double copyRate = megabytes(total) / (bestCopy / 1000.0);
    out << QStringLiteral("export:     %1 MB in %2 s = %3 MB/s")
               .arg(megabytes(total), 0, 'f', 1).arg(bestExport / 1000.0, 0, 'f', 2).arg(exportRate, 0, 'f', 1)
        << Qt::endl;
    out << QStringLiteral("plain copy: %1 MB in %2 s = %3 MB/s")
               .arg(megabytes(total), 0, 'f', 1).arg(bestCopy / 1000.0, 0, 'f', 2).arg(copyRate, 0, 'f', 1)
        << Qt::endl;
    out << QStringLiteral("export reaches %1 % of the plain copy").arg(100.0 * exportRate / copyRate, 0, 'f', 0)
        << Qt::endl;
    return 0;
}
