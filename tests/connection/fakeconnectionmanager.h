#pragma once

#include <QByteArray>
#include <QList>
#include <QLocalServer>
#include <QObject>
#include <QPointer>

#include <functional>

class QDataStream;

class QLocalSocket;

// Bytes written by a data stream of the protocol's version (10).
QByteArray stream10(const std::function<void(QDataStream &)> &write);

// A scripted Connection Manager on a private socket name: it records the bytes
// of every connection and answers each connection once, with a fixed reply, as
// soon as its first bytes arrive. It points orvexLoginData at itself while it
// lives.
class FakeConnectionManager : public QObject
{
    Q_OBJECT

public:
    explicit FakeConnectionManager(QObject *parent = nullptr);
    ~FakeConnectionManager() override;

    static QString uniqueName();
    QString name() const { return m_name; }

    void setReply(const QByteArray &reply) { m_reply = reply; }
    // Hang up right after replying (or at once, with an empty reply).
    void setCloseAfterReply(bool close) { m_closeAfterReply = close; }

    int connectionCount() const { return m_received.size(); }
    QByteArray received(int connection) const;

private:
    void accept();

    QString m_name;
    QLocalServer m_server;
    QByteArray m_reply;
    bool m_closeAfterReply = false;
    QList<QByteArray> m_received;
    QList<QPointer<QLocalSocket>> m_sockets;
};
