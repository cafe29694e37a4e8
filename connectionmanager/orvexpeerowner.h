#pragma once

#include <QByteArray>
#include <QHostAddress>

// Which operating-system user owns the other end of a loopback TCP
// connection. The kernel lists every TCP socket of the machine with its owner
// in /proc/net/tcp and /proc/net/tcp6; the client's socket is the one whose
// local end is the connection's remote end and whose remote end is our local
// end.
class OrvexPeerOwner
{
public:
    static constexpr qint64 Unknown = -1;

    // The owner's user id, or Unknown when no table lists the client's socket.
    static qint64 uidOf(const QHostAddress &peer, quint16 peerPort, const QHostAddress &local, quint16 localPort);

    // The same, read from the text of one such table.
    static qint64 findInTable(const QByteArray &table, const QHostAddress &peer, quint16 peerPort,
                              const QHostAddress &local, quint16 localPort);
};
