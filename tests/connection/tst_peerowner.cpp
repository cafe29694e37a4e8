// Who owns the other end of a loopback connection, read from the kernel's
// socket tables: the document server's only proof of who is asking.
#include "orvexpeerowner.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <unistd.h>

namespace {

// Column header and rows as /proc/net/tcp and tcp6 print them (x86: each
// 32-bit word of an address in the machine's byte order).
const QByteArray kHeader = "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n";

QByteArray row(const QByteArray &local, const QByteArray &remote, int uid)
{
    return "   0: " + local + ' ' + remote + " 01 00000000:00000000 00:00000000 00000000  " + QByteArray::number(uid)
        + "        0 4711 1 0000000000000000 20 4 30 10 -1\n";
}

} // namespace

class tst_PeerOwner : public QObject
{
    Q_OBJECT

private slots:
    void table_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<qint64>("uid");
        // The client 127.0.0.1:40000 talks to the server 127.0.0.1:47011 (0xB7A3).
        const QByteArray client = "0100007F:9C40", server = "0100007F:B7A3";
        QTest::newRow("the client's row") << kHeader + row(client, server, 1000) << qint64(1000);
        QTest::newRow("the server's own row is not the client's")
            << kHeader + row(server, client, 0) << qint64(OrvexPeerOwner::Unknown);
        QTest::newRow("both rows") << kHeader + row(server, client, 0) + row(client, server, 1001) << qint64(1001);
        QTest::newRow("another client port") << kHeader + row("0100007F:9C41", server, 1000) << qint64(OrvexPeerOwner::Unknown);
        QTest::newRow("an IPv6 socket of the client")
            << kHeader + row("0000000000000000FFFF00000100007F:9C40", "0000000000000000FFFF00000100007F:B7A3", 1002)
            << qint64(1002);
        QTest::newRow("malformed rows are skipped")
            << kHeader + "garbage\n   1: 0100007F 0100007F:B7A3 01\n" + row(client, server, 1003) << qint64(1003);
        QTest::newRow("nothing") << QByteArray() << qint64(OrvexPeerOwner::Unknown);
    }

    void table()
    {
        QFETCH(QByteArray, table);
        QFETCH(qint64, uid);
        const QHostAddress loopback(QHostAddress::LocalHost);
        QCOMPARE(OrvexPeerOwner::findInTable(table, loopback, 40000, loopback, 47011), uid);
    }

    void kernelTables()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(client.waitForConnected(5000));
        QVERIFY(server.waitForNewConnection(5000));
        QTcpSocket *accepted = server.nextPendingConnection();
        QCOMPARE(OrvexPeerOwner::uidOf(accepted->peerAddress(), accepted->peerPort(), accepted->localAddress(),
                                       accepted->localPort()),
                 qint64(::geteuid()));
    }
};

QTEST_GUILESS_MAIN(tst_PeerOwner)
#include "tst_peerowner.moc"
