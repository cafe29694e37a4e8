#pragma once

#include "orvexarchivelocation.h"

#include <QCoreApplication>
#include <QMutex>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

class OrvexArchiveStore;

// One archive client's standing with the archive: the store it works on, the
// connection chain (server and port, then login as user, password and tenant,
// then the archive name, each checked against the archive's settings) and the
// last error. Until the chain has run, requireConnection() refuses.
//
// A server address (postgresql://user@host:port/database) as the server of
// the chain names an archive on a server: the login then connects as the
// database role of the user with that password (or the client library's
// usual sources of passwords), and the session works on that role's store.
// Thread-safe: uploads run on a pool thread.
class OrvexArchiveSession
{
    // Its texts are the client's error texts.
    Q_DECLARE_TR_FUNCTIONS(OrvexArchiveClient)

public:
    explicit OrvexArchiveSession(QSharedPointer<OrvexArchiveStore> store);

    // Null when the client was made without a store and has not logged in
    // to a server.
    QSharedPointer<OrvexArchiveStore> store() const;

    // Keeps error as the last error; returns false for the caller to pass on.
    bool fail(const QString &error);
    QString lastError() const;
    QString user() const; // the logged-in user; empty before logIn
    bool isConnected() const;
    // False, with the reason kept, without an open archive or a whole chain.
    bool requireConnection();

    bool openConnection(const QString &server, int port);
    bool resetConnection();
    bool getArchiveNames(QStringList &names);
    bool logIn(const QString &login1, const QString &login2, const QString &login3);
    bool selectArchive(const QString &archiveName);

private:
    bool logInToServer(const QString &user, const QString &password, const QString &tenant);

    QSharedPointer<OrvexArchiveStore> m_store;
    OrvexArchiveLocation m_server; // the server address of the chain, if it names one
    mutable QMutex m_mutex;
    QString m_lastError;
    QString m_user;
    QString m_archive;
    bool m_open = false;
};
