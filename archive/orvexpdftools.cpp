// poppler-qt5's headers still use QLinkedList, which the project-wide
// deprecation cut-off hides; this file alone lets it through.
#undef QT_DISABLE_DEPRECATED_BEFORE
#define QT_DISABLE_DEPRECATED_BEFORE 0x050E00

#include "orvexpdftools.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLoggingCategory>

#include <poppler-qt5.h>

#include <memory>
#include <mutex>

namespace {
Q_LOGGING_CATEGORY(lcPdf, "orvex.archive.pdf", QtWarningMsg)

// poppler reports every flaw of a damaged file on its own; those go to a
// category of their own instead of the application's debug output.
void popplerMessage(const QString &message, const QVariant &)
{
    qCDebug(lcPdf) << "POPPLER" << message;
}

// A page's fingerprint is its image in kHashSide x kHashSide grey levels; two
// pages are compared by the number of fingerprint pixels that differ visibly.
constexpr int kHashSide = 128;
constexpr int kPixelTolerance = 16;
// Resolution of the page image the hash is taken from: small enough to be
// fast, large enough that different text gives a different hash.
constexpr int kHashRenderSize = 360;

std::unique_ptr<Poppler::Document> loadPdf(const QString &path, QString &error)
{
    static std::once_flag routed;
    std::call_once(routed, [] { Poppler::setDebugErrorFunction(&popplerMessage, QVariant()); });
    std::unique_ptr<Poppler::Document> document(Poppler::Document::load(path));
    if (!document) {
        error = QStringLiteral("%1 is not a readable PDF file").arg(QFileInfo(path).fileName());
        return nullptr;
    }
    if (document->isLocked()) {
        error = QStringLiteral("%1 is protected by a password").arg(QFileInfo(path).fileName());
        return nullptr;
    }
    if (document->numPages() < 1) {
        error = QStringLiteral("%1 has no pages").arg(QFileInfo(path).fileName());
        return nullptr;
    }
    document->setRenderHint(Poppler::Document::Antialiasing, true);
    document->setRenderHint(Poppler::Document::TextAntialiasing, true);
    return document;
}

QImage renderFitting(Poppler::Page *page, int size)
{
    const QSizeF points = page->pageSizeF();
    if (points.width() <= 0 || points.height() <= 0)
        return {};
    const double longest = qMax(points.width(), points.height());
    const double dpi = 72.0 * size / longest;
    QImage image = page->renderToImage(dpi, dpi);
    if (image.isNull())
        return image;
    // Rounding inside the renderer may overshoot by a pixel; the caller asked for a bound.
    if (image.width() > size || image.height() > size)
        image = image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}
} // namespace

bool OrvexPdfTools::looksLikePdf(const QString &path)
{
    if (QFileInfo(path).suffix().compare(QLatin1String("pdf"), Qt::CaseInsensitive) == 0)
        return true;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(5) == "%PDF-";
}

bool OrvexPdfTools::inspect(const QString &path, Inspection &result, QString &error)
{
    result = Inspection();
    QFileInfo info(path);
    if (!info.isFile() || !info.isReadable()) {
        error = QStringLiteral("Cannot read %1").arg(path);
        return false;
    }
    if (looksLikePdf(path)) {
        auto document = loadPdf(path, error);
        if (!document)
            return false;
        result.isPdf = true;
        result.pages = document->numPages();
        QStringList texts;
        for (int i = 0; i < result.pages; ++i) {
            std::unique_ptr<Poppler::Page> page(document->page(i));
            if (!page) {
                error = QStringLiteral("Page %1 of %2 cannot be read").arg(i + 1).arg(info.fileName());
                return false;
            }
            texts << page->text(QRectF());
            result.pageHashes << pageHash(renderFitting(page.get(), kHashRenderSize));
        }
        result.text = texts.join(QLatin1Char('\n'));
        return true;
    }
    QImageReader reader(path);
    if (reader.canRead()) {
        const QImage image = reader.read();
        if (image.isNull()) {
            error = QStringLiteral("%1 is not a readable image: %2").arg(info.fileName(), reader.errorString());
            return false;
        }
        result.isImage = true;
        result.pages = 1;
        result.pageHashes << pageHash(image);
        return true;
    }
    // Any other file is archived as it is, without pages.
    return true;
}

QImage OrvexPdfTools::renderPage(const QString &path, int page, int size, QString &error)
{
    if (size < 1 || size > 8192) {
        error = QStringLiteral("Invalid image size %1").arg(size);
        return {};
    }
    if (looksLikePdf(path)) {
        auto document = loadPdf(path, error);
        if (!document)
            return {};
        if (page < 0 || page >= document->numPages()) {
            error = QStringLiteral("The document has no page %1").arg(page + 1);
            return {};
        }
        std::unique_ptr<Poppler::Page> pdfPage(document->page(page));
        QImage image = pdfPage ? renderFitting(pdfPage.get(), size) : QImage();
        if (image.isNull())
            error = QStringLiteral("Page %1 cannot be rendered").arg(page + 1);
        return image;
    }
    QImageReader reader(path);
    if (page != 0 || !reader.canRead()) {
        error = page != 0 ? QStringLiteral("The document has no page %1").arg(page + 1)
                          : QStringLiteral("The document has no page images");
        return {};
    }
    QImage image = reader.read();
    if (image.isNull()) {
        error = reader.errorString();
        return {};
    }
    return image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

QByteArray OrvexPdfTools::pageHash(const QImage &image)
{
    if (image.isNull())
        return QByteArray(kHashSide * kHashSide, '\xff');
    const QImage small = image.convertToFormat(QImage::Format_Grayscale8)
                             .scaled(kHashSide, kHashSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QByteArray hash(kHashSide * kHashSide, '\0');
    for (int y = 0; y < kHashSide; ++y)
        memcpy(hash.data() + y * kHashSide, small.constScanLine(y), kHashSide);
    return hash;
}

int OrvexPdfTools::hashDistance(const QByteArray &a, const QByteArray &b)
{
    if (a.size() != b.size())
        return 1 << 20;
    int distance = 0;
    for (int i = 0; i < a.size(); ++i)
        if (qAbs(int(uchar(a.at(i))) - int(uchar(b.at(i)))) > kPixelTolerance)
            ++distance;
    return distance;
}

namespace {
QByteArray encode(const QImage &image, const char *format, int quality = -1)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return bytes;
}
} // namespace

QByteArray OrvexPdfTools::pngBytes(const QImage &image)
{
    return encode(image, "PNG");
}

QByteArray OrvexPdfTools::quickPngBytes(const QImage &image)
{
    // Qt maps a PNG quality of 85 to zlib's fastest level.
    return encode(image, "PNG", 85);
}

QByteArray OrvexPdfTools::rawBytes(const QImage &image)
{
    return encode(image, "PPM");
}
