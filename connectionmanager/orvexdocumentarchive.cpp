#include "orvexdocumentarchive.h"

#include "kelarchiveclientinterface.h"
#include "orvexarchivelocation.h"
#include "orvexarchivestore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutexLocker>
#include <QStringList>
#include <QThread>

#include <climits>

namespace {

std::unique_ptr<OrvexDocumentArchive::Document> refusal(int status, const QString &error)
{
    auto document = std::make_unique<OrvexDocumentArchive::Document>();
    document->status = status;
    document->error = error;
    return document;
}

// Objects made on a server thread outlive it; they are handed to the Qt
// thread, which destroys them, so that none is left with a finished thread.
void handToMainThread(QObject *object)
{
    if (object && QCoreApplication::instance() && object->thread() == QThread::currentThread())
        object->moveToThread(QCoreApplication::instance()->thread());
}

} // namespace

OrvexDocumentArchive::Document::~Document() = default;

OrvexDocumentArchive::OrvexDocumentArchive(const QString &folder, const QString &user)
    : m_folder(folder)
    , m_user(user)
{
}

OrvexDocumentArchive::~OrvexDocumentArchive() = default;

bool OrvexDocumentArchive::ensureOpen(QString &error)
{
    QMutexLocker locker(&m_mutex);
    if (m_archive)
        return true;
    // On a server the documents are read as the user's database role.
    const bool onServer = OrvexArchiveLocation::isServerAddress(m_folder);
    QString location = m_folder;
    if (onServer && !m_user.isEmpty())
        location = OrvexArchiveLocation::parse(m_folder).withUser(m_user).toString();
    const QDir dir(m_folder);
    if (!onServer
        && (m_folder.trimmed().isEmpty() || !dir.exists() || dir.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden))) {
        error = QStringLiteral("There is no archive in %1 yet.").arg(QDir::toNativeSeparators(m_folder));
        return false;
    }
    auto archive = std::make_unique<OrvexArchive>();
    if (!onServer && !m_user.isEmpty())
        archive->setUser(m_user);
    if (!archive->open(location, false)) {
        error = QStringLiteral("The archive in %1 cannot be opened: %2")
                    .arg(QDir::toNativeSeparators(m_folder), archive->lastError());
        return false;
    }
    // The facade's own store, as everybody in this process shares it.
    QString storeError;
    QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(location, false, &storeError);
    kelArchiveClientInterface *factory = archive->archiveClient();
    if (!store || !factory) {
        error = QStringLiteral("The archive in %1 cannot be opened: %2")
                    .arg(QDir::toNativeSeparators(m_folder), storeError);
        return false;
    }
    handToMainThread(archive.get());
    handToMainThread(factory);
    handToMainThread(store.data());
    m_values = archive->connectionValues();
    m_archiveUser = archive->user();
    m_store = store;
    m_clientFactory = factory;
    m_archive = std::move(archive);
    return true;
}

std::unique_ptr<OrvexDocumentArchive::Document> OrvexDocumentArchive::fetch(qlonglong docId, int version)
{
    QString error;
    if (!ensureOpen(error))
        return refusal(503, error);

    // The store knows the two rules the archive client reports alike, as a
    // failed export: a document that does not exist, and one the user may not read.
    if (docId <= 0 || docId > INT_MAX || !m_store->documentExists(docId))
        return refusal(404, QStringLiteral("Document %1 does not exist in the archive.").arg(docId));
    if (!m_store->mayRead(m_archiveUser, docId))
        return refusal(403, QStringLiteral("The archive user %1 may not read document %2.")
                                .arg(m_archiveUser)
                                .arg(docId));

    auto document = std::make_unique<Document>();
    // createClient() only hands the shared store to a new client, which this
    // thread owns from here on.
    document->client.reset(m_clientFactory->createClient(QCoreApplication::applicationDirPath()));
    kelArchiveClientInterface *client = document->client.get();
    if (!client)
        return refusal(503, QStringLiteral("No archive client: %1").arg(m_clientFactory->getLastError()));
    if (!client->openConnection(m_values.server, m_values.port)
        || !client->logIn(m_values.login1, m_values.login2, m_values.login3)
        || !client->selectArchive(m_values.archiveName))
        return refusal(503, QStringLiteral("Cannot log in to the archive as %1: %2")
                                .arg(m_values.login1, client->getLastError()));

    QString path;
    bool exported = false;
    if (version > 0) {
        // Version records: fields separated by U+FEFF, field 1 the version number.
        QStringList versions;
        for (const QString &record : client->getAllVersions(int(docId)))
            versions << record.section(QChar(0xFEFF), 1, 1);
        if (!versions.contains(QString::number(version)))
            return refusal(404, QStringLiteral("Document %1 has no version %2 (it has %3).")
                                    .arg(docId)
                                    .arg(version)
                                    .arg(versions.join(QStringLiteral(", "))));
        exported = client->exportDocumentVersion(int(docId), version, path);
    } else {
        exported = client->exportDocument(int(docId), path, 1, QString());
    }
    const QFileInfo info(path);
    if (!exported || !info.isFile())
        return refusal(500, QStringLiteral("Document %1 cannot be exported: %2").arg(docId).arg(client->getLastError()));
    document->status = 200;
    document->filePath = info.absoluteFilePath();
    document->fileName = info.fileName();
    document->size = info.size();
    return document;
}
