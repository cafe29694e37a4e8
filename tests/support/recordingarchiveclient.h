#pragma once

#include "calllog.h"
#include "kelarchiveclientinterface.h"

#include <QAtomicInt>
#include <QMap>
#include <QMutex>
#include <QTemporaryDir>

// In-memory archive client for tests: documents with pages, versions and file
// contents, a connection chain that checks its values, exports into a
// temporary folder of its own with the byte-count signals, thumbnails drawn on
// the fly, and uploads with a duplicate check by content. Every call is logged
// with its arguments (log()); the log's switches make any operation fail, answer
// short records or stall. A streaming operation also stalls after its first
// chunk when "<operation>:chunk" is stalled, so a test can cancel mid-stream.
class RecordingArchiveClient : public kelArchiveClientInterface
{
    Q_OBJECT

public:
    struct Document
    {
        int docId = 0;
        QString fileName;               // with extension; empty = none known
        QByteArray content;             // current version
        QMap<int, QByteArray> versions; // version number -> content
        int pages = 1;
        bool readable = true;           // false: thumbnails empty, not exportable
        QByteArray thumbnail;           // fixed answer for every page when set
    };

    explicit RecordingArchiveClient(QObject *parent = nullptr);

    CallLog &log() { return m_log; }

    void addDocument(const Document &document) { locked([&] { m_documents.insert(document.docId, document); }); }
    Document document(int docId) const { return locked([&] { return m_documents.value(docId); }); }
    QList<int> documentIds() const { return locked([&] { return m_documents.keys(); }); }
    // The values the connection chain accepts; an empty value accepts anything.
    void setConnectionValues(const QString &server, int port, const QString &login1,
                             const QString &login2, const QString &login3,
                             const QStringList &archives);
    // Fixed answer for checkDuplicates instead of the computed one.
    void setDuplicateReply(const QStringList &reply)
    {
        locked([&] { m_fixedDuplicateReply = true; m_duplicateReply = reply; });
    }
    void setChunkSize(int bytes) { locked([&] { m_chunkSize = qMax(1, bytes); }); }
    QString exportFolder() const { return m_exportDir.path(); }
    QStringList pendingUploads() const { return locked([&] { return m_uploads.keys(); }); }
    bool isConnected() const { return locked([&] { return m_connected && m_loggedIn && !m_currentArchive.isEmpty(); }); }

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
    bool getDocumentActions(QStringList docIds, QStringList &actions, int mode,
                            QString option) override;
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

private:
    template<typename Work>
    auto locked(Work work) const -> decltype(work())
    {
        QMutexLocker locker(&m_mutex);
        return work();
    }
    bool enter(const QString &name, const QVariantList &args);
    bool fail(const QString &error);
    // Streams bytes into a file with the byte-count signals; false when canceled.
    bool stream(const QString &operation, const QByteArray &bytes, const QString &path);
    bool exportBytes(const QString &operation, int docId, int version, QString &localPath);
    static QByteArray drawPage(int docId, int page, int size);

    CallLog m_log;
    mutable QMutex m_mutex;
    QMap<int, Document> m_documents;
    QMap<QString, QByteArray> m_uploads; // upload id -> content
    QString m_server, m_login1, m_login2, m_login3;
    int m_port = 0;
    QStringList m_archives{QStringLiteral("Archive")};
    QString m_currentArchive;
    bool m_connected = false;
    bool m_loggedIn = false;
    bool m_fixedDuplicateReply = false;
    QStringList m_duplicateReply;
    QString m_lastError;
    qlonglong m_lastArchivedDocId = 0;
    int m_nextDocId = 90000;
    int m_nextUpload = 1;
    int m_chunkSize = 64 * 1024;
    QAtomicInt m_cancel;
    QTemporaryDir m_exportDir;
};
