#include "orvexarchiveclient.h"

#include "orvexarchive.h"
#include "orvexarchivedocuments.h"
#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexarchivethumbnails.h"
#include "orvexarchivetransfer.h"
#include "orvexarchiveuploads.h"

#include <QCryptographicHash>

static_assert(OrvexArchiveClient::ChunkSize == OrvexArchiveTransfer::ChunkSize, "one chunk size");
static_assert(OrvexArchiveClient::DuplicateCheckOption == OrvexArchiveThumbnails::DuplicateCheckOption,
              "one duplicate check option");

OrvexArchiveClient::OrvexArchiveClient(QSharedPointer<OrvexArchiveStore> store, QObject *parent)
    : kelArchiveClientInterface(parent)
    , m_session(new OrvexArchiveSession(store))
{
    // The byte counts are sent on the copying thread, as the client's own signals.
    m_transfer.reset(new OrvexArchiveTransfer(
        *m_session, [this](const QString &bytes) { emit totalFileSize(bytes); },
        [this](const QString &bytes) { emit currentReadSize(bytes); }));
    m_documents.reset(new OrvexArchiveDocuments(*m_session, *m_transfer));
    m_thumbnails.reset(new OrvexArchiveThumbnails(*m_session, *m_documents));
    m_uploads.reset(new OrvexArchiveUploads(*m_session, *m_transfer));
    // Everybody on the same store hears of the documents this client adds or removes.
    connect(this, &OrvexArchiveClient::documentsChanged, this, [this] {
        if (const QSharedPointer<OrvexArchiveStore> current = m_session->store())
            emit current->documentsChanged();
    });
}

OrvexArchiveClient::~OrvexArchiveClient() = default;

QByteArray OrvexArchiveClient::notAuthorisedImage()
{
    return OrvexArchiveThumbnails::notAuthorisedImage();
}

QString OrvexArchiveClient::notAuthorisedImageMd5()
{
    return QString::fromLatin1(QCryptographicHash::hash(notAuthorisedImage(), QCryptographicHash::Md5).toHex());
}

bool OrvexArchiveClient::isConnected() const
{
    return m_session->isConnected();
}

QString OrvexArchiveClient::user() const
{
    return m_session->user();
}

void OrvexArchiveClient::setChunkSize(int bytes)
{
    m_transfer->setChunkSize(bytes);
}

kelArchiveClientInterface *OrvexArchiveClient::createClient(QString applicationDirPath)
{
    Q_UNUSED(applicationDirPath)
    if (m_session->store())
        return new OrvexArchiveClient(m_session->store());
    QString folder = qEnvironmentVariable(OrvexArchive::FolderVariable);
    if (folder.trimmed().isEmpty())
        folder = OrvexArchive::defaultLocation();
    // A client of a server finds its store when it logs in, as its user.
    if (OrvexArchiveLocation::isServerAddress(folder))
        return new OrvexArchiveClient();
    QString error;
    const QSharedPointer<OrvexArchiveStore> store = OrvexArchiveStore::shared(folder, true, &error);
    if (!store || !store->ensureUser(OrvexArchiveStore::operatingSystemUser(), &error)) {
        m_session->fail(error);
        return nullptr;
    }
    return new OrvexArchiveClient(store);
}

bool OrvexArchiveClient::openConnection(QString server, int port)
{
    return m_session->openConnection(server, port);
}

bool OrvexArchiveClient::resetConnection()
{
    return m_session->resetConnection();
}

QString OrvexArchiveClient::getLastError()
{
    return m_session->lastError();
}

bool OrvexArchiveClient::getArchiveNames(QStringList &names)
{
    return m_session->getArchiveNames(names);
}

bool OrvexArchiveClient::selectArchive(QString archiveName)
{
    return m_session->selectArchive(archiveName);
}

bool OrvexArchiveClient::exportDocument(int docId, QString &localPath, int purpose, QString option)
{
    return m_documents->exportDocument(docId, localPath, purpose, option);
}

qlonglong OrvexArchiveClient::getLastArchivedDocId()
{
    return m_uploads->getLastArchivedDocId();
}

QStringList OrvexArchiveClient::searchDocs(QString query)
{
    return m_documents->searchDocs(query);
}

bool OrvexArchiveClient::exportDocumentVersion(int docId, int version, QString &localPath)
{
    return m_documents->exportDocumentVersion(docId, version, localPath);
}

bool OrvexArchiveClient::exportDocumentVersionAlt(int docId, int version, QString &localPath)
{
    return m_documents->exportDocumentVersionAlt(docId, version, localPath);
}

QStringList OrvexArchiveClient::getAllVersions(int docId)
{
    return m_documents->getAllVersions(docId);
}

bool OrvexArchiveClient::logIn(QString login1, QString login2, QString login3)
{
    return m_session->logIn(login1, login2, login3);
}

bool OrvexArchiveClient::getDocumentInfo(QStringList docIds, QStringList &info)
{
    return m_documents->getDocumentInfo(docIds, info);
}

QByteArray OrvexArchiveClient::getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                                    int option1, int option2, int version)
{
    return m_thumbnails->getDocumentThumbnail(docId, page, size, pageCount, format, option1, option2, version);
}

bool OrvexArchiveClient::deleteDocument(QString docId, QStringList options)
{
    if (!m_documents->deleteDocument(docId, options))
        return false;
    emit documentsChanged();
    return true;
}

bool OrvexArchiveClient::getDocumentActions(QStringList docIds, QStringList &actions, int mode, QString option)
{
    return m_documents->getDocumentActions(docIds, actions, mode, option);
}

bool OrvexArchiveClient::writeDocumentInfo(int docId, int mode)
{
    return m_documents->writeDocumentInfo(docId, mode);
}

bool OrvexArchiveClient::moveDocToArchive(qlonglong docId, int target)
{
    return m_documents->moveDocToArchive(docId, target);
}

QString OrvexArchiveClient::getDocumentFileName(QString docId, QString docsId)
{
    return m_documents->getDocumentFileName(docId, docsId);
}

QStringList OrvexArchiveClient::getDocumentFileNames(QStringList docIds, QStringList docsIds)
{
    return m_documents->getDocumentFileNames(docIds, docsIds);
}

QString OrvexArchiveClient::getDocumentPartFileName(QString docId, QString docsId, QString version)
{
    return m_documents->getDocumentPartFileName(docId, docsId, version);
}

QStringList OrvexArchiveClient::checkDuplicates(QString archiveData, QString filePath, QString uploadId, bool flag,
                                                int option1, int option2, int option3, int option4)
{
    return m_uploads->checkDuplicates(archiveData, filePath, uploadId, flag, option1, option2, option3, option4);
}

bool OrvexArchiveClient::commitUpload(QString uploadId)
{
    if (!m_uploads->commitUpload(uploadId))
        return false;
    emit documentsChanged();
    return true;
}

void OrvexArchiveClient::discardUpload(QString uploadId)
{
    m_uploads->discardUpload(uploadId);
}

bool OrvexArchiveClient::sendFile(QString filePath, QString &uploadId)
{
    if (!m_uploads->sendFile(filePath, uploadId))
        return false;
    emit saveDocEnd();
    return true;
}

void OrvexArchiveClient::cancelStreaming()
{
    m_transfer->cancel();
}
