#pragma once

#include "orvexarchiveglobal.h"

#include <QString>

class QSqlDatabase;

class OrvexArchiveStore;

// Fills a new, empty archive with sample content: users, groups, directory and
// system roles, document types and statuses, a few dozen generated multi-page
// PDFs with searchable text (some with several versions, some only readable by
// management), and clipboards with entries and notes for the local user.
class ORVEXARCHIVE_EXPORT OrvexSampleArchive
{
public:
    static constexpr int DocumentCount = 36;
    static constexpr const char *Password = "orvex";
    static constexpr const char *ArchiveName = "Orvex Archiv";
    static constexpr const char *Tenant = "orvex";
    static constexpr int Port = 7411;

    // A name of the sample's types, statuses and system roles (stored in
    // English) in the user's language; any other name as it is.
    static QString displayName(const QString &name);

    // What every new archive holds: its connection settings and the system roles.
    static bool seed(QSqlDatabase &db, QString &error);

    // Needs a QGuiApplication (the PDFs are drawn with fonts).
    static bool create(OrvexArchiveStore &store, QString *error);

    // Writes the PDF of sample document index (version from 1) as create() does;
    // extraPage, when given, adds a last page with that text.
    static bool writeSamplePdf(const QString &path, int index, int version, const QString &extraPage,
                               QString *error);
};
