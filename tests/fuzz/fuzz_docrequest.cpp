// One request to the document server: its head read in two pieces and whole
// (both must read alike), then the target, the Host header and the Range
// header as the server checks them against a file.
#include "fuzzsupport.h"
#include "orvexbyteranges.h"
#include "orvexdocrequest.h"
#include "orvexhostheader.h"
#include "orvexhttpheadreader.h"
#include "orvexhttpresponse.h"

#include <algorithm>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const char *bytes = reinterpret_cast<const char *>(data);
    OrvexHttpHeadReader whole;
    whole.feed(bytes, qsizetype(size));
    OrvexHttpHeadReader pieces;
    const size_t cut = size ? data[0] % (size + 1) : 0;
    pieces.feed(bytes, qsizetype(cut));
    pieces.feed(bytes + cut, qsizetype(size - cut));
    FUZZ_CHECK(whole.state() == pieces.state() && whole.errorStatus() == pieces.errorStatus());
    if (whole.state() != OrvexHttpHeadReader::Complete)
        return 0;
    const OrvexHttpHead &head = whole.head();
    FUZZ_CHECK(head.fields.size() <= OrvexHttpHeadReader::MaxFields);

    const OrvexDocRequest request = OrvexDocRequest::parse(head.method, head.target);
    FUZZ_CHECK(request.isValid() ? request.docId > 0 && request.version >= 0 : request.status >= 400);
    OrvexHostHeader::isLocal(head.field("host"), 47011, QStringLiteral("desk7"));

    // A file of a size the input chooses, up to a few terabytes.
    const qint64 fileSize = size ? qint64(data[size - 1]) << (data[0] % 34) : 0;
    const QByteArray range = head.field("range");
    QList<OrvexByteRange> ranges;
    const OrvexByteRanges::Outcome outcome = OrvexByteRanges::parse(range, fileSize, &ranges);
    FUZZ_CHECK(ranges.size() <= OrvexByteRanges::MaxRanges);
    FUZZ_CHECK((outcome == OrvexByteRanges::Partial) == !ranges.isEmpty());
    qint64 asked = 0;
    for (const OrvexByteRange &one : ranges) {
        FUZZ_CHECK(one.first >= 0 && one.first <= one.last && one.last < fileSize);
        asked += one.length();
    }
    std::sort(ranges.begin(), ranges.end(), [](const OrvexByteRange &a, const OrvexByteRange &b) { return a.first < b.first; });
    for (int i = 1; i < ranges.size(); ++i)
        FUZZ_CHECK(ranges.at(i).first > ranges.at(i - 1).last);
    FUZZ_CHECK(asked <= fileSize);

    // The answer sends no byte of the file twice.
    const OrvexHttpResponse response = OrvexHttpResponse::file(fileSize, "application/pdf", range);
    qint64 fromFile = 0;
    for (const OrvexHttpResponse::Piece &piece : response.body)
        fromFile += piece.bytes.isEmpty() ? piece.length : 0;
    FUZZ_CHECK(fromFile == (outcome == OrvexByteRanges::Partial ? asked : outcome == OrvexByteRanges::Whole ? fileSize : 0));
    FUZZ_CHECK(!response.headBytes().isEmpty());
    return 0;
}
