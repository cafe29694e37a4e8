#include "orvexarchivesession.h"

#include "orvexarchivestore.h"

#include <QHostInfo>

OrvexArchiveSession::OrvexArchiveSession(QSharedPointer<OrvexArchiveStore> store)
    : m_store(std::move(store))
{
}

const QSharedPointer<OrvexArchiveStore> &OrvexArchiveSession::store() const
{
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
    if (!m_store || !m_store->isOpen())
        return fail(tr("No archive is open"));
    if (!isConnected())
        return fail(tr("Not connected to the archive"));
    return true;
}

bool OrvexArchiveSession::openConnection(const QString &server, int port)
{
    resetConnection();
    if (!m_store || !m_store->isOpen())
        return fail(tr("No archive is open"));
    const QString expected = m_store->setting(QStringLiteral("server"));
    QStringList accepted{expected};
    if (expected.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        accepted << QStringLiteral("127.0.0.1") << QStringLiteral("::1") << QHostInfo::localHostName();
    bool serverOk = false;
    for (const QString &name : qAsConst(accepted))
        serverOk = serverOk || name.compare(server.trimmed(), Qt::CaseInsensitive) == 0;
    const int expectedPort = m_store->setting(QStringLiteral("port")).toInt();
    if (!serverOk || port != expectedPort)
        return fail(tr("Cannot connect to %1:%2 (the archive runs on %3:%4)")
                        .arg(server).arg(port).arg(expected).arg(expectedPort));
    QMutexLocker locker(&m_mutex);
    m_server = server;
    m_port = port;
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
    names = QStringList{m_store->setting(QStringLiteral("archive_name"))};
    return true;
}

bool OrvexArchiveSession::logIn(const QString &login1, const QString &login2, const QString &login3)
{
    {
        QMutexLocker locker(&m_mutex);
        if (!m_open) {
            m_lastError = tr("Log in needs an open connection");
            return false;
        }
        m_user.clear();
        m_archive.clear();
    }
    const QString tenant = m_store->setting(QStringLiteral("tenant"));
    if (!m_store->checkPassword(login1, login2) || login3 != tenant)
        return fail(tr("Login failed for %1: unknown user, wrong password or tenant").arg(login1));
    QMutexLocker locker(&m_mutex);
    m_user = login1;
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
    if (archiveName != m_store->setting(QStringLiteral("archive_name")))
        return fail(tr("Unknown archive %1").arg(archiveName));
    QMutexLocker locker(&m_mutex);
    m_archive = archiveName;
    return true;
}
