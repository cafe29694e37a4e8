#include "e2earchive.h"

#include "classifyinterface.h"
#include "orvexarchive.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSet>
#include <QSqlQuery>

#include <atomic>

namespace {
std::atomic<int> g_connections{0};
const QString kDatabase = QStringLiteral("archive.sqlite");
} // namespace

E2eArchive::E2eArchive(const QString &folder)
    : m_folder(QDir(folder).absolutePath())
    , m_connection(QStringLiteral("e2e-archive-%1").arg(g_connections++))
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    db.setDatabaseName(QDir(m_folder).filePath(kDatabase));
}

E2eArchive::~E2eArchive()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

bool E2eArchive::createSample(const QString &folder, QString *error)
{
    OrvexArchive archive;
    if (archive.open(folder))
        return true;
    *error = archive.lastError();
    return false;
}

QVariantList E2eArchive::rows(const QString &sql, const QVariantList &values, int columns) const
{
    QSqlDatabase db = QSqlDatabase::database(m_connection, false);
    if (!db.isOpen()) {
        // Read-only: the product owns the archive; the test only looks.
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"));
        if (!db.open())
            return {};
    }
    QSqlQuery query(db);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    QVariantList result;
    if (!query.exec()) {
        qWarning("e2e archive query failed: %s", qPrintable(query.lastError().text()));
        return result;
    }
    while (query.next()) {
        QVariantList row;
        for (int i = 0; i < columns; ++i)
            row << query.value(i);
        result << QVariant(row);
    }
    return result;
}

bool E2eArchive::execute(const QString &sql, const QVariantList &values, QString *error) const
{
    const QString name = m_connection + QStringLiteral("-write");
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(QDir(m_folder).filePath(kDatabase));
        QSqlQuery query(db);
        ok = db.open() && query.prepare(sql);
        for (const QVariant &value : values)
            query.addBindValue(value);
        ok = ok && query.exec();
        if (!ok && error)
            *error = query.lastError().text() + db.lastError().text();
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

QString E2eArchive::createClipboard(const QString &name) const
{
    OrvexArchive archive;
    return archive.open(m_folder, false) ? archive.classifyClient()->createClipboard(name) : QString();
}

bool E2eArchive::fill(const QString &clipboardName, int count) const
{
    const QString uuid = clipboardId(clipboardName);
    const QList<Document> all = documents();
    if (uuid.isEmpty() || all.isEmpty())
        return false;
    int position = entries(clipboardName).size();
    QSet<qlonglong> present;
    for (const Entry &entry : entries(clipboardName))
        present.insert(entry.docsId);
    const QString insert = QStringLiteral(
        "INSERT INTO clipboard_entries(clipboard, docs_id, doc_id, note, position) VALUES (?, ?, ?, '', ?)");
    if (position < count && !present.contains(all.first().docsId)
        && !execute(insert, {uuid, all.first().docsId, all.first().id, ++position}))
        return false;
    qlonglong spare = 900000;
    while (position < count) {
        if (!execute(insert, {uuid, ++spare, all.first().id, ++position}))
            return false;
    }
    return true;
}

QStringList E2eArchive::clipboardNames() const
{
    QStringList names;
    for (const QVariant &row : rows(QStringLiteral("SELECT name FROM clipboards ORDER BY name"), {}, 1))
        names << row.toList().value(0).toString();
    return names;
}

QString E2eArchive::clipboardId(const QString &name) const
{
    return rows(QStringLiteral("SELECT uuid FROM clipboards WHERE name = ?"), {name}, 1)
        .value(0)
        .toList()
        .value(0)
        .toString();
}

QStringList E2eArchive::rights(const QString &clipboardName) const
{
    QStringList rights;
    for (const QVariant &row : rows(QStringLiteral("SELECT r.role_id, r.mode FROM clipboard_rights r "
                                                   "JOIN clipboards c ON c.uuid = r.clipboard WHERE c.name = ? "
                                                   "ORDER BY r.role_id"),
                                    {clipboardName}, 2))
        rights << row.toList().value(0).toString() + QLatin1Char(':') + row.toList().value(1).toString();
    return rights;
}

QList<E2eArchive::Entry> E2eArchive::entries(const QString &clipboardName) const
{
    QList<Entry> entries;
    const QVariantList found = rows(QStringLiteral("SELECT e.doc_id, e.docs_id, e.note FROM clipboard_entries e "
                                                   "JOIN clipboards c ON c.uuid = e.clipboard WHERE c.name = ? "
                                                   "ORDER BY e.position, e.docs_id"),
                                    {clipboardName}, 3);
    for (const QVariant &row : found) {
        const QVariantList values = row.toList();
        entries << Entry{values.value(0).toLongLong(), values.value(1).toLongLong(), values.value(2).toString()};
    }
    return entries;
}

static const char kDocumentColumns[] =
    "SELECT d.id, d.docs_id, d.title, d.file_name, v.file, v.pages FROM documents d "
    "JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version ";

QList<E2eArchive::Document> E2eArchive::documents() const
{
    QList<Document> documents;
    const QString files = QDir(m_folder).filePath(QStringLiteral("files"));
    for (const QVariant &row : rows(QLatin1String(kDocumentColumns) + QStringLiteral("ORDER BY d.id"), {}, 6)) {
        const QVariantList v = row.toList();
        documents << Document{v.value(0).toLongLong(), v.value(1).toLongLong(), v.value(2).toString(),
                              v.value(3).toString(), QDir(files).filePath(v.value(4).toString()),
                              v.value(5).toInt()};
    }
    return documents;
}

E2eArchive::Document E2eArchive::document(qlonglong docId) const
{
    for (const Document &document : documents())
        if (document.id == docId)
            return document;
    return {};
}

QList<E2eArchive::Document> E2eArchive::readableDocuments() const
{
    QSet<qlonglong> readable;
    for (const QVariant &row : rows(QStringLiteral("SELECT id FROM documents WHERE read_role IS NULL OR read_role = ''"),
                                    {}, 1))
        readable.insert(row.toList().value(0).toLongLong());
    QList<Document> result;
    for (const Document &document : documents())
        if (readable.contains(document.id))
            result << document;
    return result;
}

QList<E2eArchive::Document> E2eArchive::documentsNotIn(const QString &clipboardName) const
{
    QSet<qlonglong> inside;
    for (const Entry &entry : entries(clipboardName))
        inside.insert(entry.docId);
    QList<Document> result;
    for (const Document &document : readableDocuments())
        if (!inside.contains(document.id))
            result << document;
    return result;
}
