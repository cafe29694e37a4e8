#include "recordingarchiveclient.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>

namespace {
const QChar kInfoSep(0xFFFD);
}

RecordingArchiveClient::RecordingArchiveClient(QObject *parent)
    : kelArchiveClientInterface(parent)
{
}

void RecordingArchiveClient::setConnectionValues(const QString &server, int port, const QString &login1,
                                                 const QString &login2, const QString &login3,
                                                 const QStringList &archives)
{
    QMutexLocker locker(&m_mutex);
    m_server = server;
    m_port = port;
    m_login1 = login1;
    m_login2 = login2;
    m_login3 = login3;
    m_archives = archives;
}

bool RecordingArchiveClient::enter(const QString &name, const QVariantList &args)
{
    m_log.record(name, args);
    m_log.stallIfSet(name);
    if (m_log.isFailing(name))
        return fail(name + QStringLiteral(" failed (test switch)"));
    return true;
}

bool RecordingArchiveClient::fail(const QString &error)
{
    QMutexLocker locker(&m_mutex);
    m_lastError = error;
    return false;
}

bool RecordingArchiveClient::stream(const QString &operation, const QByteArray &bytes, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
    int chunk;
    {
        QMutexLocker locker(&m_mutex);
        chunk = m_chunkSize;
    }
    emit totalFileSize(QString::number(bytes.size()));
    qint64 done = 0;
    while (done < bytes.size()) {
        if (m_cancel.loadAcquire()) {
            file.close();
            file.remove();
            return fail(QStringLiteral("Canceled"));
        }
        const qint64 n = qMin<qint64>(chunk, bytes.size() - done);
        if (file.write(bytes.constData() + done, n) != n)
            return fail(QStringLiteral("Cannot write %1: %2").arg(path, file.errorString()));
        done += n;
        emit currentReadSize(QString::number(done));
        if (done == n)
            m_log.stallIfSet(operation + QStringLiteral(":chunk"));
    }
    if (m_cancel.loadAcquire()) {
        file.close();
        file.remove();
        return fail(QStringLiteral("Canceled"));
    }
    return true;
}

bool RecordingArchiveClient::exportBytes(const QString &operation, int docId, int version, QString &localPath)
{
    Document document;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_documents.contains(docId)) {
            m_lastError = QStringLiteral("Unknown document %1").arg(docId);
            return false;
        }
        document = m_documents.value(docId);
    }
    if (!document.readable)
        return fail(QStringLiteral("No permission to read document %1").arg(docId));
    QByteArray bytes = document.content;
    if (version > 0) {
        if (!document.versions.contains(version))
            return fail(QStringLiteral("Document %1 has no version %2").arg(docId).arg(version));
        bytes = document.versions.value(version);
    }
    const QString name = document.fileName.isEmpty() ? QString::number(docId) : document.fileName;
    const QString folder = m_exportDir.path() + QLatin1Char('/') + QString::number(docId)
        + QLatin1Char('_') + QString::number(version);
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name;
    m_cancel.storeRelease(0);
    if (!stream(operation, bytes, path))
        return false;
    localPath = path;
    return true;
}

QByteArray RecordingArchiveClient::drawPage(int docId, int page, int size)
{
    const int height = qMax(1, size);
    const int width = qMax(1, height * 7 / 10);
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor::fromHsv((docId * 37 + page * 53) % 360, 60, 240));
    QPainter painter(&image);
    painter.drawText(image.rect(), Qt::AlignCenter,
                     QStringLiteral("%1 / %2").arg(docId).arg(page + 1));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

kelArchiveClientInterface *RecordingArchiveClient::createClient(QString applicationDirPath)
{
    if (!enter(QStringLiteral("createClient"), {applicationDirPath}))
        return nullptr;
    auto *client = new RecordingArchiveClient;
    QMutexLocker locker(&m_mutex);
    client->m_documents = m_documents;
    client->m_server = m_server;
    client->m_port = m_port;
    client->m_login1 = m_login1;
    client->m_login2 = m_login2;
    client->m_login3 = m_login3;
    client->m_archives = m_archives;
    return client;
}

bool RecordingArchiveClient::openConnection(QString server, int port)
{
    if (!enter(QStringLiteral("openConnection"), {server, port}))
        return false;
    QMutexLocker locker(&m_mutex);
    if ((!m_server.isEmpty() && server != m_server) || (m_port != 0 && port != m_port)) {
        m_lastError = QStringLiteral("Cannot connect to %1:%2").arg(server).arg(port);
        return false;
    }
    m_connected = true;
    return true;
}

bool RecordingArchiveClient::resetConnection()
{
    enter(QStringLiteral("resetConnection"), {});
    QMutexLocker locker(&m_mutex);
    m_connected = false;
    m_loggedIn = false;
    m_currentArchive.clear();
    return true;
}

QString RecordingArchiveClient::getLastError()
{
    m_log.record(QStringLiteral("getLastError"));
    QMutexLocker locker(&m_mutex);
    return m_lastError;
}

bool RecordingArchiveClient::getArchiveNames(QStringList &names)
{
    if (!enter(QStringLiteral("getArchiveNames"), {}))
        return false;
    QMutexLocker locker(&m_mutex);
    names = m_archives;
    return true;
}

bool RecordingArchiveClient::selectArchive(QString archiveName)
{
    if (!enter(QStringLiteral("selectArchive"), {archiveName}))
        return false;
    QMutexLocker locker(&m_mutex);
    if (!m_loggedIn || !m_archives.contains(archiveName)) {
        m_lastError = QStringLiteral("Unknown archive %1").arg(archiveName);
        return false;
    }
    m_currentArchive = archiveName;
    return true;
}

bool RecordingArchiveClient::exportDocument(int docId, QString &localPath, int purpose, QString option)
{
    if (!enter(QStringLiteral("exportDocument"), {docId, localPath, purpose, option}))
        return false;
    return exportBytes(QStringLiteral("exportDocument"), docId, 0, localPath);
}

qlonglong RecordingArchiveClient::getLastArchivedDocId()
{
    m_log.record(QStringLiteral("getLastArchivedDocId"));
    QMutexLocker locker(&m_mutex);
    return m_lastArchivedDocId;
}

QStringList RecordingArchiveClient::searchDocs(QString query)
{
    if (!enter(QStringLiteral("searchDocs"), {query}))
        return {};
    QMutexLocker locker(&m_mutex);
    QStringList ids;
    for (const Document &document : qAsConst(m_documents))
        if (document.fileName.contains(query, Qt::CaseInsensitive))
            ids << QString::number(document.docId);
    return ids;
}

bool RecordingArchiveClient::exportDocumentVersion(int docId, int version, QString &localPath)
{
    if (!enter(QStringLiteral("exportDocumentVersion"), {docId, version, localPath}))
        return false;
    return exportBytes(QStringLiteral("exportDocumentVersion"), docId, version, localPath);
}

bool RecordingArchiveClient::exportDocumentVersionAlt(int docId, int version, QString &localPath)
{
    if (!enter(QStringLiteral("exportDocumentVersionAlt"), {docId, version, localPath}))
        return false;
    return exportBytes(QStringLiteral("exportDocumentVersionAlt"), docId, version, localPath);
}

QStringList RecordingArchiveClient::getAllVersions(int docId)
{
    if (!enter(QStringLiteral("getAllVersions"), {docId}))
        return {};
    QMutexLocker locker(&m_mutex);
    QStringList versions;
    for (int version : m_documents.value(docId).versions.keys())
        versions << QString::number(version);
    return versions;
}

bool RecordingArchiveClient::logIn(QString login1, QString login2, QString login3)
{
    if (!enter(QStringLiteral("logIn"), {login1, login2, login3}))
        return false;
    QMutexLocker locker(&m_mutex);
    const auto matches = [](const QString &expected, const QString &given) {
        return expected.isEmpty() || expected == given;
    };
    if (!m_connected || !matches(m_login1, login1) || !matches(m_login2, login2)
        || !matches(m_login3, login3)) {
        m_lastError = QStringLiteral("Login failed for %1").arg(login1);
        return false;
    }
    m_loggedIn = true;
    return true;
}

bool RecordingArchiveClient::getDocumentInfo(QStringList docIds, QStringList &info)
{
    if (!enter(QStringLiteral("getDocumentInfo"), {docIds}))
        return false;
    QMutexLocker locker(&m_mutex);
    const bool shortRows = m_log.isShort(QStringLiteral("getDocumentInfo"));
    info.clear();
    for (const QString &id : qAsConst(docIds)) {
        const Document document = m_documents.value(id.toInt());
        if (document.docId == 0)
            continue;
        QStringList fields{QString::number(document.docId), document.fileName,
                           QString::number(document.pages),
                           QString::number(document.versions.size())};
        info << (shortRows ? fields.first() : fields.join(kInfoSep));
    }
    return true;
}

QByteArray RecordingArchiveClient::getDocumentThumbnail(int docId, int page, int size, int &pageCount,
                                                        QString &format, int option1, int option2,
                                                        int version)
{
    if (!enter(QStringLiteral("getDocumentThumbnail"),
               {docId, page, size, pageCount, format, option1, option2, version}))
        return {};
    Document document;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_documents.contains(docId))
            return {};
        document = m_documents.value(docId);
    }
    pageCount = document.pages;
    if (!document.readable || page < 0 || page >= document.pages)
        return {};
    if (!document.thumbnail.isNull())
        return document.thumbnail;
    return drawPage(docId, page, size);
}

bool RecordingArchiveClient::deleteDocument(QString docId, QStringList options)
{
    if (!enter(QStringLiteral("deleteDocument"), {docId, options}))
        return false;
    QMutexLocker locker(&m_mutex);
    if (!m_documents.remove(docId.toInt())) {
        m_lastError = QStringLiteral("Unknown document %1").arg(docId);
        return false;
    }
    return true;
}

bool RecordingArchiveClient::getDocumentActions(QStringList docIds, QStringList &actions, int mode,
                                                QString option)
{
    if (!enter(QStringLiteral("getDocumentActions"), {docIds, mode, option}))
        return false;
    actions.clear();
    return true;
}

bool RecordingArchiveClient::writeDocumentInfo(int docId, int mode)
{
    return enter(QStringLiteral("writeDocumentInfo"), {docId, mode});
}

bool RecordingArchiveClient::moveDocToArchive(qlonglong docId, int target)
{
    return enter(QStringLiteral("moveDocToArchive"), {docId, target});
}

QString RecordingArchiveClient::getDocumentFileName(QString docId, QString docsId)
{
    if (!enter(QStringLiteral("getDocumentFileName"), {docId, docsId}))
        return {};
    QMutexLocker locker(&m_mutex);
    return m_documents.value(docId.toInt()).fileName;
}

QStringList RecordingArchiveClient::getDocumentFileNames(QStringList docIds, QStringList docsIds)
{
    if (!enter(QStringLiteral("getDocumentFileNames"), {docIds, docsIds}))
        return {};
    QMutexLocker locker(&m_mutex);
    QStringList names;
    for (const QString &id : qAsConst(docIds)) {
        const Document document = m_documents.value(id.toInt());
        if (document.docId != 0 && document.readable)
            names << (document.fileName.isEmpty() ? id : document.fileName);
    }
    return names;
}

QString RecordingArchiveClient::getDocumentPartFileName(QString docId, QString docsId, QString version)
{
    if (!enter(QStringLiteral("getDocumentPartFileName"), {docId, docsId, version}))
        return {};
    QMutexLocker locker(&m_mutex);
    const Document document = m_documents.value(docId.toInt());
    if (document.fileName.isEmpty() || !document.versions.contains(version.toInt()))
        return {};
    return document.fileName;
}

QStringList RecordingArchiveClient::checkDuplicates(QString archiveData, QString filePath, QString uploadId,
                                                    bool flag, int option1, int option2, int option3,
                                                    int option4)
{
    if (!enter(QStringLiteral("checkDuplicates"),
               {archiveData, filePath, uploadId, flag, option1, option2, option3, option4}))
        return {};
    QMutexLocker locker(&m_mutex);
    if (m_fixedDuplicateReply)
        return m_duplicateReply;
    if (!m_uploads.contains(uploadId))
        return {};
    const QByteArray content = m_uploads.value(uploadId);
    const QByteArray key = QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex();
    QStringList reply{uploadId};
    QStringList duplicates;
    for (const Document &document : qAsConst(m_documents))
        if (document.content == content)
            duplicates << QStringLiteral("%1;0;1;;%2").arg(document.docId).arg(QString::fromLatin1(key));
    const QByteArray image = drawPage(0, 0, 128).toBase64();
    reply << (duplicates.isEmpty() ? QStringLiteral("0") : QStringLiteral("1"));
    if (!duplicates.isEmpty())
        reply << QString::fromLatin1(key) + QLatin1Char(';') + QString::fromLatin1(image);
    return reply + duplicates;
}

bool RecordingArchiveClient::commitUpload(QString uploadId)
{
    if (!enter(QStringLiteral("commitUpload"), {uploadId}))
        return false;
    QMutexLocker locker(&m_mutex);
    if (!m_uploads.contains(uploadId)) {
        m_lastError = QStringLiteral("Unknown upload %1").arg(uploadId);
        return false;
    }
    Document document;
    document.docId = m_nextDocId++;
    document.fileName = QStringLiteral("upload-%1.pdf").arg(document.docId);
    document.content = m_uploads.take(uploadId);
    m_documents.insert(document.docId, document);
    m_lastArchivedDocId = document.docId;
    return true;
}

void RecordingArchiveClient::discardUpload(QString uploadId)
{
    enter(QStringLiteral("discardUpload"), {uploadId});
    QMutexLocker locker(&m_mutex);
    m_uploads.remove(uploadId);
}

bool RecordingArchiveClient::sendFile(QString filePath, QString &uploadId)
{
    if (!enter(QStringLiteral("sendFile"), {filePath}))
        return false;
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("Cannot read %1: %2").arg(filePath, file.errorString()));
    const QByteArray content = file.readAll();
    QTemporaryDir scratch;
    m_cancel.storeRelease(0);
    if (!stream(QStringLiteral("sendFile"), content, scratch.filePath(QStringLiteral("upload"))))
        return false;
    emit saveDocEnd();
    QMutexLocker locker(&m_mutex);
    uploadId = QStringLiteral("upload-%1").arg(m_nextUpload++);
    m_uploads.insert(uploadId, content);
    return true;
}

void RecordingArchiveClient::cancelStreaming()
{
    m_log.record(QStringLiteral("cancelStreaming"));
    m_cancel.storeRelease(1);
}
