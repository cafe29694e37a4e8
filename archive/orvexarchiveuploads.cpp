#include "orvexarchiveuploads.h"

#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexarchivetransfer.h"
#include "orvexcontenthash.h"
#include "orvexpdftools.h"
#include "orvexsqlhelpers.h"
#include "orvexstorageerror.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <algorithm>

namespace {
constexpr int kMaxDuplicateLines = 50;
constexpr int kOriginalImageSize = 1024;

using OrvexSql::exec;
} // namespace

OrvexArchiveUploads::OrvexArchiveUploads(OrvexArchiveSession &session, OrvexArchiveTransfer &transfer)
    : m_session(session)
    , m_transfer(transfer)
{
}

qlonglong OrvexArchiveUploads::getLastArchivedDocId() const
{
    QMutexLocker locker(&m_mutex);
    return m_lastArchivedDocId;
}

bool OrvexArchiveUploads::sendFile(QString filePath, QString &uploadId)
{
    if (!m_session.requireConnection())
        return false;
    const QFileInfo info(filePath);
    if (!info.isFile() || !info.isReadable())
        return m_session.fail(tr("Cannot read %1").arg(filePath));
    const QString notArchived = tr("%1 was not archived").arg(info.fileName());
    if (m_session.store()->isReadOnly())
        return m_session.fail(OrvexStorageError::describe(OrvexStorageError::readOnly(), notArchived));
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QString suffix = info.suffix().toLower();
    const QString relative = id + (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    const QString acting = m_session.user();
    OrvexContentHash hash;
    qint64 size = 0;
    // The upload's row is stored with its file: on a server in one
    // transaction, in a folder once the file is complete.
    const OrvexArchiveBackend::Completion row = [&](QSqlDatabase &db, QString &error) {
        QSqlQuery insert(db);
        insert.prepare(QStringLiteral("INSERT INTO uploads(id, owner, file, original_name, size, sha256, created) "
                                      "VALUES (?, ?, ?, ?, ?, ?, ?)"));
        insert.addBindValue(id);
        insert.addBindValue(acting);
        insert.addBindValue(relative);
        insert.addBindValue(info.fileName());
        insert.addBindValue(size);
        insert.addBindValue(hash.hex());
        insert.addBindValue(QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
        return exec(insert, error);
    };
    // Counts what arrived, which is what was hashed, even if the source changed meanwhile.
    class Counting final : public OrvexArchiveBackend::Sink
    {
    public:
        Counting(std::unique_ptr<OrvexArchiveBackend::Sink> sink, qint64 &size)
            : m_sink(std::move(sink)), m_size(size)
        {
        }
        bool write(const char *data, qint64 bytes, QString &reason) override
        {
            m_size += bytes;
            return m_sink->write(data, bytes, reason);
        }
        bool finish(QString &reason) override { return m_sink->finish(reason); }

    private:
        std::unique_ptr<OrvexArchiveBackend::Sink> m_sink;
        qint64 &m_size;
    };
    const auto sink = [&](QString &error) -> std::unique_ptr<OrvexArchiveBackend::Sink> {
        std::unique_ptr<OrvexArchiveBackend::Sink> file = store->createFile(OrvexArchiveStore::Area::Uploads,
                                                                            relative, row, error);
        return file ? std::make_unique<Counting>(std::move(file), size) : nullptr;
    };
    if (!m_transfer.copy(OrvexArchiveTransfer::localFile(filePath), filePath, sink, info.size(), &hash, notArchived))
        return false;
    uploadId = id;
    return true;
}

QStringList OrvexArchiveUploads::checkDuplicates(QString archiveData, QString filePath, QString uploadId, bool flag,
                                                 int option1, int option2, int option3, int option4)
{
    // archiveData, the flag and the options select nothing in a local archive.
    Q_UNUSED(archiveData)
    Q_UNUSED(filePath)
    Q_UNUSED(flag)
    Q_UNUSED(option1)
    Q_UNUSED(option2)
    Q_UNUSED(option3)
    Q_UNUSED(option4)
    if (!m_session.requireConnection())
        return {};
    if (uploadId.trimmed().isEmpty()) {
        m_session.fail(tr("No upload to check"));
        return {};
    }
    QString error;
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    QSqlDatabase db = store->database(&error);
    if (!db.isOpen()) {
        m_session.fail(error);
        return {};
    }
    QSqlQuery upload(db);
    upload.prepare(QStringLiteral("SELECT file, sha256 FROM uploads WHERE id = ? AND owner = ?"));
    upload.addBindValue(uploadId);
    upload.addBindValue(m_session.user());
    if (!exec(upload, error) || !upload.next()) {
        m_session.fail(error.isEmpty() ? tr("Unknown upload %1").arg(uploadId) : error);
        return {};
    }
    const QString file = upload.value(0).toString();
    const QString sha = upload.value(1).toString();
    upload.finish();
    OrvexArchiveBackend::LocalFile local;
    if (!store->localFile(OrvexArchiveStore::Area::Uploads, file, local, error)) {
        m_session.fail(error);
        return {};
    }
    const QString path = local.path();

    OrvexPdfTools::Inspection inspection;
    if (!OrvexPdfTools::inspect(path, inspection, error)) {
        // Nobody can archive this file: the upload goes.
        discardUpload(uploadId);
        m_session.fail(error);
        return {};
    }
    // The commit runs on the caller's GUI thread: it takes pages, text and
    // fingerprints from here instead of inspecting the file again.
    if (!store->saveUploadInspection(uploadId, inspection, &error)) {
        m_session.fail(error);
        return {};
    }

    struct Hit
    {
        qlonglong docId;
        int version;
        int page;
        QString reason;
        int uploadPage;
    };
    QList<Hit> hits;
    QSet<QString> seen;
    const auto add = [&](const Hit &hit) {
        const QString key = QStringLiteral("%1/%2/%3").arg(hit.docId).arg(hit.version).arg(hit.page);
        if (hits.size() < kMaxDuplicateLines && !seen.contains(key)) {
            seen.insert(key);
            hits << hit;
        }
    };

    QSqlQuery same(db);
    same.prepare(QStringLiteral("SELECT doc_id, version, pages FROM versions WHERE sha256 = ? ORDER BY doc_id, version"));
    same.addBindValue(sha);
    if (!exec(same, error)) {
        m_session.fail(error);
        return {};
    }
    while (same.next())
        for (int page = 0; page < qMax(1, same.value(2).toInt()); ++page)
            add({same.value(0).toLongLong(), same.value(1).toInt(), page, QStringLiteral("content"),
                 qMin(page, qMax(0, inspection.pages - 1))});

    if (!inspection.pageHashes.isEmpty()) {
        QSqlQuery pages(db);
        if (!pages.exec(QStringLiteral("SELECT doc_id, version, page, hash FROM page_hashes ORDER BY doc_id, version, page"))) {
            m_session.fail(OrvexStorageError::ofQuery(pages));
            return {};
        }
        while (pages.next()) {
            const QByteArray stored = pages.value(3).toByteArray();
            for (int i = 0; i < inspection.pageHashes.size(); ++i) {
                if (OrvexPdfTools::hashDistance(stored, inspection.pageHashes.at(i)) <= OrvexArchiveStore::PageHashTolerance) {
                    add({pages.value(0).toLongLong(), pages.value(1).toInt(), pages.value(2).toInt(),
                         QStringLiteral("page"), i});
                    break;
                }
            }
        }
    }

    QStringList reply{uploadId};
    if (hits.isEmpty())
        return reply;
    QList<int> originals;
    for (const Hit &hit : qAsConst(hits))
        if (!originals.contains(hit.uploadPage))
            originals << hit.uploadPage;
    std::sort(originals.begin(), originals.end());
    QStringList images;
    for (int page : qAsConst(originals)) {
        QString renderError;
        const QImage image = inspection.pages > 0 ? OrvexPdfTools::renderPage(path, page, kOriginalImageSize, renderError)
                                                  : QImage();
        images << QStringLiteral("page%1;%2").arg(page).arg(QString::fromLatin1(OrvexPdfTools::pngBytes(image).toBase64()));
    }
    reply << QString::number(images.size()) << images;
    for (const Hit &hit : qAsConst(hits))
        reply << QStringLiteral("%1;%2;%3;%4;page%5").arg(hit.docId).arg(hit.version).arg(hit.page).arg(hit.reason).arg(hit.uploadPage);
    return reply;
}

bool OrvexArchiveUploads::commitUpload(QString uploadId)
{
    if (!m_session.requireConnection())
        return false;
    const QString acting = m_session.user();
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    QString error;
    // Hash and size come from sendFile, pages, text and fingerprints from the
    // duplicate check; an upload committed without a check is inspected now.
    OrvexArchiveStore::Upload upload;
    if (!store->readUpload(uploadId, acting, upload, error))
        return m_session.fail(error.isEmpty() ? tr("Unknown upload %1").arg(uploadId) : error);
    if (!upload.inspected) {
        OrvexArchiveBackend::LocalFile local;
        if (!store->localFile(OrvexArchiveStore::Area::Uploads, upload.file, local, error)
            || !OrvexPdfTools::inspect(local.path(), upload.content.inspection, error))
            return m_session.fail(error);
    }

    OrvexArchiveStore::FileChanges files;
    qlonglong docId = 0;
    const bool ok = store->write([&](QSqlDatabase &db, QString &stepError) {
        // Whoever committed or discarded the upload meanwhile has taken it.
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM uploads WHERE id = ? AND owner = ?"));
        remove.addBindValue(uploadId);
        remove.addBindValue(acting);
        if (!exec(remove, stepError))
            return false;
        if (remove.numRowsAffected() != 1) {
            stepError = tr("Unknown upload %1").arg(uploadId);
            return false;
        }
        OrvexArchiveStore::ImportOptions options;
        options.title = QFileInfo(upload.originalName).completeBaseName();
        options.fileName = upload.originalName;
        options.statusKey = QStringLiteral("NEW");
        options.owner = acting;
        options.uploadFile = upload.file;
        // The sample's status table may have been changed; a missing key is no reason to refuse.
        QSqlQuery status(db);
        if (!status.exec(QStringLiteral("SELECT 1 FROM doc_statuses WHERE key = 'NEW'")) || !status.next())
            options.statusKey.clear();
        status.finish();
        docId = store->importContent(db, upload.file, upload.content, options, 0, files, stepError);
        return docId != 0;
    }, &error, tr("%1 was not archived").arg(upload.originalName));
    if (!ok) {
        // The file was moved last: only the commit itself failed after it.
        store->undoFiles(files);
        return m_session.fail(error);
    }
    store->renderAhead({docId});
    {
        QMutexLocker locker(&m_mutex);
        m_lastArchivedDocId = docId;
    }
    return true;
}

void OrvexArchiveUploads::discardUpload(QString uploadId)
{
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    if (!store || !store->isOpen())
        return;
    const QString acting = m_session.user();
    QStringList afterCommit;
    QString error;
    const bool ok = store->write([&](QSqlDatabase &db, QString &stepError) {
        QSqlQuery upload(db);
        upload.prepare(QStringLiteral("SELECT file FROM uploads WHERE id = ? AND owner = ?"));
        upload.addBindValue(uploadId);
        upload.addBindValue(acting);
        if (!exec(upload, stepError))
            return false;
        if (!upload.next()) {
            stepError = tr("Unknown upload %1").arg(uploadId);
            return false;
        }
        const QString file = upload.value(0).toString();
        upload.finish();
        QSqlQuery remove(db);
        remove.prepare(QStringLiteral("DELETE FROM uploads WHERE id = ?"));
        remove.addBindValue(uploadId);
        return exec(remove, stepError)
            && store->backend().removeFiles(db, OrvexArchiveStore::Area::Uploads, {file}, afterCommit, stepError);
    }, &error);
    if (!ok) {
        m_session.fail(error);
        return;
    }
    store->backend().removeAfterCommit(afterCommit);
}
