// faultwriter: drives the real archive library in a process of its own, so
// that tests can kill it, limit the size of the files it may write, or run it
// without the right to change a read-only archive. Each mode prints one line
// per fact on stdout ("key value..."), flushed at once.
//
//   faultwriter write FOLDER             commits clipboards and documents until
//                                        killed; prints each after its commit
//   faultwriter import FOLDER FILE LIMIT imports FILE with files limited to
//                                        LIMIT bytes
//   faultwriter commit FOLDER FILE LIMIT uploads FILE, then commits it with
//                                        files limited to LIMIT bytes
//   faultwriter readonly FOLDER [FILE]   views, searches, exports and serves a
//                                        document, then tries every kind of write
#include "../archive/archivetesthelpers.h"
#include "classifyinterface.h"
#include "kelarchiveclientinterface.h"
#include "orvexarchive.h"
#include "orvexclassifyclient.h"
#include "orvexdocumentserver.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

#include "../connection/rawhttp.h"

namespace {

void say(const QString &key, const QString &value = {})
{
    std::printf("%s %s\n", qPrintable(key), value.toUtf8().constData());
    std::fflush(stdout);
}

QString sha256Of(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? QString::fromLatin1(hash.result().toHex())
                                                                  : QString();
}

// From here on no file of this process may grow past limit bytes; a write
// beyond it fails with EFBIG instead of killing the process.
void limitFileSize(qint64 limit)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit rl{};
    ::getrlimit(RLIMIT_FSIZE, &rl);
    rl.rlim_cur = rlim_t(limit);
    ::setrlimit(RLIMIT_FSIZE, &rl);
}

int writeUntilKilled(OrvexArchive &archive, const QString &scratch)
{
    ClassifyInterface *classify = archive.classifyClient();
    // Ends by itself should nobody kill it.
    QElapsedTimer running;
    running.start();
    for (int i = 0; !running.hasExpired(120000); ++i) {
        const QString name = QStringLiteral("kill-%1-%2").arg(QCoreApplication::applicationPid()).arg(i);
        if (!classify->createClipboard(name).isEmpty())
            say(QStringLiteral("clipboard"), name);
        if (i % 3 != 0)
            continue;
        // A document whose content is its own: 40 KB the import copies and syncs.
        const QString path = scratch + QStringLiteral("/%1.txt").arg(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(40 * 1024, 'a' + char(i % 26)) + name.toUtf8()) < 0)
            return 3;
        file.close();
        const qlonglong id = archive.importFile(path, name);
        if (id > 0)
            say(QStringLiteral("document"), QStringLiteral("%1 %2").arg(id).arg(sha256Of(path)));
        QFile::remove(path);
    }
    return 0;
}

int importLimited(OrvexArchive &archive, const QString &file, qint64 limit)
{
    limitFileSize(limit);
    const qlonglong id = archive.importFile(file);
    say(QStringLiteral("result"), QString::number(id));
    say(QStringLiteral("error"), archive.lastError());
    return 0;
}

int commitLimited(OrvexArchive &archive, const QString &file, qint64 limit)
{
    kelArchiveClientInterface *client = archive.archiveClient();
    if (!connectClient(client, archive.connectionValues()))
        return 3;
    QString uploadId;
    if (!client->sendFile(file, uploadId) || client->checkDuplicates({}, file, uploadId, false, 0, 0, 1, 1).isEmpty())
        return 4;
    say(QStringLiteral("upload"), uploadId);
    limitFileSize(limit);
    say(QStringLiteral("result"), client->commitUpload(uploadId) ? QStringLiteral("1") : QStringLiteral("0"));
    say(QStringLiteral("error"), client->getLastError());
    return 0;
}

int viewReadOnly(OrvexArchive &archive, const QString &file)
{
    say(QStringLiteral("readonly"), archive.isReadOnly() ? QStringLiteral("1") : QStringLiteral("0"));
    const QList<OrvexArchiveDocument> documents = archive.documents();
    say(QStringLiteral("documents"), QString::number(documents.size()));
    ClassifyInterface *classify = archive.classifyClient();
    kelArchiveClientInterface *client = archive.archiveClient();
    if (!classify || !client || documents.isEmpty() || !connectClient(client, archive.connectionValues()))
        return 3;

    // Viewing: the clipboards (none writeable), a search, a thumbnail, an export.
    QList<QPair<QString, QString>> clipboards;
    classify->getClipboards(clipboards);
    int writeable = 0;
    for (const auto &clipboard : clipboards)
        writeable += clipboard.second.section(QChar(0xFEFF), 1).contains(QLatin1Char('W')) ? 1 : 0;
    say(QStringLiteral("clipboards"), QStringLiteral("%1 %2").arg(clipboards.size()).arg(writeable));
    QString filter = QStringLiteral("docs_id in (");
    for (const OrvexArchiveDocument &document : documents)
        filter += QString::number(document.docsId) + QLatin1Char(',');
    filter.chop(1);
    filter += QLatin1Char(')');
    const QStringList hits = classify->searchDocuments(
        {filter, QStringLiteral("OPT:FULLTEXT") + QChar(0xFEFF) + documents.first().title, QStringLiteral("OPT:LIMIT;100")});
    say(QStringLiteral("search"), QString::number(hits.size() - 1)); // less the header row
    const OrvexArchiveDocument &document = documents.first();
    int pages = 0;
    QString format;
    say(QStringLiteral("thumbnail"),
        client->getDocumentThumbnail(int(document.id), 0, 64, pages, format, 0, 0, 0).isEmpty() ? QStringLiteral("0")
                                                                                               : QStringLiteral("1"));
    QString exported;
    say(QStringLiteral("export"), client->exportDocument(int(document.id), exported, 1, {}) ? sha256Of(exported)
                                                                                            : client->getLastError());

    // The document server delivers from it too.
    OrvexDocumentServer server(archive.folder());
    QString error;
    if (!server.start(0, &error))
        return 5;
    const RawHttp::Answer answer = RawHttp::exchange(
        server.port(), RawHttp::get("/openDoc/a?openmode=4&docid=" + QByteArray::number(document.id), "localhost"));
    say(QStringLiteral("served"), QStringLiteral("%1 %2").arg(answer.status).arg(
        QString::fromLatin1(QCryptographicHash::hash(answer.body, QCryptographicHash::Sha256).toHex())));
    server.stop();

    // Every kind of write says why it cannot be done.
    const QString uuid = classify->createClipboard(QStringLiteral("Neu"));
    say(QStringLiteral("write-create"), uuid.isEmpty() ? dynamic_cast<OrvexClassifyClient *>(classify)->lastError()
                                                       : QStringLiteral("stored"));
    say(QStringLiteral("write-import"), archive.importFile(file) > 0 ? QStringLiteral("stored") : archive.lastError());
    QString uploadId;
    say(QStringLiteral("write-upload"), client->sendFile(file, uploadId) ? QStringLiteral("stored") : client->getLastError());
    say(QStringLiteral("write-delete"), client->deleteDocument(QString::number(document.id), {}) ? QStringLiteral("stored")
                                                                                                 : client->getLastError());
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: faultwriter write|import|commit|readonly FOLDER [FILE [LIMIT]]\n");
        return 2;
    }
    const QString mode = args.at(1);
    OrvexArchive archive;
    if (!archive.open(args.at(2), false)) {
        say(QStringLiteral("open-error"), archive.lastError());
        return 1;
    }
    const QString file = args.value(3);
    const qint64 limit = args.value(4).toLongLong();
    if (mode == QLatin1String("write")) {
        QTemporaryDir scratch;
        return scratch.isValid() ? writeUntilKilled(archive, scratch.path()) : 3;
    }
    if (mode == QLatin1String("import"))
        return importLimited(archive, file, limit);
    if (mode == QLatin1String("commit"))
        return commitLimited(archive, file, limit);
    if (mode == QLatin1String("readonly"))
        return viewReadOnly(archive, file);
    return 2;
}
