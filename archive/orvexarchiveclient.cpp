#include "orvexarchiveclient.h"

#include "orvexarchive.h"
#include "orvexarchivestore.h"
#include "orvexcontenthash.h"
#include "orvexpdftools.h"
#include "orvexsqlhelpers.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QHostInfo>
#include <QImage>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QUuid>
#include <QVariant>

#include <climits>
#include <memory>

namespace {
const QChar kInfoSep(0xFFFD);
const QChar kVersionSep(0xFEFF);
constexpr int kMaxDuplicateLines = 50;
constexpr int kOriginalImageSize = 1024;
constexpr qint64 kProgressInterval = 50; // ms between two byte counts of a transfer

using OrvexSql::exec;
using OrvexSql::parseId;

QByteArray pngBytes(const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// "Rechnung.pdf", 2 -> "Rechnung_v2.pdf". The stored file's suffix wins over a
// document name without one or with another one: the name must tell the type.
QString partFileName(const QString &fileName, int version, const QString &storedSuffix)
{
    const QFileInfo info(fileName);
    const QString suffix = info.suffix();
    const QString base = suffix.isEmpty() ? fileName : fileName.left(fileName.size() - suffix.size() - 1);
    const QString kept = storedSuffix.isEmpty() || suffix.compare(storedSuffix, Qt::CaseInsensitive) == 0
        ? suffix : storedSuffix;
    return QStringLiteral("%1_v%2%3").arg(base).arg(version).arg(kept.isEmpty() ? QString() : QLatin1Char('.') + kept);
}

// The suffix of a stored file (lower case since import), else the one of the
// document's name, else the usual one of the file's content type.
QString fileSuffix(const QString &storedPath, const QString &fileName)
{
    QString suffix = QFileInfo(storedPath).suffix();
    if (suffix.isEmpty())
        suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix.isEmpty())
        suffix = QMimeDatabase().mimeTypeForFile(storedPath).preferredSuffix();
    return suffix;
}
} // namespace

OrvexArchiveClient::OrvexArchiveClient(QSharedPointer<OrvexArchiveStore> store, QObject *parent)
    : kelArchiveClientInterface(parent)
    , m_store(std::move(store))
{
    if (m_store)
        connect(this, &OrvexArchiveClient::documentsChanged, m_store.data(), &OrvexArchiveStore::documentsChanged);
}

OrvexArchiveClient::~OrvexArchiveClient()
{
    delete m_exportDir;
}

QByteArray OrvexArchiveClient::notAuthorisedImage()
{
    // A file of fixed bytes, so that its fingerprint does not depend on the
    // PNG encoder of the machine.
    static const QByteArray bytes = [] {
        QFile file(QStringLiteral(":/orvexarchive/notauthorised.png"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    return bytes;
}

QString OrvexArchiveClient::notAuthorisedImageMd5()
{
    return QString::fromLatin1(QCryptographicHash::hash(notAuthorisedImage(), QCryptographicHash::Md5).toHex());
}

bool OrvexArchiveClient::fail(const QString &error)
{
    QMutexLocker locker(&m_mutex);
    m_lastError = error;
    return false;
}

bool OrvexArchiveClient::isConnected() const
{
    QMutexLocker locker(&m_mutex);
    return m_open && !m_user.isEmpty() && !m_archive.isEmpty();
}

QString OrvexArchiveClient::user() const
{
    QMutexLocker locker(&m_mutex);
    return m_user;
}

void OrvexArchiveClient::setChunkSize(int bytes)
{
    QMutexLocker locker(&m_mutex);
    m_chunkSize = qMax(1, bytes);
}

bool OrvexArchiveClient::requireConnection()
{
    if (!m_store || !m_store->isOpen())
        return fail(tr("No archive is open"));
    if (!isConnected())
        return fail(tr("Not connected to the archive"));
    return true;
}

kelArchiveClientInterface *OrvexArchiveClient::createClient(QString applicationDirPath)
{
    Q_UNUSED(applicationDirPath)
    if (m_store)
        return new OrvexArchiveClient(m_store);
    QString folder = qEnvironmentVariable(OrvexArchive::FolderVariable);
    if (folder.trimmed().isEmpty())
        folder = OrvexArchive::defaultLocation();
    QString error;
    const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(folder, true, &error);
    if (!store || !store->ensureUser(OrvexArchiveStore::operatingSystemUser(), &error)) {
        fail(error);
        return nullptr;
    }
    return new OrvexArchiveClient(store);
}

bool OrvexArchiveClient::openConnection(QString server, int port)
{
    resetConnection();
    if (!m_store || !m_store->isOpen())
        return fail(tr("No archive is open"));
    const QString expected = m_store->setting(QStringLiteral("server"));
    QStringList accepted{expected};
    if (expected.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        accepted << QStringLiteral("127.0.0.1") << QStringLiteral("::1") << QHostInfo::localHostName();
    bool serverOk = false;
    for (const QString &name : qAsConst(accepted))
        serverOk = serverOk || name.compare(server.trimmed(), Qt::CaseInsensitive) == 0;
    const int expectedPort = m_store->setting(QStringLiteral("port")).toInt();
    if (!serverOk || port != expectedPort)
        return fail(tr("Cannot connect to %1:%2 (the archive runs on %3:%4)")
                        .arg(server).arg(port).arg(expected).arg(expectedPort));
    QMutexLocker locker(&m_mutex);
    m_server = server;
    m_port = port;
    m_open = true;
    return true;
}

bool OrvexArchiveClient::resetConnection()
{
    QMutexLocker locker(&m_mutex);
    m_open = false;
    m_user.clear();
    m_archive.clear();
    return true;
}

QString OrvexArchiveClient::getLastError()
{
    QMutexLocker locker(&m_mutex);
    return m_lastError;
}

bool OrvexArchiveClient::getArchiveNames(QStringList &names)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open) {
            m_lastError = tr("Not connected to the archive");
            return false;
        }
    }
    names = QStringList{m_store->setting(QStringLiteral("archive_name"))};
    return true;
}

bool OrvexArchiveClient::logIn(QString login1, QString login2, QString login3)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open) {
            m_lastError = tr("Log in needs an open connection");
            return false;
        }
        m_user.clear();
        m_archive.clear();
    }
    const QString tenant = m_store->setting(QStringLiteral("tenant"));
    if (!m_store->checkPassword(login1, login2) || login3 != tenant)
        return fail(tr("Login failed for %1: unknown user, wrong password or tenant").arg(login1));
    QMutexLocker locker(&m_mutex);
    m_user = login1;
    return true;
}

bool OrvexArchiveClient::selectArchive(QString archiveName)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open || m_user.isEmpty()) {
            m_lastError = tr("Selecting an archive needs a login");
            return false;
        }
    }
    if (archiveName != m_store->setting(QStringLiteral("archive_name")))
        return fail(tr("Unknown archive %1").arg(archiveName));
    QMutexLocker locker(&m_mutex);
    m_archive = archiveName;
    return true;
}

bool OrvexArchiveClient::versionFile(qlonglong docId, int version, VersionFile &file)
{
    QString error;
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen())
        return fail(error);
    if (!m_store->documentExists(docId))
        return fail(tr("Unknown document %1").arg(docId));
    if (!m_store->mayRead(user(), docId))
        return fail(tr("%1 may not read document %2").arg(user()).arg(docId));
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT v.file, d.file_name, v.version, v.pages, v.size FROM documents d "
                                 "JOIN versions v ON v.doc_id = d.id "
                                 "AND v.version = CASE WHEN ? > 0 THEN ? ELSE d.current_version END WHERE d.id = ?"));
    query.addBindValue(version);
    query.addBindValue(version);
    query.addBindValue(docId);
    if (!exec(query, error))
        return fail(error);
    if (!query.next())
        return fail(tr("Document %1 has no version %2").arg(docId).arg(version));
    file.path = m_store->filesPath() + QLatin1Char('/') + query.value(0).toString();
    file.fileName = query.value(1).toString();
    file.version = query.value(2).toInt();
    file.pages = query.value(3).toInt();
    file.size = query.value(4).toLongLong();
    return true;
}

bool OrvexArchiveClient::copyChunked(const QString &from, const QString &to, qint64 total, OrvexContentHash *hash,
                                     const QString &notStored)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return fail(tr("Cannot read %1: %2").arg(from, source.errorString()));
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return fail(OrvexStorageError::describe(target.errorString(), notStored));
    int chunk;
    {
        QMutexLocker locker(&m_mutex);
        chunk = m_chunkSize;
    }
    const auto abandon = [&](const QString &error) {
        target.close();
        target.remove();
        return fail(error);
    };
    emit totalFileSize(QString::number(total));
    qint64 done = 0;
    // The byte counts reach GUI objects queued, and one per chunk would flood
    // the GUI thread on a fast disk: the first, then one per interval, and the last.
    qint64 reported = 0;
    QElapsedTimer sinceReport;
    const auto report = [&] {
        reported = done;
        sinceReport.start();
        emit currentReadSize(QString::number(done));
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

bool OrvexArchiveClient::stream(const std::function<bool()> &copy)
{
    if (!m_streaming.testAndSetAcquire(0, 1))
        return fail(tr("Another transfer of this client is still running."));
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
        connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
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

bool OrvexArchiveClient::exportVersion(qlonglong docId, int version, QString &localPath)
{
    if (!requireConnection())
        return false;
    VersionFile file;
    if (!versionFile(docId, version, file))
        return false;
    QString folder;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_exportDir)
            m_exportDir = new QTemporaryDir(QDir::tempPath() + QStringLiteral("/orvexarchive-export-XXXXXX"));
        if (!m_exportDir->isValid()) {
            m_lastError = tr("No temporary folder for the export: %1").arg(m_exportDir->errorString());
            return false;
        }
        // A folder per export, so that the caller may rename the file in it.
        folder = m_exportDir->filePath(QString::number(++m_exportCount));
    }
    if (!QDir().mkpath(folder))
        return fail(tr("Cannot create %1").arg(folder));
    const QString name = version > 0 ? fileNameFor(docId, file.version) : file.fileName;
    const QString target = folder + QLatin1Char('/') + (name.isEmpty() ? QString::number(docId) : name);
    if (!stream([&] { return copyChunked(file.path, target, file.size, nullptr,
                                         tr("document %1 was not exported").arg(docId)); }))
        return false;
    localPath = target;
    return true;
}

QString OrvexArchiveClient::fileNameFor(qlonglong docId, int version)
{
    VersionFile file;
    if (!versionFile(docId, version, file))
        return {};
    return partFileName(file.fileName, file.version, fileSuffix(file.path, file.fileName));
}

bool OrvexArchiveClient::exportDocument(int docId, QString &localPath, int purpose, QString option)
{
    // Purpose and option make no difference to a local archive: the file is the same.
    Q_UNUSED(purpose)
    Q_UNUSED(option)
    return exportVersion(docId, 0, localPath);
}

bool OrvexArchiveClient::exportDocumentVersion(int docId, int version, QString &localPath)
{
    if (version < 1)
        return fail(tr("Invalid version %1").arg(version));
    // Saved under the document's own file name.
    if (!requireConnection())
        return false;
    VersionFile file;
    if (!versionFile(docId, version, file))
        return false;
    QString path;
    if (!exportVersion(docId, version, path))
        return false;
    const QString plain = QFileInfo(path).absolutePath() + QLatin1Char('/') + file.fileName;
    if (!file.fileName.isEmpty() && QFile::rename(path, plain))
        path = plain;
    localPath = path;
    return true;
}

bool OrvexArchiveClient::exportDocumentVersionAlt(int docId, int version, QString &localPath)
{
    if (version < 1)
        return fail(tr("Invalid version %1").arg(version));
    // Saved under the version's own file name ("name_v2.pdf").
    return exportVersion(docId, version, localPath);
}

qlonglong OrvexArchiveClient::getLastArchivedDocId()
{
    QMutexLocker locker(&m_mutex);
    return m_lastArchivedDocId;
}

QStringList OrvexArchiveClient::searchDocs(QString query)
{
    if (!requireConnection())
        return {};
    QStringList words;
    for (QString word : query.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        word.replace(QLatin1Char('"'), QStringLiteral("\"\""));
        words << QLatin1Char('"') + word + QStringLiteral("\"*");
    }
    if (words.isEmpty()) {
        fail(tr("Empty search"));
        return {};
    }
    QString error;
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    QSqlQuery match(db);
    match.prepare(QStringLiteral("SELECT rowid FROM doc_text WHERE doc_text MATCH ? ORDER BY rowid"));
    match.addBindValue(words.join(QLatin1Char(' ')));
    if (!exec(match, error)) {
        fail(error);
        return {};
    }
    QStringList ids;
    const QString acting = user();
    while (match.next()) {
        const qlonglong id = match.value(0).toLongLong();
        if (m_store->mayRead(acting, id))
            ids << QString::number(id);
    }
    return ids;
}

QStringList OrvexArchiveClient::getAllVersions(int docId)
{
    if (!requireConnection())
        return {};
    VersionFile file;
    if (!versionFile(docId, 0, file))
        return {};
    QSqlDatabase db = m_store->database();
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "SELECT v.version, v.created, v.size, d.owner, v.pages, v.sha256, v.version = d.current_version, "
        "d.docs_id, v.file, d.file_name FROM versions v JOIN documents d ON d.id = v.doc_id WHERE v.doc_id = ? "
        "ORDER BY v.version = d.current_version DESC, v.version DESC"));
    query.addBindValue(docId);
    QString error;
    if (!exec(query, error)) {
        fail(error);
        return {};
    }
    const QMimeDatabase mimeTypes;
    QStringList records;
    while (query.next()) {
        const QString stored = m_store->filesPath() + QLatin1Char('/') + query.value(8).toString();
        const QString fileName = query.value(9).toString();
        QStringList fields{QString::number(docId)};
        for (int i = 0; i < 8; ++i)
            fields << query.value(i).toString();
        fields << mimeTypes.mimeTypeForFile(stored).name() << fileName
               << partFileName(fileName, query.value(0).toInt(), fileSuffix(stored, fileName));
        records << fields.join(kVersionSep);
    }
    return records;
}

bool OrvexArchiveClient::getDocumentInfo(QStringList docIds, QStringList &info)
{
    if (!requireConnection())
        return false;
    QString error;
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen())
        return fail(error);
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "SELECT d.title, COALESCE(t.name, ''), v.file, COALESCE(s.name, ''), d.doc_date, d.file_name, v.pages, "
        "(SELECT COUNT(*) FROM versions WHERE doc_id = d.id), d.docs_id FROM documents d "
        "JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version "
        "LEFT JOIN doc_types t ON t.key = d.type_key LEFT JOIN doc_statuses s ON s.key = d.status_key WHERE d.id = ?"));
    QStringList records;
    QStringList missing;
    const QString acting = user();
    for (const QString &text : qAsConst(docIds)) {
        qlonglong id = 0;
        if (!parseId(text, id))
            return fail(tr("Not a document id: %1").arg(text));
        query.addBindValue(id);
        if (!exec(query, error))
            return fail(error);
        if (!query.next() || !m_store->mayRead(acting, id)) {
            missing << text;
            continue;
        }
        QStringList fields{QString::number(id)};
        for (int i = 0; i < 9; ++i)
            fields << query.value(i).toString();
        fields[3] = fileSuffix(m_store->filesPath() + QLatin1Char('/') + fields.at(3), fields.at(6));
        records << fields.join(kInfoSep);
    }
    info = records;
    if (!missing.isEmpty())
        return fail(tr("Unknown documents: %1").arg(missing.join(QStringLiteral(", "))));
    return true;
}

QByteArray OrvexArchiveClient::getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                                    int option1, int option2, int version)
{
    Q_UNUSED(option2)
    if (!requireConnection())
        return {};
    if (!m_store->documentExists(docId)) {
        fail(tr("Unknown document %1").arg(docId));
        return {};
    }
    if (!m_store->mayRead(user(), docId)) {
        pageCount = 1;
        fail(tr("%1 may not read document %2").arg(user()).arg(docId));
        if (option1 == DuplicateCheckOption) {
            format = QStringLiteral("PNG");
            return notAuthorisedImage();
        }
        return {};
    }
    VersionFile file;
    if (!versionFile(docId, version, file))
        return {};
    pageCount = file.pages;
    if (page < 0 || page >= file.pages) {
        fail(tr("Document %1 has no page %2").arg(docId).arg(page + 1));
        return {};
    }
    if (size < 1 || size > 4096) {
        fail(tr("Invalid image size %1").arg(size));
        return {};
    }
    if (!OrvexPdfTools::looksLikePdf(file.path)) {
        // Images are served as they are.
        QFile image(file.path);
        if (!image.open(QIODevice::ReadOnly)) {
            fail(tr("Cannot read the file of document %1").arg(docId));
            return {};
        }
        format = QFileInfo(file.path).suffix().toUpper();
        return image.readAll();
    }
    const QString cacheFile = QStringLiteral("%1/thumbs/%2/v%3-p%4-s%5.png")
                                  .arg(m_store->cachePath()).arg(docId).arg(file.version).arg(page).arg(size);
    QFile cached(cacheFile);
    if (cached.open(QIODevice::ReadOnly)) {
        const QByteArray bytes = cached.readAll();
        if (!bytes.isEmpty()) {
            format = QStringLiteral("PNG");
            return bytes;
        }
    }
    QString error;
    const QImage image = OrvexPdfTools::renderPage(file.path, page, size, error);
    if (image.isNull()) {
        fail(error);
        return {};
    }
    const QByteArray bytes = pngBytes(image);
    // A cache that cannot be written only costs time.
    if (QDir().mkpath(QFileInfo(cacheFile).absolutePath())) {
        QSaveFile save(cacheFile);
        if (save.open(QIODevice::WriteOnly) && save.write(bytes) == bytes.size())
            save.commit();
    }
    format = QStringLiteral("PNG");
    return bytes;
}

bool OrvexArchiveClient::deleteDocument(QString docId, QStringList options)
{
    Q_UNUSED(options)
    qlonglong id = 0;
    if (!parseId(docId, id))
        return fail(tr("Not a document id: %1").arg(docId));
    if (!requireConnection())
        return false;
    const QString acting = user();
    if (!m_store->documentExists(id) || !m_store->mayRead(acting, id))
        return fail(tr("Unknown document %1").arg(id));
    const QString notDeleted = tr("document %1 was not deleted").arg(id);
    if (m_store->isReadOnly())
        return fail(OrvexStorageError::describe(OrvexStorageError::readOnly(), notDeleted));
    if (!m_store->rolesOf(acting).contains(QStringLiteral("tavloADMIN")))
        return fail(tr("%1 may not delete documents").arg(acting));
    QString error;
    QStringList files;
    if (!m_store->write([&](QSqlDatabase &db, QString &stepError) {
            return m_store->removeDocument(db, id, files, stepError);
        }, &error, notDeleted))
        return fail(error);
    m_store->removeDocumentFiles(id, files);
    emit documentsChanged();
    return true;
}

bool OrvexArchiveClient::getDocumentActions(QStringList docIds, QStringList &actions, int mode, QString option)
{
    Q_UNUSED(mode)
    Q_UNUSED(option)
    if (!requireConnection())
        return false;
    const QString acting = user();
    for (const QString &text : qAsConst(docIds)) {
        qlonglong id = 0;
        if (!parseId(text, id))
            return fail(tr("Not a document id: %1").arg(text));
        if (!m_store->mayRead(acting, id))
            return fail(tr("Unknown document %1").arg(id));
    }
    QStringList result{QStringLiteral("OPEN"), QStringLiteral("EXPORT"), QStringLiteral("MAIL")};
    if (m_store->rolesOf(acting).contains(QStringLiteral("tavloADMIN")))
        result << QStringLiteral("DELETE");
    actions = result;
    return true;
}

bool OrvexArchiveClient::writeDocumentInfo(int docId, int mode)
{
    // Writes the document's info record beside the client's exports: mode 0 as
    // text (one field a line), anything else in the record layout.
    QStringList info;
    if (!getDocumentInfo({QString::number(docId)}, info) || info.isEmpty())
        return false;
    QString folder;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_exportDir)
            m_exportDir = new QTemporaryDir(QDir::tempPath() + QStringLiteral("/orvexarchive-export-XXXXXX"));
        folder = m_exportDir->path();
    }
    // The folder may have been cleaned away since the client made it.
    QDir().mkpath(folder);
    QSaveFile file(folder + QStringLiteral("/%1.info").arg(docId));
    const QString text = mode == 0 ? info.first().split(kInfoSep).join(QLatin1Char('\n')) : info.first();
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        return fail(tr("Cannot write the document info: %1").arg(file.errorString()));
    return true;
}

bool OrvexArchiveClient::moveDocToArchive(qlonglong docId, int target)
{
    if (!requireConnection())
        return false;
    if (!m_store->mayRead(user(), docId))
        return fail(tr("Unknown document %1").arg(docId));
    // The embedded archive holds a single archive (index 0), where every document already is.
    if (target != 0)
        return fail(tr("Unknown archive %1").arg(target));
    return true;
}

QString OrvexArchiveClient::getDocumentFileName(QString docId, QString docsId)
{
    Q_UNUSED(docsId)
    qlonglong id = 0;
    if (!parseId(docId, id)) {
        fail(tr("Not a document id: %1").arg(docId));
        return {};
    }
    if (!requireConnection())
        return {};
    VersionFile file;
    return versionFile(id, 0, file) ? file.fileName : QString();
}

QStringList OrvexArchiveClient::getDocumentFileNames(QStringList docIds, QStringList docsIds)
{
    Q_UNUSED(docsIds)
    if (!requireConnection())
        return {};
    QStringList names;
    QStringList refused;
    for (const QString &text : qAsConst(docIds)) {
        // "4711" names the current file, "4711;3" the file of version 3 (as
        // getDocumentPartFileName() does); further fields are ignored.
        const QStringList parts = text.split(QLatin1Char(';'));
        const QString versionText = parts.value(1).trimmed();
        qlonglong id = 0;
        qlonglong version = 0;
        VersionFile file;
        if (parseId(parts.at(0), id)
            && (versionText.isEmpty() || (parseId(versionText, version) && version <= INT_MAX))
            && versionFile(id, int(version), file))
            names << (version > 0 ? partFileName(file.fileName, file.version, fileSuffix(file.path, file.fileName))
                                  : file.fileName);
        else
            refused << text;
    }
    if (!refused.isEmpty())
        fail(tr("No permission to export: %1").arg(refused.join(QStringLiteral(", "))));
    return names;
}

QString OrvexArchiveClient::getDocumentPartFileName(QString docId, QString docsId, QString version)
{
    Q_UNUSED(docsId)
    qlonglong id = 0;
    qlonglong number = 0;
    if (!parseId(docId, id) || !parseId(version, number)) {
        fail(tr("Not a document id and version: %1 %2").arg(docId, version));
        return {};
    }
    if (!requireConnection())
        return {};
    return fileNameFor(id, int(number));
}

bool OrvexArchiveClient::sendFile(QString filePath, QString &uploadId)
{
    if (!requireConnection())
        return false;
    const QFileInfo info(filePath);
    if (!info.isFile() || !info.isReadable())
        return fail(tr("Cannot read %1").arg(filePath));
    const QString notArchived = tr("%1 was not archived").arg(info.fileName());
    if (m_store->isReadOnly())
        return fail(OrvexStorageError::describe(OrvexStorageError::readOnly(), notArchived));
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QString suffix = info.suffix().toLower();
    const QString relative = id + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
    const QString target = m_store->uploadsPath() + QLatin1Char('/') + relative;
    OrvexContentHash hash;
    if (!stream([&] { return copyChunked(filePath, target, info.size(), &hash, notArchived); }))
        return false;
    // Committed later by renaming: its content must be on the disk by then.
    OrvexArchiveStore::syncFile(target);
    // What arrived, which is what was hashed, even if the source changed meanwhile.
    const qint64 size = QFileInfo(target).size();
    const QString acting = user();
    QString error;
    const bool stored = m_store->write([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO uploads(id, owner, file, original_name, size, sha256, created) "
                                      "VALUES (?, ?, ?, ?, ?, ?, ?)"));
        insert.addBindValue(id);
        insert.addBindValue(acting);
        insert.addBindValue(relative);
        insert.addBindValue(info.fileName());
        insert.addBindValue(size);
        insert.addBindValue(hash.hex());
        insert.addBindValue(QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
        return exec(insert, stepError);
    }, &error, notArchived);
    if (!stored) {
        QFile::remove(target);
        return fail(error);
    }
    emit saveDocEnd();
    uploadId = id;
    return true;
}

QStringList OrvexArchiveClient::checkDuplicates(QString archiveData, QString filePath, QString uploadId, bool flag,
                                                int option1, int option2, int option3, int option4)
{
    // archiveData, the flag and the options select nothing in a local archive.
    Q_UNUSED(archiveData)
    Q_UNUSED(filePath)
    Q_UNUSED(flag)
    Q_UNUSED(option1)
    Q_UNUSED(option2)
    Q_UNUSED(option3)
    Q_UNUSED(option4)
    if (!requireConnection())
        return {};
    if (uploadId.trimmed().isEmpty()) {
        fail(tr("No upload to check"));
        return {};
    }
    QString error;
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    QSqlQuery upload(db);
    upload.prepare(QStringLiteral("SELECT file, sha256 FROM uploads WHERE id = ? AND owner = ?"));
    upload.addBindValue(uploadId);
    upload.addBindValue(user());
    if (!exec(upload, error) || !upload.next()) {
        fail(error.isEmpty() ? tr("Unknown upload %1").arg(uploadId) : error);
        return {};
    }
    const QString path = m_store->uploadsPath() + QLatin1Char('/') + upload.value(0).toString();
    const QString sha = upload.value(1).toString();
    upload.finish();

    OrvexPdfTools::Inspection inspection;
    if (!OrvexPdfTools::inspect(path, inspection, error)) {
        // Nobody can archive this file: the upload goes.
        discardUpload(uploadId);
        fail(error);
        return {};
    }
    // The commit runs on the caller's GUI thread: it takes pages, text and
    // fingerprints from here instead of inspecting the file again.
    if (!m_store->saveUploadInspection(uploadId, inspection, &error)) {
        fail(error);
        return {};
    }

    struct Hit
    {
        qlonglong docId;
        int version;
        int page;
        QString reason;
        int uploadPage;
    };
    QList<Hit> hits;
    QSet<QString> seen;
    const auto add = [&](const Hit &hit) {
        const QString key = QStringLiteral("%1/%2/%3").arg(hit.docId).arg(hit.version).arg(hit.page);
        if (hits.size() < kMaxDuplicateLines && !seen.contains(key)) {
            seen.insert(key);
            hits << hit;
        }
    };

    QSqlQuery same(db);
    same.prepare(QStringLiteral("SELECT doc_id, version, pages FROM versions WHERE sha256 = ? ORDER BY doc_id, version"));
    same.addBindValue(sha);
    if (!exec(same, error)) {
        fail(error);
        return {};
    }
    while (same.next())
        for (int page = 0; page < qMax(1, same.value(2).toInt()); ++page)
            add({same.value(0).toLongLong(), same.value(1).toInt(), page, QStringLiteral("content"),
                 qMin(page, qMax(0, inspection.pages - 1))});

    if (!inspection.pageHashes.isEmpty()) {
        QSqlQuery pages(db);
        if (!pages.exec(QStringLiteral("SELECT doc_id, version, page, hash FROM page_hashes ORDER BY doc_id, version, page"))) {
            fail(OrvexStorageError::ofQuery(pages));
            return {};
        }
        while (pages.next()) {
            const QByteArray stored = pages.value(3).toByteArray();
            for (int i = 0; i < inspection.pageHashes.size(); ++i) {
                if (OrvexPdfTools::hashDistance(stored, inspection.pageHashes.at(i)) <= OrvexArchiveStore::PageHashTolerance) {
                    add({pages.value(0).toLongLong(), pages.value(1).toInt(), pages.value(2).toInt(),
                         QStringLiteral("page"), i});
                    break;
                }
            }
        }
    }

    QStringList reply{uploadId};
    if (hits.isEmpty())
        return reply;
    QList<int> originals;
    for (const Hit &hit : qAsConst(hits))
        if (!originals.contains(hit.uploadPage))
            originals << hit.uploadPage;
    std::sort(originals.begin(), originals.end());
    QStringList images;
    for (int page : qAsConst(originals)) {
        QString renderError;
        const QImage image = inspection.pages > 0 ? OrvexPdfTools::renderPage(path, page, kOriginalImageSize, renderError)
                                                  : QImage();
        images << QStringLiteral("page%1;%2").arg(page).arg(QString::fromLatin1(pngBytes(image).toBase64()));
    }
    reply << QString::number(images.size()) << images;
    for (const Hit &hit : qAsConst(hits))
        reply << QStringLiteral("%1;%2;%3;%4;page%5").arg(hit.docId).arg(hit.version).arg(hit.page).arg(hit.reason).arg(hit.uploadPage);
    return reply;
}

bool OrvexArchiveClient::commitUpload(QString uploadId)
{
    if (!requireConnection())
        return false;
    const QString acting = user();
    QString error;
    // Hash and size come from sendFile, pages, text and fingerprints from the
    // duplicate check; an upload committed without a check is inspected now.
    OrvexArchiveStore::Upload upload;
    if (!m_store->readUpload(uploadId, acting, upload, error))
        return fail(error.isEmpty() ? tr("Unknown upload %1").arg(uploadId) : error);
    if (!upload.inspected && !OrvexPdfTools::inspect(upload.path, upload.content.inspection, error))
        return fail(error);

    QStringList movedFiles;
    qlonglong docId = 0;
    const bool ok = m_store->write([&](QSqlDatabase &db, QString &stepError) {
        // Whoever committed or discarded the upload meanwhile has taken it.
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM uploads WHERE id = ? AND owner = ?"));
        remove.addBindValue(uploadId);
        remove.addBindValue(acting);
        if (!exec(remove, stepError))
            return false;
        if (remove.numRowsAffected() != 1) {
            stepError = tr("Unknown upload %1").arg(uploadId);
            return false;
        }
        OrvexArchiveStore::ImportOptions options;
        options.title = QFileInfo(upload.originalName).completeBaseName();
        options.fileName = upload.originalName;
        options.statusKey = QStringLiteral("NEW");
        options.owner = acting;
        options.moveSource = true;
        // The sample's status table may have been changed; a missing key is no reason to refuse.
        QSqlQuery status(db);
        if (!status.exec(QStringLiteral("SELECT 1 FROM doc_statuses WHERE key = 'NEW'")) || !status.next())
            options.statusKey.clear();
        status.finish();
        docId = m_store->importContent(db, upload.path, upload.content, options, 0, movedFiles, stepError);
        return docId != 0;
    }, &error, tr("%1 was not archived").arg(upload.originalName));
    if (!ok) {
        // The file was moved last: only the commit itself failed after it.
        for (const QString &path : qAsConst(movedFiles))
            QFile::rename(path, upload.path);
        return fail(error);
    }
    {
        QMutexLocker locker(&m_mutex);
        m_lastArchivedDocId = docId;
    }
    emit documentsChanged();
    return true;
}

void OrvexArchiveClient::discardUpload(QString uploadId)
{
    if (!m_store || !m_store->isOpen())
        return;
    const QString acting = user();
    QString file;
    QString error;
    const bool ok = m_store->write([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery upload(db);
        upload.prepare(QStringLiteral("SELECT file FROM uploads WHERE id = ? AND owner = ?"));
        upload.addBindValue(uploadId);
        upload.addBindValue(acting);
        if (!exec(upload, stepError))
            return false;
        if (!upload.next()) {
            stepError = tr("Unknown upload %1").arg(uploadId);
            return false;
        }
        file = upload.value(0).toString();
        upload.finish();
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM uploads WHERE id = ?"));
        remove.addBindValue(uploadId);
        return exec(remove, stepError);
    }, &error);
    if (!ok) {
        fail(error);
        return;
    }
    QFile::remove(m_store->uploadsPath() + QLatin1Char('/') + file);
}

void OrvexArchiveClient::cancelStreaming()
{
    m_cancel.storeRelease(1);
}
