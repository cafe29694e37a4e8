#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

// A private PostgreSQL server for tests: initdb into a temporary folder and
// pg_ctl on a Unix socket only, as an unprivileged system user when the tests
// run as root. One server per test executable (instance()), set up on first
// use and stopped when the executable ends; a watchdog process stops it and
// removes its folder should the executable die without doing so.
//
// The bootstrap role (superuser) sets up databases and roles; archives are
// opened as the role orvex_owner, which owns their tables, and worked on as
// login roles named after the archive users (trust authentication on the
// private socket).
class TestPgServer
{
public:
    static constexpr const char *Owner = "orvex_owner";

    // The executable's server, started when needed; null (with the reason in
    // error) when no server can be run here.
    static TestPgServer *instance(QString *error = nullptr);

    TestPgServer();
    ~TestPgServer();
    TestPgServer(const TestPgServer &) = delete;
    TestPgServer &operator=(const TestPgServer &) = delete;

    // keepIn: a folder whose server (data, socket) outlives this object and
    // is used again by the next start there (a benchmark's cached data set);
    // empty: a temporary folder, removed at stop().
    bool start(QString *error, const QString &keepIn = {});
    void stop();
    // Stops the server at once, as a crash would (no shutdown checkpoint).
    bool kill();
    // Starts it again on the same data after kill() or stop().
    bool restart(QString *error = nullptr);
    bool isRunning() const;

    QString socketFolder() const { return m_folder; }
    int port() const { return m_port; }
    QString binary(const QString &name) const;

    // A new, empty database owned by orvex_owner; its address as that role.
    QString createDatabase(const QString &name, QString *error = nullptr);
    // The address of database as user.
    QString address(const QString &database, const QString &user) const;
    // Login roles for every user of the archive in database.
    bool createArchiveUsers(const QString &database, QString *error = nullptr);
    // A new database with the sample archive, set up by orvex_owner, and login
    // roles for its users (needs a QGuiApplication, for the sample's PDFs).
    bool createSampleArchive(const QString &database, QString *error = nullptr);
    // Runs statements as the bootstrap superuser in database.
    bool run(const QString &database, const QStringList &statements, QString *error = nullptr);
    // The rows of a query (fields joined by '|') as the superuser.
    QStringList rows(const QString &database, const QString &query, const QVariantList &values = {});

    // Runs a program as the server's system user (on the server's socket's
    // side of permissions); output and exit code for the caller.
    int runAsServerUser(const QString &program, const QStringList &arguments, QString *output = nullptr) const;

private:
    QString adminConnection(const QString &database);
    bool pgCtl(const QStringList &arguments, QString *error);

    QString m_bin;
    QString m_root;
    QString m_folder;
    QString m_data;
    QString m_serverUser; // empty: the current user
    int m_port = 0;
    qint64 m_watchdog = 0;
    bool m_running = false;
    bool m_keep = false;
    QStringList m_connections;
};
