#include "testpgserver.h"

#include "orvexarchive.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include <memory>

#include <csignal>
#include <pwd.h>
#include <unistd.h>

namespace {
const QString kAdmin = QStringLiteral("orvex_admin");

std::unique_ptr<TestPgServer> g_server;

void stopAtExit()
{
    g_server.reset();
}

QString quotedIdentifier(const QString &name)
{
    return QLatin1Char('"') + QString(name).replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
}

bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

// The newest server binaries installed (Debian keeps them per major version).
QString serverBinaries()
{
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    QStringList names = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) { return a.toInt() > b.toInt(); });
    for (const QString &name : qAsConst(names)) {
        const QString bin = versions.filePath(name + QStringLiteral("/bin"));
        if (QFileInfo(bin + QStringLiteral("/initdb")).isExecutable() && QFileInfo(bin + QStringLiteral("/pg_ctl")).isExecutable())
            return bin;
    }
    return {};
}
} // namespace

TestPgServer *TestPgServer::instance(QString *error)
{
    static QString failure;
    if (!g_server && failure.isEmpty()) {
        auto server = std::make_unique<TestPgServer>();
        if (server->start(&failure)) {
            g_server = std::move(server);
            // Before the application goes: the admin sessions need the driver.
            qAddPostRoutine(stopAtExit);
        }
    }
    if (!g_server && error)
        *error = failure;
    return g_server.get();
}

TestPgServer::TestPgServer() = default;

TestPgServer::~TestPgServer()
{
    stop();
}

QString TestPgServer::binary(const QString &name) const
{
    return m_bin + QLatin1Char('/') + name;
}

int TestPgServer::runAsServerUser(const QString &program, const QStringList &arguments, QString *output) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    // The server user may not enter the caller's folder.
    process.setWorkingDirectory(QDir::rootPath());
    if (m_serverUser.isEmpty())
        process.start(program, arguments);
    else
        process.start(QStringLiteral("runuser"), QStringList{QStringLiteral("-u"), m_serverUser, QStringLiteral("--"), program} + arguments);
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        if (output)
            *output = QStringLiteral("%1 did not finish: %2").arg(program, process.errorString());
        return -1;
    }
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool TestPgServer::pgCtl(const QStringList &arguments, QString *error)
{
    QString output;
    if (runAsServerUser(binary(QStringLiteral("pg_ctl")), QStringList{QStringLiteral("-D"), m_data} + arguments, &output) == 0)
        return true;
    QFile log(m_root + QStringLiteral("/server.log"));
    const QString logText = log.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(log.readAll().right(2000)) : QString();
    return fail(error, QStringLiteral("pg_ctl %1 failed: %2\n%3").arg(arguments.join(QLatin1Char(' ')), output, logText));
}

bool TestPgServer::start(QString *error, const QString &keepIn)
{
    if (m_running)
        return true;
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL")))
        return fail(error, QStringLiteral("Qt's PostgreSQL driver is not installed (libqt5sql5-psql)"));
    m_bin = serverBinaries();
    if (m_bin.isEmpty())
        return fail(error, QStringLiteral("No PostgreSQL server binaries under /usr/lib/postgresql (package postgresql)"));

    m_keep = !keepIn.isEmpty();
    QByteArray pattern = QFile::encodeName(QDir::tempPath() + QStringLiteral("/orvex-pg-XXXXXX"));
    if (m_keep) {
        pattern = QFile::encodeName(QDir(keepIn).absolutePath());
        if (!QDir().mkpath(keepIn))
            return fail(error, QStringLiteral("Cannot make the folder %1").arg(keepIn));
    } else if (!::mkdtemp(pattern.data())) {
        return fail(error, QStringLiteral("Cannot make a folder for the test server"));
    }
    m_root = QFile::decodeName(pattern);
    m_folder = m_root;
    m_data = m_root + QStringLiteral("/data");
    const bool initialised = QFileInfo::exists(m_data + QStringLiteral("/PG_VERSION"));

    // A server refuses to run as root: then as the system's postgres user (or nobody).
    if (::geteuid() == 0) {
        const passwd *user = ::getpwnam("postgres");
        if (!user)
            user = ::getpwnam("nobody");
        if (!user)
            return fail(error, QStringLiteral("No unprivileged user to run the test server as"));
        m_serverUser = QString::fromLocal8Bit(user->pw_name);
        if (::chown(pattern.constData(), user->pw_uid, user->pw_gid) != 0)
            return fail(error, QStringLiteral("Cannot hand %1 to %2").arg(m_root, m_serverUser));
    }

    QString output;
    if (!initialised
        && runAsServerUser(binary(QStringLiteral("initdb")),
                        {QStringLiteral("-D"), m_data, QStringLiteral("-U"), kAdmin, QStringLiteral("-A"),
                         QStringLiteral("trust"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                         QStringLiteral("--locale=C.UTF-8"), QStringLiteral("-N")},
                        &output)
        != 0)
        return fail(error, QStringLiteral("initdb failed: %1").arg(output));

    // The port only names the socket file; pick one that is free in the folder.
    m_port = 40000 + int(::getpid() % 20000);

    // Should this process die without stopping the server, the watchdog does.
    const QString runAs = m_serverUser.isEmpty() ? QString() : QStringLiteral("runuser -u %1 -- ").arg(m_serverUser);
    const QString script = QStringLiteral("while kill -0 %1 2>/dev/null; do sleep 1; done; "
                                          "%2'%3' -D '%4' stop -m immediate >/dev/null 2>&1; %5")
                               .arg(QCoreApplication::applicationPid())
                               .arg(runAs, binary(QStringLiteral("pg_ctl")), m_data,
                                    m_keep ? QStringLiteral("true") : QStringLiteral("rm -rf '%1'").arg(m_root));
    // Looked up here: startDetached() would look a bare name up in the forked
    // child, where a lock that another thread held at the fork stays held.
    QProcess::startDetached(QStandardPaths::findExecutable(QStringLiteral("setsid")),
                            {QStringLiteral("sh"), QStringLiteral("-c"), script}, QDir::rootPath(), &m_watchdog);
    if (!restart(error))
        return false;
    return initialised || run(QStringLiteral("postgres"), {QStringLiteral("CREATE ROLE %1 LOGIN").arg(Owner)}, error);
}

bool TestPgServer::restart(QString *error)
{
    const QString options = QStringLiteral("-k %1 -c listen_addresses='' -p %2 -c fsync=off -c full_page_writes=off "
                                           "-c max_connections=300 -c shared_buffers=32MB")
                                .arg(m_folder).arg(m_port);
    if (!pgCtl({QStringLiteral("-l"), m_root + QStringLiteral("/server.log"), QStringLiteral("-w"), QStringLiteral("-t"),
                QStringLiteral("60"), QStringLiteral("-o"), options, QStringLiteral("start")},
               error))
        return false;
    m_running = true;
    return true;
}

bool TestPgServer::isRunning() const
{
    return m_running;
}

bool TestPgServer::kill()
{
    for (const QString &name : qAsConst(m_connections))
        QSqlDatabase::removeDatabase(name);
    m_connections.clear();
    m_running = false;
    return pgCtl({QStringLiteral("-w"), QStringLiteral("-m"), QStringLiteral("immediate"), QStringLiteral("stop")},
                 nullptr);
}

void TestPgServer::stop()
{
    for (const QString &name : qAsConst(m_connections))
        QSqlDatabase::removeDatabase(name);
    m_connections.clear();
    if (m_running)
        pgCtl({QStringLiteral("-w"), QStringLiteral("-m"), QStringLiteral("fast"), QStringLiteral("stop")}, nullptr);
    m_running = false;
    if (!m_root.isEmpty() && !m_keep)
        QDir(m_root).removeRecursively();
    m_root.clear();
    if (m_watchdog > 0)
        ::kill(pid_t(m_watchdog), SIGTERM);
    m_watchdog = 0;
}

QString TestPgServer::adminConnection(const QString &database)
{
    const QString name = QStringLiteral("orvex-test-admin-") + database;
    if (QSqlDatabase::contains(name)) {
        QSqlDatabase db = QSqlDatabase::database(name, false);
        QSqlQuery probe(db);
        if (db.isOpen() && probe.exec(QStringLiteral("SELECT 1")))
            return name;
    }
    QSqlDatabase::removeDatabase(name);
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
    db.setHostName(m_folder);
    db.setPort(m_port);
    db.setDatabaseName(database);
    db.setUserName(kAdmin);
    db.open();
    if (!m_connections.contains(name))
        m_connections << name;
    return name;
}

bool TestPgServer::run(const QString &database, const QStringList &statements, QString *error)
{
    QSqlDatabase db = QSqlDatabase::database(adminConnection(database), false);
    if (!db.isOpen())
        return fail(error, QStringLiteral("No admin session on %1: %2").arg(database, db.lastError().text()));
    for (const QString &sql : statements) {
        QSqlQuery query(db);
        if (!query.exec(sql))
            return fail(error, QStringLiteral("%1: %2").arg(sql, query.lastError().text()));
    }
    return true;
}

QStringList TestPgServer::rows(const QString &database, const QString &sql, const QVariantList &values)
{
    QSqlDatabase db = QSqlDatabase::database(adminConnection(database), false);
    QSqlQuery query(db);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    QStringList result;
    if (!query.exec())
        return {QStringLiteral("query failed: %1").arg(query.lastError().text())};
    while (query.next()) {
        QStringList fields;
        for (int i = 0; i < query.record().count(); ++i)
            fields << query.value(i).toString();
        result << fields.join(QLatin1Char('|'));
    }
    return result;
}

QString TestPgServer::createDatabase(const QString &name, QString *error)
{
    if (!run(QStringLiteral("postgres"), {QStringLiteral("CREATE DATABASE %1 OWNER %2").arg(quotedIdentifier(name), Owner)}, error))
        return {};
    return address(name, QLatin1String(Owner));
}

QString TestPgServer::address(const QString &database, const QString &user) const
{
    return QStringLiteral("postgresql://%1@/%2?host=%3&port=%4").arg(user, database, m_folder).arg(m_port);
}

bool TestPgServer::createSampleArchive(const QString &database, QString *error)
{
    const QString owner = createDatabase(database, error);
    if (owner.isEmpty())
        return false;
    OrvexArchive setup;
    if (!setup.open(owner))
        return fail(error, setup.lastError());
    return createArchiveUsers(database, error);
}

bool TestPgServer::createArchiveUsers(const QString &database, QString *error)
{
    QStringList statements;
    for (const QString &user : rows(database, QStringLiteral("SELECT id FROM roles WHERE kind = 'user'")))
        statements << QStringLiteral("DO $$ BEGIN CREATE ROLE %1 LOGIN; EXCEPTION WHEN duplicate_object THEN NULL; END $$")
                          .arg(quotedIdentifier(user));
    return run(database, statements, error);
}
