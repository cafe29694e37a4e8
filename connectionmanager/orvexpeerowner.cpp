#include "orvexpeerowner.h"

#include <QFile>
#include <QList>

#include <cstring>

namespace {

// "0100007F:1F90" (IPv4) or 32 hex digits and a port (IPv6). The kernel
// prints each 32-bit word of the address as a number in the machine's byte
// order, so the bytes of the word as this machine stores it are the address
// bytes in network order.
bool readEndpoint(const QByteArray &text, QHostAddress *address, quint16 *port)
{
    const int colon = text.indexOf(':');
    if (colon != 8 && colon != 32)
        return false;
    bool ok = false;
    const uint number = text.mid(colon + 1).toUInt(&ok, 16);
    if (!ok || number > 0xffff)
        return false;
    *port = quint16(number);
    quint8 bytes[16] = {};
    for (int word = 0; word < colon / 8; ++word) {
        const quint32 value = text.mid(word * 8, 8).toUInt(&ok, 16);
        if (!ok)
            return false;
        std::memcpy(bytes + word * 4, &value, 4);
    }
    if (colon == 8) {
        quint32 ipv4 = 0;
        for (int i = 0; i < 4; ++i)
            ipv4 = (ipv4 << 8) | bytes[i];
        address->setAddress(ipv4);
    } else {
        address->setAddress(bytes);
    }
    return true;
}

bool sameAddress(const QHostAddress &a, const QHostAddress &b)
{
    return a.isEqual(b, QHostAddress::ConvertV4MappedToIPv4);
}

} // namespace

qint64 OrvexPeerOwner::findInTable(const QByteArray &table, const QHostAddress &peer, quint16 peerPort,
                                   const QHostAddress &local, quint16 localPort)
{
    const QList<QByteArray> lines = table.split('\n');
    // The first line names the columns: sl local_address rem_address st
    // tx_queue:rx_queue tr:tm->when retrnsmt uid ...
    for (int i = 1; i < lines.size(); ++i) {
        const QList<QByteArray> columns = lines.at(i).simplified().split(' ');
        if (columns.size() < 8)
            continue;
        QHostAddress from, to;
        quint16 fromPort = 0, toPort = 0;
        if (!readEndpoint(columns.at(1), &from, &fromPort) || !readEndpoint(columns.at(2), &to, &toPort))
            continue;
        if (fromPort != peerPort || toPort != localPort || !sameAddress(from, peer) || !sameAddress(to, local))
            continue;
        bool ok = false;
        const qint64 uid = columns.at(7).toLongLong(&ok);
        return ok && uid >= 0 ? uid : Unknown;
    }
    return Unknown;
}

qint64 OrvexPeerOwner::uidOf(const QHostAddress &peer, quint16 peerPort, const QHostAddress &local,
                             quint16 localPort)
{
    // A client may use an IPv6 socket for an IPv4 address (::ffff:127.0.0.1).
    for (const char *path : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        QFile file(QString::fromLatin1(path));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const qint64 uid = findInTable(file.readAll(), peer, peerPort, local, localPort);
        if (uid != Unknown)
            return uid;
    }
    return Unknown;
}
