#include "orvexarchivestore.h"

#include "orvexarchivetranslations.h"
#include "orvexcontenthash.h"
#include "orvexpdftools.h"
#include "orvexsamplearchive.h"
#include "orvexsqlhelpers.h"
#include "orvexstorageerror.h"

#include <QAtomicInteger>
#include <QCryptographicHash>
#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QUrl>
#include <QUuid>
#include <QVariant>

#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

namespace {
const QString kDatabaseFile = QStringLiteral("archive.sqlite");

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

QAtomicInteger<quint64> g_nextStore{1};

using OrvexSql::exec;

bool execText(QSqlDatabase &db, const QString &sql, QString &error)
{
    QSqlQuery query(db);
    if (query.exec(sql))
        return true;
    error = OrvexStorageError::ofQuery(query);
    return false;
}

// Whether this process can change the archive in folder: whether it can create
// a file there, and open the database for writing. Asking the file system, not
// the permission bits, gives the truth for root and for read-only mounts alike.
struct Writability
{
    bool folder = false;
    bool database = false;
};

Writability probeWriting(const QString &folder, const QString &database)
{
    Writability result;
    const QByteArray probe = QFile::encodeName(folder + QStringLiteral("/.orvex-write-probe-%1").arg(::getpid()));
    const int created = ::open(probe.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (created >= 0) {
        ::close(created);
        ::unlink(probe.constData());
        result.folder = true;
    }
    const int opened = ::open(QFile::encodeName(database).constData(), O_RDWR | O_CLOEXEC);
    if (opened >= 0) {
        ::close(opened);
        result.database = true;
    }
    return result;
}

// Copies a file into the archive and makes the copy durable; false with the
// operating system's reason, and no copy left behind.
bool storeCopy(const QString &from, const QString &to, QString *reason)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) {
        *reason = source.errorString();
        return false;
    }
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        *reason = target.errorString();
        return false;
    }
    const auto abandon = [&](const QString &why) {
        *reason = why;
        target.close();
        target.remove();
        return false;
    };
    QByteArray buffer(256 * 1024, Qt::Uninitialized);
    for (;;) {
        const qint64 read = source.read(buffer.data(), buffer.size());
        if (read < 0)
            return abandon(source.errorString());
        if (read == 0)
            break;
        QString why;
        if (!OrvexArchiveStore::writeFully(target, buffer.constData(), read, &why))
            return abandon(why);
    }
    if (::fsync(target.handle()) != 0)
        return abandon(OrvexStorageError::ofErrno(errno));
    return true;
}

// Each step brings the schema from version index to index + 1.
const QList<QStringList> &migrations()
{
    static const QList<QStringList> steps{
        {
            QStringLiteral("CREATE TABLE settings(key TEXT PRIMARY KEY, value TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE roles(id TEXT PRIMARY KEY, "
                           "kind TEXT NOT NULL CHECK(kind IN ('user','group','system','directory')), "
                           "display_name TEXT NOT NULL, password_hash TEXT)"),
            QStringLiteral("CREATE TABLE role_members(role_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
                           "member_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
                           "PRIMARY KEY(role_id, member_id))"),
            QStringLiteral("CREATE TABLE doc_types(key TEXT PRIMARY KEY, name TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE doc_statuses(key TEXT PRIMARY KEY, name TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE documents(id INTEGER PRIMARY KEY, docs_id INTEGER NOT NULL UNIQUE, "
                           "type_key TEXT REFERENCES doc_types(key), status_key TEXT REFERENCES doc_statuses(key), "
                           "title TEXT NOT NULL, file_name TEXT NOT NULL, doc_date TEXT NOT NULL, "
                           "current_version INTEGER NOT NULL, read_role TEXT REFERENCES roles(id), "
                           "owner TEXT NOT NULL DEFAULT '', created TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE versions(doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
                           "version INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL, "
                           "sha256 TEXT NOT NULL, pages INTEGER NOT NULL, created TEXT NOT NULL, "
                           "PRIMARY KEY(doc_id, version))"),
            QStringLiteral("CREATE INDEX versions_sha256 ON versions(sha256)"),
            QStringLiteral("CREATE TABLE page_hashes(doc_id INTEGER NOT NULL, version INTEGER NOT NULL, "
                           "page INTEGER NOT NULL, hash BLOB NOT NULL, PRIMARY KEY(doc_id, version, page), "
                           "FOREIGN KEY(doc_id, version) REFERENCES versions(doc_id, version) ON DELETE CASCADE)"),
            QStringLiteral("CREATE VIRTUAL TABLE doc_text USING fts5(title, body)"),
            QStringLiteral("CREATE TABLE clipboards(uuid TEXT PRIMARY KEY, name TEXT NOT NULL, "
                           "owner TEXT NOT NULL, created TEXT NOT NULL)"),
            QStringLiteral("CREATE TABLE clipboard_entries(clipboard TEXT NOT NULL REFERENCES clipboards(uuid) ON DELETE CASCADE, "
                           "docs_id INTEGER NOT NULL, doc_id INTEGER NOT NULL REFERENCES documents(id) ON DELETE CASCADE, "
                           "note TEXT NOT NULL DEFAULT '', position INTEGER NOT NULL, PRIMARY KEY(clipboard, docs_id))"),
            QStringLiteral("CREATE INDEX clipboard_entries_docs ON clipboard_entries(docs_id)"),
            QStringLiteral("CREATE TABLE clipboard_rights(clipboard TEXT NOT NULL REFERENCES clipboards(uuid) ON DELETE CASCADE, "
                           "role_id TEXT NOT NULL REFERENCES roles(id) ON DELETE CASCADE, "
                           "mode TEXT NOT NULL CHECK(mode IN ('R','W')), PRIMARY KEY(clipboard, role_id))"),
            QStringLiteral("CREATE TABLE uploads(id TEXT PRIMARY KEY, owner TEXT NOT NULL, file TEXT NOT NULL, "
                           "original_name TEXT NOT NULL, size INTEGER NOT NULL, sha256 TEXT NOT NULL, created TEXT NOT NULL)"),
        },
        // The duplicate check's inspection of an upload, kept for its commit:
        // pages stays NULL until the check has run.
        {
            QStringLiteral("ALTER TABLE uploads ADD COLUMN pages INTEGER"),
            QStringLiteral("ALTER TABLE uploads ADD COLUMN body TEXT"),
            QStringLiteral("CREATE TABLE upload_pages(upload TEXT NOT NULL REFERENCES uploads(id) ON DELETE CASCADE, "
                           "page INTEGER NOT NULL, hash BLOB NOT NULL, PRIMARY KEY(upload, page))"),
        },
    };
    return steps;
}
} // namespace

OrvexArchiveStore::OrvexArchiveStore(QObject *parent)
    : QObject(parent)
    , m_connectionPrefix(QStringLiteral("orvexarchive-%1-").arg(g_nextStore.fetchAndAddOrdered(1)))
{
}

OrvexArchiveStore::~OrvexArchiveStore()
{
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

QString OrvexArchiveStore::folder() const { return m_folder; }
bool OrvexArchiveStore::isReadOnly() const { return m_readOnly; }
bool OrvexArchiveStore::isOpen() const { return m_open; }
QString OrvexArchiveStore::databasePath() const { return m_folder + QLatin1Char('/') + kDatabaseFile; }
QString OrvexArchiveStore::filesPath() const { return m_folder + QStringLiteral("/files"); }
QString OrvexArchiveStore::cachePath() const { return m_folder + QStringLiteral("/cache"); }
QString OrvexArchiveStore::uploadsPath() const { return m_folder + QStringLiteral("/uploads"); }

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

QSqlDatabase OrvexArchiveStore::connect(const QString &name, bool create, QString &error)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    {
        QMutexLocker locker(&m_connectionsMutex);
        m_connections.insert(name);
    }
    // Only the first connection may create the file; later ones must find it, so
    // that a database removed behind our back is reported instead of recreated.
    // A read-only archive is opened for reading only; in a folder where the
    // database's shared-memory file cannot be made, it is opened as immutable,
    // which needs no such file (the log of a writer that did not finish, if
    // any, is still read).
    QString mode = create ? QStringLiteral("?mode=rwc") : QStringLiteral("?mode=rw");
    if (m_readOnly) {
        mode = QStringLiteral("?mode=ro");
        const QFileInfo log(databasePath() + QStringLiteral("-wal"));
        if (!m_folderWritable && (!log.exists() || log.size() == 0))
            mode += QStringLiteral("&immutable=1");
    }
    db.setDatabaseName(QUrl::fromLocalFile(databasePath()).toString(QUrl::FullyEncoded) + mode);
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=15000"));
    if (!db.open()) {
        error = tr("Cannot open the archive database %1: %2")
                    .arg(QDir::toNativeSeparators(databasePath()), OrvexStorageError::ofDatabase(db, db.lastError()));
        return db;
    }
    // A commit returns once the archive's data is on the disk, so that a
    // power cut cannot take back a change that was reported as stored.
    QString pragmaError;
    if (!execText(db, QStringLiteral("PRAGMA foreign_keys = ON"), pragmaError)
        || !execText(db, QStringLiteral("PRAGMA synchronous = FULL"), pragmaError)) {
        error = tr("%1 is not an archive database or is damaged: %2")
                    .arg(QDir::toNativeSeparators(databasePath()), pragmaError);
        db.close();
    }
    return db;
}

QSqlDatabase OrvexArchiveStore::database(QString *error)
{
    if (!m_open) {
        if (error)
            *error = QStringLiteral("The archive is not open");
        return {};
    }
    const QString name = m_connectionPrefix + QString::number(threadSerial());
    if (QSqlDatabase::contains(name)) {
        QSqlDatabase db = QSqlDatabase::database(name, false);
        if (db.isOpen())
            return db;
    }
    QString openError;
    QSqlDatabase db = connect(name, false, openError);
    if (!db.isOpen() && error)
        *error = openError;
    return db;
}

QSharedPointer<OrvexArchiveStore> OrvexArchiveStore::shared(const QString &folder, bool createSample, QString *error)
{
    static QMutex mutex;
    static QHash<QString, QWeakPointer<OrvexArchiveStore>> stores;
    QMutexLocker locker(&mutex);
    const QString key = folder.trimmed().isEmpty() ? QString() : QDir::cleanPath(QDir(folder).absolutePath());
    QSharedPointer<OrvexArchiveStore> store = stores.value(key).toStrongRef();
    if (store && store->isOpen())
        return store;
    store.reset(new OrvexArchiveStore);
    if (!store->open(folder, createSample, error))
        return {};
    stores.insert(key, store);
    // Whoever opens an archive shows its texts (the clients' errors, the card of an unreadable document).
    static bool translated = OrvexArchiveTranslations::install();
    Q_UNUSED(translated)
    return store;
}

bool OrvexArchiveStore::open(const QString &folder, bool createSample, QString *error)
{
    closeAll();
    QString message;
    if (openFolder(folder, createSample, message))
        return true;
    // Connections go only after the last QSqlDatabase handle of openFolder is gone.
    closeAll();
    m_folder.clear();
    if (error)
        *error = message;
    return false;
}

bool OrvexArchiveStore::openFolder(const QString &folder, bool createSample, QString &error)
{
    if (folder.trimmed().isEmpty()) {
        error = QStringLiteral("No archive folder given");
        return false;
    }
    QDir dir(folder);
    m_folder = dir.absolutePath();
    if (QFileInfo(m_folder).exists() && !QFileInfo(m_folder).isDir()) {
        error = QStringLiteral("%1 is not a folder").arg(m_folder);
        return false;
    }
    const bool exists = QFileInfo::exists(databasePath());
    if (!exists) {
        if (dir.exists() && !dir.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            error = QStringLiteral("The archive database is missing: %1 holds files but no %2").arg(m_folder, kDatabaseFile);
            return false;
        }
        if (!QDir().mkpath(m_folder)) {
            error = OrvexStorageError::describe(OrvexStorageError::ofErrno(errno),
                                                tr("the archive folder %1 was not created").arg(QDir::toNativeSeparators(m_folder)));
            return false;
        }
    } else if (!QFileInfo(databasePath()).isFile()) {
        error = QStringLiteral("%1 is not a database file").arg(databasePath());
        return false;
    }
    m_readOnly = false;
    m_folderWritable = true;
    if (exists) {
        const Writability writable = probeWriting(m_folder, databasePath());
        m_readOnly = !writable.folder || !writable.database;
        m_folderWritable = writable.folder;
    }
    for (const QString &sub : {filesPath(), cachePath(), uploadsPath()}) {
        if (!m_readOnly && !QFileInfo(sub).isDir() && !QDir().mkpath(sub)) {
            error = OrvexStorageError::describe(OrvexStorageError::ofErrno(errno),
                                                tr("the folder %1 was not created").arg(QDir::toNativeSeparators(sub)));
            return false;
        }
    }

    {
        QSqlDatabase db = connect(m_connectionPrefix + QString::number(threadSerial()), !exists, error);
        if (!db.isOpen())
            return false;
        QString setupError;
        if (!exists && !execText(db, QStringLiteral("PRAGMA journal_mode = WAL"), setupError)) {
            error = QStringLiteral("Cannot set up the archive database: %1").arg(setupError);
            return false;
        }
        m_open = true;
        if (!migrate(db, error))
            return false;
    }
    if (!exists && !write(&OrvexSampleArchive::seed, &error)) {
        error = QStringLiteral("Cannot set up the new archive: %1").arg(error);
        return false;
    }
    if (!exists && createSample && !OrvexSampleArchive::create(*this, &error)) {
        error = QStringLiteral("Cannot create the sample archive: %1").arg(error);
        return false;
    }
    return true;
}

bool OrvexArchiveStore::migrate(QSqlDatabase &db, QString &error)
{
    // Something that is not an SQLite database fails on its first query.
    QSqlQuery probe(db);
    if (!probe.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"))) {
        error = tr("%1 is not an archive database: %2").arg(QDir::toNativeSeparators(databasePath()), OrvexStorageError::ofQuery(probe));
        return false;
    }
    QStringList tables;
    while (probe.next())
        tables << probe.value(0).toString();
    probe.finish();

    int version = 0;
    if (tables.contains(QStringLiteral("schema_version"))) {
        QSqlQuery query(db);
        if (!query.exec(QStringLiteral("SELECT MAX(version) FROM schema_version")) || !query.next()) {
            error = tr("The archive database %1 is damaged: %2").arg(QDir::toNativeSeparators(databasePath()), OrvexStorageError::ofQuery(query));
            return false;
        }
        version = query.value(0).toInt();
    } else if (!tables.isEmpty()) {
        error = QStringLiteral("%1 is not an archive database (no schema version)").arg(databasePath());
        return false;
    }
    if (version > migrations().size()) {
        error = QStringLiteral("The archive database %1 has schema version %2; this program knows only up to %3")
                    .arg(databasePath()).arg(version).arg(migrations().size());
        return false;
    }
    if (version == migrations().size())
        return true;
    if (m_readOnly) {
        error = tr("The archive %1 is read-only and needs an upgrade to schema version %2 before it can be opened.")
                    .arg(QDir::toNativeSeparators(m_folder)).arg(migrations().size());
        return false;
    }

    return write([&](QSqlDatabase &tx, QString &stepError) {
        if (version == 0 && !execText(tx, QStringLiteral("CREATE TABLE schema_version(version INTEGER NOT NULL)"), stepError))
            return false;
        for (int step = version; step < migrations().size(); ++step) {
            for (const QString &sql : migrations().at(step))
                if (!execText(tx, sql, stepError))
                    return false;
            QSqlQuery query(tx);
            query.prepare(QStringLiteral("INSERT INTO schema_version(version) VALUES (?)"));
            query.addBindValue(step + 1);
            if (!exec(query, stepError))
                return false;
        }
        return true;
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
    if (m_readOnly)
        return fail(OrvexStorageError::readOnly());
    QString message;
    QSqlDatabase db = database(&message);
    if (!db.isOpen())
        return fail(message.isEmpty() ? tr("The archive is not open") : message);
    // One writer at a time inside this process; other processes are held off by
    // the immediate transaction and the busy timeout.
    QMutexLocker locker(&m_writeMutex);
    if (!execText(db, QStringLiteral("BEGIN IMMEDIATE"), message))
        return fail(message);
    bool ok = work(db, message);
    if (ok && !execText(db, QStringLiteral("COMMIT"), message))
        ok = false;
    if (!ok) {
        QString ignored;
        execText(db, QStringLiteral("ROLLBACK"), ignored);
        return fail(message.isEmpty() ? tr("The change was refused") : message);
    }
    return true;
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

QSet<QString> OrvexArchiveStore::rolesOf(const QString &user)
{
    QSet<QString> roles;
    QSqlDatabase db = database();
    if (!db.isOpen() || user.isEmpty())
        return roles;
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "WITH RECURSIVE member_of(role) AS ("
        " SELECT id FROM roles WHERE id = ? AND kind = 'user'"
        " UNION SELECT role_members.role_id FROM role_members JOIN member_of ON role_members.member_id = member_of.role)"
        " SELECT role FROM member_of"));
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
    if (!db.isOpen())
        return false;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT read_role FROM documents WHERE id = ?"));
    query.addBindValue(docId);
    if (!query.exec() || !query.next())
        return false;
    const QSet<QString> roles = rolesOf(user);
    if (roles.isEmpty())
        return false;
    const QString readRole = query.value(0).toString();
    return readRole.isEmpty() || roles.contains(readRole);
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
            *error = QStringLiteral("Invalid user name");
        return false;
    }
    if (isUser(user))
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
        member.prepare(QStringLiteral("INSERT OR IGNORE INTO role_members(role_id, member_id) "
                                      "SELECT 'tavloUSER', ? WHERE EXISTS (SELECT 1 FROM roles WHERE id = 'tavloUSER')"));
        member.addBindValue(user);
        return exec(member, stepError);
    }, error, tr("the user %1 was not added").arg(user));
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
                                        qlonglong newVersionOf, QStringList &createdFiles, QString &error)
{
    Content content;
    if (!readContent(sourcePath, content, error))
        return 0;
    return importContent(db, sourcePath, content, options, newVersionOf, createdFiles, error);
}

qlonglong OrvexArchiveStore::importContent(QSqlDatabase &db, const QString &sourcePath, const Content &content,
                                           const ImportOptions &options, qlonglong newVersionOf,
                                           QStringList &createdFiles, QString &error)
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
            error = QStringLiteral("Unknown document %1").arg(newVersionOf);
            return 0;
        }
        version = current.value(0).toInt() + 1;
        QSqlQuery update(db);
        update.prepare(QStringLiteral("UPDATE documents SET current_version = ? WHERE id = ?"));
        update.addBindValue(version);
        update.addBindValue(newVersionOf);
        if (!exec(update, error))
            return 0;
    } else {
        QSqlQuery next(db);
        // Entry numbers of clipboard entries may have been given by a host; a new
        // document's own entry number must not take one of theirs.
        if (!next.exec(QStringLiteral("SELECT COALESCE(MAX(id), 1000) + 1, MAX(COALESCE(MAX(docs_id), 5000), "
                                      "(SELECT COALESCE(MAX(docs_id), 0) FROM clipboard_entries)) + 1 FROM documents"))
            || !next.next()) {
            error = OrvexStorageError::ofQuery(next);
            return 0;
        }
        docId = next.value(0).toLongLong();
        const qlonglong docsId = next.value(1).toLongLong();
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
    const QString target = filesPath() + QLatin1Char('/') + relative;
    if (!QDir().mkpath(QFileInfo(target).absolutePath())) {
        error = OrvexStorageError::ofErrno(errno);
        return 0;
    }
    QFile::remove(target);
    if (!options.moveSource) {
        if (!storeCopy(sourcePath, target, &error)) // the copy is gone again then
            return 0;
        createdFiles << target;
    }
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
        error = QStringLiteral("Document %1 vanished during the import").arg(docId);
        return 0;
    }
    QSqlQuery removeText(db);
    removeText.prepare(QStringLiteral("DELETE FROM doc_text WHERE rowid = ?"));
    removeText.addBindValue(docId);
    QSqlQuery addText(db);
    addText.prepare(QStringLiteral("INSERT INTO doc_text(rowid, title, body) VALUES (?, ?, ?)"));
    addText.addBindValue(docId);
    addText.addBindValue(title.value(0).toString());
    addText.addBindValue(inspection.text);
    if (!exec(removeText, error) || !exec(addText, error))
        return 0;

    if (options.moveSource) {
        if (::rename(QFile::encodeName(sourcePath).constData(), QFile::encodeName(target).constData()) != 0) {
            error = OrvexStorageError::ofErrno(errno);
            return 0;
        }
        createdFiles << target;
        syncFolder(QFileInfo(sourcePath).absolutePath());
    }
    // The file's name must be on the disk before the commit that points to it.
    syncFolder(QFileInfo(target).absolutePath());
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
    upload.path = uploadsPath() + QLatin1Char('/') + row.value(0).toString();
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
            stepError = QStringLiteral("Unknown upload %1").arg(uploadId);
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

bool OrvexArchiveStore::removeDocument(QSqlDatabase &db, qlonglong docId, QStringList &filesToRemove, QString &error)
{
    QSqlQuery files(db);
    files.prepare(QStringLiteral("SELECT file FROM versions WHERE doc_id = ?"));
    files.addBindValue(docId);
    if (!exec(files, error))
        return false;
    QStringList paths;
    while (files.next())
        paths << filesPath() + QLatin1Char('/') + files.value(0).toString();
    for (const QString &sql : {QStringLiteral("DELETE FROM doc_text WHERE rowid = ?"),
                               QStringLiteral("DELETE FROM page_hashes WHERE doc_id = ?"),
                               QStringLiteral("DELETE FROM documents WHERE id = ?")}) {
        QSqlQuery query(db);
        query.prepare(sql);
        query.addBindValue(docId);
        if (!exec(query, error))
            return false;
    }
    filesToRemove << paths;
    return true;
}

bool OrvexArchiveStore::writeFully(QFileDevice &file, const char *data, qint64 size, QString *reason)
{
    qint64 done = 0;
    while (done < size) {
        // A write that stops short (at a size limit, on a full disk) says
        // nothing; the next one fails with the system's reason.
        const qint64 written = file.write(data + done, size - done);
        if (written <= 0) {
            *reason = file.error() != QFileDevice::NoError ? file.errorString() : OrvexStorageError::ofErrno(errno);
            return false;
        }
        done += written;
    }
    return true;
}

bool OrvexArchiveStore::syncFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

bool OrvexArchiveStore::syncFolder(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

void OrvexArchiveStore::removeDocumentFiles(qlonglong docId, const QStringList &files)
{
    for (const QString &path : files)
        QFile::remove(path);
    QDir(filesPath()).rmdir(QString::number(docId));
    QDir(cachePath() + QStringLiteral("/thumbs/") + QString::number(docId)).removeRecursively();
}
