#pragma once

#include "orvexarchiveglobal.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>

// What the archive needs from a document file: its pages, its text and page
// images. PDFs are read with poppler; image files count as one page.
class ORVEXARCHIVE_EXPORT OrvexPdfTools
{
public:
    struct Inspection
    {
        int pages = 0;
        QString text;
        QList<QByteArray> pageHashes; // one per page, see pageHash()
        bool isPdf = false;
        bool isImage = false;
    };

    // False + error for a file that claims to be a PDF (by name or content) but
    // cannot be read, and for files that cannot be opened at all.
    static bool inspect(const QString &path, Inspection &result, QString &error);

    // Renders page (from 0) so that it fits into a size x size square.
    static QImage renderPage(const QString &path, int page, int size, QString &error);

    // A perceptual hash of a page image (1024 bits): equal pages give equal or
    // nearly equal hashes, independent of the file's other bytes.
    static QByteArray pageHash(const QImage &image);
    static int hashDistance(const QByteArray &a, const QByteArray &b);

    static bool looksLikePdf(const QString &path);

    // The image as PNG bytes.
    static QByteArray pngBytes(const QImage &image);
    // The same, compressed lightly: several times faster to make, somewhat
    // larger; for page images that are shown at once or cached.
    static QByteArray quickPngBytes(const QImage &image);
    // The image uncompressed (PPM, without alpha): made and read at memory
    // speed, for a page image handed on in the same process.
    static QByteArray rawBytes(const QImage &image);
};
