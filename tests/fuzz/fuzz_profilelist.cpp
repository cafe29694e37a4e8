// The block of the Connection Manager's profile-list reply: whatever is read
// from it, written again and read back, is the same.
#include "fuzzsupport.h"
#include "orvexprofilelist.h"

#include <QDataStream>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    OrvexProfileList list;
    if (!OrvexProfileList::read(fuzzBytes(data, size), list))
        return 0;
    QByteArray written;
    {
        QDataStream out(&written, QIODevice::WriteOnly);
        out.setVersion(10);
        out << list.header;
        for (const orvexProfileData &profile : qAsConst(list.profiles))
            out << profile;
    }
    OrvexProfileList again;
    FUZZ_CHECK(OrvexProfileList::read(written, again));
    FUZZ_CHECK(again.complete && again.header == list.header && again.profiles == list.profiles);
    return 0;
}
