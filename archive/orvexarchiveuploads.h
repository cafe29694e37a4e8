#pragma once

#include <QCoreApplication>
#include <QMutex>
#include <QString>
#include <QStringList>

class OrvexArchiveSession;
class OrvexArchiveTransfer;

// Uploads: a file is streamed into the archive's upload folder and hashed on
// the way (sendFile), compared with the archived documents by content and by
// page images (checkDuplicates), then archived as a new document
// (commitUpload) or thrown away (discardUpload). sendFile() and
// checkDuplicates() may run on a pool thread.
class OrvexArchiveUploads
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    OrvexArchiveUploads(OrvexArchiveSession &session, OrvexArchiveTransfer &transfer);

    // The document made by the last commit.
    qlonglong getLastArchivedDocId() const;

    // The operations of kelArchiveClientInterface, as OrvexArchiveClient describes them.
    bool sendFile(QString filePath, QString &uploadId);
    QStringList checkDuplicates(QString archiveData, QString filePath, QString uploadId, bool flag,
                                int option1, int option2, int option3, int option4);
    bool commitUpload(QString uploadId);
    void discardUpload(QString uploadId);

private:
    OrvexArchiveSession &m_session;
    OrvexArchiveTransfer &m_transfer;
    mutable QMutex m_mutex;
    qlonglong m_lastArchivedDocId = 0;
};
