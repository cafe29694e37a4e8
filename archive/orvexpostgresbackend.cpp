#include "orvexpostgresbackend.h"

#include "orvexsqlhelpers.h"

#include <QAtomicInteger>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryFile>
#include <QTimer>
#include <QUuid>
#include <QVariant>

#include <libpq-fe.h>

Q_LOGGING_CATEGORY(lcServer, "orvex.archive.server")

namespace {
using OrvexSql::exec;

QAtomicInteger<quint64> g_nextListener{1};

// Advisory lock keys of the archive: its schema, and the numbering of new documents.
constexpr qlonglong kSchemaLock = 0x6f72766578000001LL;
constexpr qlonglong kNumbersLock = 0x6f72766578000002LL;

// A value for the client library's connection options, quoted as it reads them.
QString quoted(const QString &value)
{
    QString text = value;
    text.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('\''), QStringLiteral("\\'"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

// A word of the user's term as a prefix in a text-search query: its runs of
// letters and digits as a phrase (as the index splits the text), quoted so
// that nothing in it is an operator of the query. Empty when it holds none.
QString prefixPhrase(const QString &word)
{
    static const QRegularExpression separators(QStringLiteral("[^\\p{L}\\p{N}]+"));
    const QString text = QString(word).replace(separators, QStringLiteral(" ")).trimmed();
    return text.isEmpty() ? QString() : QLatin1Char('\'') + text + QStringLiteral("':*");
}

QString withoutNul(const QString &text)
{
    QString clean = text;
    return clean.remove(QChar(0));
}

PGconn *connectionOf(QSqlDatabase &db)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "PGconn*") != 0)
        return nullptr;
    return *static_cast<PGconn *const *>(handle.data());
}

bool lock(QSqlDatabase &db, qlonglong key, QString &error)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT pg_advisory_xact_lock(?)"));
    query.addBindValue(key);
    return exec(query, error);
}

// A stored file, read chunk by chunk on the connection of the thread that opened it.
class ChunkReader final : public QIODevice
{
public:
    ChunkReader(QSqlDatabase db, qlonglong fileId, qint64 size)
        : m_db(std::move(db))
        , m_fileId(fileId)
        , m_size(size)
    {
        open(QIODevice::ReadOnly);
    }
    bool isSequential() const override { return true; }
    qint64 size() const override { return m_size; }
    qint64 bytesAvailable() const override { return m_buffer.size() - m_offset + (m_size - m_done) + QIODevice::bytesAvailable(); }
    bool atEnd() const override { return m_offset >= m_buffer.size() && m_done >= m_size; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (m_offset >= m_buffer.size()) {
            if (m_done >= m_size)
                return 0;
            if (!fetch())
                return -1;
        }
        const qint64 count = qMin<qint64>(maxSize, m_buffer.size() - m_offset);
        memcpy(data, m_buffer.constData() + m_offset, size_t(count));
        m_offset += int(count);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool fetch()
    {
        QSqlQuery chunk(m_db);
        chunk.prepare(QStringLiteral("SELECT data FROM file_chunks WHERE file_id = ? AND seq = ?"));
        chunk.addBindValue(m_fileId);
        chunk.addBindValue(m_sequence);
        if (!chunk.exec()) {
            setErrorString(OrvexPostgresBackend::describe(chunk.lastError()));
            return false;
        }
        if (!chunk.next()) {
            setErrorString(OrvexPostgresBackend::tr("The file is incomplete on the archive server."));
            return false;
        }
        m_buffer = chunk.value(0).toByteArray();
        if (m_buffer.isEmpty()) {
            setErrorString(OrvexPostgresBackend::tr("The file is incomplete on the archive server."));
            return false;
        }
        m_offset = 0;
        m_done += m_buffer.size();
        ++m_sequence;
        return true;
    }

    QSqlDatabase m_db;
    const qlonglong m_fileId;
    const qint64 m_size;
    QByteArray m_buffer;
    int m_offset = 0;
    qint64 m_done = 0;
    int m_sequence = 0;
};

// A new stored file written in its own transaction on the calling thread's
// connection; the completion joins that transaction, so that the file and its
// row (an upload's) arrive together or not at all.
class ChunkSink final : public OrvexArchiveBackend::Sink
{
public:
    ChunkSink(QSqlDatabase db, OrvexArchiveBackend::Completion completion)
        : m_db(std::move(db))
        , m_completion(std::move(completion))
    {
    }
    ~ChunkSink() override
    {
        if (m_open && m_db.isOpen()) {
            QSqlQuery rollback(m_db);
            rollback.exec(QStringLiteral("ROLLBACK"));
        }
    }
    bool open(const QString &storedName, QString &error)
    {
        QSqlQuery begin(m_db);
        if (!exec(begin, QStringLiteral("BEGIN"), error))
            return false;
        m_open = true;
        m_fileId = OrvexPostgresBackend::addFileRow(m_db, storedName, 0, error);
        if (m_fileId == 0)
            return false;
        m_writer = std::make_unique<OrvexPostgresBackend::ChunkWriter>(m_db, m_fileId);
        return true;
    }
    bool write(const char *data, qint64 size, QString &reason) override
    {
        return m_writer->write(data, size, reason);
    }
    bool finish(QString &reason) override
    {
        if (!m_writer->flush(reason))
            return false;
        QSqlQuery size(m_db);
        size.prepare(QStringLiteral("UPDATE files SET size = ? WHERE id = ?"));
        size.addBindValue(m_writer->size());
        size.addBindValue(m_fileId);
        if (!exec(size, reason) || (m_completion && !m_completion(m_db, reason)))
            return false;
        QSqlQuery commit(m_db);
        if (!exec(commit, QStringLiteral("COMMIT"), reason))
            return false;
        m_open = false;
        return true;
    }

private:
    QSqlDatabase m_db;
    OrvexArchiveBackend::Completion m_completion;
    std::unique_ptr<OrvexPostgresBackend::ChunkWriter> m_writer;
    qlonglong m_fileId = 0;
    bool m_open = false;
};

// Listens on a connection of its own for the archive's notifications and
// hands on those of other writers, gathered for a moment. When the server goes
// away it connects again, and tells of a change then, since some may have
// been missed meanwhile.
class Listener final : public QObject
{
public:
    Listener(OrvexPostgresBackend &backend, std::function<void(int)> onChange, QObject *parent)
        : QObject(parent)
        , m_backend(backend)
        , m_onChange(std::move(onChange))
        , m_connection(QStringLiteral("orvexarchive-listen-%1").arg(g_nextListener.fetchAndAddOrdered(1)))
    {
        m_gather.setSingleShot(true);
        m_gather.setInterval(50);
        QObject::connect(&m_gather, &QTimer::timeout, this, [this] {
            if (const int topics = std::exchange(m_topics, 0))
                m_onChange(topics);
        });
        m_health.setInterval(1000);
        QObject::connect(&m_health, &QTimer::timeout, this, &Listener::keepListening);
        m_health.start();
        listen();
    }
    ~Listener() override
    {
        QSqlDatabase::removeDatabase(m_connection);
    }

private:
    bool listen()
    {
        if (QSqlDatabase::contains(m_connection))
            QSqlDatabase::removeDatabase(m_connection);
        QString error;
        QSqlDatabase db = m_backend.connect(m_connection, false, error);
        if (!db.isOpen()) {
            qCDebug(lcServer) << "LISTEN failed" << error;
            return false;
        }
        QSqlDriver *driver = db.driver();
        QObject::connect(driver, qOverload<const QString &, QSqlDriver::NotificationSource, const QVariant &>(&QSqlDriver::notification),
                         this, &Listener::notified);
        return driver->subscribeToNotification(QStringLiteral("orvex_clipboards"))
            && driver->subscribeToNotification(QStringLiteral("orvex_documents"));
    }

    void notified(const QString &channel, QSqlDriver::NotificationSource, const QVariant &payload)
    {
        if (payload.toString() == m_backend.applicationName())
            return;
        m_topics |= channel == QLatin1String("orvex_documents") ? OrvexArchiveBackend::Documents
                                                                 : OrvexArchiveBackend::Clipboards;
        if (!m_gather.isActive())
            m_gather.start();
    }

    void keepListening()
    {
        {
            QSqlDatabase db = QSqlDatabase::database(m_connection, false);
            if (OrvexPostgresBackend::isListening(db))
                return;
        }
        if (listen()) {
            m_topics |= OrvexArchiveBackend::Clipboards | OrvexArchiveBackend::Documents;
            m_gather.start();
        }
    }

    OrvexPostgresBackend &m_backend;
    std::function<void(int)> m_onChange;
    const QString m_connection;
    QTimer m_gather;
    QTimer m_health;
    int m_topics = 0;
};
} // namespace

OrvexPostgresBackend::ChunkWriter::ChunkWriter(QSqlDatabase &db, qlonglong fileId)
    : m_db(db)
    , m_fileId(fileId)
{
    m_buffer.reserve(ChunkSize);
}

bool OrvexPostgresBackend::ChunkWriter::write(const char *data, qint64 size, QString &reason)
{
    while (size > 0) {
        const qint64 room = ChunkSize - m_buffer.size();
        const qint64 take = qMin(room, size);
        m_buffer.append(data, int(take));
        data += take;
        size -= take;
        m_size += take;
        if (m_buffer.size() >= ChunkSize && !insert(reason))
            return false;
    }
    return true;
}

bool OrvexPostgresBackend::ChunkWriter::flush(QString &reason)
{
    return m_buffer.isEmpty() || insert(reason);
}

bool OrvexPostgresBackend::ChunkWriter::insert(QString &reason)
{
    QSqlQuery chunk(m_db);
    chunk.prepare(QStringLiteral("INSERT INTO file_chunks(file_id, seq, data) VALUES (?, ?, ?)"));
    chunk.addBindValue(m_fileId);
    chunk.addBindValue(m_sequence);
    chunk.addBindValue(m_buffer);
    if (!exec(chunk, reason))
        return false;
    ++m_sequence;
    m_buffer.clear();
    return true;
}

qlonglong OrvexPostgresBackend::addFileRow(QSqlDatabase &db, const QString &storedName, qlonglong docId,
                                           QString &error)
{
    QSqlQuery row(db);
    row.prepare(QStringLiteral("INSERT INTO files(name, doc_id) VALUES (?, ?) RETURNING id"));
    row.addBindValue(storedName);
    row.addBindValue(docId > 0 ? QVariant(docId) : QVariant(QVariant::LongLong));
    if (!exec(row, error))
        return 0;
    if (!row.next()) {
        error = tr("The archive server stored no file row.");
        return 0;
    }
    return row.value(0).toLongLong();
}

OrvexPostgresBackend::OrvexPostgresBackend(const OrvexArchiveLocation &location)
    : m_location(location)
    , m_applicationName(QStringLiteral("orvex:") + QUuid::createUuid().toString(QUuid::Id128).left(16))
{
}

OrvexPostgresBackend::~OrvexPostgresBackend() = default;

QString OrvexPostgresBackend::storedName(Area area, const QString &name)
{
    return (area == Area::Files ? QStringLiteral("files/") : QStringLiteral("uploads/")) + name;
}

bool OrvexPostgresBackend::prepare(bool createIfMissing, bool &isNew, QString &error)
{
    Q_UNUSED(createIfMissing)
    isNew = false; // told by the schema the store finds
    if (!QSqlDatabase::isDriverAvailable(QLatin1String(DriverName))) {
        error = tr("The PostgreSQL driver of Qt is not installed (Debian package libqt5sql5-psql).");
        return false;
    }
    return true;
}

QSqlDatabase OrvexPostgresBackend::connect(const QString &name, bool create, QString &error)
{
    Q_UNUSED(create)
    QSqlDatabase db = QSqlDatabase::addDatabase(QLatin1String(DriverName), name);
    if (!m_location.host().isEmpty())
        db.setHostName(m_location.host());
    if (m_location.port() > 0)
        db.setPort(m_location.port());
    db.setDatabaseName(m_location.database());
    db.setUserName(m_location.effectiveUser());
    if (!m_location.password().isEmpty())
        db.setPassword(m_location.password());
    // The driver separates options by ";"; a value cannot hold one.
    QStringList options{QStringLiteral("application_name=") + quoted(m_applicationName)};
    QStringList given;
    for (const auto &option : m_location.options()) {
        if (option.second.contains(QLatin1Char(';'))) {
            error = tr("The option %1 of the server address may not contain \";\".").arg(option.first);
            return db;
        }
        given << option.first;
        options << option.first + QLatin1Char('=') + quoted(option.second);
    }
    if (!given.contains(QStringLiteral("connect_timeout")))
        options << QStringLiteral("connect_timeout=10");
    // The server's notices (a search word that is a stop word) are no news for the user.
    if (!given.contains(QStringLiteral("options")))
        options << QStringLiteral("options=") + quoted(QStringLiteral("-c client_min_messages=warning"));
    db.setConnectOptions(options.join(QLatin1Char(';')));
    if (db.open()) {
        // The server's notices (its farewell when it shuts down) go to the log, not to stderr.
        if (PGconn *connection = connectionOf(db))
            PQsetNoticeProcessor(connection, [](void *, const char *message) {
                qCDebug(lcServer).noquote() << QString::fromUtf8(message).trimmed();
            }, nullptr);
    } else {
        const QString reason = db.lastError().databaseText().trimmed().section(QLatin1Char('\n'), 0, 0);
        error = tr("Cannot connect to the archive server %1 as %2: %3")
                    .arg(m_location.withUser(QString()).toString(), m_location.effectiveUser(),
                         reason.isEmpty() ? db.lastError().text() : reason);
    }
    return db;
}

bool OrvexPostgresBackend::isAlive(QSqlDatabase &db) const
{
    if (!db.isOpen())
        return false;
    PGconn *connection = connectionOf(db);
    if (!connection)
        return true;
    // The client library learns of a server that went away only when it reads:
    // what has arrived (without waiting) tells, so that a connection the
    // server closed is replaced before it fails a request. A server that shut
    // down sends its farewell first and closes after it: the second read
    // finds the end.
    for (int read = 0; read < 2 && PQstatus(connection) == CONNECTION_OK && !PQisBusy(connection); ++read)
        PQconsumeInput(connection);
    return PQstatus(connection) == CONNECTION_OK;
}

bool OrvexPostgresBackend::isListening(QSqlDatabase &db)
{
    // The driver reads this connection itself, for its notifications.
    PGconn *connection = db.isOpen() ? connectionOf(db) : nullptr;
    return connection && PQstatus(connection) == CONNECTION_OK;
}

QString OrvexPostgresBackend::beginWrite() const
{
    return QStringLiteral("BEGIN");
}

bool OrvexPostgresBackend::tables(QSqlDatabase &db, QStringList &names, QString &error)
{
    // From the catalog, which shows every table (the information schema only
    // those the role may use).
    QSqlQuery query(db);
    if (!exec(query, QStringLiteral("SELECT c.relname FROM pg_class c JOIN pg_namespace n ON n.oid = c.relnamespace "
                                    "WHERE n.nspname = current_schema() AND c.relkind IN ('r', 'p', 'v', 'm', 'f')"),
              error))
        return false;
    names.clear();
    while (query.next())
        names << query.value(0).toString();
    return true;
}

bool OrvexPostgresBackend::lockSchema(QSqlDatabase &db, QString &error)
{
    return lock(db, kSchemaLock, error);
}

bool OrvexPostgresBackend::nextDocumentNumbers(QSqlDatabase &db, qlonglong &docId, qlonglong &docsId,
                                               QString &error)
{
    // The numbers come from a function that sees every clipboard entry, also
    // those of clipboards the user may not view.
    if (!lock(db, kNumbersLock, error))
        return false;
    QSqlQuery next(db);
    if (!exec(next, QStringLiteral("SELECT next_id, next_docs_id FROM orvex_next_document_numbers()"), error))
        return false;
    if (!next.next()) {
        error = tr("The archive server gave no number for a new document.");
        return false;
    }
    docId = next.value(0).toLongLong();
    docsId = next.value(1).toLongLong();
    return true;
}

bool OrvexPostgresBackend::replaceRights(QSqlDatabase &db, const QString &clipboard,
                                         const QList<QPair<QString, QString>> &rights, QString &error)
{
    // One statement: the row-level security sees the writer's right as it
    // stood before, also when the writer gives its own right away.
    QVariantList values;
    QSqlQuery replace(db);
    replace.prepare(rightsStatement(clipboard, rights, values));
    for (const QVariant &value : qAsConst(values))
        replace.addBindValue(value);
    return exec(replace, error);
}

bool OrvexPostgresBackend::indexText(QSqlDatabase &db, qlonglong docId, const QString &title, const QString &body,
                                     QString &error)
{
    if (!removeText(db, docId, error))
        return false;
    QSqlQuery add(db);
    add.prepare(QStringLiteral("INSERT INTO doc_text(doc_id, title, body) VALUES (?, ?, ?)"));
    add.addBindValue(docId);
    add.addBindValue(withoutNul(title));
    add.addBindValue(withoutNul(body.isNull() ? QString(QLatin1String("")) : body));
    return exec(add, error);
}

bool OrvexPostgresBackend::removeText(QSqlDatabase &db, qlonglong docId, QString &error)
{
    QSqlQuery remove(db);
    remove.prepare(QStringLiteral("DELETE FROM doc_text WHERE doc_id = ?"));
    remove.addBindValue(docId);
    return exec(remove, error);
}

bool OrvexPostgresBackend::fullTextCondition(const QString &docIdColumn, const QString &term, bool fewDocuments,
                                             QString &condition, QVariantList &values) const
{
    QStringList alternatives;
    values.clear();
    for (const QString &alternative : term.split(QStringLiteral(" OR "))) {
        QStringList words;
        for (const QString &word : alternative.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QString phrase = prefixPhrase(word);
            if (phrase.isEmpty())
                continue;
            words << QStringLiteral("(to_tsquery('german', ?) || to_tsquery('simple', ?))");
            values << phrase << phrase;
        }
        if (!words.isEmpty())
            alternatives << QLatin1Char('(') + words.join(QStringLiteral(" && ")) + QLatin1Char(')');
    }
    if (alternatives.isEmpty())
        return false;
    // A few documents are looked up one by one; the archive through the index.
    const QString query = QLatin1Char('(') + alternatives.join(QStringLiteral(" || ")) + QLatin1Char(')');
    condition = fewDocuments
        ? QStringLiteral("EXISTS (SELECT 1 FROM doc_text t WHERE t.doc_id = %1 AND t.search @@ %2)").arg(docIdColumn, query)
        : QStringLiteral("%1 IN (SELECT t.doc_id FROM doc_text t WHERE t.search @@ %2)").arg(docIdColumn, query);
    return true;
}

bool OrvexPostgresBackend::storeFile(QSqlDatabase &db, Area area, const QString &name, qlonglong docId,
                                     const QString &sourcePath, QStringList &written, QString &error)
{
    Q_UNUSED(written) // the transaction takes it back
    QFile source(sourcePath);
    if (!source.open(QIODevice::ReadOnly)) {
        error = tr("Cannot read %1: %2").arg(sourcePath, source.errorString());
        return false;
    }
    QSqlQuery clear(db);
    clear.prepare(QStringLiteral("DELETE FROM files WHERE name = ?"));
    clear.addBindValue(storedName(area, name));
    if (!exec(clear, error))
        return false;
    const qlonglong fileId = addFileRow(db, storedName(area, name), docId, error);
    if (fileId == 0)
        return false;
    ChunkWriter writer(db, fileId);
    QByteArray buffer(ChunkSize, Qt::Uninitialized);
    for (;;) {
        const qint64 read = source.read(buffer.data(), buffer.size());
        if (read < 0) {
            error = tr("Cannot read %1: %2").arg(sourcePath, source.errorString());
            return false;
        }
        if (read == 0)
            break;
        if (!writer.write(buffer.constData(), read, error))
            return false;
    }
    if (!writer.flush(error))
        return false;
    QSqlQuery size(db);
    size.prepare(QStringLiteral("UPDATE files SET size = ? WHERE id = ?"));
    size.addBindValue(writer.size());
    size.addBindValue(fileId);
    return exec(size, error);
}

bool OrvexPostgresBackend::moveFile(QSqlDatabase &db, Area fromArea, const QString &from, Area toArea,
                                    const QString &to, qlonglong docId, QStringList &moved, QString &error)
{
    Q_UNUSED(moved) // the transaction takes it back
    QSqlQuery move(db);
    move.prepare(QStringLiteral("UPDATE files SET name = ?, doc_id = ? WHERE name = ?"));
    move.addBindValue(storedName(toArea, to));
    move.addBindValue(docId > 0 ? QVariant(docId) : QVariant(QVariant::LongLong));
    move.addBindValue(storedName(fromArea, from));
    if (!exec(move, error))
        return false;
    if (move.numRowsAffected() != 1) {
        error = tr("The file %1 is missing on the archive server.").arg(from);
        return false;
    }
    return true;
}

void OrvexPostgresBackend::undoFiles(const QStringList &written, const QStringList &moved)
{
    Q_UNUSED(written)
    Q_UNUSED(moved)
}

bool OrvexPostgresBackend::removeFiles(QSqlDatabase &db, Area area, const QStringList &names,
                                       QStringList &afterCommit, QString &error)
{
    Q_UNUSED(afterCommit)
    QSqlQuery remove(db);
    remove.prepare(QStringLiteral("DELETE FROM files WHERE name = ?"));
    for (const QString &name : names) {
        remove.addBindValue(storedName(area, name));
        if (!exec(remove, error))
            return false;
    }
    return true;
}

void OrvexPostgresBackend::removeAfterCommit(const QStringList &afterCommit)
{
    Q_UNUSED(afterCommit)
}

void OrvexPostgresBackend::forgetDocument(qlonglong docId)
{
    Q_UNUSED(docId) // page images go with the document's rows
}

std::unique_ptr<QIODevice> OrvexPostgresBackend::openFile(Area area, const QString &name, QString &error)
{
    QSqlDatabase db = threadDatabase(error);
    if (!db.isOpen())
        return {};
    QSqlQuery file(db);
    file.prepare(QStringLiteral("SELECT id, size FROM files WHERE name = ?"));
    file.addBindValue(storedName(area, name));
    if (!exec(file, error))
        return {};
    if (!file.next()) {
        error = tr("The file %1 is not on the archive server.").arg(name);
        return {};
    }
    return std::make_unique<ChunkReader>(db, file.value(0).toLongLong(), file.value(1).toLongLong());
}

std::unique_ptr<OrvexArchiveBackend::Sink> OrvexPostgresBackend::createFile(Area area, const QString &name,
                                                                          Completion completion, Writer writer,
                                                                          QString &error)
{
    Q_UNUSED(writer) // the sink is a transaction itself
    QSqlDatabase db = threadDatabase(error);
    if (!db.isOpen())
        return {};
    auto sink = std::make_unique<ChunkSink>(db, std::move(completion));
    if (!sink->open(storedName(area, name), error))
        return {};
    return sink;
}

bool OrvexPostgresBackend::localFile(Area area, const QString &name, LocalFile &file, QString &error)
{
    std::unique_ptr<QIODevice> source = openFile(area, name, error);
    if (!source)
        return false;
    const QString suffix = QFileInfo(name).suffix();
    auto copy = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/orvexarchive-XXXXXX")
                                                 + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix));
    if (!copy->open()) {
        error = tr("Cannot make a temporary copy of %1: %2").arg(name, copy->errorString());
        return false;
    }
    QByteArray buffer(ChunkSize, Qt::Uninitialized);
    for (;;) {
        const qint64 read = source->read(buffer.data(), buffer.size());
        if (read < 0) {
            error = source->errorString();
            return false;
        }
        if (read == 0)
            break;
        if (copy->write(buffer.constData(), read) != read) {
            error = tr("Cannot make a temporary copy of %1: %2").arg(name, copy->errorString());
            return false;
        }
    }
    if (!copy->flush()) {
        error = tr("Cannot make a temporary copy of %1: %2").arg(name, copy->errorString());
        return false;
    }
    file.adopt(std::move(copy));
    return true;
}

namespace {
void bindImageKey(QSqlQuery &query, const OrvexArchiveBackend::ImageKey &key)
{
    query.addBindValue(key.docId);
    query.addBindValue(key.version);
    query.addBindValue(key.page);
    query.addBindValue(key.size);
}
} // namespace

QByteArray OrvexPostgresBackend::cachedImage(const ImageKey &key)
{
    QString error;
    QSqlDatabase db = threadDatabase(error);
    if (!db.isOpen())
        return {};
    // The read marks the use in the same round trip; a server that takes no
    // writes (a standby) still serves the image.
    QSqlQuery image(db);
    image.prepare(QStringLiteral("UPDATE page_images SET used = clock_timestamp() "
                                 "WHERE doc_id = ? AND version = ? AND page = ? AND size = ? RETURNING png"));
    bindImageKey(image, key);
    if (image.exec())
        return image.next() ? image.value(0).toByteArray() : QByteArray();
    image.prepare(QStringLiteral("SELECT png FROM page_images WHERE doc_id = ? AND version = ? AND page = ? AND size = ?"));
    bindImageKey(image, key);
    return image.exec() && image.next() ? image.value(0).toByteArray() : QByteArray();
}

void OrvexPostgresBackend::cacheImage(const ImageKey &key, const QByteArray &png)
{
    // A cache that cannot be written only costs time.
    QString error;
    QSqlDatabase db = threadDatabase(error);
    if (!db.isOpen())
        return;
    QSqlQuery image(db);
    image.prepare(QStringLiteral("INSERT INTO page_images(doc_id, version, page, size, png) VALUES (?, ?, ?, ?, ?) "
                                 "ON CONFLICT DO NOTHING"));
    bindImageKey(image, key);
    image.addBindValue(png);
    if (!image.exec()) {
        qCDebug(lcServer) << "page image not cached" << image.lastError().text();
        return;
    }
    QSqlQuery trim(db);
    trim.prepare(QStringLiteral("SELECT orvex_trim_page_images(?)"));
    trim.addBindValue(imageCacheLimit());
    if (!trim.exec())
        qCDebug(lcServer) << "page image cache not trimmed" << trim.lastError().text();
}

QObject *OrvexPostgresBackend::watch(std::function<void(int)> onChange, QObject *parent)
{
    return new Listener(*this, std::move(onChange), parent);
}

QString OrvexPostgresBackend::describe(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    const QString text = error.databaseText();
    qCInfo(lcServer).noquote() << "archive server:" << error.text().simplified();
    const auto codeIs = [&](const char *value) { return code == QLatin1String(value); };
    if (codeIs("42501")) {
        if (text.contains(QLatin1String("row-level security"))) {
            if (text.contains(QLatin1String("clipboard")))
                return tr("The archive server refused the change: you may not edit this clipboard.");
            return tr("The archive server refused the change: you lack the right for it.");
        }
        return tr("The archive server refused the access: you lack the right for it.");
    }
    if (codeIs("25006"))
        return tr("The archive is read-only");
    if (codeIs("53100"))
        return tr("The archive server has no space left.");
    if (code.startsWith(QLatin1String("53")))
        return tr("The archive server is out of resources.");
    if (codeIs("40001") || codeIs("40P01"))
        return tr("The archive server was busy with a conflicting change; please try again.");
    if (codeIs("57014"))
        return tr("The archive server took too long to answer.");
    if (codeIs("28000") || codeIs("28P01"))
        return tr("The archive server refused the login.");
    if (codeIs("3D000"))
        return tr("The archive database does not exist on the server.");
    if (codeIs("42P01") || codeIs("42883"))
        return tr("The archive database on the server is not set up (or is of another version).");
    if (codeIs("23505"))
        return tr("The archive holds this already.");
    if (codeIs("23503"))
        return tr("This refers to something the archive does not hold (any more).");
    if (code.startsWith(QLatin1String("23")) || code.startsWith(QLatin1String("22")))
        return tr("The archive server refused a value.");
    if (code.startsWith(QLatin1String("08")) || code.startsWith(QLatin1String("57P")) || code.isEmpty()
        || error.type() == QSqlError::ConnectionError)
        return tr("The connection to the archive server was lost.");
    return tr("The archive server refused the request (error %1).").arg(code);
}
