#include "fakeconnectionmanager.h"

#include "orvexlogindata.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QLocalSocket>

FakeConnectionManager::FakeConnectionManager(QObject *parent)
    : QObject(parent), m_name(uniqueName())
{
    QLocalServer::removeServer(m_name);
    if (!m_server.listen(m_name))
        qFatal("FakeConnectionManager: cannot listen as %s", qPrintable(m_name));
    connect(&m_server, &QLocalServer::newConnection, this, &FakeConnectionManager::accept);
    orvexLoginData::setServerNameOverride(m_name);
}

FakeConnectionManager::~FakeConnectionManager()
{
    orvexLoginData::setServerNameOverride(QString());
    for (const QPointer<QLocalSocket> &socket : qAsConst(m_sockets)) {
        if (socket)
            socket->abort();
    }
}

QString FakeConnectionManager::uniqueName()
{
    static int counter = 0;
    return QStringLiteral("orvex-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++counter);
}

QByteArray FakeConnectionManager::received(int connection) const
{
    return m_received.value(connection);
}

void FakeConnectionManager::accept()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        const int index = m_received.size();
        m_received.append(QByteArray());
        m_sockets.append(socket);
        auto read = [this, socket, index] {
            if (socket->bytesAvailable() <= 0)
                return;
            const bool first = m_received[index].isEmpty();
            m_received[index].append(socket->readAll());
            if (!first)
                return;
            if (!m_reply.isEmpty()) {
                socket->write(m_reply);
                socket->flush();
            }
            if (m_closeAfterReply)
                socket->disconnectFromServer();
        };
        connect(socket, &QLocalSocket::readyRead, this, read);
        read();
    }
}

QByteArray stream10(const std::function<void(QDataStream &)> &write)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(10);
    write(out);
    return bytes;
}
