#pragma once

#include "orvexarchiveglobal.h"

#include <QCoreApplication>
#include <QString>

class QSqlDatabase;
class QSqlError;
class QSqlQuery;

// What users read when the archive cannot store something: the operating
// system's reason where there is one ("No space left on device", "File too
// large", "Read-only file system", "Permission denied"), else a plain sentence
// for the database's result code, followed by what was not stored:
//
//   No space left on device: Rechnung.pdf was not archived
//
// SQL statements and the database's own texts never reach a user; they go to
// the log. A server's refusals and failures are told in sentences of their own
// ("The connection to the archive server was lost").
class ORVEXARCHIVE_EXPORT OrvexStorageError
{
    Q_DECLARE_TR_FUNCTIONS(OrvexStorageError)

public:
    // The reason a statement failed.
    static QString ofQuery(const QSqlQuery &query);
    // The reason a database operation failed.
    static QString ofDatabase(const QSqlDatabase &db, const QSqlError &error);
    // The operating system's words for an errno value.
    static QString ofErrno(int code);
    // "reason: what was not stored".
    static QString describe(const QString &reason, const QString &notStored);
    static QString readOnly();
};
