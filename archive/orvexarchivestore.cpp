#include "orvexarchivestore.h"

#include "orvexarchiveschema.h"
#include "orvexarchivetranslations.h"
#include "orvexcontenthash.h"
#include "orvexpdftools.h"
#include "orvexrenderahead.h"
#include "orvexsamplearchive.h"
#include "orvexsqlhelpers.h"
#include "orvexstorageerror.h"

#include <QAtomicInteger>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QIODevice>
#include <QMimeDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QVariant>

#include <pwd.h>
#include <unistd.h>

namespace {
QAtomicInteger<quint64> g_nextThreadSerial{1};
thread_local quint64 t_threadSerial = 0;

// Every thread gets its own number, so a connection name is never reused by a
// later thread that happens to get the same QThread address.
quint64 threadSerial()
{
    if (t_threadSerial == 0)
        t_threadSerial = g_nextThreadSerial.fetchAndAddOrdered(1);
    return t_threadSerial;
}

// The connections a thread opened; they close when the thread ends, so that a
// server does not keep one session per finished transfer thread.
struct ThreadConnections
{
    QStringList names;
    ~ThreadConnections()
    {
        if (QCoreApplication::instance() && QThread::currentThread() != QCoreApplication::instance()->thread())
            for (const QString &name : qAsConst(names))
                QSqlDatabase::removeDatabase(name);
    }
};
thread_local ThreadConnections t_connections;

QAtomicInteger<quint64> g_nextStore{1};

using OrvexSql::exec;
} // namespace

OrvexArchiveStore::OrvexArchiveStore(QObject *parent)
    : QObject(parent)
    , m_connectionPrefix(QStringLiteral("orvexarchive-%1-").arg(g_nextStore.fetchAndAddOrdered(1)))
{
}

OrvexArchiveStore::~OrvexArchiveStore()
{
    delete m_watcher;
    m_renderAhead.reset();
    closeAll();
}

void OrvexArchiveStore::closeAll()
{
    QMutexLocker locker(&m_connectionsMutex);
    // Connections of other threads cannot be closed from here; removing them
    // closes their drivers.
    for (const QString &name : qAsConst(m_connections))
        QSqlDatabase::removeDatabase(name);
    m_connections.clear();
    m_open = false;
}

bool OrvexArchiveStore::isOpen() const { return m_open; }
bool OrvexArchiveStore::isReadOnly() const { return m_backend && m_backend->isReadOnly(); }
OrvexArchiveLocation OrvexArchiveStore::location() const { return m_location; }
QString OrvexArchiveStore::folder() const { return m_location.toString(); }
OrvexArchiveStore::Dialect OrvexArchiveStore::dialect() const { return m_backend->dialect(); }
bool OrvexArchiveStore::isServer() const { return m_location.isServer(); }
OrvexArchiveBackend &OrvexArchiveStore::backend() const { return *m_backend; }

QString OrvexArchiveStore::operatingSystemUser()
{
    for (const char *variable : {"USER", "LOGNAME"}) {
        const QString value = qEnvironmentVariable(variable).trimmed();
        if (!value.isEmpty())
            return value;
    }
    if (const passwd *entry = getpwuid(geteuid()))
        return QString::fromLocal8Bit(entry->pw_name);
    return QStringLiteral("user");
}

QVariant OrvexArchiveStore::text(const QString &value)
{
    return value.isNull() ? QVariant(QLatin1String("")) : QVariant(value);
}

QString OrvexArchiveStore::sha256Hex(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

QString OrvexArchiveStore::passwordHash(const QString &user, const QString &password)
{
    return sha256Hex((user + QLatin1Char('\n') + password).toUtf8());
}

QString OrvexArchiveStore::connectionName() const
{
    return m_connectionPrefix + QString::number(threadSerial());
}

QSqlDatabase OrvexArchiveStore::database(QString *error)
{
    if (!m_open) {
        if (error)
            *error = tr("The archive is not open");
        return {};
    }
    const QString name = connectionName();
    if (QSqlDatabase::contains(name)) {
        {
            QSqlDatabase db = QSqlDatabase::database(name, false);
            if (db.isOpen() && m_backend->isAlive(db))
                return db;
        }
        // A server that went away (and may be back): a new session.
        QSqlDatabase::removeDatabase(name);
    }
    QString openError;
    QSqlDatabase db = m_backend->connect(name, false, openError);
    {
        QMutexLocker locker(&m_connectionsMutex);
        m_connections.insert(name);
    }
    if (!t_connections.names.contains(name))
        t_connections.names << name;
    if (!db.isOpen() && error)
        *error = openError;
    return db;
}

QSharedPointer<OrvexArchiveStore> OrvexArchiveStore::shared(const QString &location, bool createSample, QString *error)
{
    QString parseError;
    const OrvexArchiveLocation parsed = OrvexArchiveLocation::parse(location, &parseError);
    if (parsed.kind() == OrvexArchiveLocation::Kind::None) {
        if (error)
            *error = parseError;
        return {};
    }
    return shared(parsed, createSample, error);
}

QSharedPointer<OrvexArchiveStore> OrvexArchiveStore::shared(const OrvexArchiveLocation &location, bool createSample,
                                                            QString *error)
{
    static QMutex mutex;
    static QHash<QString, QWeakPointer<OrvexArchiveStore>> stores;
    QMutexLocker locker(&mutex);
    // On a server, each user works through a store of its own: its own role.
    const QString key = location.isServer() ? location.withUser(location.effectiveUser()).toString()
                                            : location.toString();
    QSharedPointer<OrvexArchiveStore> store = stores.value(key).toStrongRef();
    if (store && store->isOpen())
        return store;
    store.reset(new OrvexArchiveStore);
    if (!store->open(location, createSample, error))
        return {};
    stores.insert(key, store);
    // Whoever opens an archive shows its texts (the clients' errors, the card of an unreadable document).
    static bool translated = OrvexArchiveTranslations::install();
    Q_UNUSED(translated)
    return store;
}

bool OrvexArchiveStore::open(const OrvexArchiveLocation &location, bool createSample, QString *error)
{
    m_renderAhead.reset();
    closeAll();
    QString message;
    if (openLocation(location, createSample, message))
        return true;
    // Connections go only after the last QSqlDatabase handle of openLocation is gone.
    closeAll();
    m_location = OrvexArchiveLocation();
    if (error)
        *error = message;
    return false;
}

bool OrvexArchiveStore::openLocation(const OrvexArchiveLocation &location, bool createSample, QString &error)
{
    if (location.kind() == OrvexArchiveLocation::Kind::None) {
        error = tr("No archive folder given");
        return false;
    }
    m_location = location;
    m_backend = OrvexArchiveBackend::create(location);
    m_backend->setConnectionProvider([this](QString &connectError) { return database(&connectError); });
    bool isNew = false;
    if (!m_backend->prepare(createSample, isNew, error))
        return false;
    {
        const QString name = connectionName();
        QSqlDatabase db = m_backend->connect(name, isNew, error);
        {
            QMutexLocker locker(&m_connectionsMutex);
            m_connections.insert(name);
        }
        if (!t_connections.names.contains(name))
            t_connections.names << name;
        if (!db.isOpen())
            return false;
    }
    m_open = true;
    bool fresh = false;
    if (!migrate(fresh, error))
        return false;
    bool limited = false;
    const qint64 limit = setting(QString::fromLatin1(ImageCacheSetting)).toLongLong(&limited);
    m_backend->setImageCacheLimit(limited && limit > 0 ? limit : OrvexArchiveBackend::DefaultImageCacheLimit);
    m_renderAhead = std::make_unique<OrvexRenderAhead>(*this);
    if (fresh && createSample && !OrvexSampleArchive::create(*this, &error)) {
        error = tr("Cannot create the sample archive: %1").arg(error);
        return false;
    }
    return true;
}

bool OrvexArchiveStore::migrate(bool &fresh, QString &error)
{
    fresh = false;
    QSqlDatabase db = database(&error);
    if (!db.isOpen())
        return false;
    QStringList tables;
    if (!m_backend->tables(db, tables, error))
        return false;
    const auto readVersion = [&](QSqlDatabase &on, const QStringList &names, int &version, QString &readError) {
        version = 0;
        if (!names.contains(QStringLiteral("schema_version"))) {
            if (!names.isEmpty()) {
                readError = tr("%1 is not an archive database (no schema version)").arg(folder());
                return false;
            }
            return true;
        }
        QSqlQuery query(on);
        if (!query.exec(QStringLiteral("SELECT MAX(version) FROM schema_version")) || !query.next()) {
            readError = tr("The archive database %1 is damaged: %2").arg(folder(), OrvexStorageError::ofQuery(query));
            return false;
        }
        version = query.value(0).toInt();
        if (version > OrvexArchiveSchema::version()) {
            readError = tr("The archive database %1 has schema version %2; this program knows only up to %3")
                            .arg(folder()).arg(version).arg(OrvexArchiveSchema::version());
            return false;
        }
        return true;
    };
    int version = 0;
    if (!readVersion(db, tables, version, error))
        return false;
    if (version == OrvexArchiveSchema::version())
        return true;
    const auto changesLeft = [&] {
        for (int step = version; step < OrvexArchiveSchema::version(); ++step)
            if (!OrvexArchiveSchema::step(step, m_backend->dialect()).isEmpty())
                return true;
        return false;
    };
    // Steps that change nothing on this engine need not be recorded to read it.
    if (isReadOnly() && version > 0 && !changesLeft())
        return true;
    if (isReadOnly()) {
        error = tr("The archive %1 is read-only and needs an upgrade to schema version %2 before it can be opened.")
                    .arg(QDir::toNativeSeparators(folder())).arg(OrvexArchiveSchema::version());
        return false;
    }

    return write([&](QSqlDatabase &tx, QString &stepError) {
        // Another process may have set up the archive meanwhile.
        QStringList names;
        int from = 0;
        if (!m_backend->lockSchema(tx, stepError) || !m_backend->tables(tx, names, stepError)
            || !readVersion(tx, names, from, stepError))
            return false;
        QSqlQuery query(tx);
        if (from == 0 && !exec(query, QStringLiteral("CREATE TABLE schema_version(version INTEGER NOT NULL)"), stepError))
            return false;
        for (int step = from; step < OrvexArchiveSchema::version(); ++step) {
            for (const QString &sql : OrvexArchiveSchema::step(step, m_backend->dialect()))
                if (!exec(query, sql, stepError))
                    return false;
            query.prepare(QStringLiteral("INSERT INTO schema_version(version) VALUES (?)"));
            query.addBindValue(step + 1);
            if (!exec(query, stepError))
                return false;
        }
        // A new archive gets what every archive holds.
        fresh = from == 0;
        return !fresh || OrvexSampleArchive::seed(tx, stepError);
    }, &error, tr("the archive was not upgraded"));
}

bool OrvexArchiveStore::write(const std::function<bool(QSqlDatabase &, QString &)> &work, QString *error,
                              const QString &notStored)
{
    const auto fail = [&](const QString &reason) {
        if (error)
            *error = notStored.isEmpty() ? reason : OrvexStorageError::describe(reason, notStored);
        return false;
    };
    if (isReadOnly())
        return fail(OrvexStorageError::readOnly());
    QString message;
    QSqlDatabase db = database(&message);
    if (!db.isOpen())
        return fail(message.isEmpty() ? tr("The archive is not open") : message);
    // A file database takes one writer at a time inside this process; other
    // processes (and a server's other sessions) are held off by the database.
    std::unique_ptr<QMutexLocker> locker;
    if (m_backend->serializesWrites())
        locker = std::make_unique<QMutexLocker>(&m_writeMutex);
    QSqlQuery control(db);
    if (!exec(control, m_backend->beginWrite(), message))
        return fail(message);
    bool ok = m_backend->startWrite(db, message) && work(db, message);
    if (ok)
        m_backend->writeDone(db);
    if (ok && !exec(control, QStringLiteral("COMMIT"), message))
        ok = false;
    if (!ok) {
        QString ignored;
        exec(control, QStringLiteral("ROLLBACK"), ignored);
    }
    m_backend->endWrite(ok);
    return ok || fail(message.isEmpty() ? tr("The change was refused") : message);
}

QString OrvexArchiveStore::setting(const QString &key, const QString &fallback)
{
    QSqlDatabase db = database();
    if (!db.isOpen())
        return fallback;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT value FROM settings WHERE key = ?"));
    query.addBindValue(key);
    if (query.exec() && query.next())
        return query.value(0).toString();
    return fallback;
}

QString OrvexArchiveStore::rolesOfUser()
{
    return QStringLiteral(
        "WITH RECURSIVE my_roles(role) AS ("
        " SELECT id FROM roles WHERE id = ? AND kind = 'user'"
        " UNION SELECT role_members.role_id FROM role_members JOIN my_roles ON role_members.member_id = my_roles.role) ");
}

QSet<QString> OrvexArchiveStore::rolesOf(const QString &user)
{
    QSet<QString> roles;
    QSqlDatabase db = database();
    if (!db.isOpen() || user.isEmpty())
        return roles;
    QSqlQuery query(db);
    query.prepare(rolesOfUser() + QStringLiteral("SELECT role FROM my_roles"));
    query.addBindValue(user);
    if (!query.exec())
        return roles;
    while (query.next())
        roles.insert(query.value(0).toString());
    return roles;
}

bool OrvexArchiveStore::isUser(const QString &user)
{
    QSqlDatabase db = database();
    if (!db.isOpen())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT 1 FROM roles WHERE id = ? AND kind = 'user'"));
    query.addBindValue(user);
    return query.exec() && query.next();
}

bool OrvexArchiveStore::documentExists(qlonglong docId)
{
    QSqlDatabase db = database();
    if (!db.isOpen())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT 1 FROM documents WHERE id = ?"));
    query.addBindValue(docId);
    return query.exec() && query.next();
}

bool OrvexArchiveStore::mayRead(const QString &user, qlonglong docId)
{
    QSqlDatabase db = database();
    if (!db.isOpen() || user.isEmpty())
        return false;
    QSqlQuery query(db);
    query.prepare(rolesOfUser()
                  + QStringLiteral("SELECT 1 FROM documents d WHERE d.id = ? AND EXISTS (SELECT 1 FROM my_roles) "
                                   "AND (d.read_role IS NULL OR d.read_role IN (SELECT role FROM my_roles))"));
    query.addBindValue(user);
    query.addBindValue(docId);
    return query.exec() && query.next();
}

bool OrvexArchiveStore::checkPassword(const QString &user, const QString &password)
{
    QSqlDatabase db = database();
    if (!db.isOpen())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT password_hash FROM roles WHERE id = ? AND kind = 'user'"));
    query.addBindValue(user);
    return query.exec() && query.next() && query.value(0).toString() == passwordHash(user, password);
}

bool OrvexArchiveStore::ensureUser(const QString &user, QString *error)
{
    if (user.trimmed().isEmpty() || user.contains(QChar(0xFEFF))) {
        if (error)
            *error = tr("Invalid user name");
        return false;
    }
    if (isServer() || isUser(user))
        return true;
    const QString password = setting(QStringLiteral("local_password"));
    return write([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery query(db);
        query.prepare(QStringLiteral("INSERT INTO roles(id, kind, display_name, password_hash) VALUES (?, 'user', ?, ?)"));
        query.addBindValue(user);
        query.addBindValue(user);
        query.addBindValue(passwordHash(user, password));
        if (!exec(query, stepError))
            return false;
        QSqlQuery member(db);
        member.prepare(QStringLiteral("INSERT INTO role_members(role_id, member_id) "
                                      "SELECT 'tavloUSER', ? WHERE EXISTS (SELECT 1 FROM roles WHERE id = 'tavloUSER') "
                                      "ON CONFLICT DO NOTHING"));
        member.addBindValue(user);
        return exec(member, stepError);
    }, error, tr("the user %1 was not added").arg(user));
}

void OrvexArchiveStore::undoFiles(const FileChanges &changes)
{
    m_backend->undoFiles(changes.written, changes.moved);
}

bool OrvexArchiveStore::readContent(const QString &path, Content &content, QString &error)
{
    content = Content();
    if (!OrvexPdfTools::inspect(path, content.inspection, error))
        return false;
    content.sha256 = OrvexContentHash::ofFile(path, error);
    content.size = QFileInfo(path).size();
    return !content.sha256.isEmpty();
}

qlonglong OrvexArchiveStore::importFile(QSqlDatabase &db, const QString &sourcePath, const ImportOptions &options,
                                        qlonglong newVersionOf, FileChanges &changes, QString &error)
{
    Content content;
    if (!readContent(sourcePath, content, error))
        return 0;
    return importContent(db, sourcePath, content, options, newVersionOf, changes, error);
}

qlonglong OrvexArchiveStore::importContent(QSqlDatabase &db, const QString &sourcePath, const Content &content,
                                           const ImportOptions &options, qlonglong newVersionOf,
                                           FileChanges &changes, QString &error)
{
    const OrvexPdfTools::Inspection &inspection = content.inspection;
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    qlonglong docId = newVersionOf;
    int version = 1;
    if (newVersionOf > 0) {
        QSqlQuery current(db);
        current.prepare(QStringLiteral("SELECT current_version FROM documents WHERE id = ?"));
        current.addBindValue(newVersionOf);
        if (!exec(current, error))
            return 0;
        if (!current.next()) {
            error = tr("Unknown document %1").arg(newVersionOf);
            return 0;
        }
        version = current.value(0).toInt() + 1;
        current.finish();
        QSqlQuery update(db);
        update.prepare(QStringLiteral("UPDATE documents SET current_version = ? WHERE id = ?"));
        update.addBindValue(version);
        update.addBindValue(newVersionOf);
        if (!exec(update, error))
            return 0;
    } else {
        qlonglong docsId = 0;
        if (!m_backend->nextDocumentNumbers(db, docId, docsId, error))
            return 0;
        const QString title = options.title.trimmed().isEmpty() ? QFileInfo(sourcePath).completeBaseName()
                                                                : options.title.trimmed();
        QString fileName = options.fileName.trimmed().isEmpty() ? QFileInfo(sourcePath).fileName()
                                                                : options.fileName.trimmed();
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral(
            "INSERT INTO documents(id, docs_id, type_key, status_key, title, file_name, doc_date, "
            "current_version, read_role, owner, created) VALUES (?, ?, ?, ?, ?, ?, ?, 1, ?, ?, ?)"));
        insert.addBindValue(docId);
        insert.addBindValue(docsId);
        insert.addBindValue(options.typeKey.isEmpty() ? QVariant(QVariant::String) : QVariant(options.typeKey));
        insert.addBindValue(options.statusKey.isEmpty() ? QVariant(QVariant::String) : QVariant(options.statusKey));
        insert.addBindValue(title);
        insert.addBindValue(fileName);
        insert.addBindValue(options.date.isEmpty() ? QDate::currentDate().toString(Qt::ISODate) : options.date);
        insert.addBindValue(options.readRole.isEmpty() ? QVariant(QVariant::String) : QVariant(options.readRole));
        insert.addBindValue(options.owner);
        insert.addBindValue(now);
        if (!exec(insert, error))
            return 0;
    }

    const QString suffix = QFileInfo(sourcePath).suffix().toLower();
    const QString relative = QStringLiteral("%1/v%2%3").arg(docId).arg(version)
                                 .arg(suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
    if (options.uploadFile.isEmpty()
        && !m_backend->storeFile(db, Area::Files, relative, docId, sourcePath, changes.written, error))
        return 0;

    QSqlQuery versionRow(db);
    versionRow.prepare(QStringLiteral("INSERT INTO versions(doc_id, version, file, size, sha256, pages, created) "
                                      "VALUES (?, ?, ?, ?, ?, ?, ?)"));
    versionRow.addBindValue(docId);
    versionRow.addBindValue(version);
    versionRow.addBindValue(relative);
    versionRow.addBindValue(content.size);
    versionRow.addBindValue(content.sha256);
    versionRow.addBindValue(inspection.pages);
    versionRow.addBindValue(now);
    if (!exec(versionRow, error))
        return 0;

    QSqlQuery pageRow(db);
    pageRow.prepare(QStringLiteral("INSERT INTO page_hashes(doc_id, version, page, hash) VALUES (?, ?, ?, ?)"));
    for (int page = 0; page < inspection.pageHashes.size(); ++page) {
        pageRow.addBindValue(docId);
        pageRow.addBindValue(version);
        pageRow.addBindValue(page);
        pageRow.addBindValue(inspection.pageHashes.at(page));
        if (!exec(pageRow, error))
            return 0;
    }

    // The full text always follows the current version.
    QSqlQuery title(db);
    title.prepare(QStringLiteral("SELECT title FROM documents WHERE id = ?"));
    title.addBindValue(docId);
    if (!exec(title, error) || !title.next()) {
        error = tr("Document %1 vanished during the import").arg(docId);
        return 0;
    }
    const QString titleText = title.value(0).toString();
    title.finish();
    if (!m_backend->indexText(db, docId, titleText, inspection.text, error))
        return 0;

    if (!options.uploadFile.isEmpty()
        && !m_backend->moveFile(db, Area::Uploads, options.uploadFile, Area::Files, relative, docId, changes.moved,
                                error))
        return 0;
    return docId;
}

bool OrvexArchiveStore::readUpload(const QString &uploadId, const QString &owner, Upload &upload, QString &error)
{
    upload = Upload();
    QSqlDatabase db = database(&error);
    if (!db.isOpen())
        return false;
    QSqlQuery row(db);
    row.prepare(QStringLiteral("SELECT file, original_name, size, sha256, pages, body FROM uploads "
                               "WHERE id = ? AND owner = ?"));
    row.addBindValue(uploadId);
    row.addBindValue(owner);
    if (!exec(row, error) || !row.next())
        return false;
    upload.file = row.value(0).toString();
    upload.originalName = row.value(1).toString();
    upload.content.size = row.value(2).toLongLong();
    upload.content.sha256 = row.value(3).toString();
    upload.inspected = !row.value(4).isNull();
    if (!upload.inspected)
        return true;
    OrvexPdfTools::Inspection &inspection = upload.content.inspection;
    inspection.pages = row.value(4).toInt();
    inspection.text = row.value(5).toString();
    row.finish();
    QSqlQuery pages(db);
    pages.prepare(QStringLiteral("SELECT hash FROM upload_pages WHERE upload = ? ORDER BY page"));
    pages.addBindValue(uploadId);
    if (!exec(pages, error))
        return false;
    while (pages.next())
        inspection.pageHashes << pages.value(0).toByteArray();
    return true;
}

bool OrvexArchiveStore::saveUploadInspection(const QString &uploadId, const OrvexPdfTools::Inspection &inspection,
                                             QString *error)
{
    return write([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery update(db);
        update.prepare(QStringLiteral("UPDATE uploads SET pages = ?, body = ? WHERE id = ?"));
        update.addBindValue(inspection.pages);
        update.addBindValue(text(inspection.text));
        update.addBindValue(uploadId);
        if (!exec(update, stepError))
            return false;
        if (update.numRowsAffected() != 1) {
            stepError = tr("Unknown upload %1").arg(uploadId);
            return false;
        }
        QSqlQuery clear(db);
        clear.prepare(QStringLiteral("DELETE FROM upload_pages WHERE upload = ?"));
        clear.addBindValue(uploadId);
        if (!exec(clear, stepError))
            return false;
        QSqlQuery page(db);
        page.prepare(QStringLiteral("INSERT INTO upload_pages(upload, page, hash) VALUES (?, ?, ?)"));
        for (int i = 0; i < inspection.pageHashes.size(); ++i) {
            page.addBindValue(uploadId);
            page.addBindValue(i);
            page.addBindValue(inspection.pageHashes.at(i));
            if (!exec(page, stepError))
                return false;
        }
        return true;
    }, error, tr("the duplicate check was not stored"));
}

std::unique_ptr<QIODevice> OrvexArchiveStore::openFile(Area area, const QString &name, QString &error)
{
    if (!database(&error).isOpen())
        return {};
    return m_backend->openFile(area, name, error);
}

std::unique_ptr<OrvexArchiveBackend::Sink> OrvexArchiveStore::createFile(Area area, const QString &name,
                                                                       OrvexArchiveBackend::Completion completion,
                                                                       QString &error)
{
    if (!database(&error).isOpen())
        return {};
    return m_backend->createFile(area, name, std::move(completion),
                                 [this](const OrvexArchiveBackend::Completion &work, QString &writeError) {
                                     return write(work, &writeError);
                                 },
                                 error);
}

bool OrvexArchiveStore::localFile(Area area, const QString &name, OrvexArchiveBackend::LocalFile &file,
                                  QString &error)
{
    if (!database(&error).isOpen())
        return false;
    return m_backend->localFile(area, name, file, error);
}

QString OrvexArchiveStore::mimeType(Area area, const QString &name)
{
    const QMimeDatabase types;
    const QMimeType byName = types.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    if (!byName.isDefault())
        return byName.name();
    return types.mimeTypeForFileNameAndData(name, m_backend->head(area, name, 4096)).name();
}

bool OrvexArchiveStore::removeDocument(QSqlDatabase &db, qlonglong docId, QStringList &afterCommit, QString &error)
{
    QSqlQuery files(db);
    files.prepare(QStringLiteral("SELECT file FROM versions WHERE doc_id = ?"));
    files.addBindValue(docId);
    if (!exec(files, error))
        return false;
    QStringList names;
    while (files.next())
        names << files.value(0).toString();
    files.finish();
    if (!m_backend->removeText(db, docId, error))
        return false;
    for (const QString &sql : {QStringLiteral("DELETE FROM page_hashes WHERE doc_id = ?"),
                               QStringLiteral("DELETE FROM documents WHERE id = ?")}) {
        QSqlQuery query(db);
        query.prepare(sql);
        query.addBindValue(docId);
        if (!exec(query, error))
            return false;
    }
    return m_backend->removeFiles(db, Area::Files, names, afterCommit, error);
}

void OrvexArchiveStore::afterRemoval(qlonglong docId, const QStringList &afterCommit)
{
    m_backend->removeAfterCommit(afterCommit);
    m_backend->forgetDocument(docId);
}

void OrvexArchiveStore::watchChanges()
{
    if (m_watcher || !m_open)
        return;
    m_watcher = m_backend->watch(
        [this](int topics) {
            emit changedElsewhere(topics);
            if (topics & OrvexArchiveBackend::Documents)
                emit documentsChanged();
        },
        nullptr);
}

void OrvexArchiveStore::renderAhead(const QList<qlonglong> &docIds)
{
    if (m_renderAhead && !isReadOnly())
        m_renderAhead->render(docIds);
}

void OrvexArchiveStore::cacheLater(const OrvexArchiveBackend::ImageKey &key, const QString &stored,
                                   const QImage &image)
{
    if (m_renderAhead && !isReadOnly())
        m_renderAhead->cache(key, stored, image);
}

bool OrvexArchiveStore::waitForRenderAhead(int msecs)
{
    return !m_renderAhead || m_renderAhead->waitForDone(msecs);
}
