#include "orvexstorageerror.h"

#include "orvexpostgresbackend.h"

#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <sqlite3.h>

#include <cerrno>
#include <cstring>

namespace {

Q_LOGGING_CATEGORY(lcStorage, "orvex.archive.storage", QtWarningMsg)

// The connection behind a Qt handle, or null when it is not an SQLite one.
sqlite3 *sqliteHandle(const QSqlDriver *driver)
{
    if (!driver)
        return nullptr;
    const QVariant handle = driver->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
}

QString reasonFor(const QSqlDriver *driver, const QSqlError &error)
{
    // A server's refusal has words of its own.
    if (driver && driver->dbmsType() == QSqlDriver::PostgreSQL)
        return OrvexPostgresBackend::describe(error);
    sqlite3 *handle = sqliteHandle(driver);
    bool numeric = false;
    const int code = error.nativeErrorCode().toInt(&numeric) & 0xff;
    // The operating system's error behind the database's, when it met one.
    const int system = handle ? sqlite3_system_errno(handle) : 0;
    qCWarning(lcStorage).noquote() << "DATABASE ERROR" << error.nativeErrorCode() << "errno" << system
                                   << error.databaseText() << error.driverText();
    switch (numeric ? code : -1) {
    case SQLITE_FULL:
        return OrvexStorageError::ofErrno(system == EFBIG || system == EDQUOT ? system : ENOSPC);
    case SQLITE_IOERR:
        return OrvexStorageError::ofErrno(system ? system : EIO);
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
        return system ? OrvexStorageError::ofErrno(system)
                      : OrvexStorageError::tr("The archive database cannot be opened");
    case SQLITE_READONLY:
        return OrvexStorageError::readOnly();
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return OrvexStorageError::tr("The archive is in use by another program");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return OrvexStorageError::tr("The archive database is damaged");
    case SQLITE_NOMEM:
        return OrvexStorageError::ofErrno(ENOMEM);
    case SQLITE_CONSTRAINT:
        return OrvexStorageError::tr("The change contradicts what the archive holds");
    case -1:
    case SQLITE_OK:
        return OrvexStorageError::tr("The archive database failed");
    default:
        return OrvexStorageError::tr("The archive database failed (error %1)").arg(code);
    }
}

} // namespace

QString OrvexStorageError::ofQuery(const QSqlQuery &query)
{
    return reasonFor(query.driver(), query.lastError());
}

QString OrvexStorageError::ofDatabase(const QSqlDatabase &db, const QSqlError &error)
{
    return reasonFor(db.driver(), error);
}

QString OrvexStorageError::ofErrno(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

QString OrvexStorageError::describe(const QString &reason, const QString &notStored)
{
    return tr("%1: %2").arg(reason, notStored);
}

QString OrvexStorageError::readOnly()
{
    return tr("The archive is read-only");
}
