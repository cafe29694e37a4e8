#pragma once

#include "orvexarchiveglobal.h"
#include "orvexpdftools.h"

#include <QMutex>
#include <QObject>
#include <QSet>
#include <QSharedPointer>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>
#include <atomic>
#include <functional>

class QFileDevice;
class QSqlQuery;

// The archive's storage: the SQLite database (one connection per thread, since
// a QSqlDatabase connection may only be used by the thread that opened it), the
// data folder with the documents' files, and the rules shared by both clients
// (roles of a user, who may read a document). Writes go through write(), which
// runs them in one immediate transaction and rolls back on any failure.
class ORVEXARCHIVE_EXPORT OrvexArchiveStore : public QObject
{
    Q_OBJECT

public:
    static constexpr int SchemaVersion = 2;
    static constexpr int MaxNameLength = 100;
    static constexpr int MaxNoteLength = 1024;
    static constexpr int MaxClipboardEntries = 200;

    explicit OrvexArchiveStore(QObject *parent = nullptr);
    ~OrvexArchiveStore() override;

    // The store of folder shared by everybody in this process that works on it,
    // so that every client sees the others' changes (documentsChanged) and
    // writes queue up here instead of waiting on the database's lock. Opens it
    // on first use; null + error when it cannot be opened.
    static QSharedPointer<OrvexArchiveStore> shared(const QString &folder, bool createSample, QString *error);

    // Opens the archive in folder, creating it (and the sample documents when
    // createSample) when the folder holds no database yet. False + error().
    bool open(const QString &folder, bool createSample, QString *error);
    bool isOpen() const;
    // True when this process cannot change the archive (a read-only folder,
    // database file or mount): it is then open for reading only.
    bool isReadOnly() const;
    QString folder() const;
    QString databasePath() const;
    QString filesPath() const;
    QString cachePath() const;
    QString uploadsPath() const;

    // The calling thread's connection; invalid when the archive is not open.
    QSqlDatabase database(QString *error = nullptr);

    // Runs work inside BEGIN IMMEDIATE ... COMMIT; a false return or a failed
    // commit rolls everything back. work sets its error when it refuses (or
    // passes on a storage reason); error then gets "<reason>: <notStored>",
    // where notStored says what the user lost ("Rechnung.pdf was not archived").
    // A read-only archive refuses every write.
    bool write(const std::function<bool(QSqlDatabase &, QString &)> &work, QString *error,
               const QString &notStored = {});

    QString setting(const QString &key, const QString &fallback = {});

    // Rights
    QSet<QString> rolesOf(const QString &user);      // the user, its groups, system roles
    bool isUser(const QString &user);
    bool mayRead(const QString &user, qlonglong docId); // false also for unknown documents
    bool documentExists(qlonglong docId);
    bool checkPassword(const QString &user, const QString &password);

    // Adds a user (with the all-users role) when it is not known yet.
    bool ensureUser(const QString &user, QString *error);

    // Imports a file as a new document or as a new version of newVersionOf (> 0),
    // inside the caller's transaction. Returns the document id, 0 on failure.
    // The files it writes are appended to createdFiles, so that a caller whose
    // transaction rolls back can remove them again.
    struct ImportOptions
    {
        QString title;
        QString typeKey;
        QString statusKey;
        QString fileName; // name under which the document is exported
        QString date;     // yyyy-MM-dd, default today
        QString readRole; // empty: every user may read it
        QString owner;
        // Renames the source into the archive instead of copying it (a file of
        // the archive's own folder, such as an upload). It is the last step of
        // the import, so that only the caller's commit can fail after it.
        bool moveSource = false;
    };
    qlonglong importFile(QSqlDatabase &db, const QString &sourcePath, const ImportOptions &options,
                         qlonglong newVersionOf, QStringList &createdFiles, QString &error);

    // What the archive keeps of a file's content.
    struct Content
    {
        QString sha256;
        qint64 size = 0;
        OrvexPdfTools::Inspection inspection; // pages, text for the full-text index, page fingerprints
    };
    // Inspects and hashes a file: the expensive part of an import, which needs no transaction.
    static bool readContent(const QString &path, Content &content, QString &error);
    // importFile() with the content already known.
    qlonglong importContent(QSqlDatabase &db, const QString &sourcePath, const Content &content,
                            const ImportOptions &options, qlonglong newVersionOf, QStringList &createdFiles,
                            QString &error);

    // An upload as sendFile and the duplicate check recorded it. inspected is
    // false until saveUploadInspection() has kept the inspection with it.
    struct Upload
    {
        QString path; // absolute
        QString originalName;
        Content content;
        bool inspected = false;
    };
    // False with an empty error when owner has no such upload.
    bool readUpload(const QString &uploadId, const QString &owner, Upload &upload, QString &error);
    bool saveUploadInspection(const QString &uploadId, const OrvexPdfTools::Inspection &inspection, QString *error);

    // Differing fingerprint pixels (of 16384) up to which two pages count as the same.
    static constexpr int PageHashTolerance = 10;

    static QString operatingSystemUser();
    // SQLite stores a null QString as NULL; texts that may be empty go through this.
    static QVariant text(const QString &value);
    static QString sha256Hex(const QByteArray &bytes);
    static QString passwordHash(const QString &user, const QString &password);
    // Removes a document's rows inside the caller's transaction and names its
    // files, which removeDocumentFiles() deletes once the transaction is committed.
    bool removeDocument(QSqlDatabase &db, qlonglong docId, QStringList &filesToRemove, QString &error);
    void removeDocumentFiles(qlonglong docId, const QStringList &files);
    // Writes all of data, or fails with the system's reason.
    static bool writeFully(QFileDevice &file, const char *data, qint64 size, QString *reason);
    // Waits until a file's content, or a folder's list of names, is on the disk.
    static bool syncFile(const QString &path);
    static bool syncFolder(const QString &path);

signals:
    void documentsChanged();

private:
    bool openFolder(const QString &folder, bool createSample, QString &error);
    bool migrate(QSqlDatabase &db, QString &error);
    QSqlDatabase connect(const QString &name, bool create, QString &error);
    void closeAll();

    QString m_folder;
    QString m_connectionPrefix;
    QMutex m_connectionsMutex;
    QSet<QString> m_connections;
    QMutex m_writeMutex;
    std::atomic_bool m_open{false};
    bool m_readOnly = false;      // set by open(), constant afterwards
    bool m_folderWritable = true; // likewise
};
