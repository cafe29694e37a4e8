#pragma once

#include "orvexdocumentconnection.h"

#include <QHash>
#include <QList>
#include <QObject>

class OrvexDocumentArchive;
class QTcpServer;
class QThreadPool;

// The document server's side on its I/O thread: accepts connections on the
// loopback interface, tells each the user at its other end, and fetches the
// documents that complete requests ask for on a small pool of workers. Slow
// clients cost a connection each, never a worker; when the connections run
// out, the oldest one still sending its request head makes room.
class OrvexDocumentListener : public QObject
{
    Q_OBJECT

public:
    static constexpr int MaxConnections = 256;
    static constexpr int Workers = 4;

    OrvexDocumentListener(OrvexDocumentArchive *archive, const OrvexDocumentPolicy &policy,
                          QObject *parent = nullptr);
    ~OrvexDocumentListener() override;

    // Made on any thread, then moved to the I/O thread, where both of these run.
    bool listen(const QString &address, int port, QString *error);
    // Stops accepting, drops every connection and waits for the workers.
    void shutdown();
    int port() const;

private:
    void acceptConnections();
    void fetch(OrvexDocumentConnection *connection, qlonglong docId, int version);
    void forget(OrvexDocumentConnection *connection);

    OrvexDocumentArchive *m_archive; // not owned
    OrvexDocumentPolicy m_policy;
    QTcpServer *m_server = nullptr;   // made by listen() on the I/O thread
    QThreadPool *m_workers = nullptr; // likewise
    QList<OrvexDocumentConnection *> m_connections; // oldest first
    QHash<OrvexDocumentConnection *, quint64> m_ids;
    QHash<quint64, OrvexDocumentConnection *> m_byId;
    quint64 m_nextId = 1;
};
