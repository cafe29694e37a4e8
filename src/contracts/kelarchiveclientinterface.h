#pragma once

#include "orvexcontractsglobal.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

// The host's archive client: documents, files, thumbnails, uploads and the
// connection to the archive server. The host owns it; the workbench only borrows it.
// Failures come back as false or an empty result, with a readable getLastError().
//
// sendFile() and checkDuplicates() are called from a worker thread while the GUI
// thread waits; implementations must allow that and emit the byte-count signals
// so that they reach GUI objects queued. cancelStreaming() is called on the GUI
// thread while a transfer runs and must stop it.
class ORVEXCONTRACTS_EXPORT kelArchiveClientInterface : public QObject
{
    Q_OBJECT

public:
    explicit kelArchiveClientInterface(QObject *parent = nullptr) : QObject(parent) {}
    ~kelArchiveClientInterface() override = default;

    // Called on the instance loaded from the client plugin library: makes the
    // client object a caller works with (the caller owns it).
    virtual kelArchiveClientInterface *createClient(QString applicationDirPath) = 0;

    virtual bool openConnection(QString server, int port) = 0;
    virtual bool resetConnection() = 0;
    virtual QString getLastError() = 0;
    virtual bool getArchiveNames(QStringList &names) = 0;
    virtual bool selectArchive(QString archiveName) = 0;
    // purpose 1 = export, 0 = open for viewing; the path of the local file is written to localPath.
    virtual bool exportDocument(int docId, QString &localPath, int purpose, QString option) = 0;
    virtual qlonglong getLastArchivedDocId() = 0;
    virtual QStringList searchDocs(QString query) = 0;
    virtual bool exportDocumentVersion(int docId, int version, QString &localPath) = 0;
    virtual bool exportDocumentVersionAlt(int docId, int version, QString &localPath) = 0;
    virtual QStringList getAllVersions(int docId) = 0;
    virtual bool logIn(QString login1, QString login2, QString login3) = 0;
    // Document-info records hold fields separated by U+FFFD.
    virtual bool getDocumentInfo(QStringList docIds, QStringList &info) = 0;
    // Image bytes of one page (any format QImage reads), empty when there is no
    // image or the user may not see the document; pageCount gets the page count.
    virtual QByteArray getDocumentThumbnail(int docId, int page, int size, int &pageCount,
                                            QString &format, int option1, int option2,
                                            int version) = 0;
    virtual bool deleteDocument(QString docId, QStringList options) = 0;
    virtual bool getDocumentActions(QStringList docIds, QStringList &actions, int mode,
                                    QString option) = 0;
    virtual bool writeDocumentInfo(int docId, int mode) = 0;
    virtual bool moveDocToArchive(qlonglong docId, int target) = 0;
    virtual QString getDocumentFileName(QString docId, QString docsId) = 0;
    // Fewer names than documents means the user may not export all of them.
    virtual QStringList getDocumentFileNames(QStringList docIds, QStringList docsIds) = 0;
    virtual QString getDocumentPartFileName(QString docId, QString docsId, QString version) = 0;
    // Reply: [0] upload id (empty = failure), [1] number N of original images,
    // [2..N+1] "key;base64 image", then one "docId;version;page;unused;key" line per duplicate.
    virtual QStringList checkDuplicates(QString archiveData, QString filePath, QString uploadId,
                                        bool flag, int option1, int option2, int option3,
                                        int option4) = 0;
    virtual bool commitUpload(QString uploadId) = 0;
    virtual void discardUpload(QString uploadId) = 0;
    virtual bool sendFile(QString filePath, QString &uploadId) = 0;
    virtual void cancelStreaming() = 0;

signals:
    void totalFileSize(QString bytes);
    void currentReadSize(QString bytes);
    void saveDocEnd();
};

#define kelArchiveClientInterface_iid ORVEX_IID_PREFIX "kelArchiveClientInterface/1.2"
Q_DECLARE_INTERFACE(kelArchiveClientInterface, kelArchiveClientInterface_iid)
