#pragma once

#include "orvexexportsummary.h"
#include "orvexlauncher.h"
#include "orvexworkbenchglobal.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>

class kelArchiveClientInterface;
class OrvexFileCopy;
class QWidget;

// The workbench's own facade over an archive client: connection (with a client
// loaded from the host's client library when none is given), export of
// documents into files with readable names, mailing, and small forwarding
// operations. Failures leave a readable reason in getLastError(); message boxes
// are shown only for file-system problems and the rights mismatch.
//
// Lives on the GUI thread: exports and mailing run synchronously there and keep
// their progress dialog painted between the client's progress signals.
class ORVEXWORKBENCH_EXPORT OrvexArchiveWorker : public QObject
{
    Q_OBJECT

public:
    static constexpr const char *ClientLibraryName = "libkelarchiveclient.so";

    explicit OrvexArchiveWorker(QObject *parent = nullptr);
    ~OrvexArchiveWorker() override;

    // Connection
    void setConnectionSettings(QString server, int port, QString login1, QString login2,
                               QString login3);
    void selectArchive(QString name);
    bool doConnect(bool keepOnArchiveFailure);
    void doDisconnect();
    // Uses a client the caller keeps owning (the host's own) instead of loading one.
    void setArchiveClient(kelArchiveClientInterface *client);
    kelArchiveClientInterface *getArchiveClient() const;
    QString getCurrentArchive() const;
    QString getLastError() const;
    void setParentWidget(QWidget *parent);
    void closeFileDialog();
    // Folder searched for the client library and handed to it; the
    // application's folder unless set (tests and embedding hosts set it).
    void setApplicationFolder(const QString &folder);
    QString applicationFolder() const;

    // Forwarded to the client
    bool getArchiveNames(QStringList &names);
    QStringList getAllVersions(QString docId);
    QStringList searchDocs(QString query);
    // Fetches a document for viewing; the local path, empty on failure.
    QString getDocument(const QString &docId);
    bool getDocumentInfo(const QStringList &docIds, QStringList &info);
    bool getDocumentActions(const QStringList &docIds, QStringList &actions, int mode,
                            const QString &option);
    bool deleteDocument(const QString &docId, const QStringList &options);
    bool writeDocumentInfo(int docId, int mode);
    bool moveDocToArchive(qlonglong docId, int target);

    // Export, mailing and upload
    // Exports the documents into targetDir (or opens them). versions, when
    // given, holds one version per document; a negative one stands for the
    // current version, so that a drag may mix both. The counts of the last
    // export are in exportSummary().
    bool exportDocuments(QList<qlonglong> docIds, QList<qlonglong> docsIds, QList<qlonglong> versions,
                         QMap<QString, QString> remarks, QString targetDir, bool openMode,
                         QStringList &resultFiles, int purpose, bool offline, bool skipNameDialog,
                         bool alternateVersion, QString option);
    // Open mode and mailing hand the files to a desktop program and return
    // once it is started; whether it worked comes later, from launches().
    bool mailDocuments(QList<qlonglong> docIds, QList<qlonglong> docsIds, QList<qlonglong> versions,
                       QMap<QString, QString> remarks, QString mailCommand, bool offline);
    // The programs the last open-mode export or mailing started, each telling
    // its outcome with finished(); none has finished when the call returns.
    QList<OrvexLauncher *> launches() const;
    QString getNewFileName(QString filePath, QMap<QString, QString> remarks, qlonglong docId,
                           qlonglong docsId, qlonglong version, bool rename);
    QString getOfflineFileName(QString filePath, QString remark, qlonglong docId, qlonglong version);

    // Upload: streams the file to the archive on a pool thread while the GUI
    // keeps running, shows the duplicates the archive finds and commits or
    // discards. True when the file became a new document (getLastArchivedDocId()).
    // archiveData and flag go to the client's duplicate check unchanged.
    bool uploadFile(QString archiveData, QString filePath, bool flag);

    // What the last export wrote, skipped and failed to write.
    OrvexExportSummary exportSummary() const;

    // Counts and flags
    void setFileCount(int count);
    void setFinishedCount(int count);
    bool isCanceled() const;
    bool isDuplicateCanceled() const;
    qlonglong getLastArchivedDocId() const;
    // The member progress dialog that the client's signals feed.
    OrvexFileCopy *progressDialog() const;

public slots:
    void cancelStreaming();

private:
    bool requireClient();
    void wireProgress(OrvexFileCopy *dialog);
    void adoptClient(kelArchiveClientInterface *client, bool owned);
    void deleteFiles(const QStringList &files) const;
    OrvexLauncher *launch(OrvexLauncher::Purpose purpose, const QString &subject, const QString &program,
                          const QStringList &arguments);
    // Ends an upload that archived nothing: the reason into the last error, the
    // upload (when there is one) discarded, the progress dialog hidden.
    bool abandonUpload(const QString &uploadId, const QString &error);
    // The archive reported duplicates of which none can be read: true when the
    // user still wants the file archived.
    bool askArchiveUnreadableDuplicates(const QString &shownFile);

    int m_port = 0;
    QString m_login1;
    QString m_server;
    kelArchiveClientInterface *m_client = nullptr;
    QString m_login2;
    QString m_lastError;
    std::unique_ptr<OrvexFileCopy> m_fileCopy;
    QPointer<QWidget> m_parentWidget;
    bool m_offlineArchive = false;
    QString m_login3;
    qlonglong m_lastArchivedDocId = 0;
    QString m_archiveName;
    bool m_canceled = false;
    bool m_duplicateCanceled = false;
    int m_fileCount = 0;
    int m_finishedCount = 0;

    bool m_ownsClient = false;
    QString m_applicationFolder;
    bool m_uploading = false;
    QList<QPointer<OrvexLauncher>> m_launches;
    OrvexExportSummary m_exportSummary;
};
