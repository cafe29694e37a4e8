#include "orvexarchivedocuments.h"

#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexarchivetransfer.h"
#include "orvexstorageerror.h"
#include "orvexsqlhelpers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <climits>

namespace {
const QChar kInfoSep(0xFFFD);
const QChar kVersionSep(0xFEFF);

using OrvexSql::exec;
using OrvexSql::parseId;

// "Rechnung.pdf", 2 -> "Rechnung_v2.pdf". The stored file's suffix wins over a
// document name without one or with another one: the name must tell the type.
QString partFileName(const QString &fileName, int version, const QString &storedSuffix)
{
    const QFileInfo info(fileName);
    const QString suffix = info.suffix();
    const QString base = suffix.isEmpty() ? fileName : fileName.left(fileName.size() - suffix.size() - 1);
    const QString kept = storedSuffix.isEmpty() || suffix.compare(storedSuffix, Qt::CaseInsensitive) == 0
        ? suffix : storedSuffix;
    return QStringLiteral("%1_v%2%3").arg(base).arg(version).arg(kept.isEmpty() ? QString() : QLatin1Char('.') + kept);
}
} // namespace

QString OrvexArchiveDocuments::fileSuffix(const QString &stored, const QString &fileName)
{
    QString suffix = QFileInfo(stored).suffix();
    if (suffix.isEmpty())
        suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix.isEmpty())
        suffix = QMimeDatabase().mimeTypeForName(m_session.store()->mimeType(OrvexArchiveStore::Area::Files, stored))
                     .preferredSuffix();
    return suffix;
}

OrvexArchiveDocuments::OrvexArchiveDocuments(OrvexArchiveSession &session, OrvexArchiveTransfer &transfer)
    : m_session(session)
    , m_transfer(transfer)
{
}

OrvexArchiveDocuments::~OrvexArchiveDocuments()
{
    delete m_exportDir;
}

QTemporaryDir *OrvexArchiveDocuments::exportRoot()
{
    if (!m_exportDir)
        m_exportDir = new QTemporaryDir(QDir::tempPath() + QStringLiteral("/orvexarchive-export-XXXXXX"));
    return m_exportDir;
}

bool OrvexArchiveDocuments::versionFile(qlonglong docId, int version, VersionFile &file)
{
    QString error;
    QSqlDatabase db = m_session.store()->database(&error);
    if (!db.isOpen())
        return m_session.fail(error);
    if (!m_session.store()->documentExists(docId))
        return m_session.fail(tr("Unknown document %1").arg(docId));
    if (!m_session.store()->mayRead(m_session.user(), docId))
        return m_session.fail(tr("%1 may not read document %2").arg(m_session.user()).arg(docId));
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT v.file, d.file_name, v.version, v.pages, v.size FROM documents d "
                                 "JOIN versions v ON v.doc_id = d.id "
                                 "AND v.version = CASE WHEN ? > 0 THEN ? ELSE d.current_version END WHERE d.id = ?"));
    query.addBindValue(version);
    query.addBindValue(version);
    query.addBindValue(docId);
    if (!exec(query, error))
        return m_session.fail(error);
    if (!query.next())
        return m_session.fail(tr("Document %1 has no version %2").arg(docId).arg(version));
    file.stored = query.value(0).toString();
    file.fileName = query.value(1).toString();
    file.version = query.value(2).toInt();
    file.pages = query.value(3).toInt();
    file.size = query.value(4).toLongLong();
    return true;
}

bool OrvexArchiveDocuments::exportVersion(qlonglong docId, int version, QString &localPath)
{
    if (!m_session.requireConnection())
        return false;
    VersionFile file;
    if (!versionFile(docId, version, file))
        return false;
    QString folder;
    {
        QMutexLocker locker(&m_mutex);
        QTemporaryDir *root = exportRoot();
        if (!root->isValid())
            return m_session.fail(tr("No temporary folder for the export: %1").arg(root->errorString()));
        // A folder per export, so that the caller may rename the file in it.
        folder = root->filePath(QString::number(++m_exportCount));
    }
    if (!QDir().mkpath(folder))
        return m_session.fail(tr("Cannot create %1").arg(folder));
    const QString name = version > 0 ? fileNameFor(docId, file.version) : file.fileName;
    const QString target = folder + QLatin1Char('/') + (name.isEmpty() ? QString::number(docId) : name);
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    const auto source = [store, stored = file.stored](QString &error) {
        return store->openFile(OrvexArchiveStore::Area::Files, stored, error);
    };
    if (!m_transfer.copy(source, file.stored, OrvexArchiveTransfer::newLocalFile(target), file.size, nullptr,
                         tr("document %1 was not exported").arg(docId)))
        return false;
    localPath = target;
    return true;
}

QString OrvexArchiveDocuments::fileNameFor(qlonglong docId, int version)
{
    VersionFile file;
    if (!versionFile(docId, version, file))
        return {};
    return partFileName(file.fileName, file.version, fileSuffix(file.stored, file.fileName));
}

bool OrvexArchiveDocuments::exportDocument(int docId, QString &localPath, int purpose, QString option)
{
    // Purpose and option make no difference to a local archive: the file is the same.
    Q_UNUSED(purpose)
    Q_UNUSED(option)
    return exportVersion(docId, 0, localPath);
}

bool OrvexArchiveDocuments::exportDocumentVersion(int docId, int version, QString &localPath)
{
    if (version < 1)
        return m_session.fail(tr("Invalid version %1").arg(version));
    // Saved under the document's own file name.
    if (!m_session.requireConnection())
        return false;
    VersionFile file;
    if (!versionFile(docId, version, file))
        return false;
    QString path;
    if (!exportVersion(docId, version, path))
        return false;
    const QString plain = QFileInfo(path).absolutePath() + QLatin1Char('/') + file.fileName;
    if (!file.fileName.isEmpty() && QFile::rename(path, plain))
        path = plain;
    localPath = path;
    return true;
}

bool OrvexArchiveDocuments::exportDocumentVersionAlt(int docId, int version, QString &localPath)
{
    if (version < 1)
        return m_session.fail(tr("Invalid version %1").arg(version));
    // Saved under the version's own file name ("name_v2.pdf").
    return exportVersion(docId, version, localPath);
}

QStringList OrvexArchiveDocuments::searchDocs(QString query)
{
    if (!m_session.requireConnection())
        return {};
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    QString condition;
    QVariantList values;
    if (!store->backend().fullTextCondition(QStringLiteral("d.id"), query, false, condition, values)) {
        m_session.fail(tr("Empty search"));
        return {};
    }
    QString error;
    QSqlDatabase db = store->database(&error);
    if (!db.isOpen()) {
        m_session.fail(error);
        return {};
    }
    QSqlQuery match(db);
    match.prepare(OrvexArchiveStore::rolesOfUser()
                  + QStringLiteral("SELECT d.id FROM documents d WHERE EXISTS (SELECT 1 FROM my_roles) "
                                   "AND (d.read_role IS NULL OR d.read_role IN (SELECT role FROM my_roles)) AND ")
                  + condition + QStringLiteral(" ORDER BY d.id"));
    match.addBindValue(m_session.user());
    for (const QVariant &value : qAsConst(values))
        match.addBindValue(value);
    if (!exec(match, error)) {
        m_session.fail(error);
        return {};
    }
    QStringList ids;
    while (match.next())
        ids << match.value(0).toString();
    return ids;
}

QStringList OrvexArchiveDocuments::getAllVersions(int docId)
{
    if (!m_session.requireConnection())
        return {};
    VersionFile file;
    if (!versionFile(docId, 0, file))
        return {};
    QSqlDatabase db = m_session.store()->database();
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "SELECT v.version, v.created, v.size, d.owner, v.pages, v.sha256, "
        "CASE WHEN v.version = d.current_version THEN 1 ELSE 0 END AS is_current, "
        "d.docs_id, v.file, d.file_name FROM versions v JOIN documents d ON d.id = v.doc_id WHERE v.doc_id = ? "
        "ORDER BY is_current DESC, v.version DESC"));
    query.addBindValue(docId);
    QString error;
    if (!exec(query, error)) {
        m_session.fail(error);
        return {};
    }
    QStringList records;
    while (query.next()) {
        const QString stored = query.value(8).toString();
        const QString fileName = query.value(9).toString();
        QStringList fields{QString::number(docId)};
        for (int i = 0; i < 8; ++i)
            fields << query.value(i).toString();
        fields << m_session.store()->mimeType(OrvexArchiveStore::Area::Files, stored) << fileName
               << partFileName(fileName, query.value(0).toInt(), fileSuffix(stored, fileName));
        records << fields.join(kVersionSep);
    }
    return records;
}

bool OrvexArchiveDocuments::getDocumentInfo(QStringList docIds, QStringList &info)
{
    if (!m_session.requireConnection())
        return false;
    QString error;
    QSqlDatabase db = m_session.store()->database(&error);
    if (!db.isOpen())
        return m_session.fail(error);
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "SELECT d.title, COALESCE(t.name, ''), v.file, COALESCE(s.name, ''), d.doc_date, d.file_name, v.pages, "
        "(SELECT COUNT(*) FROM versions WHERE doc_id = d.id), d.docs_id FROM documents d "
        "JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version "
        "LEFT JOIN doc_types t ON t.key = d.type_key LEFT JOIN doc_statuses s ON s.key = d.status_key WHERE d.id = ?"));
    QStringList records;
    QStringList missing;
    const QString acting = m_session.user();
    for (const QString &text : qAsConst(docIds)) {
        qlonglong id = 0;
        if (!parseId(text, id))
            return m_session.fail(tr("Not a document id: %1").arg(text));
        query.addBindValue(id);
        if (!exec(query, error))
            return m_session.fail(error);
        if (!query.next() || !m_session.store()->mayRead(acting, id)) {
            missing << text;
            continue;
        }
        QStringList fields{QString::number(id)};
        for (int i = 0; i < 9; ++i)
            fields << query.value(i).toString();
        fields[3] = fileSuffix(fields.at(3), fields.at(6));
        records << fields.join(kInfoSep);
    }
    info = records;
    if (!missing.isEmpty())
        return m_session.fail(tr("Unknown documents: %1").arg(missing.join(QStringLiteral(", "))));
    return true;
}

bool OrvexArchiveDocuments::deleteDocument(QString docId, QStringList options)
{
    Q_UNUSED(options)
    qlonglong id = 0;
    if (!parseId(docId, id))
        return m_session.fail(tr("Not a document id: %1").arg(docId));
    if (!m_session.requireConnection())
        return false;
    const QString acting = m_session.user();
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    if (!store->documentExists(id) || !store->mayRead(acting, id))
        return m_session.fail(tr("Unknown document %1").arg(id));
    const QString notDeleted = tr("document %1 was not deleted").arg(id);
    if (store->isReadOnly())
        return m_session.fail(OrvexStorageError::describe(OrvexStorageError::readOnly(), notDeleted));
    if (!store->rolesOf(acting).contains(QStringLiteral("tavloADMIN")))
        return m_session.fail(tr("%1 may not delete documents").arg(acting));
    QString error;
    QStringList afterCommit;
    if (!store->write([&](QSqlDatabase &db, QString &stepError) {
            return store->removeDocument(db, id, afterCommit, stepError);
        }, &error, notDeleted))
        return m_session.fail(error);
    store->afterRemoval(id, afterCommit);
    return true;
}

bool OrvexArchiveDocuments::getDocumentActions(QStringList docIds, QStringList &actions, int mode, QString option)
{
    Q_UNUSED(mode)
    Q_UNUSED(option)
    if (!m_session.requireConnection())
        return false;
    const QString acting = m_session.user();
    for (const QString &text : qAsConst(docIds)) {
        qlonglong id = 0;
        if (!parseId(text, id))
            return m_session.fail(tr("Not a document id: %1").arg(text));
        if (!m_session.store()->mayRead(acting, id))
            return m_session.fail(tr("Unknown document %1").arg(id));
    }
    QStringList result{QStringLiteral("OPEN"), QStringLiteral("EXPORT"), QStringLiteral("MAIL")};
    if (m_session.store()->rolesOf(acting).contains(QStringLiteral("tavloADMIN")))
        result << QStringLiteral("DELETE");
    actions = result;
    return true;
}

bool OrvexArchiveDocuments::writeDocumentInfo(int docId, int mode)
{
    // Writes the document's info record beside the client's exports: mode 0 as
    // text (one field a line), anything else in the record layout.
    QStringList info;
    if (!getDocumentInfo({QString::number(docId)}, info) || info.isEmpty())
        return false;
    QString folder;
    {
        QMutexLocker locker(&m_mutex);
        folder = exportRoot()->path();
    }
    // The folder may have been cleaned away since the client made it.
    QDir().mkpath(folder);
    QSaveFile file(folder + QStringLiteral("/%1.info").arg(docId));
    const QString text = mode == 0 ? info.first().split(kInfoSep).join(QLatin1Char('\n')) : info.first();
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        return m_session.fail(tr("Cannot write the document info: %1").arg(file.errorString()));
    return true;
}

bool OrvexArchiveDocuments::moveDocToArchive(qlonglong docId, int target)
{
    if (!m_session.requireConnection())
        return false;
    if (!m_session.store()->mayRead(m_session.user(), docId))
        return m_session.fail(tr("Unknown document %1").arg(docId));
    // The embedded archive holds a single archive (index 0), where every document already is.
    if (target != 0)
        return m_session.fail(tr("Unknown archive %1").arg(target));
    return true;
}

QString OrvexArchiveDocuments::getDocumentFileName(QString docId, QString docsId)
{
    Q_UNUSED(docsId)
    qlonglong id = 0;
    if (!parseId(docId, id)) {
        m_session.fail(tr("Not a document id: %1").arg(docId));
        return {};
    }
    if (!m_session.requireConnection())
        return {};
    VersionFile file;
    return versionFile(id, 0, file) ? file.fileName : QString();
}

QStringList OrvexArchiveDocuments::getDocumentFileNames(QStringList docIds, QStringList docsIds)
{
    Q_UNUSED(docsIds)
    if (!m_session.requireConnection())
        return {};
    QStringList names;
    QStringList refused;
    for (const QString &text : qAsConst(docIds)) {
        // "4711" names the current file, "4711;3" the file of version 3 (as
        // getDocumentPartFileName() does); further fields are ignored.
        const QStringList parts = text.split(QLatin1Char(';'));
        const QString versionText = parts.value(1).trimmed();
        qlonglong id = 0;
        qlonglong version = 0;
        VersionFile file;
        if (parseId(parts.at(0), id)
            && (versionText.isEmpty() || (parseId(versionText, version) && version <= INT_MAX))
            && versionFile(id, int(version), file))
            names << (version > 0 ? partFileName(file.fileName, file.version, fileSuffix(file.stored, file.fileName))
                                  : file.fileName);
        else
            refused << text;
    }
    if (!refused.isEmpty())
        m_session.fail(tr("No permission to export: %1").arg(refused.join(QStringLiteral(", "))));
    return names;
}

QString OrvexArchiveDocuments::getDocumentPartFileName(QString docId, QString docsId, QString version)
{
    Q_UNUSED(docsId)
    qlonglong id = 0;
    qlonglong number = 0;
    if (!parseId(docId, id) || !parseId(version, number)) {
        m_session.fail(tr("Not a document id and version: %1 %2").arg(docId, version));
        return {};
    }
    if (!m_session.requireConnection())
        return {};
    return fileNameFor(id, int(number));
}
