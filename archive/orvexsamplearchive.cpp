#include "orvexsamplearchive.h"

#include "orvexarchivestore.h"
#include "orvexstorageerror.h"

#include <QDate>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>
#include <QVariant>

namespace {
bool run(QSqlDatabase &db, const QString &sql, const QVariantList &values, QString &error)
{
    QSqlQuery query(db);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (query.exec())
        return true;
    error = OrvexStorageError::ofQuery(query);
    return false;
}

const char *const kCompanies[] = {"Nordlicht Logistik GmbH", "Baumann & Söhne KG", "Helios Energie AG",
                                  "Kranich Bürotechnik", "Seeberg Maschinenbau", "Lindner Papierwerke",
                                  "Falkenstein Immobilien", "Ostwind Spedition", "Rautenberg Consulting"};
const char *const kTopics[] = {"Wartungsvertrag Druckerflotte", "Lieferung Kopierpapier", "Serverraum Klimatisierung",
                               "Jahresabschluss Prüfung", "Fuhrpark Leasing", "Büromöbel Erstausstattung",
                               "Softwarelizenzen", "Reinigungsdienst", "Messestand Hannover"};

struct TypeInfo
{
    const char *key;
    const char *name;
    const char *prefix;
};
// The names are stored in English and shown in the user's language (displayName()).
const TypeInfo kTypes[] = {{"INV", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Invoice"), "Rechnung"},
                           {"CON", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Contract"), "Vertrag"},
                           {"LET", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Letter"), "Schreiben"},
                           {"DEL", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Delivery note"), "Lieferschein"},
                           {"OFF", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Offer"), "Angebot"}};
const char *const kStatuses[][2] = {{"NEW", QT_TRANSLATE_NOOP("OrvexSampleArchive", "New")},
                                    {"INP", QT_TRANSLATE_NOOP("OrvexSampleArchive", "In progress")},
                                    {"APP", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Approved")},
                                    {"ARC", QT_TRANSLATE_NOOP("OrvexSampleArchive", "Archived")}};

struct SampleDocument
{
    QString title;
    QString typeKey;
    QString statusKey;
    QString fileName;
    QString date;
    QString readRole;
    QString company;
    QString topic;
    QString number;
    double amount = 0;
    int pages = 1;
    int versions = 1;
};

SampleDocument sample(int index)
{
    SampleDocument d;
    const TypeInfo &type = kTypes[index % 5];
    d.company = QString::fromUtf8(kCompanies[(index * 4) % 9]);
    d.topic = QString::fromUtf8(kTopics[(index * 7 + 3) % 9]);
    d.number = QStringLiteral("%1-2026-%2").arg(QString::fromUtf8(type.prefix).left(2).toUpper()).arg(101 + index, 4, 10, QLatin1Char('0'));
    d.title = QStringLiteral("%1 %2 %3").arg(QString::fromUtf8(type.prefix), d.number, d.company);
    d.typeKey = QLatin1String(type.key);
    d.statusKey = QLatin1String(kStatuses[(index * 3) % 4][0]);
    d.fileName = QStringLiteral("%1_%2.pdf").arg(QString::fromUtf8(type.prefix), d.number);
    d.date = QDate(2026, 1, 5).addDays(index * 9).toString(Qt::ISODate);
    d.readRole = index % 9 == 4 ? QStringLiteral("r_management") : QString();
    d.amount = 120.0 + (index * 379) % 9000 + (index % 4) * 0.25;
    d.pages = 1 + (index * 5) % 4;
    d.versions = index % 7 == 2 ? 3 : (index % 7 == 5 ? 2 : 1);
    return d;
}

bool writePdf(const QString &path, const SampleDocument &d, int index, int version, QString &error,
              const QString &extraPage = {})
{
    QPdfWriter writer(path);
    writer.setTitle(d.title);
    writer.setCreator(QStringLiteral("Orvex Archive"));
    writer.setResolution(150);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(18, 18, 18, 18), QPageLayout::Millimeter);
    QPainter painter;
    if (!painter.begin(&writer)) {
        error = QStringLiteral("Cannot write the sample PDF %1").arg(path);
        return false;
    }
    const QRect area = painter.viewport();
    const int width = area.width();
    const QColor accent = QColor::fromHsv((index * 41) % 360, 140, 200);
    QFont heading(QStringLiteral("DejaVu Sans"), 20, QFont::Bold);
    QFont body(QStringLiteral("DejaVu Sans"), 11);
    QFont small(QStringLiteral("DejaVu Sans"), 9);
    for (int page = 0; page < d.pages; ++page) {
        if (page > 0)
            writer.newPage();
        // A layout of its own per document and page, so that page images differ visibly.
        const int band = 40 + ((index * 13 + page * 7) % 12) * 20;
        painter.fillRect(QRect(0, 0, width * (25 + (index * 17 + page * 29) % 70) / 100, band), accent);
        painter.setPen(Qt::black);
        painter.setFont(heading);
        int y = band + 50;
        QRect titleRect;
        painter.drawText(QRect(0, y, width, 400), Qt::AlignLeft | Qt::TextWordWrap, d.title, &titleRect);
        y += titleRect.height() + 40;
        painter.setFont(small);
        painter.drawText(0, y, QStringLiteral("Datum: %1   Nummer: %2   Seite %3 von %4   Version %5")
                                   .arg(d.date, d.number).arg(page + 1).arg(d.pages).arg(version));
        y += 60;
        painter.setFont(body);
        QStringList lines;
        if (page == 0) {
            lines << QStringLiteral("An: %1").arg(d.company)
                  << QStringLiteral("Betreff: %1").arg(d.topic)
                  << QString()
                  << QStringLiteral("Sehr geehrte Damen und Herren,")
                  << QStringLiteral("wir beziehen uns auf unser Gespräch zum Thema %1.").arg(d.topic)
                  << QStringLiteral("Der vereinbarte Betrag beläuft sich auf %1 EUR.").arg(d.amount, 0, 'f', 2);
        } else {
            lines << QStringLiteral("Anlage %1 zu %2").arg(page).arg(d.number);
            const int rows = 3 + (index + page * 3) % 8;
            for (int row = 0; row < rows; ++row)
                lines << QStringLiteral("Position %1: %2, Menge %3, Einzelpreis %4 EUR")
                             .arg(row + 1)
                             .arg(QString::fromUtf8(kTopics[(index + row + page) % 9]))
                             .arg(1 + (row * 7 + index) % 12)
                             .arg(10.5 + row * 3.25 + index, 0, 'f', 2);
        }
        if (version > 1)
            lines << QString() << QStringLiteral("Überarbeitete Fassung %1: Korrektur der Konditionen.").arg(version);
        for (const QString &line : qAsConst(lines)) {
            painter.drawText(0, y, line);
            y += 48;
        }
        painter.setFont(small);
        painter.drawText(QRect(0, area.height() - 60, width, 50), Qt::AlignRight,
                         QStringLiteral("Orvex Archiv Beispieldokument %1").arg(index + 1));
    }
    if (!extraPage.isEmpty()) {
        writer.newPage();
        painter.setFont(heading);
        painter.drawText(QRect(0, 200, width, area.height() - 400), Qt::AlignLeft | Qt::TextWordWrap, extraPage);
    }
    if (!painter.end()) {
        error = QStringLiteral("Cannot finish the sample PDF %1").arg(path);
        return false;
    }
    return true;
}
} // namespace

bool OrvexSampleArchive::writeSamplePdf(const QString &path, int index, int version, const QString &extraPage,
                                        QString *error)
{
    QString message;
    if (index < 0 || version < 1) {
        message = QStringLiteral("No such sample document");
    } else if (writePdf(path, sample(index), index, version, message, extraPage)) {
        return true;
    }
    if (error)
        *error = message;
    return false;
}

QString OrvexSampleArchive::displayName(const QString &name)
{
    return QCoreApplication::translate("OrvexSampleArchive", name.toUtf8().constData());
}

bool OrvexSampleArchive::seed(QSqlDatabase &db, QString &error)
{
    const QList<QPair<QString, QString>> settings{
        {QStringLiteral("server"), QStringLiteral("localhost")},
        {QStringLiteral("port"), QString::number(Port)},
        {QStringLiteral("archive_name"), QLatin1String(ArchiveName)},
        {QStringLiteral("tenant"), QLatin1String(Tenant)},
        {QStringLiteral("profile_id"), QStringLiteral("1")},
        {QStringLiteral("local_password"), QLatin1String(Password)},
    };
    for (const auto &setting : settings)
        if (!run(db, QStringLiteral("INSERT INTO settings(key, value) VALUES (?, ?) ON CONFLICT(key) DO UPDATE SET value = excluded.value"),
                 {setting.first, setting.second}, error))
            return false;
    const QList<QStringList> roles{
        {QStringLiteral("tavloUSER"), QStringLiteral("system"),
         QStringLiteral(QT_TRANSLATE_NOOP("OrvexSampleArchive", "All users"))},
        {QStringLiteral("tavloADMIN"), QStringLiteral("system"),
         QStringLiteral(QT_TRANSLATE_NOOP("OrvexSampleArchive", "Administrators"))},
    };
    for (const QStringList &role : roles)
        if (!run(db, QStringLiteral("INSERT INTO roles(id, kind, display_name) VALUES (?, ?, ?) ON CONFLICT DO NOTHING"),
                 {role.at(0), role.at(1), role.at(2)}, error))
            return false;
    for (const TypeInfo &type : kTypes)
        if (!run(db, QStringLiteral("INSERT INTO doc_types(key, name) VALUES (?, ?) ON CONFLICT DO NOTHING"),
                 {QLatin1String(type.key), QLatin1String(type.name)}, error))
            return false;
    for (const auto &status : kStatuses)
        if (!run(db, QStringLiteral("INSERT INTO doc_statuses(key, name) VALUES (?, ?) ON CONFLICT DO NOTHING"),
                 {QLatin1String(status[0]), QLatin1String(status[1])}, error))
            return false;
    return true;
}

bool OrvexSampleArchive::create(OrvexArchiveStore &store, QString *error)
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        if (error)
            *error = QStringLiteral("The sample documents need a GUI application (fonts)");
        return false;
    }
    QTemporaryDir scratch;
    if (!scratch.isValid()) {
        if (error)
            *error = QStringLiteral("No temporary folder for the sample documents");
        return false;
    }
    const QString localUser = OrvexArchiveStore::operatingSystemUser();
    OrvexArchiveStore::FileChanges files;
    QList<qlonglong> ids;
    const bool ok = store.write([&](QSqlDatabase &db, QString &stepError) {
        const QString roleSql = QStringLiteral("INSERT INTO roles(id, kind, display_name, password_hash) VALUES (?, ?, ?, ?) ON CONFLICT DO NOTHING");
        const QList<QStringList> groups{
            {QStringLiteral("r_accounting"), QStringLiteral("group"), QStringLiteral("Buchhaltung")},
            {QStringLiteral("r_sales"), QStringLiteral("group"), QStringLiteral("Vertrieb")},
            {QStringLiteral("r_management"), QStringLiteral("group"), QStringLiteral("Geschäftsleitung")},
            {QStringLiteral("LDAP_staff"), QStringLiteral("directory"), QStringLiteral("Verzeichnis: Mitarbeiter")},
            {QStringLiteral("LDAP_finance"), QStringLiteral("directory"), QStringLiteral("Verzeichnis: Finanzen")},
        };
        for (const QStringList &group : groups)
            if (!run(db, roleSql, {group.at(0), group.at(1), group.at(2), QVariant(QVariant::String)}, stepError))
                return false;
        const QList<QStringList> users{
            {localUser, QStringLiteral("Lokaler Benutzer (%1)").arg(localUser), QStringLiteral("r_accounting,LDAP_staff")},
            {QStringLiteral("mmueller"), QStringLiteral("Maria Müller"), QStringLiteral("r_accounting,r_management,LDAP_finance")},
            {QStringLiteral("jschmidt"), QStringLiteral("Jonas Schmidt"), QStringLiteral("r_sales,LDAP_staff")},
            {QStringLiteral("admin"), QStringLiteral("Administrator"), QStringLiteral("tavloADMIN,r_management")},
        };
        for (const QStringList &user : users) {
            if (!run(db, roleSql, {user.at(0), QStringLiteral("user"), user.at(1),
                                   OrvexArchiveStore::passwordHash(user.at(0), QLatin1String(Password))}, stepError))
                return false;
            QStringList memberOf = user.at(2).split(QLatin1Char(','));
            memberOf << QStringLiteral("tavloUSER");
            for (const QString &role : qAsConst(memberOf))
                if (!run(db, QStringLiteral("INSERT INTO role_members(role_id, member_id) VALUES (?, ?) ON CONFLICT DO NOTHING"),
                         {role, user.at(0)}, stepError))
                    return false;
        }

        ids.clear();
        for (int index = 0; index < DocumentCount; ++index) {
            const SampleDocument d = sample(index);
            qlonglong docId = 0;
            for (int version = 1; version <= d.versions; ++version) {
                const QString path = scratch.filePath(QStringLiteral("%1-v%2.pdf").arg(index).arg(version));
                if (!writePdf(path, d, index, version, stepError))
                    return false;
                OrvexArchiveStore::ImportOptions options;
                options.title = d.title;
                options.typeKey = d.typeKey;
                options.statusKey = d.statusKey;
                options.fileName = d.fileName;
                options.date = d.date;
                options.readRole = d.readRole;
                options.owner = QStringLiteral("mmueller");
                docId = store.importFile(db, path, options, docId, files, stepError);
                if (docId == 0)
                    return false;
            }
            ids << docId;
        }

        const auto clipboard = [&](const QString &name, const QString &owner, const QStringList &rights,
                                   const QList<QPair<int, QString>> &entries) {
            const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
            if (!run(db, QStringLiteral("INSERT INTO clipboards(uuid, name, owner, created) VALUES (?, ?, ?, ?)"),
                     {uuid, name, owner, QDateTime::currentDateTimeUtc().toString(Qt::ISODate)}, stepError))
                return false;
            for (const QString &right : rights)
                if (!run(db, QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES (?, ?, ?)"),
                         {uuid, right.section(QLatin1Char(':'), 0, 0), right.section(QLatin1Char(':'), 1)}, stepError))
                    return false;
            int position = 0;
            for (const auto &entry : entries) {
                const qlonglong docId = ids.at(entry.first);
                if (!run(db, QStringLiteral("INSERT INTO clipboard_entries(clipboard, docs_id, doc_id, note, position) "
                                            "SELECT ?, docs_id, id, ?, ? FROM documents WHERE id = ?"),
                         {uuid, OrvexArchiveStore::text(entry.second), ++position, docId}, stepError))
                    return false;
            }
            return true;
        };
        return clipboard(QStringLiteral("Offene Rechnungen"), localUser,
                         {localUser + QStringLiteral(":W"), QStringLiteral("r_accounting:W"), QStringLiteral("tavloUSER:R")},
                         {{0, QStringLiteral("Bitte bis Monatsende prüfen")}, {5, QStringLiteral("Skonto beachten")},
                          {10, QString()}, {15, QStringLiteral("Rückfrage beim Lieferanten")}, {20, QString()},
                          {2, QStringLiteral("Drei Fassungen, die letzte gilt")}})
            && clipboard(QStringLiteral("Projekt Nordlicht"), QStringLiteral("mmueller"),
                         {QStringLiteral("r_management:W"), QStringLiteral("tavloUSER:R")},
                         {{1, QStringLiteral("Vertragsentwurf")}, {4, QStringLiteral("Nur für die Geschäftsleitung")},
                          {6, QString()}, {11, QStringLiteral("Angebot liegt vor")}})
            && clipboard(QStringLiteral("Vertrieb intern"), QStringLiteral("jschmidt"),
                         {QStringLiteral("r_sales:W")}, {{3, QString()}, {8, QStringLiteral("Kunde ruft zurück")}});
    }, error);
    if (!ok)
        store.undoFiles(files);
    else
        store.renderAhead(ids);
    return ok;
}
