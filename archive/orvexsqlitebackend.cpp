#include "orvexsqlitebackend.h"

#include "orvexsqlhelpers.h"
#include "orvexstorageerror.h"

#include <QAtomicInteger>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTemporaryFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QTimer>
#include <QUrl>
#include <QVariant>
#include <QVector>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {
using OrvexSql::exec;

QAtomicInteger<quint64> g_nextWatcher{1};

bool execText(QSqlDatabase &db, const QString &sql, QString &error)
{
    QSqlQuery query(db);
    return exec(query, sql, error);
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
        if (!OrvexArchiveBackend::writeFully(target, buffer.constData(), read, &why))
            return abandon(why);
    }
    if (::fsync(target.handle()) != 0)
        return abandon(OrvexStorageError::ofErrno(errno));
    return true;
}

// One FTS5 expression from the user's term: alternatives joined by " OR ", each
// alternative's words must all appear (as word prefixes).
QString matchExpression(const QString &term)
{
    QStringList alternatives;
    for (const QString &alternative : term.split(QStringLiteral(" OR "))) {
        QStringList words;
        for (QString word : alternative.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            word.replace(QLatin1Char('"'), QStringLiteral("\"\""));
            words << QLatin1Char('"') + word + QStringLiteral("\"*");
        }
        if (!words.isEmpty())
            alternatives << QLatin1Char('(') + words.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return alternatives.join(QStringLiteral(" OR "));
}

// Notices commits of other processes: a change of the database files starts a
// look at the change counters; a slow timer looks as well, in case the
// system dropped a file event.
class Watcher final : public QObject
{
public:
    Watcher(OrvexSqliteBackend &backend, std::function<void(int)> onChange, QObject *parent)
        : QObject(parent)
        , m_backend(backend)
        , m_onChange(std::move(onChange))
        , m_connection(QStringLiteral("orvexarchive-watch-%1").arg(g_nextWatcher.fetchAndAddOrdered(1)))
    {
        QString error;
        QSqlDatabase db = m_backend.connect(m_connection, false, error);
        QHash<QString, qlonglong> now;
        if (db.isOpen() && OrvexSqliteBackend::readRevisions(db, now))
            m_backend.foreignChanges(now);
        m_settle.setSingleShot(true);
        m_settle.setInterval(40);
        QObject::connect(&m_settle, &QTimer::timeout, this, &Watcher::look);
        QObject::connect(&m_files, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
        QObject::connect(&m_files, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
        m_safety.setInterval(2000);
        QObject::connect(&m_safety, &QTimer::timeout, this, &Watcher::look);
        m_safety.start();
        follow();
    }
    ~Watcher() override
    {
        QSqlDatabase::removeDatabase(m_connection);
    }

private:
    // The log file comes and goes with the connections; the folder tells when.
    void follow()
    {
        const QString database = m_backend.databasePath();
        for (const QString &path : {m_backend.folder(), database, database + QStringLiteral("-wal")})
            if (QFileInfo::exists(path) && !m_files.files().contains(path) && !m_files.directories().contains(path))
                m_files.addPath(path);
    }

    void look()
    {
        follow();
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        QHash<QString, qlonglong> now;
        if (!db.isOpen() || !OrvexSqliteBackend::readRevisions(db, now))
            return;
        if (const int topics = m_backend.foreignChanges(now))
            m_onChange(topics);
    }

    OrvexSqliteBackend &m_backend;
    std::function<void(int)> m_onChange;
    const QString m_connection;
    QFileSystemWatcher m_files;
    QTimer m_settle;
    QTimer m_safety;
};
} // namespace

OrvexSqliteBackend::OrvexSqliteBackend(const QString &folder)
    : m_folder(folder)
{
}

OrvexSqliteBackend::~OrvexSqliteBackend() = default;

QString OrvexSqliteBackend::databasePath() const
{
    return m_folder + QLatin1Char('/') + QLatin1String(DatabaseFile);
}

QString OrvexSqliteBackend::areaPath(Area area) const
{
    return m_folder + (area == Area::Files ? QStringLiteral("/files") : QStringLiteral("/uploads"));
}

QString OrvexSqliteBackend::cachePath() const
{
    return m_folder + QStringLiteral("/cache");
}

bool OrvexSqliteBackend::prepare(bool createIfMissing, bool &isNew, QString &error)
{
    Q_UNUSED(createIfMissing) // a folder always gets an archive
    const QDir dir(m_folder);
    if (QFileInfo(m_folder).exists() && !QFileInfo(m_folder).isDir()) {
        error = QStringLiteral("%1 is not a folder").arg(m_folder);
        return false;
    }
    isNew = !QFileInfo::exists(databasePath());
    if (isNew) {
        if (dir.exists() && !dir.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            error = QStringLiteral("The archive database is missing: %1 holds files but no %2")
                        .arg(m_folder, QLatin1String(DatabaseFile));
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
    if (!isNew) {
        const Writability writable = probeWriting(m_folder, databasePath());
        m_readOnly = !writable.folder || !writable.database;
        m_folderWritable = writable.folder;
    }
    for (const QString &sub : {areaPath(Area::Files), cachePath(), areaPath(Area::Uploads)}) {
        if (!m_readOnly && !QFileInfo(sub).isDir() && !QDir().mkpath(sub)) {
            error = OrvexStorageError::describe(OrvexStorageError::ofErrno(errno),
                                                tr("the folder %1 was not created").arg(QDir::toNativeSeparators(sub)));
            return false;
        }
    }
    return true;
}

QSqlDatabase OrvexSqliteBackend::connect(const QString &name, bool create, QString &error)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
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
    if ((create && !execText(db, QStringLiteral("PRAGMA journal_mode = WAL"), pragmaError))
        || !execText(db, QStringLiteral("PRAGMA foreign_keys = ON"), pragmaError)
        || !execText(db, QStringLiteral("PRAGMA synchronous = FULL"), pragmaError)) {
        error = tr("%1 is not an archive database or is damaged: %2")
                    .arg(QDir::toNativeSeparators(databasePath()), pragmaError);
        db.close();
    }
    return db;
}

QString OrvexSqliteBackend::beginWrite() const
{
    // Takes the database's write lock at once: a transaction that reads first
    // and writes later could otherwise fail half-way when another writer came first.
    return QStringLiteral("BEGIN IMMEDIATE");
}

bool OrvexSqliteBackend::tables(QSqlDatabase &db, QStringList &names, QString &error)
{
    // Something that is not an SQLite database fails on its first query.
    QSqlQuery probe(db);
    if (!probe.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"))) {
        error = tr("%1 is not an archive database: %2").arg(QDir::toNativeSeparators(databasePath()), OrvexStorageError::ofQuery(probe));
        return false;
    }
    names.clear();
    while (probe.next())
        names << probe.value(0).toString();
    return true;
}

bool OrvexSqliteBackend::indexText(QSqlDatabase &db, qlonglong docId, const QString &title, const QString &body,
                                   QString &error)
{
    if (!removeText(db, docId, error))
        return false;
    QSqlQuery add(db);
    add.prepare(QStringLiteral("INSERT INTO doc_text(rowid, title, body) VALUES (?, ?, ?)"));
    add.addBindValue(docId);
    add.addBindValue(title);
    add.addBindValue(body.isNull() ? QString(QLatin1String("")) : body);
    return exec(add, error);
}

bool OrvexSqliteBackend::removeText(QSqlDatabase &db, qlonglong docId, QString &error)
{
    QSqlQuery remove(db);
    remove.prepare(QStringLiteral("DELETE FROM doc_text WHERE rowid = ?"));
    remove.addBindValue(docId);
    return exec(remove, error);
}

bool OrvexSqliteBackend::fullTextCondition(const QString &docIdColumn, const QString &term, bool fewDocuments,
                                           QString &condition, QVariantList &values) const
{
    const QString expression = matchExpression(term);
    if (expression.isEmpty())
        return false;
    // The index answers a whole match at once faster than a match per document.
    Q_UNUSED(fewDocuments)
    condition = docIdColumn + QStringLiteral(" IN (SELECT rowid FROM doc_text WHERE doc_text MATCH ?)");
    values = {expression};
    return true;
}

bool OrvexSqliteBackend::storeFile(QSqlDatabase &db, Area area, const QString &name, qlonglong docId,
                                   const QString &sourcePath, QStringList &written, QString &error)
{
    Q_UNUSED(db)
    Q_UNUSED(docId)
    const QString target = areaPath(area) + QLatin1Char('/') + name;
    if (!QDir().mkpath(QFileInfo(target).absolutePath())) {
        error = OrvexStorageError::ofErrno(errno);
        return false;
    }
    QFile::remove(target);
    if (!storeCopy(sourcePath, target, &error)) // the copy is gone again then
        return false;
    written << target;
    // The file's name must be on the disk before the commit that points to it.
    syncFolder(QFileInfo(target).absolutePath());
    return true;
}

bool OrvexSqliteBackend::moveFile(QSqlDatabase &db, Area fromArea, const QString &from, Area toArea,
                                  const QString &to, qlonglong docId, QStringList &moved, QString &error)
{
    Q_UNUSED(db)
    Q_UNUSED(docId)
    const QString source = areaPath(fromArea) + QLatin1Char('/') + from;
    const QString target = areaPath(toArea) + QLatin1Char('/') + to;
    if (!QDir().mkpath(QFileInfo(target).absolutePath())) {
        error = OrvexStorageError::ofErrno(errno);
        return false;
    }
    QFile::remove(target);
    if (::rename(QFile::encodeName(source).constData(), QFile::encodeName(target).constData()) != 0) {
        error = OrvexStorageError::ofErrno(errno);
        return false;
    }
    moved << source + QLatin1Char('|') + target;
    // Both names must be on the disk before the commit that points to the new one.
    syncFolder(QFileInfo(source).absolutePath());
    syncFolder(QFileInfo(target).absolutePath());
    return true;
}

void OrvexSqliteBackend::undoFiles(const QStringList &written, const QStringList &moved)
{
    for (const QString &path : written)
        QFile::remove(path);
    for (const QString &pair : moved)
        QFile::rename(pair.section(QLatin1Char('|'), 1), pair.section(QLatin1Char('|'), 0, 0));
}

bool OrvexSqliteBackend::removeFiles(QSqlDatabase &db, Area area, const QStringList &names,
                                     QStringList &afterCommit, QString &error)
{
    Q_UNUSED(db)
    Q_UNUSED(error)
    for (const QString &name : names)
        afterCommit << areaPath(area) + QLatin1Char('/') + name;
    return true;
}

void OrvexSqliteBackend::removeAfterCommit(const QStringList &afterCommit)
{
    for (const QString &path : afterCommit) {
        QFile::remove(path);
        // A document's folder goes with its last file.
        const QString folder = QFileInfo(path).absolutePath();
        if (folder != areaPath(Area::Files) && folder != areaPath(Area::Uploads))
            QDir().rmdir(folder);
    }
}

void OrvexSqliteBackend::forgetDocument(qlonglong docId)
{
    const QString folder = cachePath() + QStringLiteral("/thumbs/") + QString::number(docId);
    QMutexLocker locker(&m_cacheMutex);
    QDir(folder).removeRecursively();
    for (auto it = m_cache.begin(); it != m_cache.end();) {
        if (it.key().startsWith(folder + QLatin1Char('/'))) {
            m_cacheBytes -= it->bytes;
            it = m_cache.erase(it);
        } else {
            ++it;
        }
    }
}

std::unique_ptr<QIODevice> OrvexSqliteBackend::openFile(Area area, const QString &name, QString &error)
{
    auto file = std::make_unique<QFile>(areaPath(area) + QLatin1Char('/') + name);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        error = QStringLiteral("Cannot read %1: %2").arg(file->fileName(), file->errorString());
        return {};
    }
    return file;
}

std::unique_ptr<OrvexArchiveBackend::Sink> OrvexSqliteBackend::createFile(Area area, const QString &name,
                                                                        Completion completion, Writer writer,
                                                                        QString &error)
{
    if (m_readOnly) {
        error = OrvexStorageError::readOnly();
        return {};
    }
    auto sink = std::make_unique<FileSink>(areaPath(area) + QLatin1Char('/') + name, true, std::move(completion),
                                           std::move(writer));
    if (!sink->open(error))
        return {};
    return sink;
}

bool OrvexSqliteBackend::localFile(Area area, const QString &name, LocalFile &file, QString &error)
{
    const QString path = areaPath(area) + QLatin1Char('/') + name;
    if (!QFileInfo(path).isFile()) {
        error = QStringLiteral("Cannot read %1").arg(path);
        return false;
    }
    file.setPath(path);
    return true;
}

QString OrvexSqliteBackend::imagePath(const ImageKey &key) const
{
    return QStringLiteral("%1/thumbs/%2/v%3-p%4-s%5.png")
        .arg(cachePath()).arg(key.docId).arg(key.version).arg(key.page).arg(key.size);
}

QByteArray OrvexSqliteBackend::cachedImage(const ImageKey &key)
{
    const QString path = imagePath(key);
    QFile cached(path);
    if (!cached.open(QIODevice::ReadOnly))
        return {};
    const QByteArray png = cached.readAll();
    cached.close();
    if (!png.isEmpty())
        noteUse(path, png.size());
    return png;
}

void OrvexSqliteBackend::cacheImage(const ImageKey &key, const QByteArray &png)
{
    // A cache that cannot be written only costs time.
    const QString path = imagePath(key);
    if (m_readOnly || !QDir().mkpath(QFileInfo(path).absolutePath()))
        return;
    // Written beside and renamed into place, so that a reader never sees half
    // an image; not synced, since a lost cache entry only costs a render.
    QTemporaryFile partial(path + QStringLiteral(".XXXXXX"));
    if (!partial.open() || partial.write(png) != png.size() || !partial.flush())
        return;
    partial.close();
    if (::rename(QFile::encodeName(partial.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        return;
    partial.setAutoRemove(false);
    noteUse(path, png.size());
    QMutexLocker locker(&m_cacheMutex);
    trimCache();
}

void OrvexSqliteBackend::indexCache()
{
    if (std::exchange(m_cacheIndexed, true))
        return;
    QDirIterator files(cachePath() + QStringLiteral("/thumbs"), {QStringLiteral("*.png")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QFileInfo info = files.fileInfo();
        const qint64 used = info.lastModified().toMSecsSinceEpoch();
        m_cache.insert(info.filePath(), {info.size(), used});
        m_cacheBytes += info.size();
        m_lastUse = qMax(m_lastUse, used);
    }
}

qint64 OrvexSqliteBackend::nextUse()
{
    // Strictly increasing, so that two uses within one millisecond keep their order.
    m_lastUse = qMax(m_lastUse + 1, QDateTime::currentMSecsSinceEpoch());
    return m_lastUse;
}

void OrvexSqliteBackend::noteUse(const QString &path, qint64 bytes)
{
    QMutexLocker locker(&m_cacheMutex);
    indexCache();
    const qint64 used = nextUse();
    CachedImage &entry = m_cache[path];
    m_cacheBytes += bytes - entry.bytes;
    entry = {bytes, used};
    if (m_readOnly)
        return;
    // The order of use outlives the process as the files' modification times.
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        file.setFileTime(QDateTime::fromMSecsSinceEpoch(used), QFileDevice::FileModificationTime);
}

void OrvexSqliteBackend::trimCache()
{
    const qint64 limit = imageCacheLimit();
    if (m_cacheBytes <= limit)
        return;
    QVector<QPair<qint64, QString>> byUse;
    byUse.reserve(m_cache.size());
    for (auto it = m_cache.cbegin(); it != m_cache.cend(); ++it)
        byUse.append({it->used, it.key()});
    std::sort(byUse.begin(), byUse.end());
    for (const auto &oldest : qAsConst(byUse)) {
        if (m_cacheBytes <= limit)
            break;
        QFile::remove(oldest.second);
        m_cacheBytes -= m_cache.take(oldest.second).bytes;
    }
}

QObject *OrvexSqliteBackend::watch(std::function<void(int)> onChange, QObject *parent)
{
    return new Watcher(*this, std::move(onChange), parent);
}

bool OrvexSqliteBackend::readRevisions(QSqlDatabase &db, QHash<QString, qlonglong> &revisions)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT topic, counter FROM revisions")))
        return false;
    while (query.next())
        revisions.insert(query.value(0).toString(), query.value(1).toLongLong());
    return true;
}

bool OrvexSqliteBackend::startWrite(QSqlDatabase &db, QString &error)
{
    Q_UNUSED(error)
    {
        QMutexLocker locker(&m_revisionsMutex);
        if (!m_watching)
            return true;
    }
    PendingWrite pending;
    readRevisions(db, pending.before); // missing before the schema has them
    QMutexLocker locker(&m_revisionsMutex);
    m_pendingWrites.insert(QThread::currentThreadId(), pending);
    return true;
}

void OrvexSqliteBackend::writeDone(QSqlDatabase &db)
{
    QHash<QString, qlonglong> after;
    if (!readRevisions(db, after))
        return;
    QMutexLocker locker(&m_revisionsMutex);
    if (!m_watching)
        return;
    PendingWrite &pending = m_pendingWrites[QThread::currentThreadId()];
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        const qlonglong added = it.value() - pending.before.value(it.key(), it.value());
        if (added > 0) {
            pending.added.insert(it.key(), added);
            m_expected[it.key()] += added;
        }
    }
}

void OrvexSqliteBackend::endWrite(bool committed)
{
    QMutexLocker locker(&m_revisionsMutex);
    const PendingWrite pending = m_pendingWrites.take(QThread::currentThreadId());
    if (committed)
        return;
    for (auto it = pending.added.cbegin(); it != pending.added.cend(); ++it)
        m_expected[it.key()] -= it.value();
}

int OrvexSqliteBackend::foreignChanges(const QHash<QString, qlonglong> &now)
{
    QMutexLocker locker(&m_revisionsMutex);
    // The first look only learns where the counters stand.
    const bool first = !std::exchange(m_watching, true);
    int topics = 0;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        qlonglong &expected = m_expected[it.key()];
        if (first)
            expected = it.value();
        else if (it.value() > expected)
            topics |= it.key() == QLatin1String("documents") ? Documents : Clipboards;
        // A write of this process that is not committed yet is counted already.
        expected = qMax(expected, it.value());
    }
    return topics;
}
