#include "orvexarchivebackend.h"

#include "orvexpostgresbackend.h"
#include "orvexsqlitebackend.h"
#include "orvexstorageerror.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryFile>
#include <QVariant>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

OrvexArchiveBackend::LocalFile::LocalFile() = default;
OrvexArchiveBackend::LocalFile::~LocalFile() = default;
OrvexArchiveBackend::LocalFile::LocalFile(LocalFile &&) noexcept = default;
OrvexArchiveBackend::LocalFile &OrvexArchiveBackend::LocalFile::operator=(LocalFile &&) noexcept = default;

void OrvexArchiveBackend::LocalFile::adopt(std::unique_ptr<QTemporaryFile> temporary)
{
    m_path = temporary ? temporary->fileName() : QString();
    m_temporary = std::move(temporary);
}

OrvexArchiveBackend::Sink::~Sink() = default;

OrvexArchiveBackend::FileSink::FileSink(const QString &path, bool durable, Completion completion, Writer writer)
    : m_file(std::make_unique<QFile>(path))
    , m_durable(durable)
    , m_completion(std::move(completion))
    , m_writer(std::move(writer))
{
}

OrvexArchiveBackend::FileSink::~FileSink()
{
    if (!m_finished && m_file->isOpen()) {
        m_file->close();
        m_file->remove();
    }
}

bool OrvexArchiveBackend::FileSink::open(QString &reason)
{
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        reason = m_file->errorString();
        return false;
    }
    return true;
}

bool OrvexArchiveBackend::FileSink::write(const char *data, qint64 size, QString &reason)
{
    return writeFully(*m_file, data, size, &reason);
}

bool OrvexArchiveBackend::FileSink::finish(QString &reason)
{
    if (!m_file->flush()) {
        reason = m_file->errorString();
        return false;
    }
    // Committed later by renaming: its content must be on the disk by then.
    if (m_durable && ::fsync(m_file->handle()) != 0) {
        reason = OrvexStorageError::ofErrno(errno);
        return false;
    }
    m_file->close();
    if (m_completion && !m_writer(m_completion, reason)) {
        m_file->remove();
        return false;
    }
    m_finished = true;
    return true;
}

bool OrvexArchiveBackend::writeFully(QFileDevice &file, const char *data, qint64 size, QString *reason)
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

bool OrvexArchiveBackend::syncFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

bool OrvexArchiveBackend::syncFolder(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

OrvexArchiveBackend::~OrvexArchiveBackend() = default;

bool OrvexArchiveBackend::isReadOnly() const
{
    return false;
}

bool OrvexArchiveBackend::isAlive(QSqlDatabase &db) const
{
    return db.isOpen();
}

bool OrvexArchiveBackend::startWrite(QSqlDatabase &db, QString &error)
{
    Q_UNUSED(db)
    Q_UNUSED(error)
    return true;
}

bool OrvexArchiveBackend::lockSchema(QSqlDatabase &db, QString &error)
{
    Q_UNUSED(db)
    Q_UNUSED(error)
    return true;
}

bool OrvexArchiveBackend::nextDocumentNumbers(QSqlDatabase &db, qlonglong &docId, qlonglong &docsId, QString &error)
{
    QSqlQuery next(db);
    if (!next.exec(QStringLiteral("SELECT COALESCE(MAX(id), 1000) + 1, COALESCE(MAX(docs_id), 5000), "
                                  "(SELECT COALESCE(MAX(docs_id), 0) FROM clipboard_entries) FROM documents"))
        || !next.next()) {
        error = OrvexStorageError::ofQuery(next);
        return false;
    }
    docId = next.value(0).toLongLong();
    docsId = qMax(next.value(1).toLongLong(), next.value(2).toLongLong()) + 1;
    return true;
}

QByteArray OrvexArchiveBackend::head(Area area, const QString &name, int bytes)
{
    QString error;
    const std::unique_ptr<QIODevice> file = openFile(area, name, error);
    return file ? file->read(bytes) : QByteArray();
}

void OrvexArchiveBackend::writeDone(QSqlDatabase &db)
{
    Q_UNUSED(db)
}

void OrvexArchiveBackend::endWrite(bool committed)
{
    Q_UNUSED(committed)
}

std::unique_ptr<OrvexArchiveBackend> OrvexArchiveBackend::create(const OrvexArchiveLocation &location)
{
    if (location.isServer())
        return std::make_unique<OrvexPostgresBackend>(location);
    if (location.isFolder())
        return std::make_unique<OrvexSqliteBackend>(location.folder());
    return {};
}

void OrvexArchiveBackend::setConnectionProvider(std::function<QSqlDatabase(QString &error)> provider)
{
    m_connections = std::move(provider);
}

QSqlDatabase OrvexArchiveBackend::threadDatabase(QString &error) const
{
    return m_connections ? m_connections(error) : QSqlDatabase();
}

namespace {
// "(?, ?, ?), (?, ?, ?)": the rows of rights, with their values in order.
QString rightRows(const QString &clipboard, const QList<QPair<QString, QString>> &rights, QVariantList &values)
{
    QStringList rows;
    for (const auto &right : rights) {
        rows << QStringLiteral("(?, ?, ?)");
        values << clipboard << right.first << right.second;
    }
    return rows.join(QStringLiteral(", "));
}

QString placeholders(int count)
{
    QStringList marks;
    for (int i = 0; i < count; ++i)
        marks << QStringLiteral("?");
    return marks.join(QStringLiteral(", "));
}
} // namespace

bool OrvexArchiveBackend::replaceRights(QSqlDatabase &db, const QString &clipboard,
                                        const QList<QPair<QString, QString>> &rights, QString &error)
{
    QVariantList values;
    QSqlQuery upsert(db);
    upsert.prepare(QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES ")
                   + rightRows(clipboard, rights, values)
                   + QStringLiteral(" ON CONFLICT(clipboard, role_id) DO UPDATE SET mode = excluded.mode"));
    for (const QVariant &value : qAsConst(values))
        upsert.addBindValue(value);
    if (!upsert.exec()) {
        error = OrvexStorageError::ofQuery(upsert);
        return false;
    }
    QSqlQuery remove(db);
    remove.prepare(QStringLiteral("DELETE FROM clipboard_rights WHERE clipboard = ? AND role_id NOT IN (")
                   + placeholders(rights.size()) + QLatin1Char(')'));
    remove.addBindValue(clipboard);
    for (const auto &right : rights)
        remove.addBindValue(right.first);
    if (!remove.exec()) {
        error = OrvexStorageError::ofQuery(remove);
        return false;
    }
    return true;
}

QString OrvexArchiveBackend::rightsStatement(const QString &clipboard, const QList<QPair<QString, QString>> &rights,
                                             QVariantList &values)
{
    // Used by engines that run both parts as one statement.
    QString sql = QStringLiteral("WITH revoked AS (DELETE FROM clipboard_rights WHERE clipboard = ? AND role_id NOT IN (")
                  + placeholders(rights.size()) + QStringLiteral(")) ");
    values << clipboard;
    for (const auto &right : rights)
        values << right.first;
    return sql + QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES ")
           + rightRows(clipboard, rights, values)
           + QStringLiteral(" ON CONFLICT(clipboard, role_id) DO UPDATE SET mode = excluded.mode");
}
