#pragma once

#include <QCoreApplication>
#include <QMutex>
#include <QString>
#include <QStringList>

class OrvexArchiveSession;
class OrvexArchiveTransfer;
class QTemporaryDir;

// The archive client's documents: the files of their versions, exports into a
// temporary folder of the client, file names, version and info records, the
// full-text search, deletion and the actions a user may take. Every operation
// needs the whole connection chain and a document the user may read; failures
// come back as false or empty, with the reason in the session.
class OrvexArchiveDocuments
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    struct VersionFile
    {
        QString stored; // the stored file's name ("1001/v2.pdf")
        QString fileName;
        int version = 0;
        int pages = 0;
        qint64 size = 0;
    };

    OrvexArchiveDocuments(OrvexArchiveSession &session, OrvexArchiveTransfer &transfer);
    ~OrvexArchiveDocuments();

    // The file of one version (0 or less: the current one) of a readable document.
    bool versionFile(qlonglong docId, int version, VersionFile &file);

    // The operations of kelArchiveClientInterface, as OrvexArchiveClient describes them.
    bool exportDocument(int docId, QString &localPath, int purpose, QString option);
    QStringList searchDocs(QString query);
    bool exportDocumentVersion(int docId, int version, QString &localPath);
    bool exportDocumentVersionAlt(int docId, int version, QString &localPath);
    QStringList getAllVersions(int docId);
    bool getDocumentInfo(QStringList docIds, QStringList &info);
    bool deleteDocument(QString docId, QStringList options);
    bool getDocumentActions(QStringList docIds, QStringList &actions, int mode, QString option);
    bool writeDocumentInfo(int docId, int mode);
    bool moveDocToArchive(qlonglong docId, int target);
    QString getDocumentFileName(QString docId, QString docsId);
    QStringList getDocumentFileNames(QStringList docIds, QStringList docsIds);
    QString getDocumentPartFileName(QString docId, QString docsId, QString version);

private:
    bool exportVersion(qlonglong docId, int version, QString &localPath);
    QString fileNameFor(qlonglong docId, int version);
    // The suffix of a stored file (lower case since import), else the one of
    // the document's name, else the usual one of the file's content type.
    QString fileSuffix(const QString &stored, const QString &fileName);
    // The client's export folder, made on first use; the caller holds m_mutex.
    QTemporaryDir *exportRoot();

    OrvexArchiveSession &m_session;
    OrvexArchiveTransfer &m_transfer;
    QMutex m_mutex;
    QTemporaryDir *m_exportDir = nullptr;
    int m_exportCount = 0;
};
