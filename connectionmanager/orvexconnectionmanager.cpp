#include "orvexconnectionmanager.h"

#include "orvexcmlog.h"
#include "orvexcmrequestparser.h"
#include "orvexprofiledata.h"
#include "orvexprofilestore.h"

#include <QDataStream>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>

namespace {

constexpr int kStreamVersion = 10;
// A request without end marker is complete once its client has been quiet this long.
constexpr int kQuietMs = 50;
// Bytes taken from a client per read; Qt holds at most a few of these for it.
constexpr qint64 kReadChunk = 16 * 1024;

QByteArray forLog(const QByteArray &raw)
{
    return raw.size() > 80 ? raw.left(80) + "..." : raw;
}

} // namespace

struct OrvexConnectionManager::Client
{
    OrvexCmRequestParser parser;
    QTimer *quiet = nullptr; // child of the socket
    QTimer *drain = nullptr; // child of the socket: runs while the client's replies pile up
};

OrvexConnectionManager::OrvexConnectionManager(OrvexProfileStore *store, int dndPort, QObject *parent)
    : QObject(parent), m_store(store), m_dndPort(dndPort)
{
}

OrvexConnectionManager::~OrvexConnectionManager()
{
    stop();
}

QString OrvexConnectionManager::replyHeader()
{
    return QStringLiteral("orvexconnectionmanager 1");
}

QByteArray OrvexConnectionManager::profileListReply(const QString &header,
                                                    const QList<orvexProfileData> &profiles)
{
    QByteArray block;
    {
        QDataStream out(&block, QIODevice::WriteOnly);
        out.setVersion(kStreamVersion);
        out << header;
        for (const orvexProfileData &profile : profiles)
            out << profile;
    }
    QByteArray reply;
    QDataStream out(&reply, QIODevice::WriteOnly);
    out.setVersion(kStreamVersion);
    out << qint64(block.size());
    reply.append(block);
    return reply;
}

bool OrvexConnectionManager::start(const QString &serverName, QString *error)
{
    auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return false;
    };
    if (isListening())
        return fail(QStringLiteral("already serving %1").arg(m_server->serverName()));

    // The lock decides between two instances started at the same moment; the
    // probe below finds a server that is no stand-in (no lock file at all).
    auto lock = std::make_unique<QLockFile>(QDir::tempPath() + QLatin1Char('/') + serverName
                                            + QStringLiteral(".lock"));
    lock->setStaleLockTime(0); // only a dead owner makes the lock stale, never its age
    if (!lock->tryLock(0)) {
        qint64 pid = 0;
        QString host, application;
        lock->getLockInfo(&pid, &host, &application);
        return fail(QStringLiteral("another Connection Manager (process %1) is already running as %2")
                        .arg(pid)
                        .arg(serverName));
    }
    {
        QLocalSocket probe;
        probe.connectToServer(serverName);
        if (probe.waitForConnected(1000)) {
            probe.abort();
            return fail(QStringLiteral("another program already serves %1").arg(serverName));
        }
    }
    // A socket file left behind by a killed instance blocks listen().
    QLocalServer::removeServer(serverName);

    auto *server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(serverName)) {
        const QString reason = server->errorString();
        delete server;
        return fail(QStringLiteral("cannot listen as %1: %2").arg(serverName, reason));
    }
    connect(server, &QLocalServer::newConnection, this, &OrvexConnectionManager::acceptConnections);
    m_server = server;
    m_lock = std::move(lock);
    qCInfo(lcManager).noquote() << "LISTENING" << m_server->fullServerName() << "DND PORT"
                                << m_dndPort << "PROFILES" << m_store->profiles().size();
    return true;
}

void OrvexConnectionManager::stop()
{
    const auto sockets = m_clients.keys();
    for (QLocalSocket *socket : sockets) {
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
    m_clients.clear();
    if (m_server) {
        m_server->close();
        delete m_server;
        m_server = nullptr;
    }
    m_lock.reset();
}

void OrvexConnectionManager::setDndPort(int port)
{
    if (port == m_dndPort)
        return;
    m_dndPort = port;
    qCInfo(lcManager) << "DND PORT" << m_dndPort;
}

bool OrvexConnectionManager::isListening() const
{
    return m_server && m_server->isListening();
}

QString OrvexConnectionManager::serverName() const
{
    return m_server ? m_server->serverName() : QString();
}

void OrvexConnectionManager::acceptConnections()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        auto client = std::make_shared<Client>();
        client->quiet = new QTimer(socket);
        client->quiet->setSingleShot(true);
        client->quiet->setInterval(kQuietMs);
        client->drain = new QTimer(socket);
        client->drain->setSingleShot(true);
        client->drain->setInterval(m_drainTimeoutMs);
        // What Qt takes from the client stays bounded while its requests wait.
        socket->setReadBufferSize(4 * kReadChunk);
        m_clients.insert(socket, client);
        connect(client->quiet, &QTimer::timeout, this, [this, socket] { finishUnterminated(socket); });
        connect(client->drain, &QTimer::timeout, this, [this, socket] {
            const qint64 unread = socket->bytesToWrite();
            qCWarning(lcManager) << "CLIENT DROPPED:" << unread << "bytes of replies unread for"
                                 << m_drainTimeoutMs << "ms";
            emit clientDropped(unread);
            socket->abort();
            dropClient(socket);
        });
        connect(socket, &QLocalSocket::bytesWritten, this, [this, socket] {
            // A client that reads gets more time, and its waiting requests are
            // answered once its unread replies are within the limit again.
            const auto client = m_clients.value(socket);
            if (!client || !client->drain->isActive())
                return;
            if (socket->bytesToWrite() > MaxUnreadReplies) {
                client->drain->start();
                return;
            }
            client->drain->stop();
            readClient(socket);
        });
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readClient(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            finishUnterminated(socket);
            dropClient(socket);
        });
        readClient(socket); // bytes may have come with the connection
    }
}

void OrvexConnectionManager::readClient(QLocalSocket *socket)
{
    const auto client = m_clients.value(socket);
    if (!client)
        return;
    OrvexCmRequest request;
    while (m_clients.contains(socket)) {
        // Replies the client leaves unread stop its requests from being
        // answered; if it reads nothing for the drain time, it goes.
        if (socket->bytesToWrite() > MaxUnreadReplies) {
            if (!client->drain->isActive())
                client->drain->start();
            return;
        }
        if (client->parser.next(request)) {
            handle(socket, request);
            continue;
        }
        if (socket->bytesAvailable() <= 0)
            break;
        client->parser.append(socket->read(kReadChunk));
    }
    if (m_clients.contains(socket) && client->parser.hasUnterminated())
        client->quiet->start();
}

void OrvexConnectionManager::finishUnterminated(QLocalSocket *socket)
{
    const auto client = m_clients.value(socket);
    OrvexCmRequest request;
    if (client && client->parser.takeUnterminated(request))
        handle(socket, request);
}

void OrvexConnectionManager::reply(QLocalSocket *socket, const QByteArray &bytes)
{
    if (socket->state() != QLocalSocket::ConnectedState)
        return;
    socket->write(bytes);
    socket->flush();
}

void OrvexConnectionManager::handle(QLocalSocket *socket, const OrvexCmRequest &request)
{
    switch (request.kind) {
    case OrvexCmRequest::DndPort:
        qCInfo(lcManager) << "GETDNDPORT" << m_dndPort;
        reply(socket, QByteArray::number(m_dndPort) + '\n');
        emit dndPortRequested();
        return;
    case OrvexCmRequest::Profiles: {
        const QList<orvexProfileData> profiles = m_store->profiles();
        qCInfo(lcManager) << "GETPROFILES" << profiles.size();
        reply(socket, profileListReply(replyHeader(), profiles));
        emit profilesListed(profiles.size());
        return;
    }
    case OrvexCmRequest::UseProfile: {
        const qint64 processId = request.args.at(0).toLongLong();
        const qint64 profileId = request.args.at(1).toLongLong();
        const bool known = m_store->contains(profileId);
        qCInfo(lcManager).noquote() << "USEPROFILE process" << processId << "profile" << profileId
                                    << (known ? "" : "(unknown)") << "program" << request.args.at(2);
        m_store->setActive(profileId);
        emit profileUsed(processId, profileId, request.args.at(2), request.trailingHash);
        return;
    }
    case OrvexCmRequest::ReloadProfile: {
        const qint64 profileId = request.args.at(0).toLongLong();
        const bool loaded = m_store->load();
        const bool known = loaded && m_store->contains(profileId);
        qCInfo(lcManager) << "RELOADPROFILE" << profileId << (known ? "OK" : "UNKNOWN");
        reply(socket, known ? QByteArrayLiteral("OK\n") : QByteArrayLiteral("UNKNOWN PROFILE\n"));
        emit profileReloaded(profileId, known);
        return;
    }
    case OrvexCmRequest::OpenChat: {
        const qint64 id = request.args.at(0).toLongLong();
        qCInfo(lcManager).noquote() << "OPENCHAT" << id << request.args.at(1) << request.args.at(2);
        reply(socket, QByteArrayLiteral("OK\n"));
        emit chatRequested(id, request.args.at(1), request.args.at(2));
        return;
    }
    case OrvexCmRequest::Invalid:
        break;
    }
    qCWarning(lcManager) << "INVALID REQUEST" << forLog(request.raw);
    // Answer so that a waiting client need not run into its time-out, then hang up.
    reply(socket, QByteArrayLiteral("ERROR\n"));
    emit invalidRequest(request.raw);
    socket->disconnectFromServer();
}

void OrvexConnectionManager::dropClient(QLocalSocket *socket)
{
    if (m_clients.remove(socket))
        socket->deleteLater();
}
