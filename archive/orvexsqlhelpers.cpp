#include "orvexsqlhelpers.h"

#include "orvexpostgresbackend.h"

#include <QSqlDriver>

QString OrvexSql::reason(const QSqlQuery &query)
{
    const QSqlDriver *driver = query.driver();
    if (driver && driver->dbmsType() == QSqlDriver::PostgreSQL)
        return OrvexPostgresBackend::describe(query.lastError());
    return query.lastError().text();
}
