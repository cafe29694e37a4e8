#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

class OrvexArchiveDocuments;
class OrvexArchiveSession;

// Page images for cards and for the duplicate check: poppler renders a PDF page
// to fit into size x size, cached per (document, version, page, size) in the
// archive's cache folder; image files are served as they are. A document the
// user may not read gives an empty answer for a card, and the duplicate check
// (option1 == DuplicateCheckOption) gets notAuthorisedImage() instead.
class OrvexArchiveThumbnails
{
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    static constexpr int DuplicateCheckOption = 9;

    OrvexArchiveThumbnails(OrvexArchiveSession &session, OrvexArchiveDocuments &documents);

    // The PNG sent instead of a page the user may not see.
    static QByteArray notAuthorisedImage();

    QByteArray getDocumentThumbnail(int docId, int page, int size, int &pageCount, QString &format,
                                    int option1, int option2, int version);

private:
    OrvexArchiveSession &m_session;
    OrvexArchiveDocuments &m_documents;
};
