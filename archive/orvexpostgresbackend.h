#pragma once

#include "orvexarchivebackend.h"

#include <QCoreApplication>

// The server engine: a PostgreSQL database reached through Qt's QPSQL driver,
// worked on as one database role (the archive user). Document files and
// pending uploads are rows of files, their bytes in chunks of ChunkSize in
// file_chunks, streamed one chunk at a time; page images are rows of
// page_images. The full text is a tsvector of the German and the simple
// configuration with a GIN index. Changes arrive as notifications on the
// channels orvex_clipboards and orvex_documents; every connection carries an
// application name of its own process, which the notifications repeat, so
// that a listener can tell its own changes.
class OrvexPostgresBackend final : public OrvexArchiveBackend
{
    Q_DECLARE_TR_FUNCTIONS(OrvexPostgresBackend)

public:
    static constexpr int ChunkSize = 512 * 1024;
    static constexpr const char *DriverName = "QPSQL";

    explicit OrvexPostgresBackend(const OrvexArchiveLocation &location);
    ~OrvexPostgresBackend() override;

    // A refusal or failure of the server as a sentence a user may read; the
    // server's own text goes to the log.
    static QString describe(const QSqlError &error);
    // Whether the connection that listens for notifications is still open
    // (without reading from it: the driver does that).
    static bool isListening(QSqlDatabase &db);
    // The name every connection of this backend carries.
    QString applicationName() const { return m_applicationName; }

    Dialect dialect() const override { return Dialect::Postgres; }
    bool prepare(bool createIfMissing, bool &isNew, QString &error) override;
    QSqlDatabase connect(const QString &name, bool create, QString &error) override;
    bool isAlive(QSqlDatabase &db) const override;
    QString beginWrite() const override;
    bool serializesWrites() const override { return false; }
    bool tables(QSqlDatabase &db, QStringList &names, QString &error) override;
    bool lockSchema(QSqlDatabase &db, QString &error) override;
    bool nextDocumentNumbers(QSqlDatabase &db, qlonglong &docId, qlonglong &docsId, QString &error) override;

    bool replaceRights(QSqlDatabase &db, const QString &clipboard, const QList<QPair<QString, QString>> &rights,
                       QString &error) override;

    bool indexText(QSqlDatabase &db, qlonglong docId, const QString &title, const QString &body,
                   QString &error) override;
    bool removeText(QSqlDatabase &db, qlonglong docId, QString &error) override;
    QString allTextsQuery() const override { return QStringLiteral("SELECT doc_id, title, body FROM doc_text ORDER BY doc_id"); }
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

    // The stored name of a file of an area ("files/1001/v1.pdf").
    static QString storedName(Area area, const QString &name);
    // Writes a file's bytes into file_chunks of file fileId inside the caller's
    // transaction: chunks are inserted as they fill.
    class ChunkWriter
    {
    public:
        ChunkWriter(QSqlDatabase &db, qlonglong fileId);
        bool write(const char *data, qint64 size, QString &reason);
        bool flush(QString &reason); // the last, partial chunk
        qint64 size() const { return m_size; }

    private:
        bool insert(QString &reason);

        QSqlDatabase &m_db;
        qlonglong m_fileId;
        QByteArray m_buffer;
        int m_sequence = 0;
        qint64 m_size = 0;
    };
    // Adds a row to files (inside the caller's transaction); its id, 0 on failure.
    static qlonglong addFileRow(QSqlDatabase &db, const QString &storedName, qlonglong docId, QString &error);

private:
    const OrvexArchiveLocation m_location;
    const QString m_applicationName;
};
