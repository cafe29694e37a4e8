// Drag data as another program may send it: the id formats, the docs-id
// stream, and the document entries of a URI list.
#include "fuzzsupport.h"
#include "orvexdragids.h"

#include <QMimeData>
#include <QUrl>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = fuzzBytes(data, size);
    const QStringList ids = OrvexDragIds::fromIdFormat(bytes);
    for (const QString &id : ids)
        FUZZ_CHECK(!id.contains(QLatin1Char(';')) && !id.contains(QChar(0)));
    OrvexDragIds::fromDocumentStream(bytes);

    QMimeData mime;
    mime.setData(QStringLiteral("text/uri-list"), bytes);
    for (const QUrl &url : mime.urls()) {
        const OrvexDragIds::Entry entry = OrvexDragIds::entry(url.toString());
        if (entry.isValid())
            FUZZ_CHECK(!entry.docId.isEmpty() && !entry.remarkKey.contains(QLatin1Char(';')));
    }
    return 0;
}
