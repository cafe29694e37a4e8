#pragma once

#include "orvexarchive.h"

#include <QMutex>
#include <QSharedPointer>
#include <QString>

#include <memory>

class kelArchiveClientInterface;
class OrvexArchiveStore;

// The archive the document server delivers from, safe to use from any thread.
//
// Threads: every request gets an archive client of its own, made, used and
// destroyed on the server thread that handles the request, and the archive's
// store gives each thread its own database connection. Nothing is marshalled
// to the Qt thread, so a large export never stalls the stand-in's local-socket
// protocol, and stopping the server (which joins its threads) cannot wait on
// the Qt thread.
//
// The archive (a folder or a server address) is opened on the first request
// that finds it and is never created here: the demo starts the stand-in before the host creates its
// sample archive, and an empty archive made first would stop the host from
// filling it. Until the folder holds an archive, requests are answered 503.
class OrvexDocumentArchive
{
public:
    // A document ready for delivery: a temporary export that is removed with
    // this object (the export folder belongs to the client it holds).
    struct Document
    {
        ~Document();

        int status = 0;   // 200, or the HTTP status of the refusal
        QString error;    // the reason for a refusal
        QString filePath; // the exported copy
        QString fileName; // the archive's name for the file
        qint64 size = 0;
        std::unique_ptr<kelArchiveClientInterface> client;
    };

    // user: the archive user the documents are read as; empty for the
    // archive's default (the operating-system user).
    explicit OrvexDocumentArchive(const QString &folder, const QString &user = {});
    ~OrvexDocumentArchive();

    QString folder() const { return m_folder; }

    // Exports document docId (version > 0: that version) as the archive user.
    // Refusals: 503 no archive (yet), 404 unknown document or version, 403 the
    // user may not read it, 500 the export failed.
    std::unique_ptr<Document> fetch(qlonglong docId, int version);

private:
    bool ensureOpen(QString &error);

    const QString m_folder;
    const QString m_user;
    QMutex m_mutex;
    // Set once under m_mutex by ensureOpen() and constant afterwards.
    std::unique_ptr<OrvexArchive> m_archive;
    QSharedPointer<OrvexArchiveStore> m_store;
    kelArchiveClientInterface *m_clientFactory = nullptr; // m_archive's client
    OrvexConnectionValues m_values;
    QString m_archiveUser;
};
