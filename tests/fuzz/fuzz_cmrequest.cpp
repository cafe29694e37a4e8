// The Connection Manager's request parser, fed the bytes of one client in
// pieces (the first byte chooses their size).
#include "fuzzsupport.h"
#include "orvexcmrequestparser.h"

namespace {

void check(const OrvexCmRequest &request)
{
    switch (request.kind) {
    case OrvexCmRequest::UseProfile:
    case OrvexCmRequest::OpenChat:
        FUZZ_CHECK(request.args.size() == 3);
        break;
    case OrvexCmRequest::ReloadProfile:
        FUZZ_CHECK(request.args.size() == 1);
        break;
    case OrvexCmRequest::DndPort:
    case OrvexCmRequest::Profiles:
    case OrvexCmRequest::Invalid:
        FUZZ_CHECK(request.args.isEmpty());
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes = fuzzBytes(data + 1, size - 1);
    const int piece = 1 + data[0] % 64;
    OrvexCmRequestParser parser;
    OrvexCmRequest request;
    for (int offset = 0; offset < bytes.size(); offset += piece) {
        parser.append(bytes.mid(offset, piece));
        while (parser.next(request))
            check(request);
    }
    if (parser.takeUnterminated(request))
        check(request);
    return 0;
}
