#pragma once

#include "orvexarchiveglobal.h"

#include "kelarchiveclientinterface.h"

#include <QSharedPointer>

#include <memory>

class OrvexArchiveDocuments;
class OrvexArchiveSession;
class OrvexArchiveStore;
class OrvexArchiveThumbnails;
class OrvexArchiveTransfer;
class OrvexArchiveUploads;

// The archive's own archive client. The connection chain checks server, port,
// login (user, password, tenant) and archive name against the archive's
// settings; until it has run, every document operation refuses. The work is
// done by its parts: the session (connection and last error), the transfer
// (chunked copies), the documents, the thumbnails and the uploads. Exports are
// copied in chunks into a temporary folder of the client with the byte-count
// signals, uploads are streamed in chunks into the archive's upload folder and
// hashed on the way; cancelStreaming() stops either between two chunks and
// removes the partial file.
//
// Streaming behaves like a network client's: called on the GUI thread, the copy
// runs on a thread of its own while the caller waits in a local event loop that
// also delivers user input (so a Cancel button works) and the byte-count
// signals reach GUI objects queued. Called on any other thread (the upload's
// pool thread), the copy runs right there. One transfer per client at a time.
// sendFile() and checkDuplicates() may run on a pool thread (one database
// connection per thread).
//
// Thumbnails: poppler renders the page to fit into size x size, cached per
// (document, version, page, size) in the archive's cache folder. A document the
// user may not read gives an empty answer for a card; the duplicate check
// (option1 == 9) gets notAuthorisedImage() instead.
//
// checkDuplicates() answers [upload id] when nothing matches; otherwise
// [upload id, N, N x "page<i>;<base64 PNG of upload page i>", then one
// "docId;version;page;content|page;page<i>" line per archived page that equals
// upload page i by file content or by page image]. A file that cannot be
// archived (a damaged PDF) gives an empty answer and its upload is discarded.
//
// getAllVersions(): one record per version, current version first, then the
// older ones newest first; fields separated by U+FEFF:
//   0 document id, 1 version number, 2 archived at (ISO 8601, UTC), 3 size in
//   bytes, 4 creator (the document's owner: versions are added by the owner),
//   5 pages, 6 SHA-256 of the content (hex), 7 "1" for the current version else
//   "0", 8 docs id, 9 MIME type, 10 the document's file name, 11 the version's
//   file name as getDocumentPartFileName() gives it ("Rechnung_v2.pdf"), whose
//   suffix is that of the stored file.
// getDocumentInfo(): one record per document, fields separated by U+FFFD:
//   0 document id, 1 title, 2 type name, 3 file suffix of the current version
//   without the dot ("pdf"), 4 status name, 5 document date (yyyy-MM-dd),
//   6 file name, 7 pages, 8 number of versions, 9 docs id.
// getDocumentFileNames(): entries are "id" (the document's file name) or
// "id;version" (the version's file name); a name for every entry the user may
// export, in order, so fewer names than entries means exactly that some may not
// be exported (unknown, unreadable, malformed, or no such version).
class ORVEXARCHIVE_EXPORT OrvexArchiveClient : public kelArchiveClientInterface
{
    Q_OBJECT

public:
    static constexpr int ChunkSize = 64 * 1024;
    static constexpr int DuplicateCheckOption = 9;

    // Without a store the client opens the archive named by the environment
    // variable ORVEX_ARCHIVE_DIR, else OrvexArchive::defaultLocation(), on
    // createClient(); a server address there is opened by the login, as the
    // user who logs in.
    explicit OrvexArchiveClient(QSharedPointer<OrvexArchiveStore> store = {}, QObject *parent = nullptr);
    ~OrvexArchiveClient() override;

    // The PNG sent instead of a page the user may not see, and its MD5 (hex).
    static QByteArray notAuthorisedImage();
    static QString notAuthorisedImageMd5();

    bool isConnected() const;
    QString user() const; // the logged-in user; empty before logIn
    // Bytes per chunk of a copy; tests make it small to cancel mid-copy.
    void setChunkSize(int bytes);

    // kelArchiveClientInterface
    kelArchiveClientInterface *createClient(QString applicationDirPath) override;
    bool openConnection(QString server, int port) override;
    bool resetConnection() override;
    QString getLastError() override;
    bool getArchiveNames(QStringList &names) override;
    bool selectArchive(QString archiveName) override;
    bool exportDocument(int docId, QString &localPath, int purpose, QString option) override;
    qlonglong getLastArchivedDocId() override;
    QStringList searchDocs(QString query) override;
    bool exportDocumentVersion(int docId, int version, QString &localPath) override;
    bool exportDocumentVersionAlt(int docId, int version, QString &localPath) override;
    QStringList getAllVersions(int docId) override;
    bool logIn(QString login1, QString login2, QString login3) override;
    bool getDocumentInfo(QStringList docIds, QStringList &info) override;
    QByteArray getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                    int option1, int option2, int version) override;
    bool deleteDocument(QString docId, QStringList options) override;
    bool getDocumentActions(QStringList docIds, QStringList &actions, int mode, QString option) override;
    bool writeDocumentInfo(int docId, int mode) override;
    bool moveDocToArchive(qlonglong docId, int target) override;
    QString getDocumentFileName(QString docId, QString docsId) override;
    QStringList getDocumentFileNames(QStringList docIds, QStringList docsIds) override;
    QString getDocumentPartFileName(QString docId, QString docsId, QString version) override;
    QStringList checkDuplicates(QString archiveData, QString filePath, QString uploadId, bool flag,
                                int option1, int option2, int option3, int option4) override;
    bool commitUpload(QString uploadId) override;
    void discardUpload(QString uploadId) override;
    bool sendFile(QString filePath, QString &uploadId) override;
    void cancelStreaming() override;

signals:
    void documentsChanged();

private:
    std::unique_ptr<OrvexArchiveSession> m_session;
    std::unique_ptr<OrvexArchiveTransfer> m_transfer;
    std::unique_ptr<OrvexArchiveDocuments> m_documents;
    std::unique_ptr<OrvexArchiveThumbnails> m_thumbnails;
    std::unique_ptr<OrvexArchiveUploads> m_uploads;
};
