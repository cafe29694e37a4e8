#include "orvexarchivethumbnails.h"

#include "orvexarchivedocuments.h"
#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexpdftools.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>

OrvexArchiveThumbnails::OrvexArchiveThumbnails(OrvexArchiveSession &session, OrvexArchiveDocuments &documents)
    : m_session(session)
    , m_documents(documents)
{
}

QByteArray OrvexArchiveThumbnails::notAuthorisedImage()
{
    // A file of fixed bytes, so that its fingerprint does not depend on the
    // PNG encoder of the machine.
    static const QByteArray bytes = [] {
        QFile file(QStringLiteral(":/orvexarchive/notauthorised.png"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    return bytes;
}

QByteArray OrvexArchiveThumbnails::getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                                        int option1, int option2, int version)
{
    Q_UNUSED(option2)
    if (!m_session.requireConnection())
        return {};
    if (!m_session.store()->documentExists(docId)) {
        m_session.fail(tr("Unknown document %1").arg(docId));
        return {};
    }
    if (!m_session.store()->mayRead(m_session.user(), docId)) {
        pageCount = 1;
        m_session.fail(tr("%1 may not read document %2").arg(m_session.user()).arg(docId));
        if (option1 == DuplicateCheckOption) {
            format = QStringLiteral("PNG");
            return notAuthorisedImage();
        }
        return {};
    }
    OrvexArchiveDocuments::VersionFile file;
    if (!m_documents.versionFile(docId, version, file))
        return {};
    pageCount = file.pages;
    if (page < 0 || page >= file.pages) {
        m_session.fail(tr("Document %1 has no page %2").arg(docId).arg(page + 1));
        return {};
    }
    if (size < 1 || size > 4096) {
        m_session.fail(tr("Invalid image size %1").arg(size));
        return {};
    }
    const QSharedPointer<OrvexArchiveStore> store = m_session.store();
    const OrvexArchiveBackend::ImageKey key{docId, file.version, page, size};
    const QByteArray cached = store->backend().cachedImage(key);
    if (!cached.isEmpty()) {
        format = QStringLiteral("PNG");
        return cached;
    }
    QString error;
    OrvexArchiveBackend::LocalFile local;
    if (!store->localFile(OrvexArchiveStore::Area::Files, file.stored, local, error)) {
        m_session.fail(tr("Cannot read the file of document %1").arg(docId));
        return {};
    }
    if (!OrvexPdfTools::looksLikePdf(local.path())) {
        // Images are served as they are.
        QFile image(local.path());
        if (!image.open(QIODevice::ReadOnly)) {
            m_session.fail(tr("Cannot read the file of document %1").arg(docId));
            return {};
        }
        format = QFileInfo(file.stored).suffix().toUpper();
        return image.readAll();
    }
    const QImage image = OrvexPdfTools::renderPage(local.path(), page, size, error);
    if (image.isNull()) {
        m_session.fail(error);
        return {};
    }
    // The reader gets the page at once, uncompressed; the cache gets it
    // compressed when there is time.
    store->cacheLater(key, file.stored, image);
    format = QStringLiteral("PPM");
    return OrvexPdfTools::rawBytes(image);
}
