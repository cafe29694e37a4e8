#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>

#include <memory>

class OrvexProfileStore;
class QLocalServer;
class QLocalSocket;
class QLockFile;
class orvexProfileData;
struct OrvexCmRequest;

// The Connection Manager stand-in: serves the connection protocol on a local
// socket named like the real one. It answers the drag-and-drop port and the
// profile list, and logs profile use, reload and chat requests. Only one
// instance may serve a name; a second one is refused.
class OrvexConnectionManager : public QObject
{
    Q_OBJECT

public:
    // The fixed loopback port of the drag-and-drop document server.
    static constexpr int kDefaultDndPort = 47011;
    // Reply bytes a client may leave unread before its further requests wait.
    static constexpr qint64 MaxUnreadReplies = 1024 * 1024;

    OrvexConnectionManager(OrvexProfileStore *store, int dndPort, QObject *parent = nullptr);
    ~OrvexConnectionManager() override;

    // Starts serving; false (with a readable reason) when another instance
    // already serves the name or the socket cannot be opened.
    bool start(const QString &serverName, QString *error = nullptr);
    void stop();
    bool isListening() const;
    QString serverName() const;
    int dndPort() const { return m_dndPort; }
    // How long a client with too many unread replies may read nothing before
    // it is dropped (default 10 s); for clients connecting later.
    void setDrainTimeout(int milliseconds) { m_drainTimeoutMs = milliseconds; }
    // The port answered to "GETDNDPORT" from now on (once the document server
    // knows the port it got).
    void setDndPort(int port);

    // The whole reply to "GETPROFILES": block length, header text, records.
    static QByteArray profileListReply(const QString &header, const QList<orvexProfileData> &profiles);
    static QString replyHeader();

signals:
    void dndPortRequested();
    void profilesListed(int count);
    void profileUsed(qint64 processId, qint64 profileId, const QString &program, bool trailingHash);
    void profileReloaded(qint64 profileId, bool known);
    void chatRequested(qint64 id, const QString &a, const QString &b);
    void invalidRequest(const QByteArray &raw);
    // A client that left more than MaxUnreadReplies unread and read nothing for the drain time.
    void clientDropped(qint64 unreadBytes);

private:
    struct Client;

    void acceptConnections();
    void readClient(QLocalSocket *socket);
    void finishUnterminated(QLocalSocket *socket);
    void handle(QLocalSocket *socket, const OrvexCmRequest &request);
    void reply(QLocalSocket *socket, const QByteArray &bytes);
    void dropClient(QLocalSocket *socket);

    OrvexProfileStore *m_store; // not owned
    int m_dndPort;
    int m_drainTimeoutMs = 10000;
    QLocalServer *m_server = nullptr;
    std::unique_ptr<QLockFile> m_lock;
    QHash<QLocalSocket *, std::shared_ptr<Client>> m_clients;
};
