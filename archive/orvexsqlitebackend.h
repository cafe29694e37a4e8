#pragma once

#include "orvexarchivebackend.h"

#include <QCoreApplication>
#include <QHash>
#include <QMutex>

// The embedded engine: an SQLite database file in the archive's folder, the
// documents' files under files/, pending uploads under uploads/, page images
// under cache/thumbs/ and an FTS5 table for the full text. Changes made by
// other processes are noticed by watching the database files; triggers count
// every change of a clipboard or a document in the table revisions, so that
// a watcher can tell this process's own writes from those of others.
class OrvexSqliteBackend final : public OrvexArchiveBackend
{
    // Its texts are the store's.
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveStore)

public:
    explicit OrvexSqliteBackend(const QString &folder);
    ~OrvexSqliteBackend() override;

    static constexpr const char *DatabaseFile = "archive.sqlite";

    QString folder() const { return m_folder; }
    QString databasePath() const;
    QString areaPath(Area area) const;
    QString cachePath() const;

    Dialect dialect() const override { return Dialect::Sqlite; }
    bool isReadOnly() const override { return m_readOnly; }
    bool prepare(bool createIfMissing, bool &isNew, QString &error) override;
    QSqlDatabase connect(const QString &name, bool create, QString &error) override;
    QString beginWrite() const override;
    bool startWrite(QSqlDatabase &db, QString &error) override;
    bool serializesWrites() const override { return true; }
    bool tables(QSqlDatabase &db, QStringList &names, QString &error) override;

    bool indexText(QSqlDatabase &db, qlonglong docId, const QString &title, const QString &body,
                   QString &error) override;
    bool removeText(QSqlDatabase &db, qlonglong docId, QString &error) override;
    QString allTextsQuery() const override { return QStringLiteral("SELECT rowid, title, body FROM doc_text ORDER BY rowid"); }
    bool fullTextCondition(const QString &docIdColumn, const QString &term, bool fewDocuments, QString &condition,
                           QVariantList &values) const override;

    bool storeFile(QSqlDatabase &db, Area area, const QString &name, qlonglong docId, const QString &sourcePath,
                   QStringList &written, QString &error) override;
    bool moveFile(QSqlDatabase &db, Area fromArea, const QString &from, Area toArea, const QString &to,
                  qlonglong docId, QStringList &moved, QString &error) override;
    void undoFiles(const QStringList &written, const QStringList &moved) override;
    bool removeFiles(QSqlDatabase &db, Area area, const QStringList &names, QStringList &afterCommit,
                     QString &error) override;
    void removeAfterCommit(const QStringList &afterCommit) override;
    void forgetDocument(qlonglong docId) override;
    std::unique_ptr<QIODevice> openFile(Area area, const QString &name, QString &error) override;
    std::unique_ptr<Sink> createFile(Area area, const QString &name, Completion completion, Writer writer,
                                     QString &error) override;
    bool localFile(Area area, const QString &name, LocalFile &file, QString &error) override;

    QByteArray cachedImage(const ImageKey &key) override;
    void cacheImage(const ImageKey &key, const QByteArray &png) override;

    QObject *watch(std::function<void(int topics)> onChange, QObject *parent) override;
    void writeDone(QSqlDatabase &db) override;
    void endWrite(bool committed) override;

    static bool readRevisions(QSqlDatabase &db, QHash<QString, qlonglong> &revisions);
    // The topics whose change counters stand higher than the last look plus
    // this process's own changes since explain: changes made by others.
    int foreignChanges(const QHash<QString, qlonglong> &now);

private:
    QString imagePath(const ImageKey &key) const;
    // The page image cache's files by path: size and last use (ms since the
    // epoch, also kept as the file's modification time). Read from the folder
    // on first use; guarded by m_cacheMutex.
    struct CachedImage
    {
        qint64 bytes = 0;
        qint64 used = 0;
    };
    void indexCache();
    qint64 nextUse();
    void noteUse(const QString &path, qint64 bytes);
    void trimCache();

    const QString m_folder;
    bool m_readOnly = false;      // set by prepare(), constant afterwards
    bool m_folderWritable = true; // likewise
    mutable QMutex m_revisionsMutex;
    bool m_watching = false;              // own changes are counted once a watcher has looked
    QHash<QString, qlonglong> m_expected; // the counters as the last look saw them, plus own changes since
    // Per thread: the counters at the start of its current write, then, once
    // it is done, what it added to m_expected (taken back if it fails).
    struct PendingWrite
    {
        QHash<QString, qlonglong> before;
        QHash<QString, qlonglong> added;
    };
    QHash<Qt::HANDLE, PendingWrite> m_pendingWrites;

    QMutex m_cacheMutex;
    bool m_cacheIndexed = false;
    QHash<QString, CachedImage> m_cache;
    qint64 m_cacheBytes = 0;
    qint64 m_lastUse = 0;
};
