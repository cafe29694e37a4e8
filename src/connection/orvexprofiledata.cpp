#include "orvexprofiledata.h"

#include <QDataStream>
#include <QIODevice>

#include <array>

namespace {

// Bytes still readable from the stream's device; -1 when unknown.
qint64 remainingBytes(const QDataStream &in)
{
    QIODevice *device = in.device();
    return device ? device->bytesAvailable() : -1;
}

// A count read from the wire is only believed when that many items, each at
// least minItemSize bytes long, can still follow. Qt's own container readers
// reserve the announced count first, so a garbage count of two billion would
// try to allocate gigabytes before noticing the stream is short.
bool plausibleCount(QDataStream &in, quint32 count, qint64 minItemSize)
{
    const qint64 remaining = remainingBytes(in);
    const qint64 limit = remaining >= 0 ? remaining / minItemSize : (1 << 20);
    if (qint64(count) > limit) {
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    return true;
}

void readStringList(QDataStream &in, QStringList &list)
{
    list.clear();
    quint32 count = 0;
    in >> count;
    if (in.status() != QDataStream::Ok || !plausibleCount(in, count, sizeof(quint32)))
        return;
    for (quint32 i = 0; i < count; ++i) {
        QString text;
        in >> text;
        if (in.status() != QDataStream::Ok) {
            list.clear();
            return;
        }
        list.append(text);
    }
}

// The key sequence travels as a list of quint32 key codes (Qt's own layout);
// QKeySequence holds at most four of them, and a sequence ends at its first
// empty key (Qt writes only the keys before it), so the keys after one are
// dropped: a record read and written again stays the same.
void readKeySequence(QDataStream &in, QKeySequence &sequence)
{
    sequence = QKeySequence();
    quint32 count = 0;
    in >> count;
    if (in.status() != QDataStream::Ok || !plausibleCount(in, count, sizeof(quint32)))
        return;
    std::array<int, 4> keys{};
    bool ended = false;
    for (quint32 i = 0; i < count; ++i) {
        quint32 key = 0;
        in >> key;
        if (in.status() != QDataStream::Ok)
            return;
        ended = ended || key == 0;
        if (i < keys.size() && !ended)
            keys[i] = int(key);
    }
    sequence = QKeySequence(keys[0], keys[1], keys[2], keys[3]);
}

} // namespace

bool orvexProfileData::operator==(const orvexProfileData &other) const
{
    return id == other.id && name == other.name && description == other.description
        && serverHost == other.serverHost && archiveName == other.archiveName
        && userName == other.userName && active == other.active && archives == other.archives
        && serverPort == other.serverPort && shortcut == other.shortcut
        && domain == other.domain && language == other.language && color == other.color
        && dataPath == other.dataPath && roles == other.roles && options == other.options;
}

QDataStream &operator>>(QDataStream &in, orvexProfileData &profile)
{
    qint64 id = 0;
    in >> id;
    profile.id = id;
    in >> profile.name >> profile.description >> profile.serverHost >> profile.archiveName
       >> profile.userName;
    in >> profile.active;
    readStringList(in, profile.archives);
    if (in.status() != QDataStream::Ok)
        return in;
    qint64 port = 0;
    in >> port;
    profile.serverPort = port;
    readKeySequence(in, profile.shortcut);
    if (in.status() != QDataStream::Ok)
        return in;
    in >> profile.domain >> profile.language >> profile.color >> profile.dataPath;
    readStringList(in, profile.roles);
    if (in.status() != QDataStream::Ok)
        return in;
    readStringList(in, profile.options);
    return in;
}

QDataStream &operator<<(QDataStream &out, const orvexProfileData &profile)
{
    out << qint64(profile.id) << profile.name << profile.description << profile.serverHost
        << profile.archiveName << profile.userName << profile.active << profile.archives
        << qint64(profile.serverPort) << profile.shortcut << profile.domain << profile.language
        << profile.color << profile.dataPath << profile.roles << profile.options;
    return out;
}
