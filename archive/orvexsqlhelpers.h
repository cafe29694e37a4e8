#pragma once

#include "orvexstorageerror.h"

#include <QSqlQuery>
#include <QString>

// Small helpers the archive's store and clients share.
namespace OrvexSql {

// Runs a prepared query; on failure the reason a user may read goes to error
// (the statement and the database's own text go to the log).
inline bool exec(QSqlQuery &query, QString &error)
{
    if (query.exec())
        return true;
    error = OrvexStorageError::ofQuery(query);
    return false;
}

// Runs a statement without parameters, likewise.
inline bool exec(QSqlQuery &query, const QString &sql, QString &error)
{
    if (query.exec(sql))
        return true;
    error = OrvexStorageError::ofQuery(query);
    return false;
}

// A positive id from decimal text (surrounding blanks allowed).
inline bool parseId(const QString &text, qlonglong &id)
{
    bool ok = false;
    id = text.trimmed().toLongLong(&ok);
    return ok && id > 0;
}

} // namespace OrvexSql
