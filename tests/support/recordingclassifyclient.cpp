#include "recordingclassifyclient.h"

#include <QRegularExpression>
#include <QSet>
#include <QUuid>

namespace {
const QChar kSep(0xFEFF);
}

RecordingClassifyClient::RecordingClassifyClient(QObject *parent)
    : QObject(parent)
{
}

QString RecordingClassifyClient::addClipboard(const QString &name, bool writeable, const QString &uuid)
{
    QMutexLocker locker(&m_mutex);
    Clipboard clipboard;
    clipboard.uuid = uuid.isEmpty() ? QUuid::createUuid().toString(QUuid::WithoutBraces) : uuid;
    clipboard.name = name;
    clipboard.flags = writeable ? QStringLiteral("W") : QStringLiteral("R");
    m_clipboards.append(clipboard);
    return clipboard.uuid;
}

QString RecordingClassifyClient::addEntry(const QString &clipboardId, const QString &docId,
                                          const QString &docsId, const QString &comment)
{
    QMutexLocker locker(&m_mutex);
    const int index = indexOf(clipboardId);
    if (index < 0)
        return {};
    Entry entry{docId, docsId.isEmpty() ? QString::number(m_nextDocsId++) : docsId, comment};
    m_clipboards[index].entries.append(entry);
    return entry.docsId;
}

void RecordingClassifyClient::setClipboardFlags(const QString &clipboardId, const QString &flags)
{
    QMutexLocker locker(&m_mutex);
    const int index = indexOf(clipboardId);
    if (index >= 0)
        m_clipboards[index].flags = flags;
}

void RecordingClassifyClient::setRawClipboardRoles(const QString &clipboardId, const QStringList &entries)
{
    QMutexLocker locker(&m_mutex);
    const int index = indexOf(clipboardId);
    if (index >= 0)
        m_clipboards[index].roles = entries;
}

RecordingClassifyClient::Clipboard RecordingClassifyClient::clipboard(const QString &uuid) const
{
    QMutexLocker locker(&m_mutex);
    const int index = indexOf(uuid);
    return index < 0 ? Clipboard() : m_clipboards.at(index);
}

QStringList RecordingClassifyClient::cardInfoOf(const QString &docsId) const
{
    QMutexLocker locker(&m_mutex);
    for (const Clipboard &clipboard : m_clipboards)
        for (const Entry &entry : clipboard.entries)
            if (entry.docsId == docsId)
                return cardFields(entry);
    return {};
}

bool RecordingClassifyClient::enter(const QString &name, const QVariantList &args)
{
    m_log.record(name, args);
    m_log.stallIfSet(name);
    return m_log.isFailing(name);
}

int RecordingClassifyClient::indexOf(const QString &uuid) const
{
    for (int i = 0; i < m_clipboards.size(); ++i)
        if (m_clipboards.at(i).uuid == uuid)
            return i;
    return -1;
}

QStringList RecordingClassifyClient::cardFields(const Entry &entry) const
{
    const Document document = m_documents.value(entry.docId);
    return {entry.docId,
            entry.docsId,
            document.title,
            document.typeKey,
            QStringLiteral("2026-11-21"),
            document.title + QStringLiteral(".pdf"),
            document.statusKey,
            QString::number(document.pages)};
}

bool RecordingClassifyClient::tableRows(const QMap<QString, QString> &table, bool shortRows,
                                        QStringList &rows)
{
    for (auto it = table.cbegin(); it != table.cend(); ++it)
        rows << (shortRows ? it.key() : it.key() + kSep + it.value());
    return true;
}

QStringList RecordingClassifyClient::searchDocuments(QStringList criteria)
{
    if (enter(QStringLiteral("searchDocuments"), {criteria}))
        return {};

    bool haveFilter = false;
    QSet<QString> filter;
    QStringList alternatives;
    int limit = -1;
    for (const QString &criterion : qAsConst(criteria)) {
        if (criterion.startsWith(QLatin1String("docs_id in ("))) {
            haveFilter = true;
            const QString inner = criterion.mid(12).chopped(criterion.endsWith(QLatin1Char(')')) ? 1 : 0);
            for (const QString &id : inner.split(QLatin1Char(','), Qt::SkipEmptyParts))
                filter.insert(id.trimmed());
        } else if (criterion.startsWith(QLatin1String("OPT:FULLTEXT") + kSep)) {
            const QString term = criterion.mid(13);
            for (const QString &alternative : term.split(QStringLiteral(" OR ")))
                if (!alternative.trimmed().isEmpty())
                    alternatives << alternative.trimmed();
        } else if (criterion.startsWith(QLatin1String("OPT:LIMIT;"))) {
            limit = criterion.mid(10).toInt();
        }
    }

    QMutexLocker locker(&m_mutex);
    const bool shortRows = m_log.isShort(QStringLiteral("searchDocuments"));
    QStringList rows{QStringList{QStringLiteral("id"), QStringLiteral("docsid"), QStringLiteral("title"),
                                 QStringLiteral("type"), QStringLiteral("date"), QStringLiteral("file"),
                                 QStringLiteral("status"), QStringLiteral("pages")}
                         .join(kSep)};
    QSet<QString> seen;
    for (const Clipboard &clipboard : qAsConst(m_clipboards)) {
        for (const Entry &entry : clipboard.entries) {
            if (seen.contains(entry.docsId) || (haveFilter && !filter.contains(entry.docsId)))
                continue;
            if (!alternatives.isEmpty()) {
                const Document document = m_documents.value(entry.docId);
                const QString haystack = document.title + QLatin1Char(' ') + document.text;
                bool found = false;
                for (const QString &alternative : qAsConst(alternatives))
                    found = found || haystack.contains(alternative, Qt::CaseInsensitive);
                if (!found)
                    continue;
            }
            if (limit >= 0 && rows.size() > limit)
                return rows;
            seen.insert(entry.docsId);
            QStringList fields = cardFields(entry);
            fields[0] = shortRows ? entry.docId : entry.docId + QLatin1Char('#') + entry.docsId;
            rows << fields.join(kSep);
        }
    }
    return rows;
}

QStringList RecordingClassifyClient::getCardInfo(QString docsId, QString option)
{
    if (enter(QStringLiteral("getCardInfo"), {docsId, option}))
        return {};
    QStringList fields = cardInfoOf(docsId);
    if (m_log.isShort(QStringLiteral("getCardInfo")))
        fields = fields.mid(0, 3);
    return fields;
}

bool RecordingClassifyClient::getDocumentTypes(QStringList &rows, QStringList &second)
{
    if (enter(QStringLiteral("getDocumentTypes"), {}))
        return false;
    QMutexLocker locker(&m_mutex);
    second.clear();
    return tableRows(m_types, m_log.isShort(QStringLiteral("getDocumentTypes")), rows);
}

bool RecordingClassifyClient::getDocumentStatuses(QStringList &rows, QStringList &second)
{
    if (enter(QStringLiteral("getDocumentStatuses"), {}))
        return false;
    QMutexLocker locker(&m_mutex);
    second.clear();
    return tableRows(m_statuses, m_log.isShort(QStringLiteral("getDocumentStatuses")), rows);
}

QString RecordingClassifyClient::createClipboard(QString name)
{
    if (enter(QStringLiteral("createClipboard"), {name}))
        return {};
    return addClipboard(name, true);
}

bool RecordingClassifyClient::removeClipboard(QString uuid)
{
    return onClipboard(QStringLiteral("removeClipboard"), {uuid}, [&](Clipboard &clipboard) {
        m_clipboards.removeAt(indexOf(clipboard.uuid));
        return true;
    });
}

bool RecordingClassifyClient::renameClipboard(QString uuid, QString name)
{
    return onClipboard(QStringLiteral("renameClipboard"), {uuid, name}, [&](Clipboard &clipboard) {
        clipboard.name = name;
        return true;
    });
}

bool RecordingClassifyClient::getClipboards(QList<QPair<QString, QString>> &clipboards)
{
    if (enter(QStringLiteral("getClipboards"), {}))
        return false;
    QMutexLocker locker(&m_mutex);
    if (m_useRawClipboards) {
        clipboards = m_rawClipboards;
        return true;
    }
    const bool shortRows = m_log.isShort(QStringLiteral("getClipboards"));
    clipboards.clear();
    for (const Clipboard &clipboard : qAsConst(m_clipboards))
        clipboards.append({clipboard.uuid, shortRows ? clipboard.name : clipboard.name + kSep + clipboard.flags});
    return true;
}

bool RecordingClassifyClient::getClipboardDocuments(QString clipboardId, QStringList &entries,
                                                    QStringList &comments)
{
    return onClipboard(QStringLiteral("getClipboardDocuments"), {clipboardId}, [&](Clipboard &clipboard) {
        const bool shortRows = m_log.isShort(QStringLiteral("getClipboardDocuments"));
        entries.clear();
        comments.clear();
        for (const Entry &entry : qAsConst(clipboard.entries)) {
            entries << (shortRows ? entry.docId : entry.docId + kSep + entry.docsId);
            comments << entry.comment;
        }
        return true;
    });
}

bool RecordingClassifyClient::addToClipboard(QString clipboardId, QString docId, QString docsId)
{
    return onClipboard(QStringLiteral("addToClipboard"), {clipboardId, docId, docsId}, [&](Clipboard &clipboard) {
        for (const Entry &entry : qAsConst(clipboard.entries))
            if (entry.docsId == docsId)
                return false;
        clipboard.entries.append({docId, docsId, {}});
        return true;
    });
}

bool RecordingClassifyClient::removeFromClipboard(QString clipboardId, QString docsId)
{
    return onClipboard(QStringLiteral("removeFromClipboard"), {clipboardId, docsId}, [&](Clipboard &clipboard) {
        QList<Entry> &entries = clipboard.entries;
        for (int i = 0; i < entries.size(); ++i) {
            if (entries.at(i).docsId == docsId) {
                entries.removeAt(i);
                return true;
            }
        }
        return false;
    });
}

bool RecordingClassifyClient::clearClipboard(QString clipboardId)
{
    return onClipboard(QStringLiteral("clearClipboard"), {clipboardId}, [&](Clipboard &clipboard) {
        clipboard.entries.clear();
        return true;
    });
}

bool RecordingClassifyClient::setClipboardComment(QString clipboardId, QString docsId, QString text)
{
    return onClipboard(QStringLiteral("setClipboardComment"), {clipboardId, docsId, text}, [&](Clipboard &clipboard) {
        for (Entry &entry : clipboard.entries) {
            if (entry.docsId == docsId) {
                entry.comment = text;
                return true;
            }
        }
        return false;
    });
}

QStringList RecordingClassifyClient::getClipboardRoles(QString clipboardId)
{
    return onClipboard(QStringLiteral("getClipboardRoles"), {clipboardId}, [&](Clipboard &clipboard) {
        QStringList roles = clipboard.roles;
        if (m_log.isShort(QStringLiteral("getClipboardRoles")))
            for (QString &role : roles)
                role = role.section(kSep, 0, 0);
        return roles;
    });
}

bool RecordingClassifyClient::setClipboardRoles(QString clipboardId, QStringList roles)
{
    return onClipboard(QStringLiteral("setClipboardRoles"), {clipboardId, roles}, [&](Clipboard &clipboard) {
        // Stored as the server answers them: with a leading field.
        QStringList stored;
        for (const QString &role : qAsConst(roles))
            stored << clipboard.uuid + kSep + role;
        clipboard.roles = stored;
        return true;
    });
}

QStringList RecordingClassifyClient::getRoleNames(QStringList roleIds)
{
    if (enter(QStringLiteral("getRoleNames"), {roleIds}))
        return {};
    QMutexLocker locker(&m_mutex);
    const bool shortRows = m_log.isShort(QStringLiteral("getRoleNames"));
    QStringList names;
    for (const QString &roleId : qAsConst(roleIds)) {
        if (!m_roleNames.contains(roleId))
            continue;
        names << (shortRows ? roleId : roleId + kSep + m_roleNames.value(roleId));
    }
    return names;
}
