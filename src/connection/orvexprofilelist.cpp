#include "orvexprofilelist.h"

#include <QDataStream>

namespace {
constexpr int kStreamVersion = 10; // QDataStream::Qt_4_4
} // namespace

bool OrvexProfileList::read(const QByteArray &block, OrvexProfileList &list)
{
    list = OrvexProfileList();
    // The block is read from its own buffer, so that the record reader can tell
    // how much is left.
    QDataStream in(block);
    in.setVersion(kStreamVersion);
    in >> list.header;
    if (in.status() != QDataStream::Ok)
        return false;
    while (!in.atEnd()) {
        orvexProfileData profile;
        in >> profile;
        if (in.status() != QDataStream::Ok) {
            list.complete = false;
            break;
        }
        list.profiles.append(profile);
    }
    return true;
}
