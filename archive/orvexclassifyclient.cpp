#include "orvexclassifyclient.h"

#include "orvexarchivestore.h"
#include "orvexsamplearchive.h"
#include "orvexsqlhelpers.h"

#include <QDateTime>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

namespace {
const QChar kSep(0xFEFF);
const QString kFullText = QStringLiteral("OPT:FULLTEXT") + QChar(0xFEFF);
const QString kLimit = QStringLiteral("OPT:LIMIT;");
const QString kSelection = QStringLiteral("OPT:SELECTION;");
const QString kDocsIdIn = QStringLiteral("docs_id in (");

using OrvexSql::exec;
using OrvexSql::parseId;

} // namespace

OrvexClassifyClient::OrvexClassifyClient(QSharedPointer<OrvexArchiveStore> store, QObject *parent)
    : QObject(parent)
    , m_store(std::move(store))
    , m_user(OrvexArchiveStore::operatingSystemUser())
{
}

QString OrvexClassifyClient::user() const
{
    QMutexLocker locker(&m_mutex);
    return m_user;
}

void OrvexClassifyClient::setUser(const QString &userId)
{
    QMutexLocker locker(&m_mutex);
    m_user = userId;
    m_storeError.clear();
    if (!m_store || !m_store->isServer() || m_store->location().effectiveUser() == userId)
        return;
    // On a server a user works as its own role, never through another's.
    QString error;
    const QSharedPointer<OrvexArchiveStore> store
        = OrvexArchiveStore::shared(m_store->location().withUser(userId), false, &error);
    if (store)
        m_store = store;
    else
        m_storeError = error;
}

QString OrvexClassifyClient::lastError() const
{
    QMutexLocker locker(&m_mutex);
    return m_lastError;
}

bool OrvexClassifyClient::fail(const QString &error)
{
    QMutexLocker locker(&m_mutex);
    m_lastError = error;
    return false;
}

QSharedPointer<OrvexArchiveStore> OrvexClassifyClient::store(QString &error) const
{
    QMutexLocker locker(&m_mutex);
    if (!m_storeError.isEmpty()) {
        error = m_storeError;
        return {};
    }
    return m_store;
}

QSqlDatabase OrvexClassifyClient::database(QString &error) const
{
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    return current ? current->database(&error) : QSqlDatabase();
}

bool OrvexClassifyClient::writeAs(const std::function<bool(QSqlDatabase &, QString &)> &work)
{
    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    if (!current || !current->write(work, &error, tr("the clipboard was not changed")))
        return fail(error);
    return true;
}

OrvexClassifyClient::Right OrvexClassifyClient::rightOn(QSqlDatabase &db, const QString &uuid, const QString &user)
{
    // The owner always edits; otherwise the best right any of the user's roles holds.
    QSqlQuery right(db);
    right.prepare(OrvexArchiveStore::rolesOfUser() + QStringLiteral(
        "SELECT CASE WHEN NOT EXISTS (SELECT 1 FROM my_roles) THEN 0 WHEN c.owner = ? THEN 2 "
        "ELSE COALESCE((SELECT MAX(CASE r.mode WHEN 'W' THEN 2 ELSE 1 END) FROM clipboard_rights r "
        "JOIN my_roles ON my_roles.role = r.role_id WHERE r.clipboard = c.uuid), 0) END "
        "FROM clipboards c WHERE c.uuid = ?"));
    right.addBindValue(user);
    right.addBindValue(user);
    right.addBindValue(uuid);
    if (!right.exec() || !right.next())
        return Right::None;
    switch (right.value(0).toInt()) {
    case 2:
        return Right::Edit;
    case 1:
        return Right::View;
    default:
        return Right::None;
    }
}

bool OrvexClassifyClient::require(QSqlDatabase &db, const QString &uuid, Right needed, QString &error)
{
    const Right right = rightOn(db, uuid, user());
    if (right == Right::None) {
        // Clipboards a user may not view do not exist for that user.
        error = QStringLiteral("Unknown clipboard %1").arg(uuid);
        return false;
    }
    if (needed == Right::Edit && right != Right::Edit) {
        error = QStringLiteral("%1 may not edit this clipboard").arg(user());
        return false;
    }
    return true;
}

bool OrvexClassifyClient::validName(const QString &name, QString &error) const
{
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty()) {
        error = QStringLiteral("A clipboard needs a name");
        return false;
    }
    if (trimmed.size() > OrvexArchiveStore::MaxNameLength) {
        error = QStringLiteral("A clipboard name has at most %1 characters").arg(OrvexArchiveStore::MaxNameLength);
        return false;
    }
    for (const QChar c : trimmed) {
        if (c == kSep || c.category() == QChar::Other_Control) {
            error = QStringLiteral("A clipboard name may not contain control characters");
            return false;
        }
    }
    return true;
}

QStringList OrvexClassifyClient::searchDocuments(QStringList criteria)
{
    bool haveFilter = false;
    QList<qlonglong> docsIds;
    QString term;
    bool haveTerm = false;
    int limit = -1;
    for (const QString &criterion : qAsConst(criteria)) {
        if (criterion.startsWith(kDocsIdIn, Qt::CaseInsensitive) && criterion.endsWith(QLatin1Char(')'))) {
            haveFilter = true;
            const QString inner = criterion.mid(kDocsIdIn.size()).chopped(1);
            for (const QString &item : inner.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
                bool ok = false;
                const qlonglong id = item.trimmed().toLongLong(&ok);
                if (!ok || id < 0) {
                    fail(QStringLiteral("Not an entry id: %1").arg(item.trimmed()));
                    return {};
                }
                if (id > 0 && !docsIds.contains(id))
                    docsIds << id;
            }
        } else if (criterion.startsWith(kFullText)) {
            term = criterion.mid(kFullText.size()).trimmed();
            haveTerm = true;
        } else if (criterion.startsWith(kLimit)) {
            bool ok = false;
            limit = criterion.mid(kLimit.size()).trimmed().toInt(&ok);
            if (!ok || limit < 0) {
                fail(QStringLiteral("Invalid limit: %1").arg(criterion));
                return {};
            }
        } else if (criterion.startsWith(kSelection)) {
            // -1 is the whole archive; the archive keeps no stored selections.
            if (criterion.mid(kSelection.size()).trimmed() != QLatin1String("-1")) {
                fail(QStringLiteral("Unknown selection: %1").arg(criterion));
                return {};
            }
        } else {
            fail(QStringLiteral("Unsupported search criterion: %1").arg(criterion));
            return {};
        }
    }

    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    QSqlDatabase db = current ? current->database(&error) : QSqlDatabase();
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    const QString acting = user();
    // The full text of a document the user may not read is not searchable either.
    QString textCondition;
    QVariantList textValues;
    if (haveTerm && !current->backend().fullTextCondition(QStringLiteral("d.id"), term, haveFilter, textCondition, textValues)) {
        fail(QStringLiteral("Empty full-text term"));
        return {};
    }
    const QString readable = QStringLiteral(
        "(EXISTS (SELECT 1 FROM my_roles) AND (d.read_role IS NULL OR d.read_role IN (SELECT role FROM my_roles)))");
    const QString fields = QStringLiteral(
        "d.id, d.title, d.type_key, d.doc_date, d.file_name, d.status_key, v.pages, CASE WHEN %1 THEN 1 ELSE 0 END "
        "FROM documents d JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version").arg(readable);
    const QString notAuthorised = tr("Not authorised");
    // One row: 0 docId, 1 docsId, 2 title, 3 type, 4 date, 5 file name, 6 status, 7 pages.
    const auto row = [&](const QSqlQuery &query, int first, qlonglong docsId) {
        const QString ids[] = {query.value(first).toString(), QString::number(docsId)};
        if (query.value(first + 7).toInt() != 1)
            return QStringList{ids[0], ids[1], notAuthorised, QString(), QString(), QString(), QString(),
                               QStringLiteral("1")};
        return QStringList{ids[0], ids[1], query.value(first + 1).toString(), query.value(first + 2).toString(),
                           query.value(first + 3).toString(), query.value(first + 4).toString(),
                           query.value(first + 5).toString(), QString::number(query.value(first + 6).toInt())};
    };
    const auto run = [&](QSqlQuery &query, const QString &sql, const QVariantList &values) {
        query.setForwardOnly(true);
        query.prepare(OrvexArchiveStore::rolesOfUser() + sql);
        query.addBindValue(acting);
        for (const QVariant &value : values)
            query.addBindValue(value);
        if (exec(query, error))
            return true;
        fail(haveTerm ? QStringLiteral("Full-text search failed: %1").arg(error) : error);
        return false;
    };

    QStringList rows{QStringList{QStringLiteral("id"), QStringLiteral("docsid"), QStringLiteral("title"),
                                 QStringLiteral("type"), QStringLiteral("date"), QStringLiteral("file"),
                                 QStringLiteral("status"), QStringLiteral("pages")}
                         .join(kSep)};
    const auto add = [&](QStringList fields) {
        fields[0] = fields.at(0) + QLatin1Char('#') + fields.at(1);
        rows << fields.join(kSep);
    };
    const QString textFilter = haveTerm ? QStringLiteral(" AND %1 AND %2").arg(readable, textCondition) : QString();

    if (!haveFilter) {
        QSqlQuery all(db);
        QVariantList values = textValues;
        QString sql = QStringLiteral("SELECT d.docs_id, %1 WHERE %2%3 ORDER BY d.id").arg(fields, readable, textFilter);
        if (limit >= 0) {
            sql += QStringLiteral(" LIMIT ?");
            values << limit;
        }
        if (!run(all, sql, values))
            return {};
        while (all.next())
            add(row(all, 1, all.value(0).toLongLong()));
        return rows;
    }
    if (docsIds.isEmpty())
        return rows;

    // The entry ids are numbers, checked above.
    QStringList idTexts;
    for (qlonglong id : qAsConst(docsIds))
        idTexts << QString::number(id);
    QHash<qlonglong, QStringList> found;
    // A document's own entry number ...
    QSqlQuery own(db);
    if (!run(own, QStringLiteral("SELECT d.docs_id, %1 WHERE d.docs_id IN (%2)%3").arg(fields, idTexts.join(QLatin1Char(',')), textFilter),
             textValues))
        return {};
    while (own.next())
        found.insert(own.value(0).toLongLong(), row(own, 1, own.value(0).toLongLong()));
    own.finish();
    // ... else an entry of a clipboard the user may view.
    QStringList others;
    for (qlonglong id : qAsConst(docsIds))
        if (!found.contains(id))
            others << QString::number(id);
    if (!others.isEmpty()) {
        QSqlQuery entries(db);
        QVariantList values{acting};
        values << textValues;
        const QString sql = QStringLiteral(
            "SELECT e.docs_id, %1 JOIN clipboard_entries e ON e.doc_id = d.id "
            "WHERE e.docs_id IN (%2) AND EXISTS (SELECT 1 FROM my_roles) "
            "AND EXISTS (SELECT 1 FROM clipboards c WHERE c.uuid = e.clipboard AND (c.owner = ? OR EXISTS ("
            "SELECT 1 FROM clipboard_rights r JOIN my_roles ON my_roles.role = r.role_id WHERE r.clipboard = c.uuid)))%3 "
            "ORDER BY e.clipboard").arg(fields, others.join(QLatin1Char(',')), textFilter);
        if (!run(entries, sql, values))
            return {};
        while (entries.next()) {
            const qlonglong docsId = entries.value(0).toLongLong();
            if (!found.contains(docsId))
                found.insert(docsId, row(entries, 1, docsId));
        }
    }
    for (qlonglong docsId : qAsConst(docsIds)) {
        if (limit >= 0 && rows.size() > limit)
            break;
        if (found.contains(docsId))
            add(found.value(docsId));
    }
    return rows;
}

QStringList OrvexClassifyClient::getAllRoles()
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT id FROM roles ORDER BY CASE kind WHEN 'system' THEN 0 WHEN 'group' THEN 1 "
                                   "WHEN 'directory' THEN 2 ELSE 3 END, id"))) {
        fail(OrvexStorageError::ofQuery(query));
        return {};
    }
    QStringList roles;
    while (query.next())
        roles << query.value(0).toString();
    return roles;
}

QString OrvexClassifyClient::getConnectionMode()
{
    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    return current && current->isOpen() ? QStringLiteral("Online") : QString();
}

QStringList OrvexClassifyClient::getCardInfo(QString docsId, QString option)
{
    Q_UNUSED(option)
    qlonglong id = 0;
    if (!parseId(docsId, id)) {
        fail(QStringLiteral("Not an entry id: %1").arg(docsId));
        return {};
    }
    const QStringList rows = searchDocuments({kDocsIdIn + QString::number(id) + QLatin1Char(')')});
    if (rows.size() < 2) {
        if (!rows.isEmpty())
            fail(QStringLiteral("Unknown entry %1").arg(id));
        return {};
    }
    QStringList fields = rows.at(1).split(kSep);
    fields[0] = fields.at(0).section(QLatin1Char('#'), 0, 0);
    return fields;
}

bool OrvexClassifyClient::tableRows(const QString &table, QStringList &rows)
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen())
        return fail(error);
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT key, name FROM %1 ORDER BY key").arg(table)))
        return fail(OrvexStorageError::ofQuery(query));
    rows.clear();
    while (query.next())
        rows << query.value(0).toString() + kSep + OrvexSampleArchive::displayName(query.value(1).toString());
    return true;
}

bool OrvexClassifyClient::getDocumentTypes(QStringList &rows, QStringList &second)
{
    second.clear();
    return tableRows(QStringLiteral("doc_types"), rows);
}

bool OrvexClassifyClient::getDocumentStatuses(QStringList &rows, QStringList &second)
{
    second.clear();
    return tableRows(QStringLiteral("doc_statuses"), rows);
}

QString OrvexClassifyClient::getServerHost()
{
    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    return current ? current->setting(QStringLiteral("server")) : QString();
}

int OrvexClassifyClient::getServerPort()
{
    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    return current ? current->setting(QStringLiteral("port")).toInt() : 0;
}

qlonglong OrvexClassifyClient::getProfileId()
{
    QString error;
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    return current ? current->setting(QStringLiteral("profile_id")).toLongLong() : 0;
}

QString OrvexClassifyClient::createClipboard(QString name)
{
    QString error;
    if (!validName(name, error)) {
        fail(error);
        return {};
    }
    const QString acting = user();
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    if (!current) {
        fail(error);
        return {};
    }
    if (!current->isUser(acting)) {
        fail(QStringLiteral("Unknown user %1").arg(acting));
        return {};
    }
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const bool ok = writeAs([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO clipboards(uuid, name, owner, created) VALUES (?, ?, ?, ?)"));
        insert.addBindValue(uuid);
        insert.addBindValue(name.trimmed());
        insert.addBindValue(acting);
        insert.addBindValue(QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
        QSqlQuery right(db);
        right.prepare(QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES (?, ?, 'W')"));
        right.addBindValue(uuid);
        right.addBindValue(acting);
        return exec(insert, stepError) && exec(right, stepError);
    });
    return ok ? uuid : QString();
}

bool OrvexClassifyClient::removeClipboard(QString uuid)
{
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, uuid, Right::Edit, error))
            return false;
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM clipboards WHERE uuid = ?"));
        remove.addBindValue(uuid);
        return exec(remove, error);
    });
}

bool OrvexClassifyClient::renameClipboard(QString uuid, QString name)
{
    QString error;
    if (!validName(name, error))
        return fail(error);
    return writeAs([&](QSqlDatabase &db, QString &stepError) {
        if (!require(db, uuid, Right::Edit, stepError))
            return false;
        QSqlQuery rename(db);
        rename.prepare(QStringLiteral("UPDATE clipboards SET name = ? WHERE uuid = ?"));
        rename.addBindValue(name.trimmed());
        rename.addBindValue(uuid);
        return exec(rename, stepError);
    });
}

bool OrvexClassifyClient::getClipboards(QList<QPair<QString, QString>> &clipboards)
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen())
        return fail(error);
    // As rightOn(), for every clipboard at once.
    const QString acting = user();
    QSqlQuery query(db);
    query.prepare(OrvexArchiveStore::rolesOfUser() + QStringLiteral(
        "SELECT c.uuid, c.name, CASE WHEN c.owner = ? THEN 2 "
        "ELSE COALESCE((SELECT MAX(CASE r.mode WHEN 'W' THEN 2 ELSE 1 END) FROM clipboard_rights r "
        "JOIN my_roles ON my_roles.role = r.role_id WHERE r.clipboard = c.uuid), 0) END "
        "FROM clipboards c WHERE EXISTS (SELECT 1 FROM my_roles) ORDER BY LOWER(c.name), c.created"));
    query.addBindValue(acting);
    query.addBindValue(acting);
    if (!exec(query, error))
        return fail(error);
    // Nobody edits a read-only archive.
    const QSharedPointer<OrvexArchiveStore> current = store(error);
    const bool readOnly = current && current->isReadOnly();
    QList<QPair<QString, QString>> visible;
    while (query.next()) {
        const int right = query.value(2).toInt();
        if (right > 0)
            visible.append({query.value(0).toString(), query.value(1).toString() + kSep
                                                           + (right == 2 && !readOnly ? QStringLiteral("W") : QStringLiteral("R"))});
    }
    clipboards = visible;
    return true;
}

bool OrvexClassifyClient::getClipboardDocuments(QString clipboardId, QStringList &entries, QStringList &comments)
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen())
        return fail(error);
    if (!require(db, clipboardId, Right::View, error))
        return fail(error);
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT doc_id, docs_id, note FROM clipboard_entries WHERE clipboard = ? ORDER BY position"));
    query.addBindValue(clipboardId);
    if (!exec(query, error))
        return fail(error);
    QStringList newEntries, newComments;
    while (query.next()) {
        newEntries << query.value(0).toString() + kSep + query.value(1).toString();
        newComments << query.value(2).toString();
    }
    entries = newEntries;
    comments = newComments;
    return true;
}

bool OrvexClassifyClient::addToClipboard(QString clipboardId, QString docId, QString docsId)
{
    qlonglong document = 0;
    if (!parseId(docId, document))
        return fail(QStringLiteral("Not a document id: %1").arg(docId));
    qlonglong entry = 0;
    if (!docsId.trimmed().isEmpty() && !parseId(docsId, entry))
        return fail(QStringLiteral("Not an entry id: %1").arg(docsId));
    const QString acting = user();
    QString storeError;
    const QSharedPointer<OrvexArchiveStore> current = store(storeError);
    if (!current)
        return fail(storeError);
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery known(db);
        known.prepare(QStringLiteral("SELECT docs_id FROM documents WHERE id = ?"));
        known.addBindValue(document);
        if (!exec(known, error))
            return false;
        if (!known.next() || !current->mayRead(acting, document)) {
            error = QStringLiteral("Unknown document %1").arg(document);
            return false;
        }
        if (entry == 0)
            entry = known.value(0).toLongLong();
        known.finish();
        // An entry number that names another document would mix up two documents.
        QSqlQuery other(db);
        other.prepare(QStringLiteral("SELECT id FROM documents WHERE docs_id = ? AND id <> ?"));
        other.addBindValue(entry);
        other.addBindValue(document);
        if (!exec(other, error))
            return false;
        if (other.next()) {
            error = QStringLiteral("Entry %1 belongs to document %2, not %3")
                        .arg(entry).arg(other.value(0).toLongLong()).arg(document);
            return false;
        }
        QSqlQuery state(db);
        state.prepare(QStringLiteral("SELECT COUNT(*), COALESCE(MAX(position), 0), "
                                     "SUM(CASE WHEN docs_id = ? THEN 1 ELSE 0 END) "
                                     "FROM clipboard_entries WHERE clipboard = ?"));
        state.addBindValue(entry);
        state.addBindValue(clipboardId);
        if (!exec(state, error) || !state.next())
            return false;
        if (state.value(2).toInt() > 0) {
            error = QStringLiteral("Entry %1 is already on the clipboard").arg(entry);
            return false;
        }
        if (state.value(0).toInt() >= OrvexArchiveStore::MaxClipboardEntries) {
            error = QStringLiteral("A clipboard holds at most %1 documents").arg(OrvexArchiveStore::MaxClipboardEntries);
            return false;
        }
        const int position = state.value(1).toInt() + 1;
        state.finish();
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO clipboard_entries(clipboard, docs_id, doc_id, note, position) "
                                      "VALUES (?, ?, ?, '', ?)"));
        insert.addBindValue(clipboardId);
        insert.addBindValue(entry);
        insert.addBindValue(document);
        insert.addBindValue(position);
        return exec(insert, error);
    });
}

bool OrvexClassifyClient::removeFromClipboard(QString clipboardId, QString docsId)
{
    qlonglong entry = 0;
    if (!parseId(docsId, entry))
        return fail(QStringLiteral("Not an entry id: %1").arg(docsId));
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM clipboard_entries WHERE clipboard = ? AND docs_id = ?"));
        remove.addBindValue(clipboardId);
        remove.addBindValue(entry);
        if (!exec(remove, error))
            return false;
        if (remove.numRowsAffected() < 1) {
            error = QStringLiteral("Entry %1 is not on the clipboard").arg(entry);
            return false;
        }
        return true;
    });
}

bool OrvexClassifyClient::clearClipboard(QString clipboardId)
{
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery clear(db);
        clear.prepare(QStringLiteral("DELETE FROM clipboard_entries WHERE clipboard = ?"));
        clear.addBindValue(clipboardId);
        return exec(clear, error);
    });
}

bool OrvexClassifyClient::setClipboardComment(QString clipboardId, QString docsId, QString text)
{
    qlonglong entry = 0;
    if (!parseId(docsId, entry))
        return fail(QStringLiteral("Not an entry id: %1").arg(docsId));
    // Characters as the user counts them: an emoji, two UTF-16 units, is one.
    if (text.toUcs4().size() > OrvexArchiveStore::MaxNoteLength)
        return fail(QStringLiteral("A note has at most %1 characters").arg(OrvexArchiveStore::MaxNoteLength));
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery update(db);
        update.prepare(QStringLiteral("UPDATE clipboard_entries SET note = ? WHERE clipboard = ? AND docs_id = ?"));
        update.addBindValue(OrvexArchiveStore::text(text));
        update.addBindValue(clipboardId);
        update.addBindValue(entry);
        if (!exec(update, error))
            return false;
        if (update.numRowsAffected() < 1) {
            error = QStringLiteral("Entry %1 is not on the clipboard").arg(entry);
            return false;
        }
        return true;
    });
}

QStringList OrvexClassifyClient::getClipboardRoles(QString clipboardId)
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen() || !require(db, clipboardId, Right::View, error)) {
        fail(error);
        return {};
    }
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT role_id, mode FROM clipboard_rights WHERE clipboard = ? ORDER BY mode DESC, role_id"));
    query.addBindValue(clipboardId);
    if (!exec(query, error)) {
        fail(error);
        return {};
    }
    QStringList roles;
    while (query.next())
        roles << clipboardId + kSep + query.value(0).toString() + kSep + query.value(1).toString();
    return roles;
}

bool OrvexClassifyClient::setClipboardRoles(QString clipboardId, QStringList roles)
{
    // Entries are "role U+FEFF R|W", or with a leading field as getClipboardRoles answers.
    QMap<QString, QString> rights;
    for (const QString &entry : qAsConst(roles)) {
        QStringList fields = entry.split(kSep);
        if (fields.size() == 3)
            fields.removeFirst();
        if (fields.size() != 2 || fields.at(0).trimmed().isEmpty()
            || (fields.at(1) != QLatin1String("R") && fields.at(1) != QLatin1String("W")))
            return fail(QStringLiteral("Malformed right: %1").arg(QString(entry).replace(kSep, QLatin1Char('|'))));
        const QString role = fields.at(0).trimmed();
        if (rights.value(role) != QLatin1String("W"))
            rights.insert(role, fields.at(1));
    }
    if (!rights.values().contains(QStringLiteral("W")))
        return fail(QStringLiteral("At least one role must be able to edit the clipboard"));
    QString storeError;
    const QSharedPointer<OrvexArchiveStore> current = store(storeError);
    if (!current)
        return fail(storeError);
    QList<QPair<QString, QString>> list;
    for (auto it = rights.cbegin(); it != rights.cend(); ++it)
        list.append({it.key(), it.value()});
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery known(db);
        known.prepare(QStringLiteral("SELECT 1 FROM roles WHERE id = ?"));
        for (auto it = rights.cbegin(); it != rights.cend(); ++it) {
            known.addBindValue(it.key());
            if (!exec(known, error))
                return false;
            if (!known.next()) {
                error = QStringLiteral("Unknown role %1").arg(it.key());
                return false;
            }
        }
        known.finish();
        return current->backend().replaceRights(db, clipboardId, list, error);
    });
}

QStringList OrvexClassifyClient::getRoleNames(QStringList roleIds)
{
    QString error;
    QSqlDatabase db = database(error);
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT display_name FROM roles WHERE id = ?"));
    QStringList names;
    for (const QString &roleId : qAsConst(roleIds)) {
        query.addBindValue(roleId);
        if (query.exec() && query.next())
            names << roleId + kSep + OrvexSampleArchive::displayName(query.value(0).toString());
    }
    return names;
}
