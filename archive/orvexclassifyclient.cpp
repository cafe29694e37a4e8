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

// One FTS5 expression from the user's term: alternatives joined by " OR ", each
// alternative's words must all appear (as word prefixes).
QString matchExpression(const QString &term)
{
    QStringList alternatives;
    for (const QString &alternative : term.split(QStringLiteral(" OR "))) {
        QStringList words;
        for (QString word : alternative.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            word.replace(QLatin1Char('"'), QStringLiteral("\"\""));
            words << QLatin1Char('"') + word + QStringLiteral("\"*");
        }
        if (!words.isEmpty())
            alternatives << QLatin1Char('(') + words.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return alternatives.join(QStringLiteral(" OR "));
}
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

bool OrvexClassifyClient::writeAs(const std::function<bool(QSqlDatabase &, QString &)> &work)
{
    QString error;
    if (!m_store->write(work, &error, tr("the clipboard was not changed")))
        return fail(error);
    emit clipboardsChanged();
    return true;
}

OrvexClassifyClient::Right OrvexClassifyClient::rightOn(QSqlDatabase &db, const QString &uuid, const QString &user)
{
    const QSet<QString> roles = m_store->rolesOf(user);
    if (roles.isEmpty())
        return Right::None;
    QSqlQuery owner(db);
    owner.prepare(QStringLiteral("SELECT owner FROM clipboards WHERE uuid = ?"));
    owner.addBindValue(uuid);
    if (!owner.exec() || !owner.next())
        return Right::None;
    if (owner.value(0).toString() == user)
        return Right::Edit;
    QSqlQuery rights(db);
    rights.prepare(QStringLiteral("SELECT role_id, mode FROM clipboard_rights WHERE clipboard = ?"));
    rights.addBindValue(uuid);
    if (!rights.exec())
        return Right::None;
    Right right = Right::None;
    while (rights.next()) {
        if (!roles.contains(rights.value(0).toString()))
            continue;
        if (rights.value(1).toString() == QLatin1String("W"))
            return Right::Edit;
        right = Right::View;
    }
    return right;
}

bool OrvexClassifyClient::require(QSqlDatabase &db, const QString &uuid, Right needed, QString &error)
{
    QSqlQuery exists(db);
    exists.prepare(QStringLiteral("SELECT 1 FROM clipboards WHERE uuid = ?"));
    exists.addBindValue(uuid);
    if (!exists.exec() || !exists.next()) {
        error = QStringLiteral("Unknown clipboard %1").arg(uuid);
        return false;
    }
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

QStringList OrvexClassifyClient::rowFor(QSqlDatabase &db, qlonglong docId, qlonglong docsId, const QString &user)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT d.title, d.type_key, d.doc_date, d.file_name, d.status_key, v.pages "
                                 "FROM documents d JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version "
                                 "WHERE d.id = ?"));
    query.addBindValue(docId);
    if (!query.exec() || !query.next())
        return {};
    const QString ids[] = {QString::number(docId), QString::number(docsId)};
    if (!m_store->mayRead(user, docId))
        return {ids[0], ids[1], tr("Not authorised"), QString(), QString(), QString(), QString(), QStringLiteral("1")};
    return {ids[0], ids[1], query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
            query.value(3).toString(), query.value(4).toString(), QString::number(query.value(5).toInt())};
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
            if (matchExpression(term).isEmpty()) {
                fail(QStringLiteral("Empty full-text term"));
                return {};
            }
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
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen()) {
        fail(error);
        return {};
    }
    const QString acting = user();

    // Candidates: (docId, docsId) in answer order.
    QList<QPair<qlonglong, qlonglong>> candidates;
    if (haveFilter) {
        QSqlQuery byDocument(db);
        byDocument.prepare(QStringLiteral("SELECT id FROM documents WHERE docs_id = ?"));
        QSqlQuery byEntry(db);
        byEntry.prepare(QStringLiteral("SELECT clipboard, doc_id FROM clipboard_entries WHERE docs_id = ?"));
        for (qlonglong docsId : qAsConst(docsIds)) {
            byDocument.addBindValue(docsId);
            if (!exec(byDocument, error)) {
                fail(error);
                return {};
            }
            if (byDocument.next()) {
                candidates.append({byDocument.value(0).toLongLong(), docsId});
                continue;
            }
            byEntry.addBindValue(docsId);
            if (!exec(byEntry, error)) {
                fail(error);
                return {};
            }
            while (byEntry.next()) {
                const qlonglong docId = byEntry.value(1).toLongLong();
                if (rightOn(db, byEntry.value(0).toString(), acting) != Right::None) {
                    candidates.append({docId, docsId});
                    break;
                }
            }
        }
    } else {
        QSqlQuery all(db);
        if (!all.exec(QStringLiteral("SELECT id, docs_id FROM documents ORDER BY id"))) {
            fail(OrvexStorageError::ofQuery(all));
            return {};
        }
        while (all.next()) {
            const qlonglong docId = all.value(0).toLongLong();
            if (m_store->mayRead(acting, docId))
                candidates.append({docId, all.value(1).toLongLong()});
        }
    }

    if (haveTerm) {
        QSqlQuery match(db);
        match.prepare(QStringLiteral("SELECT rowid FROM doc_text WHERE doc_text MATCH ?"));
        match.addBindValue(matchExpression(term));
        if (!exec(match, error)) {
            fail(QStringLiteral("Full-text search failed: %1").arg(error));
            return {};
        }
        QSet<qlonglong> found;
        while (match.next())
            found.insert(match.value(0).toLongLong());
        QList<QPair<qlonglong, qlonglong>> kept;
        for (const auto &candidate : qAsConst(candidates))
            // The text of a document the user may not read must not be searchable either.
            if (found.contains(candidate.first) && m_store->mayRead(acting, candidate.first))
                kept << candidate;
        candidates = kept;
    }

    QStringList rows{QStringList{QStringLiteral("id"), QStringLiteral("docsid"), QStringLiteral("title"),
                                 QStringLiteral("type"), QStringLiteral("date"), QStringLiteral("file"),
                                 QStringLiteral("status"), QStringLiteral("pages")}
                         .join(kSep)};
    for (const auto &candidate : qAsConst(candidates)) {
        if (limit >= 0 && rows.size() > limit)
            break;
        QStringList fields = rowFor(db, candidate.first, candidate.second, acting);
        if (fields.isEmpty())
            continue;
        fields[0] = fields.at(0) + QLatin1Char('#') + fields.at(1);
        rows << fields.join(kSep);
    }
    return rows;
}

QStringList OrvexClassifyClient::getAllRoles()
{
    QString error;
    QSqlDatabase db = m_store->database(&error);
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
    return m_store->isOpen() ? QStringLiteral("Online") : QString();
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
    QSqlDatabase db = m_store->database(&error);
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
    return m_store->setting(QStringLiteral("server"));
}

int OrvexClassifyClient::getServerPort()
{
    return m_store->setting(QStringLiteral("port")).toInt();
}

qlonglong OrvexClassifyClient::getProfileId()
{
    return m_store->setting(QStringLiteral("profile_id")).toLongLong();
}

QString OrvexClassifyClient::createClipboard(QString name)
{
    QString error;
    if (!validName(name, error)) {
        fail(error);
        return {};
    }
    const QString acting = user();
    if (!m_store->isUser(acting)) {
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
    QSqlDatabase db = m_store->database(&error);
    if (!db.isOpen())
        return fail(error);
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT uuid, name FROM clipboards ORDER BY name COLLATE NOCASE, created")))
        return fail(OrvexStorageError::ofQuery(query));
    const QString acting = user();
    QList<QPair<QString, QString>> visible;
    while (query.next()) {
        const QString uuid = query.value(0).toString();
        const Right right = rightOn(db, uuid, acting);
        if (right == Right::None)
            continue;
        visible.append({uuid, query.value(1).toString() + kSep
                                  + (right == Right::Edit && !m_store->isReadOnly() ? QStringLiteral("W") : QStringLiteral("R"))});
    }
    clipboards = visible;
    return true;
}

bool OrvexClassifyClient::getClipboardDocuments(QString clipboardId, QStringList &entries, QStringList &comments)
{
    QString error;
    QSqlDatabase db = m_store->database(&error);
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
    return writeAs([&](QSqlDatabase &db, QString &error) {
        if (!require(db, clipboardId, Right::Edit, error))
            return false;
        QSqlQuery known(db);
        known.prepare(QStringLiteral("SELECT docs_id FROM documents WHERE id = ?"));
        known.addBindValue(document);
        if (!exec(known, error))
            return false;
        if (!known.next() || !m_store->mayRead(acting, document)) {
            error = QStringLiteral("Unknown document %1").arg(document);
            return false;
        }
        if (entry == 0)
            entry = known.value(0).toLongLong();
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
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO clipboard_entries(clipboard, docs_id, doc_id, note, position) "
                                      "VALUES (?, ?, ?, '', ?)"));
        insert.addBindValue(clipboardId);
        insert.addBindValue(entry);
        insert.addBindValue(document);
        insert.addBindValue(state.value(1).toInt() + 1);
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
    if (text.size() > OrvexArchiveStore::MaxNoteLength)
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
    QSqlDatabase db = m_store->database(&error);
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
        QSqlQuery clear(db);
        clear.prepare(QStringLiteral("DELETE FROM clipboard_rights WHERE clipboard = ?"));
        clear.addBindValue(clipboardId);
        if (!exec(clear, error))
            return false;
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO clipboard_rights(clipboard, role_id, mode) VALUES (?, ?, ?)"));
        for (auto it = rights.cbegin(); it != rights.cend(); ++it) {
            insert.addBindValue(clipboardId);
            insert.addBindValue(it.key());
            insert.addBindValue(it.value());
            if (!exec(insert, error))
                return false;
        }
        return true;
    });
}

QStringList OrvexClassifyClient::getRoleNames(QStringList roleIds)
{
    QString error;
    QSqlDatabase db = m_store->database(&error);
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
