#pragma once

#include "orvexarchiveglobal.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <functional>

class OrvexArchiveStore;

// Copies a whole archive into an empty one, on either engine in either
// direction (a folder onto a server when a team moves over): settings, roles
// and their members, document types and statuses, documents with every
// version's file, page fingerprints and text, and clipboards with their
// entries, notes and rights, in one transaction. Pending uploads and cached
// page images are not copied; users' passwords are the server's business and
// are not copied onto one.
//
// verify() then compares both archives: the number of rows and a hash over
// the rows of every table, and the SHA-256 of every version's file as the
// target holds it against the one the archive recorded at import.
class ORVEXARCHIVE_EXPORT OrvexArchiveCopy
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveCopy)

public:
    using Report = std::function<void(const QString &line)>;

    OrvexArchiveCopy(OrvexArchiveStore &source, OrvexArchiveStore &target, Report report = {});

    // False + error when the target holds an archive's content already or
    // the copy fails; nothing of it stays then.
    bool copy(QString &error);
    // One line per table and one for the files; false when anything differs.
    bool verify(QStringList &findings);

    // Archive users the target's server knows no login role for (a server
    // target only), to be created by its administrator.
    QStringList usersWithoutLogin();

private:
    bool targetIsEmpty(QString &error);

    OrvexArchiveStore &m_source;
    OrvexArchiveStore &m_target;
    Report m_report;
};
