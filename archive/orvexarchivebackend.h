#pragma once

#include "orvexarchivelocation.h"

#include <QByteArray>
#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <atomic>
#include <functional>
#include <memory>

class QFile;
class QFileDevice;
class QIODevice;
class QSqlError;
class QTemporaryFile;

// The database engine under the archive's store, and what differs between
// engines: how a connection is made, how a write transaction starts, the
// full-text index, where document files and page images are kept, and how
// changes made by others are noticed. Everything above the store sees the
// same tables and the same rules on either engine.
class OrvexArchiveBackend
{
public:
    enum class Dialect { Sqlite = 1, Postgres = 2 };
    // Where a stored file belongs: an archived version, or a pending upload.
    enum class Area { Files, Uploads };
    // What changed in the archive.
    enum Topic { Clipboards = 1, Documents = 2 };

    // A page image as cached for (document, version, page, size).
    struct ImageKey
    {
        qlonglong docId = 0;
        int version = 0;
        int page = 0;
        int size = 0;
    };

    // A local path for tools that need one (PDF rendering, inspection): the
    // stored file itself, or a temporary copy that goes with this object.
    class LocalFile
    {
    public:
        LocalFile();
        ~LocalFile();
        LocalFile(LocalFile &&) noexcept;
        LocalFile &operator=(LocalFile &&) noexcept;
        QString path() const { return m_path; }
        void setPath(const QString &path) { m_path = path; }
        void adopt(std::unique_ptr<QTemporaryFile> temporary);

    private:
        QString m_path;
        std::unique_ptr<QTemporaryFile> m_temporary;
    };

    // Receives a file's bytes in order. Unless finish() succeeds, whatever
    // was written is thrown away again when the sink goes.
    class Sink
    {
    public:
        virtual ~Sink();
        // False with the reason (the system's or the server's words).
        virtual bool write(const char *data, qint64 size, QString &reason) = 0;
        // Makes the file durable and runs the completion the store gave.
        virtual bool finish(QString &reason) = 0;
    };
    // Work that must be stored together with a finished file (its upload row).
    using Completion = std::function<bool(QSqlDatabase &db, QString &error)>;
    // The store's write transaction, for completions of engines whose file
    // sinks are not transactions themselves.
    using Writer = std::function<bool(const Completion &completion, QString &error)>;

    // A local file as a sink, written in place; the completion (if any) runs
    // through the writer once the file is complete. A durable sink's file is on
    // the disk before the completion runs. Reasons are the system's words.
    class FileSink final : public Sink
    {
    public:
        explicit FileSink(const QString &path, bool durable = false, Completion completion = {}, Writer writer = {});
        ~FileSink() override;
        bool open(QString &reason);
        bool write(const char *data, qint64 size, QString &reason) override;
        bool finish(QString &reason) override;

    private:
        std::unique_ptr<QFile> m_file;
        const bool m_durable;
        Completion m_completion;
        Writer m_writer;
        bool m_finished = false;
    };

    // Writes all of data, or fails with the system's reason.
    static bool writeFully(QFileDevice &file, const char *data, qint64 size, QString *reason);
    // Waits until a file's content, or a folder's list of names, is on the disk.
    static bool syncFile(const QString &path);
    static bool syncFolder(const QString &path);

    virtual ~OrvexArchiveBackend();

    virtual Dialect dialect() const = 0;
    // This process cannot change the archive (a read-only folder, database
    // file or mount): it is open for reading only, and every write is refused.
    virtual bool isReadOnly() const;

    // Checks the location and readies it (folders, reachability). isNew is
    // set when it holds no archive yet. False + error.
    virtual bool prepare(bool createIfMissing, bool &isNew, QString &error) = 0;
    // A new connection named name for the calling thread. create: the first
    // connection of a new archive.
    virtual QSqlDatabase connect(const QString &name, bool create, QString &error) = 0;
    // Whether a connection of this thread is still usable (a server may have
    // gone away meanwhile).
    virtual bool isAlive(QSqlDatabase &db) const;
    // The statement that starts a write transaction.
    virtual QString beginWrite() const = 0;
    // Work that every write transaction does right after starting.
    virtual bool startWrite(QSqlDatabase &db, QString &error);
    // Only one writer at a time inside a process (a file database).
    virtual bool serializesWrites() const = 0;
    // Names of the tables of the archive's schema.
    virtual bool tables(QSqlDatabase &db, QStringList &names, QString &error) = 0;
    // Takes the schema's lock for a migration inside the caller's transaction:
    // another process setting up the same archive waits for this one.
    virtual bool lockSchema(QSqlDatabase &db, QString &error);
    // The id and entry number of the next new document, inside the caller's
    // transaction (other importers wait until it ends). The entry number is
    // above those of documents and of every clipboard entry, which a host
    // may have numbered itself.
    virtual bool nextDocumentNumbers(QSqlDatabase &db, qlonglong &docId, qlonglong &docsId, QString &error);

    // Replaces a clipboard's rights (role, "R" or "W") inside the caller's
    // transaction, as one change: a server checks the writer's right on the
    // clipboard as it stood before.
    virtual bool replaceRights(QSqlDatabase &db, const QString &clipboard,
                               const QList<QPair<QString, QString>> &rights, QString &error);

    // Full text: a document's title and text, indexed for search.
    virtual bool indexText(QSqlDatabase &db, qlonglong docId, const QString &title, const QString &body,
                           QString &error) = 0;
    virtual bool removeText(QSqlDatabase &db, qlonglong docId, QString &error) = 0;
    // Every indexed text: document id, title, body.
    virtual QString allTextsQuery() const = 0;
    // A condition on docIdColumn that holds for documents whose indexed text
    // matches term: alternatives joined by " OR ", all words of an
    // alternative, each as a word prefix, case-insensitive. values receives
    // what the condition's placeholders bind. fewDocuments: the condition is
    // tested on a few documents (a clipboard's) rather than the archive. False
    // when the term holds no word.
    virtual bool fullTextCondition(const QString &docIdColumn, const QString &term, bool fewDocuments,
                                   QString &condition, QVariantList &values) const = 0;

    // Stored files. Names are relative to their area ("1001/v1.pdf").
    // Copies a local file into the archive inside the caller's transaction;
    // written receives what must be removed again if that transaction fails.
    virtual bool storeFile(QSqlDatabase &db, Area area, const QString &name, qlonglong docId,
                           const QString &sourcePath, QStringList &written, QString &error) = 0;
    // Moves a stored file (an upload becomes a version) inside the caller's
    // transaction; moved receives "from|to" pairs to undo if it fails.
    virtual bool moveFile(QSqlDatabase &db, Area fromArea, const QString &from, Area toArea, const QString &to,
                          qlonglong docId, QStringList &moved, QString &error) = 0;
    // Undoes storeFile() and moveFile() of a transaction that did not commit.
    virtual void undoFiles(const QStringList &written, const QStringList &moved) = 0;
    // Removes stored files inside the caller's transaction; afterCommit
    // receives what removeAfterCommit() deletes once it is committed.
    virtual bool removeFiles(QSqlDatabase &db, Area area, const QStringList &names, QStringList &afterCommit,
                             QString &error) = 0;
    virtual void removeAfterCommit(const QStringList &afterCommit) = 0;
    // Drops what is kept beside a removed document (its cached page images).
    virtual void forgetDocument(qlonglong docId) = 0;
    // Reads a stored file from the start; null + error when it is missing.
    virtual std::unique_ptr<QIODevice> openFile(Area area, const QString &name, QString &error) = 0;
    // A sink for a new stored file, to be used on the calling thread only;
    // completion runs when it is finished, in the sink's own transaction or
    // through writer.
    virtual std::unique_ptr<Sink> createFile(Area area, const QString &name, Completion completion,
                                             Writer writer, QString &error) = 0;
    virtual bool localFile(Area area, const QString &name, LocalFile &file, QString &error) = 0;
    // The first bytes of a stored file, for telling its type.
    QByteArray head(Area area, const QString &name, int bytes);

    // Cached page images; an empty answer when there is none. A hit counts as
    // a use. The cache keeps within its limit by dropping the images used
    // least recently; the order of use outlives the process.
    virtual QByteArray cachedImage(const ImageKey &key) = 0;
    virtual void cacheImage(const ImageKey &key, const QByteArray &png) = 0;
    static constexpr qint64 DefaultImageCacheLimit = 512LL * 1024 * 1024;
    void setImageCacheLimit(qint64 bytes) { m_imageCacheLimit = bytes; }
    qint64 imageCacheLimit() const { return m_imageCacheLimit; }

    // Tells of changes that others (other processes, other machines) made:
    // onChange gets the Topic bits. The watcher lives in the calling thread,
    // which needs an event loop; null when nothing can be watched.
    virtual QObject *watch(std::function<void(int topics)> onChange, QObject *parent) = 0;
    // Called inside a write transaction before its commit, so that the
    // watcher can tell this process's own changes from those of others;
    // endWrite() once the transaction is over, committed or not.
    virtual void writeDone(QSqlDatabase &db);
    virtual void endWrite(bool committed);

    static std::unique_ptr<OrvexArchiveBackend> create(const OrvexArchiveLocation &location);
    // The store's connection of the calling thread, for the file operations.
    void setConnectionProvider(std::function<QSqlDatabase(QString &error)> provider);

protected:
    QSqlDatabase threadDatabase(QString &error) const;
    // replaceRights() as one statement with data-changing parts (a server's
    // dialect): the rights not kept go, the others are written.
    static QString rightsStatement(const QString &clipboard, const QList<QPair<QString, QString>> &rights,
                                   QVariantList &values);

private:
    std::function<QSqlDatabase(QString &error)> m_connections;
    std::atomic<qint64> m_imageCacheLimit{DefaultImageCacheLimit};
};
