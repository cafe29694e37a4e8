#pragma once

#include "orvexarchivebackend.h"
#include "orvexarchiveglobal.h"
#include "orvexarchivelocation.h"
#include "orvexpdftools.h"

#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>
#include <atomic>
#include <functional>
#include <memory>

class QIODevice;
class QSqlQuery;
class OrvexRenderAhead;

// The archive's storage: the database (one connection per thread, since a
// QSqlDatabase connection may only be used by the thread that opened it, and
// closed when its thread ends), the documents' files, and the rules shared by
// both clients (roles of a user, who may read a document). Writes go through
// write(), which runs them in one transaction and rolls back on any failure.
//
// The engine is the backend's business: an SQLite file in a folder, or a
// PostgreSQL server (then the store works as one database role, and the
// server's row-level security enforces the clipboard rights as well). Code
// above the store sees the same tables, files and rules on both.
class ORVEXARCHIVE_EXPORT OrvexArchiveStore : public QObject
{
    Q_OBJECT

public:
    using Area = OrvexArchiveBackend::Area;
    using Dialect = OrvexArchiveBackend::Dialect;

    static constexpr int MaxNameLength = 100;
    static constexpr int MaxNoteLength = 1024;
    static constexpr int MaxClipboardEntries = 200;

    explicit OrvexArchiveStore(QObject *parent = nullptr);
    ~OrvexArchiveStore() override;

    // The store of a location shared by everybody in this process that works
    // on it as the same user, so that every client sees the others' changes
    // (documentsChanged) and writes queue up here instead of waiting on the
    // database's lock. Opens it on first use; null + error when it cannot be
    // opened.
    static QSharedPointer<OrvexArchiveStore> shared(const OrvexArchiveLocation &location, bool createSample,
                                                    QString *error);
    static QSharedPointer<OrvexArchiveStore> shared(const QString &location, bool createSample, QString *error);

    // Opens the archive at location, creating it (and the sample documents
    // when createSample) when it holds none yet. False + error.
    bool open(const OrvexArchiveLocation &location, bool createSample, QString *error);
    bool isOpen() const;
    // True when this process cannot change the archive (a read-only folder,
    // database file or mount): it is then open for reading only.
    bool isReadOnly() const;
    OrvexArchiveLocation location() const;
    // The folder, or the server address without password.
    QString folder() const;
    Dialect dialect() const;
    bool isServer() const;
    OrvexArchiveBackend &backend() const;

    // The calling thread's connection; invalid when the archive is not open.
    QSqlDatabase database(QString *error = nullptr);

    // Runs work inside one transaction; a false return or a failed commit
    // rolls everything back. work sets its error when it refuses (or passes
    // on a storage reason); error then gets "<reason>: <notStored>", where
    // notStored says what the user lost ("Rechnung.pdf was not archived").
    // A read-only archive refuses every write.
    bool write(const std::function<bool(QSqlDatabase &, QString &)> &work, QString *error,
               const QString &notStored = {});

    QString setting(const QString &key, const QString &fallback = {});

    // Rights
    // "WITH RECURSIVE my_roles(role) AS (...)": the roles of the user bound
    // to its one placeholder (the user, its groups, system roles); empty for
    // users the archive does not know.
    static QString rolesOfUser();
    QSet<QString> rolesOf(const QString &user);
    bool isUser(const QString &user);
    bool mayRead(const QString &user, qlonglong docId); // false also for unknown documents
    bool documentExists(qlonglong docId);
    bool checkPassword(const QString &user, const QString &password);

    // Adds a user (with the all-users role) to an archive in a folder when it
    // is not known yet. On a server the administrator adds users.
    bool ensureUser(const QString &user, QString *error);

    // Files written or moved inside a transaction, to undo if it fails.
    struct FileChanges
    {
        QStringList written;
        QStringList moved;
    };
    void undoFiles(const FileChanges &changes);

    // Imports a file as a new document or as a new version of newVersionOf (> 0),
    // inside the caller's transaction. Returns the document id, 0 on failure.
    struct ImportOptions
    {
        QString title;
        QString typeKey;
        QString statusKey;
        QString fileName; // name under which the document is exported
        QString date;     // yyyy-MM-dd, default today
        QString readRole; // empty: every user may read it
        QString owner;
        // The stored name of a pending upload that becomes the document's
        // file, moved instead of copied. It is the last step of the import, so
        // that only the caller's commit can fail after it.
        QString uploadFile;
    };
    qlonglong importFile(QSqlDatabase &db, const QString &sourcePath, const ImportOptions &options,
                         qlonglong newVersionOf, FileChanges &changes, QString &error);

    // What the archive keeps of a file's content.
    struct Content
    {
        QString sha256;
        qint64 size = 0;
        OrvexPdfTools::Inspection inspection; // pages, text for the full-text index, page fingerprints
    };
    // Inspects and hashes a file: the expensive part of an import, which needs no transaction.
    static bool readContent(const QString &path, Content &content, QString &error);
    // importFile() with the content already known; sourcePath names the
    // file's type (its suffix) and, without options.uploadFile, its bytes.
    qlonglong importContent(QSqlDatabase &db, const QString &sourcePath, const Content &content,
                            const ImportOptions &options, qlonglong newVersionOf, FileChanges &changes,
                            QString &error);

    // An upload as sendFile and the duplicate check recorded it. inspected is
    // false until saveUploadInspection() has kept the inspection with it.
    struct Upload
    {
        QString file; // stored name in the uploads area
        QString originalName;
        Content content;
        bool inspected = false;
    };
    // False with an empty error when owner has no such upload.
    bool readUpload(const QString &uploadId, const QString &owner, Upload &upload, QString &error);
    bool saveUploadInspection(const QString &uploadId, const OrvexPdfTools::Inspection &inspection, QString *error);

    // Stored files, read and written in chunks on the calling thread.
    std::unique_ptr<QIODevice> openFile(Area area, const QString &name, QString &error);
    // A new stored file; completion is stored with it (on a server in the
    // same transaction, in a folder once the file is on the disk).
    std::unique_ptr<OrvexArchiveBackend::Sink> createFile(Area area, const QString &name,
                                                          OrvexArchiveBackend::Completion completion,
                                                          QString &error);
    bool localFile(Area area, const QString &name, OrvexArchiveBackend::LocalFile &file, QString &error);
    // The type of a stored file by its name, else by its first bytes.
    QString mimeType(Area area, const QString &name);

    // Differing fingerprint pixels (of 16384) up to which two pages count as the same.
    static constexpr int PageHashTolerance = 10;

    static QString operatingSystemUser();
    // SQLite stores a null QString as NULL; texts that may be empty go through this.
    static QVariant text(const QString &value);
    static QString sha256Hex(const QByteArray &bytes);
    static QString passwordHash(const QString &user, const QString &password);
    // Removes a document's rows and files inside the caller's transaction;
    // afterRemoval() finishes the job once the transaction is committed.
    bool removeDocument(QSqlDatabase &db, qlonglong docId, QStringList &afterCommit, QString &error);
    void afterRemoval(qlonglong docId, const QStringList &afterCommit);

    // Starts telling of changes that others make (changedElsewhere); the
    // calling thread needs an event loop. Calling it again does nothing.
    void watchChanges();

    // Renders the first page of the documents' current versions into the page
    // image cache in the background, at the size a card asks for; called once
    // their import is committed.
    void renderAhead(const QList<qlonglong> &docIds);
    // Stores a page image rendered for a reader in the page image cache in
    // the background.
    void cacheLater(const OrvexArchiveBackend::ImageKey &key, const QString &stored, const QImage &image);
    // Waits for those renders and stores; false on timeout.
    bool waitForRenderAhead(int msecs = -1);
    // The setting that bounds the page image cache (bytes).
    static constexpr const char *ImageCacheSetting = "image_cache_bytes";

signals:
    void documentsChanged();
    // Others (another process, another machine) changed the archive: topics
    // holds OrvexArchiveBackend::Topic bits.
    void changedElsewhere(int topics);

private:
    bool openLocation(const OrvexArchiveLocation &location, bool createSample, QString &error);
    // Brings the schema up to date; fresh tells that it set up a new archive.
    bool migrate(bool &fresh, QString &error);
    void closeAll();
    QString connectionName() const;

    OrvexArchiveLocation m_location;
    std::unique_ptr<OrvexArchiveBackend> m_backend;
    QString m_connectionPrefix;
    QMutex m_connectionsMutex;
    QSet<QString> m_connections;
    QMutex m_writeMutex;
    std::atomic_bool m_open{false};
    QPointer<QObject> m_watcher;
    std::unique_ptr<OrvexRenderAhead> m_renderAhead;
};
