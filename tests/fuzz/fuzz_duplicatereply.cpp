// The archive's reply to a duplicate check, one line per input line: numbers
// never wrap, and every line is read as one thing at most.
#include "fuzzsupport.h"
#include "orvexduplicatereply.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QStringList lines = QString::fromUtf8(fuzzBytes(data, size)).split(QLatin1Char('\n'));
    const OrvexDuplicateReply reply = OrvexDuplicateReply::parse(lines);
    FUZZ_CHECK(reply.uploadId() == lines.value(0));
    FUZZ_CHECK(reply.reportsDuplicates() == (lines.size() > 1));
    for (const OrvexDuplicateHit &hit : reply.duplicates())
        FUZZ_CHECK(hit.docId.toLongLong() > 0 && hit.version >= 0 && hit.page >= 0);
    FUZZ_CHECK(reply.duplicates().size() + reply.originals().size() + reply.skippedLines() <= qMax(0, lines.size() - 2));
    return 0;
}
