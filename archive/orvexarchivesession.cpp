#include "orvexarchivesession.h"

#include "orvexarchivestore.h"

#include <QHostInfo>

OrvexArchiveSession::OrvexArchiveSession(QSharedPointer<OrvexArchiveStore> store)
    : m_store(std::move(store))
{
}

QSharedPointer<OrvexArchiveStore> OrvexArchiveSession::store() const
{
    QMutexLocker locker(&m_mutex);
    return m_store;
}

bool OrvexArchiveSession::fail(const QString &error)
{
    QMutexLocker locker(&m_mutex);
    m_lastError = error;
    return false;
}

bool OrvexArchiveSession::isConnected() const
{
    QMutexLocker locker(&m_mutex);
    return m_open && !m_user.isEmpty() && !m_archive.isEmpty();
}

QString OrvexArchiveSession::user() const
{
    QMutexLocker locker(&m_mutex);
    return m_user;
}

bool OrvexArchiveSession::requireConnection()
{
    const QSharedPointer<OrvexArchiveStore> current = store();
    if (!current || !current->isOpen())
        return fail(tr("No archive is open"));
    if (!isConnected())
        return fail(tr("Not connected to the archive"));
    return true;
}

bool OrvexArchiveSession::openConnection(const QString &server, int port)
{
    resetConnection();
    if (OrvexArchiveLocation::isServerAddress(server)) {
        QString error;
        OrvexArchiveLocation location = OrvexArchiveLocation::parse(server, &error);
        if (!location.isServer())
            return fail(tr("Cannot connect to %1: %2").arg(server, error));
        if (location.port() == 0 && port > 0)
            location = location.withPort(port);
        else if (port > 0 && port != location.port())
            return fail(tr("Cannot connect to %1 on port %2: the address names port %3")
                            .arg(location.toString()).arg(port).arg(location.port()));
        QMutexLocker locker(&m_mutex);
        m_server = location;
        m_open = true;
        return true;
    }
    const QSharedPointer<OrvexArchiveStore> current = store();
    if (!current || !current->isOpen() || current->isServer())
        return fail(tr("No archive is open"));
    const QString expected = current->setting(QStringLiteral("server"));
    QStringList accepted{expected};
    if (expected.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        accepted << QStringLiteral("127.0.0.1") << QStringLiteral("::1") << QHostInfo::localHostName();
    bool serverOk = false;
    for (const QString &name : qAsConst(accepted))
        serverOk = serverOk || name.compare(server.trimmed(), Qt::CaseInsensitive) == 0;
    const int expectedPort = current->setting(QStringLiteral("port")).toInt();
    if (!serverOk || port != expectedPort)
        return fail(tr("Cannot connect to %1:%2 (the archive runs on %3:%4)")
                        .arg(server).arg(port).arg(expected).arg(expectedPort));
    QMutexLocker locker(&m_mutex);
    m_server = OrvexArchiveLocation();
    m_open = true;
    return true;
}

bool OrvexArchiveSession::resetConnection()
{
    QMutexLocker locker(&m_mutex);
    m_open = false;
    m_user.clear();
    m_archive.clear();
    return true;
}

QString OrvexArchiveSession::lastError() const
{
    QMutexLocker locker(&m_mutex);
    return m_lastError;
}

bool OrvexArchiveSession::getArchiveNames(QStringList &names)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open) {
            m_lastError = tr("Not connected to the archive");
            return false;
        }
    }
    const QSharedPointer<OrvexArchiveStore> current = store();
    if (!current)
        return fail(tr("Log in first: the server tells its archive names only to its users"));
    names = QStringList{current->setting(QStringLiteral("archive_name"))};
    return true;
}

bool OrvexArchiveSession::logIn(const QString &login1, const QString &login2, const QString &login3)
{
    OrvexArchiveLocation server;
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open) {
            m_lastError = tr("Log in needs an open connection");
            return false;
        }
        m_user.clear();
        m_archive.clear();
        server = m_server;
    }
    if (server.isServer())
        return logInToServer(login1, login2, login3);
    const QSharedPointer<OrvexArchiveStore> current = store();
    const QString tenant = current->setting(QStringLiteral("tenant"));
    if (!current->checkPassword(login1, login2) || login3 != tenant)
        return fail(tr("Login failed for %1: unknown user, wrong password or tenant").arg(login1));
    QMutexLocker locker(&m_mutex);
    m_user = login1;
    return true;
}

bool OrvexArchiveSession::logInToServer(const QString &user, const QString &password, const QString &tenant)
{
    OrvexArchiveLocation location;
    {
        QMutexLocker locker(&m_mutex);
        location = m_server;
    }
    // The server checks the password: the login is a session as the user's role.
    const QString role = user.isEmpty() ? location.effectiveUser() : user;
    const OrvexArchiveLocation asUser
        = location.withUser(role, password.isEmpty() && role == location.effectiveUser() ? location.password() : password);
    QString error;
    const QSharedPointer<OrvexArchiveStore> server = OrvexArchiveStore::shared(asUser, false, &error);
    if (!server)
        return fail(tr("Login failed for %1: %2").arg(role, error));
    if (!server->isUser(role) || tenant != server->setting(QStringLiteral("tenant")))
        return fail(tr("Login failed for %1: unknown user, wrong password or tenant").arg(role));
    QMutexLocker locker(&m_mutex);
    m_store = server;
    m_user = role;
    return true;
}

bool OrvexArchiveSession::selectArchive(const QString &archiveName)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open || m_user.isEmpty()) {
            m_lastError = tr("Selecting an archive needs a login");
            return false;
        }
    }
    if (archiveName != store()->setting(QStringLiteral("archive_name")))
        return fail(tr("Unknown archive %1").arg(archiveName));
    QMutexLocker locker(&m_mutex);
    m_archive = archiveName;
    return true;
}
