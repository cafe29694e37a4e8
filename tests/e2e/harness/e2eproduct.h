#pragma once

#include "e2eprogram.h"

#include <QString>

class E2eDesktop;

// The product as a user runs it, on an E2eDesktop: the Connection Manager
// stand-in and the host, both on one archive folder (or server address). A new folder gets the
// sample archive when the host first opens it; a test that needs another
// starting point prepares the folder first (E2eArchive::prepare).
class E2eProduct
{
public:
    E2eProduct(E2eDesktop &desktop, const QString &archiveFolder);
    ~E2eProduct();

    bool startConnectionManager(QString *error);
    bool startHost(QString *error, const QStringList &extraArguments = {});
    // Ends the host as closing its window does (SIGTERM: Qt closes down), then for good.
    void stopHost();
    void stop();
    bool isHostRunning() const { return m_host.isRunning(); }

    QString archiveFolder() const { return m_archiveFolder; }
    QString hostLog() const { return m_host.logFile(); }
    QString connectionManagerName() const { return m_managerName; }

private:
    E2eDesktop &m_desktop;
    QString m_archiveFolder;
    QString m_managerName;
    E2eProgram m_manager{QStringLiteral("orvexconnectionmanager")};
    E2eProgram m_host{QStringLiteral("orvexhost")};
};
