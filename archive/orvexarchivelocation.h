#pragma once

#include "orvexarchiveglobal.h"

#include <QList>
#include <QPair>
#include <QString>

// Where an archive lives: a folder (the embedded SQLite archive) or a
// PostgreSQL server, written as
//   postgresql://user@host:port/database[?key=value&...]
// The user is the database role the archive is worked on as; a Unix socket
// folder is given as host (percent-encoded) or as the option host=/path.
// Further options are passed on to the server's client library (sslmode=...,
// connect_timeout=...). A password in the text is accepted but never written
// back out: toString() leaves it away.
class ORVEXARCHIVE_EXPORT OrvexArchiveLocation
{
public:
    enum class Kind { None, Folder, Server };

    // A folder path or a server address; an empty or malformed address gives
    // Kind::None with the reason in error.
    static OrvexArchiveLocation parse(const QString &text, QString *error = nullptr);
    // True for texts that name a server ("postgresql://" or "postgres://").
    static bool isServerAddress(const QString &text);

    Kind kind() const { return m_kind; }
    bool isServer() const { return m_kind == Kind::Server; }
    bool isFolder() const { return m_kind == Kind::Folder; }

    QString folder() const { return m_folder; } // absolute, for Kind::Folder
    QString user() const { return m_user; }     // empty: the operating-system user
    QString password() const { return m_password; }
    QString host() const { return m_host; }     // host name, address or socket folder
    int port() const { return m_port; }         // 0: the default
    QString database() const { return m_database; }
    // Options other than host, port, user, password and dbname, in order.
    QList<QPair<QString, QString>> options() const { return m_options; }

    // The role the connection uses: user(), else the operating-system user.
    QString effectiveUser() const;

    // The same server as another role (and its password, which may be empty).
    OrvexArchiveLocation withUser(const QString &user, const QString &password = {}) const;

    // The same address on another port.
    OrvexArchiveLocation withPort(int port) const;

    // Folder path, or the address without password.
    QString toString() const;
    // The server and database without the user: two locations on the same
    // archive, worked on as different users, have the same archiveKey().
    QString archiveKey() const;

private:
    Kind m_kind = Kind::None;
    QString m_folder;
    QString m_user;
    QString m_password;
    QString m_host;
    int m_port = 0;
    QString m_database;
    QList<QPair<QString, QString>> m_options;
};
