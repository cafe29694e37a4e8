#include "e2eproduct.h"

#include "e2edesktop.h"
#include "orvexarchivelocation.h"

#include <QCoreApplication>
#include <QDir>

#include <unistd.h>

E2eProduct::E2eProduct(E2eDesktop &desktop, const QString &archiveFolder)
    : m_desktop(desktop)
    , m_archiveFolder(OrvexArchiveLocation::isServerAddress(archiveFolder) ? archiveFolder
                                                                           : QDir(archiveFolder).absolutePath())
    , m_managerName(QStringLiteral("orvex-e2e-%1%2")
                        .arg(QCoreApplication::applicationPid())
                        .arg(desktop.display().mid(1).prepend(QLatin1Char('-'))))
{
}

E2eProduct::~E2eProduct()
{
    stop();
}

bool E2eProduct::startConnectionManager(QString *error)
{
    QProcessEnvironment env = m_desktop.environment();
    env.insert(QStringLiteral("ORVEX_ARCHIVE_DIR"), m_archiveFolder);
    if (!m_manager.start(E2eDesktop::binFolder() + QStringLiteral("/orvexconnectionmanager"),
                         {QStringLiteral("--name"), m_managerName, QStringLiteral("--profiles"),
                          m_desktop.home() + QStringLiteral("/profiles.ini"), QStringLiteral("--port"),
                          QStringLiteral("0"), QStringLiteral("--archive"), m_archiveFolder},
                         env, m_desktop.logFile(QStringLiteral("connectionmanager")))) {
        *error = QStringLiteral("orvexconnectionmanager did not start");
        return false;
    }
    return true;
}

bool E2eProduct::startHost(QString *error, const QStringList &extraArguments)
{
    QProcessEnvironment env = m_desktop.environment();
    env.insert(QStringLiteral("ORVEX_CONNECTION_MANAGER"), m_managerName);
    if (!m_host.start(E2eDesktop::binFolder() + QStringLiteral("/orvexhost"),
                      QStringList{QStringLiteral("--archive"), m_archiveFolder} + extraArguments, env,
                      m_desktop.logFile(QStringLiteral("orvexhost")))) {
        *error = QStringLiteral("orvexhost did not start");
        return false;
    }
    return true;
}

void E2eProduct::stopHost()
{
    m_host.stop(15000);
}

void E2eProduct::stop()
{
    m_host.stop(15000);
    m_manager.stop();
}
