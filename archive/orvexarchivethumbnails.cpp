#include "orvexarchivethumbnails.h"

#include "orvexarchivedocuments.h"
#include "orvexarchivesession.h"
#include "orvexarchivestore.h"
#include "orvexpdftools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

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
    if (!OrvexPdfTools::looksLikePdf(file.path)) {
        // Images are served as they are.
        QFile image(file.path);
        if (!image.open(QIODevice::ReadOnly)) {
            m_session.fail(tr("Cannot read the file of document %1").arg(docId));
            return {};
        }
        format = QFileInfo(file.path).suffix().toUpper();
        return image.readAll();
    }
    const QString cacheFile = QStringLiteral("%1/thumbs/%2/v%3-p%4-s%5.png")
                                  .arg(m_session.store()->cachePath()).arg(docId).arg(file.version).arg(page).arg(size);
    QFile cached(cacheFile);
    if (cached.open(QIODevice::ReadOnly)) {
        const QByteArray bytes = cached.readAll();
        if (!bytes.isEmpty()) {
            format = QStringLiteral("PNG");
            return bytes;
        }
    }
    QString error;
    const QImage image = OrvexPdfTools::renderPage(file.path, page, size, error);
    if (image.isNull()) {
        m_session.fail(error);
        return {};
    }
    const QByteArray bytes = OrvexPdfTools::pngBytes(image);
    // A cache that cannot be written only costs time.
    if (QDir().mkpath(QFileInfo(cacheFile).absolutePath())) {
        QSaveFile save(cacheFile);
        if (save.open(QIODevice::WriteOnly) && save.write(bytes) == bytes.size())
            save.commit();
    }
    format = QStringLiteral("PNG");
    return bytes;
}
