#include "orvexarchive.h"

#include "orvexarchiveclient.h"
#include "orvexarchivestore.h"
#include "orvexclassifyclient.h"
#include "orvexsamplearchive.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QVariant>

OrvexArchive::OrvexArchive(QObject *parent)
    : QObject(parent)
    , m_user(OrvexArchiveStore::operatingSystemUser())
{
}

OrvexArchive::~OrvexArchive()
{
    // The clients use the store; they go first.
    delete m_archiveClient;
    delete m_classify;
}

QString OrvexArchive::defaultLocation()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/orvex/archive");
}

bool OrvexArchive::open(const QString &location, bool createSampleWhenNew)
{
    delete m_archiveClient;
    m_archiveClient = nullptr;
    delete m_classify;
    m_classify = nullptr;
    if (m_store)
        disconnect(m_store.data(), nullptr, this, nullptr);
    QString error;
    m_store = OrvexArchiveStore::shared(location, createSampleWhenNew, &error);
    // A read-only archive is viewed as it is: it cannot learn a user it does not know, who may read nothing in it.
    if (!m_store || (!m_store->isReadOnly() && !m_store->ensureUser(OrvexArchiveStore::operatingSystemUser(), &error))) {
        m_lastError = error;
        m_store.reset();
        return false;
    }
    if (m_store->isServer())
        m_user = m_store->location().effectiveUser();
    connect(m_store.data(), &OrvexArchiveStore::documentsChanged, this, &OrvexArchive::documentsChanged);
    connect(m_store.data(), &OrvexArchiveStore::changedElsewhere, this, [this](int topics) {
        if ((topics & OrvexArchiveBackend::Clipboards) && m_classify)
            emit m_classify->clipboardsChanged();
    });
    m_lastError.clear();
    return true;
}

void OrvexArchive::watchChanges()
{
    if (m_store)
        m_store->watchChanges();
}

bool OrvexArchive::isServer() const
{
    return m_store && m_store->isServer();
}

bool OrvexArchive::isReadOnly() const
{
    return m_store && m_store->isReadOnly();
}

QString OrvexArchive::lastError() const
{
    return m_lastError;
}

QString OrvexArchive::folder() const
{
    return m_store ? m_store->folder() : QString();
}

bool OrvexArchive::isOpen() const
{
    return m_store && m_store->isOpen();
}

QString OrvexArchive::user() const
{
    return m_user;
}

void OrvexArchive::setUser(const QString &userId)
{
    m_user = userId;
    if (m_classify)
        m_classify->setUser(userId);
}

OrvexConnectionValues OrvexArchive::connectionValues() const
{
    OrvexConnectionValues values;
    if (!isOpen())
        return values;
    if (m_store->isServer()) {
        // The server is the address; the password, if any, is the address's.
        const OrvexArchiveLocation location = m_store->location();
        values.server = location.withUser(m_user).toString();
        values.port = location.port();
        values.login2 = m_user == location.effectiveUser() ? location.password() : QString();
    } else {
        values.server = m_store->setting(QStringLiteral("server"));
        values.port = m_store->setting(QStringLiteral("port")).toInt();
        values.login2 = m_store->setting(QStringLiteral("local_password"));
    }
    values.login1 = m_user;
    values.archiveName = m_store->setting(QStringLiteral("archive_name"));
    values.login3 = m_store->setting(QStringLiteral("tenant"));
    return values;
}

QList<OrvexArchiveDocument> OrvexArchive::documents() const
{
    QList<OrvexArchiveDocument> documents;
    if (!isOpen())
        return documents;
    QSqlDatabase db = m_store->database();
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(OrvexArchiveStore::rolesOfUser() + QStringLiteral(
        "SELECT d.id, d.title, COALESCE(t.name, ''), COALESCE(s.name, ''), v.pages, "
        "(SELECT COUNT(*) FROM versions WHERE doc_id = d.id), d.file_name, d.docs_id, d.doc_date, "
        "CASE WHEN EXISTS (SELECT 1 FROM my_roles) AND (d.read_role IS NULL OR d.read_role IN (SELECT role FROM my_roles)) "
        "THEN 1 ELSE 0 END "
        "FROM documents d JOIN versions v ON v.doc_id = d.id AND v.version = d.current_version "
        "LEFT JOIN doc_types t ON t.key = d.type_key LEFT JOIN doc_statuses s ON s.key = d.status_key "
        "ORDER BY d.id"));
    query.addBindValue(m_user);
    if (!query.exec())
        return documents;
    while (query.next()) {
        OrvexArchiveDocument document;
        document.id = query.value(0).toLongLong();
        document.title = query.value(1).toString();
        document.typeName = OrvexSampleArchive::displayName(query.value(2).toString());
        document.statusName = OrvexSampleArchive::displayName(query.value(3).toString());
        document.pages = query.value(4).toInt();
        document.versions = query.value(5).toInt();
        document.fileName = query.value(6).toString();
        document.docsId = query.value(7).toLongLong();
        document.date = query.value(8).toString();
        document.readable = query.value(9).toInt() == 1;
        documents << document;
    }
    return documents;
}

ClassifyInterface *OrvexArchive::classifyClient()
{
    if (!isOpen())
        return nullptr;
    if (!m_classify) {
        m_classify = new OrvexClassifyClient(m_store);
        m_classify->setUser(m_user);
    }
    return m_classify;
}

kelArchiveClientInterface *OrvexArchive::archiveClient()
{
    if (!isOpen())
        return nullptr;
    if (!m_archiveClient)
        m_archiveClient = new OrvexArchiveClient(m_store);
    return m_archiveClient;
}

qlonglong OrvexArchive::importFile(const QString &filePath, const QString &title)
{
    if (!isOpen()) {
        m_lastError = tr("No archive is open");
        return 0;
    }
    OrvexArchiveStore::FileChanges files;
    qlonglong docId = 0;
    QString error;
    const bool ok = m_store->write([&](QSqlDatabase &db, QString &stepError) {
        OrvexArchiveStore::ImportOptions options;
        options.title = title;
        options.owner = m_user;
        docId = m_store->importFile(db, filePath, options, 0, files, stepError);
        return docId != 0;
    }, &error, tr("%1 was not archived").arg(QFileInfo(filePath).fileName()));
    if (!ok) {
        m_store->undoFiles(files);
        m_lastError = error;
        return 0;
    }
    m_store->renderAhead({docId});
    emit documentsChanged();
    return docId;
}
