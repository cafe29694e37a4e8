#include "orvexdocumentlistener.h"

#include "kelarchiveclientinterface.h"
#include "orvexcmlog.h"
#include "orvexdocumentarchive.h"
#include "orvexpeerowner.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QThreadPool>

OrvexDocumentListener::OrvexDocumentListener(OrvexDocumentArchive *archive, const OrvexDocumentPolicy &policy,
                                             QObject *parent)
    : QObject(parent)
    , m_archive(archive)
    , m_policy(policy)
{
}

OrvexDocumentListener::~OrvexDocumentListener()
{
    shutdown();
}

bool OrvexDocumentListener::listen(const QString &address, int port, QString *error)
{
    if (!m_server) {
        m_server = new QTcpServer(this);
        m_server->setMaxPendingConnections(MaxConnections);
        connect(m_server, &QTcpServer::newConnection, this, &OrvexDocumentListener::acceptConnections);
        m_workers = new QThreadPool(this);
        m_workers->setMaxThreadCount(Workers);
        // Each worker thread keeps its own archive connection: the threads stay.
        m_workers->setExpiryTimeout(-1);
    }
    if (m_server->listen(QHostAddress(address), quint16(port))) {
        m_policy.port = m_server->serverPort();
        return true;
    }
    if (error)
        *error = QStringLiteral("cannot listen on %1:%2: %3").arg(address).arg(port).arg(m_server->errorString());
    return false;
}

int OrvexDocumentListener::port() const
{
    return m_server && m_server->isListening() ? m_server->serverPort() : 0;
}

void OrvexDocumentListener::shutdown()
{
    if (!m_server)
        return;
    m_server->close();
    const QList<OrvexDocumentConnection *> connections = m_connections;
    for (OrvexDocumentConnection *connection : connections)
        connection->abort();
    // Deliveries the workers post from here on are dropped with this object.
    m_workers->waitForDone();
}

void OrvexDocumentListener::acceptConnections()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        if (m_connections.size() >= MaxConnections) {
            OrvexDocumentConnection *oldest = nullptr;
            for (OrvexDocumentConnection *connection : qAsConst(m_connections)) {
                if (connection->isReadingHead()) {
                    oldest = connection;
                    break;
                }
            }
            if (!oldest) {
                qCWarning(lcManager) << "HTTP CONNECTION REFUSED: all" << MaxConnections << "connections busy";
                socket->abort();
                socket->deleteLater();
                continue;
            }
            qCWarning(lcManager) << "HTTP CONNECTION DROPPED: the oldest of" << MaxConnections
                                 << "connections had not sent its request";
            oldest->abort();
        }
        const qint64 uid = OrvexPeerOwner::uidOf(socket->peerAddress(), socket->peerPort(), socket->localAddress(),
                                                 socket->localPort());
        auto *connection = new OrvexDocumentConnection(socket, uid, m_policy, this);
        m_connections.append(connection);
        m_ids.insert(connection, m_nextId);
        m_byId.insert(m_nextId++, connection);
        connect(connection, &OrvexDocumentConnection::documentRequested, this, &OrvexDocumentListener::fetch);
        connect(connection, &OrvexDocumentConnection::finished, this, &OrvexDocumentListener::forget);
    }
}

void OrvexDocumentListener::forget(OrvexDocumentConnection *connection)
{
    if (!m_ids.contains(connection))
        return;
    m_byId.remove(m_ids.take(connection));
    m_connections.removeOne(connection);
    connection->deleteLater();
}

void OrvexDocumentListener::fetch(OrvexDocumentConnection *connection, qlonglong docId, int version)
{
    const quint64 id = m_ids.value(connection);
    QThread *ioThread = thread();
    OrvexDocumentArchive *archive = m_archive;
    m_workers->start([this, id, docId, version, ioThread, archive] {
        std::shared_ptr<OrvexDocumentArchive::Document> document = archive->fetch(docId, version);
        // The document's client was made on this worker; it is used and destroyed on the I/O thread.
        if (document->client)
            document->client->moveToThread(ioThread);
        QMetaObject::invokeMethod(this, [this, id, document] {
            // A connection that is gone meanwhile drops the document here.
            if (OrvexDocumentConnection *connection = m_byId.value(id))
                connection->deliver(document);
        }, Qt::QueuedConnection);
    });
}
