#include "orvexarchivecopy.h"

#include "orvexarchivestore.h"
#include "orvexcontenthash.h"
#include "orvexsqlhelpers.h"

#include <QCryptographicHash>
#include <QIODevice>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

namespace {
using OrvexSql::exec;

struct Table
{
    const char *name;
    const char *columns;
    const char *order;      // the primary key, for a stable order
    const char *onConflict; // what the target's set-up holds already, or nullptr
};

// In the order the references between them allow.
const Table kTables[] = {
    {"settings", "key, value", "key", "ON CONFLICT(key) DO UPDATE SET value = excluded.value"},
    {"roles", "id, kind, display_name, password_hash", "id",
     "ON CONFLICT(id) DO UPDATE SET kind = excluded.kind, display_name = excluded.display_name, "
     "password_hash = excluded.password_hash"},
    {"role_members", "role_id, member_id", "role_id, member_id", "ON CONFLICT DO NOTHING"},
    {"doc_types", "key, name", "key", "ON CONFLICT(key) DO UPDATE SET name = excluded.name"},
    {"doc_statuses", "key, name", "key", "ON CONFLICT(key) DO UPDATE SET name = excluded.name"},
    {"documents", "id, docs_id, type_key, status_key, title, file_name, doc_date, current_version, read_role, owner, created",
     "id", nullptr},
    {"versions", "doc_id, version, file, size, sha256, pages, created", "doc_id, version", nullptr},
    {"page_hashes", "doc_id, version, page, hash", "doc_id, version, page", nullptr},
    {"clipboards", "uuid, name, owner, created", "uuid", nullptr},
    {"clipboard_entries", "clipboard, docs_id, doc_id, note, position", "clipboard, docs_id", nullptr},
    {"clipboard_rights", "clipboard, role_id, mode", "clipboard, role_id", nullptr},
};

QString select(const Table &table, bool forDigest)
{
    QString columns = QLatin1String(table.columns);
    // Passwords stay behind on a server, so they are no part of the comparison.
    if (forDigest && qstrcmp(table.name, "roles") == 0)
        columns = QStringLiteral("id, kind, display_name");
    return QStringLiteral("SELECT %1 FROM %2 ORDER BY %3").arg(columns, QLatin1String(table.name), QLatin1String(table.order));
}

// The same text for the same value on either engine.
QString canonical(const QVariant &value)
{
    if (value.isNull())
        return QStringLiteral("\\N");
    if (value.type() == QVariant::ByteArray)
        return QString::fromLatin1(value.toByteArray().toHex());
    return value.toString();
}

struct Digest
{
    qlonglong rows = 0;
    QByteArray hash;
    QString error;
};

Digest digestOf(QSqlDatabase db, const QString &sql)
{
    Digest digest;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!exec(query, sql, digest.error))
        return digest;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    while (query.next()) {
        QStringList fields;
        for (int i = 0; i < query.record().count(); ++i)
            fields << canonical(query.value(i));
        hash.addData(fields.join(QChar(0x1f)).toUtf8());
        hash.addData("\x1e", 1);
        ++digest.rows;
    }
    digest.hash = hash.result().toHex();
    return digest;
}
} // namespace

OrvexArchiveCopy::OrvexArchiveCopy(OrvexArchiveStore &source, OrvexArchiveStore &target, Report report)
    : m_source(source)
    , m_target(target)
    , m_report(std::move(report))
{
    if (!m_report)
        m_report = [](const QString &) {};
}

bool OrvexArchiveCopy::targetIsEmpty(QString &error)
{
    QSqlDatabase db = m_target.database(&error);
    if (!db.isOpen())
        return false;
    QSqlQuery count(db);
    if (!exec(count, QStringLiteral("SELECT (SELECT COUNT(*) FROM documents) + (SELECT COUNT(*) FROM clipboards) "
                                    "+ (SELECT COUNT(*) FROM roles WHERE kind <> 'system')"),
              error)
        || !count.next())
        return false;
    if (count.value(0).toLongLong() > 0) {
        error = tr("%1 holds an archive already; the copy needs an empty one.").arg(m_target.folder());
        return false;
    }
    return true;
}

bool OrvexArchiveCopy::copy(QString &error)
{
    if (!targetIsEmpty(error))
        return false;
    QSqlDatabase source = m_source.database(&error);
    if (!source.isOpen())
        return false;
    OrvexArchiveStore::FileChanges files;
    const bool toServer = m_target.isServer();
    const bool ok = m_target.write([&](QSqlDatabase &db, QString &stepError) {
        for (const Table &table : kTables) {
            // Read whole: the files of versions are read on the same connection meanwhile.
            QSqlQuery rows(source);
            if (!exec(rows, select(table, false), stepError))
                return false;
            const int columns = QString::fromLatin1(table.columns).split(QLatin1Char(',')).size();
            QStringList marks;
            for (int i = 0; i < columns; ++i)
                marks << QStringLiteral("?");
            QSqlQuery insert(db);
            insert.prepare(QStringLiteral("INSERT INTO %1(%2) VALUES (%3) %4")
                               .arg(QLatin1String(table.name), QLatin1String(table.columns), marks.join(QStringLiteral(", ")),
                                    table.onConflict ? QLatin1String(table.onConflict) : QLatin1String("")));
            const bool isRoles = qstrcmp(table.name, "roles") == 0;
            const bool isVersions = qstrcmp(table.name, "versions") == 0;
            qlonglong copied = 0;
            while (rows.next()) {
                for (int i = 0; i < columns; ++i) {
                    const bool password = isRoles && i == 3;
                    insert.addBindValue(password && toServer ? QVariant(QVariant::String) : rows.value(i));
                }
                if (!exec(insert, stepError))
                    return false;
                if (isVersions) {
                    // The version's file, streamed from the source's storage into the target's.
                    const QString name = rows.value(2).toString();
                    OrvexArchiveBackend::LocalFile local;
                    if (!m_source.localFile(OrvexArchiveStore::Area::Files, name, local, stepError)
                        || !m_target.backend().storeFile(db, OrvexArchiveStore::Area::Files, name, rows.value(0).toLongLong(),
                                                         local.path(), files.written, stepError))
                        return false;
                }
                if (++copied % 1000 == 0)
                    m_report(tr("%1: %2 rows").arg(QLatin1String(table.name)).arg(copied));
            }
            m_report(tr("%1: %2 rows copied").arg(QLatin1String(table.name)).arg(copied));
        }
        QSqlQuery texts(source);
        texts.setForwardOnly(true);
        if (!exec(texts, m_source.backend().allTextsQuery(), stepError))
            return false;
        qlonglong indexed = 0;
        while (texts.next()) {
            if (!m_target.backend().indexText(db, texts.value(0).toLongLong(), texts.value(1).toString(),
                                              texts.value(2).toString(), stepError))
                return false;
            ++indexed;
        }
        m_report(tr("full text: %1 documents indexed").arg(indexed));
        return true;
    }, &error);
    if (!ok)
        m_target.undoFiles(files);
    return ok;
}

bool OrvexArchiveCopy::verify(QStringList &findings)
{
    QString error;
    QSqlDatabase source = m_source.database(&error);
    QSqlDatabase target = m_target.database(&error);
    if (!source.isOpen() || !target.isOpen()) {
        findings << error;
        return false;
    }
    bool same = true;
    const auto compare = [&](const QString &what, const Digest &a, const Digest &b) {
        const bool equal = a.error.isEmpty() && b.error.isEmpty() && a.rows == b.rows && a.hash == b.hash;
        same = same && equal;
        if (!a.error.isEmpty() || !b.error.isEmpty())
            findings << tr("%1: cannot be read: %2").arg(what, a.error + b.error);
        else
            findings << tr("%1: %2 rows, %3").arg(what).arg(b.rows).arg(equal ? tr("same content") : tr("DIFFERENT"));
    };
    for (const Table &table : kTables)
        compare(QLatin1String(table.name), digestOf(source, select(table, true)), digestOf(target, select(table, true)));
    compare(tr("full text"), digestOf(source, m_source.backend().allTextsQuery()),
            digestOf(target, m_target.backend().allTextsQuery()));

    // Every version's file as the target holds it, against the hash recorded
    // at import (read whole: the files are read on the same connection).
    QSqlQuery versions(target);
    if (!exec(versions, QStringLiteral("SELECT doc_id, version, file, sha256 FROM versions ORDER BY doc_id, version"), error)) {
        findings << error;
        return false;
    }
    qlonglong checked = 0;
    QStringList differing;
    while (versions.next()) {
        const QString name = versions.value(2).toString();
        std::unique_ptr<QIODevice> file = m_target.openFile(OrvexArchiveStore::Area::Files, name, error);
        OrvexContentHash hash;
        QByteArray buffer(256 * 1024, Qt::Uninitialized);
        qint64 read = file ? 0 : -1;
        while (file && (read = file->read(buffer.data(), buffer.size())) > 0)
            hash.addData(buffer.constData(), read);
        if (read < 0 || hash.hex() != versions.value(3).toString())
            differing << QStringLiteral("%1 v%2").arg(versions.value(0).toString(), versions.value(1).toString());
        ++checked;
    }
    same = same && differing.isEmpty();
    findings << (differing.isEmpty() ? tr("files: %1 checked, every content hash matches").arg(checked)
                                     : tr("files: %1 checked, DIFFERENT content: %2").arg(checked).arg(differing.join(QStringLiteral(", "))));
    return same;
}

QStringList OrvexArchiveCopy::usersWithoutLogin()
{
    if (!m_target.isServer())
        return {};
    QString error;
    QSqlDatabase db = m_target.database(&error);
    QSqlQuery users(db);
    if (!exec(users, QStringLiteral("SELECT id FROM roles WHERE kind = 'user' "
                                    "AND NOT EXISTS (SELECT 1 FROM pg_roles WHERE rolname = id AND rolcanlogin) ORDER BY id"),
              error))
        return {};
    QStringList missing;
    while (users.next())
        missing << users.value(0).toString();
    return missing;
}
