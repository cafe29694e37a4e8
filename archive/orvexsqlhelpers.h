#pragma once

#include "orvexarchiveglobal.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QString>

// Small helpers the archive's store and clients share.
namespace OrvexSql {

// A failed statement's reason, in words a user may read: on a server the
// refusal as a sentence (never SQL), in a file the database's text.
ORVEXARCHIVE_EXPORT QString reason(const QSqlQuery &query);

// Runs a prepared query; on failure the reason goes to error.
inline bool exec(QSqlQuery &query, QString &error)
{
    if (query.exec())
        return true;
    error = reason(query);
    return false;
}

// Runs a statement without parameters; on failure the reason goes to error.
inline bool exec(QSqlQuery &query, const QString &sql, QString &error)
{
    if (query.exec(sql))
        return true;
    error = reason(query);
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
