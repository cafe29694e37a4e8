#pragma once

#include "e2eprogram.h"

#include <QProcessEnvironment>
#include <QSize>
#include <QTemporaryDir>

// A private desktop for real-input tests: an X server of its own, a D-Bus
// session (which starts the accessibility bus on demand) and openbox as the
// window manager. Programs started with environment() run on it, with HOME
// and the XDG folders in a private temporary folder.
//
// ORVEX_E2E_XSERVER=Xephyr shows the desktop in a window on the current
// display (to watch a test); the default is an invisible Xvfb.
class E2eDesktop
{
public:
    E2eDesktop();
    ~E2eDesktop();

    bool start(QString *error);
    void stop();

    QString display() const { return m_display; }
    // For programs on this desktop: DISPLAY, the session bus, private HOME and
    // XDG folders, accessibility switched on (Qt widgets and web pages).
    QProcessEnvironment environment() const { return m_env; }
    // Sets a variable for the programs started from now on, before start() too
    // (LANG=de_DE.UTF-8 runs them in German).
    void setVariable(const QString &name, const QString &value);
    QString home() const { return m_home.path(); }
    // Where programs of this desktop log (one file per program).
    QString logFile(const QString &program) const;
    // The address of the accessibility bus, asked from the session bus.
    QString accessibilityBusAddress() const;
    // Saves the whole screen as a PNG; false when it could not.
    bool screenshot(const QString &file) const;
    // Runs a helper program on this desktop to its end; its exit code, -1 if it
    // did not finish in time.
    int run(const QString &program, const QStringList &arguments, int timeoutMs = 15000,
            QByteArray *output = nullptr) const;

    static QSize screenSize() { return {1600, 1200}; }
    // The folder of the test executables and helper programs (build/bin).
    static QString binFolder();

private:
    bool startServer(QString *error);
    static bool displayInUse(int display);
    bool waitForWindowManager();

    QTemporaryDir m_home;
    QString m_display;
    QString m_sessionBus;
    QProcessEnvironment m_env;
    QProcessEnvironment m_overrides;
    E2eProgram m_server{QStringLiteral("X server")};
    E2eProgram m_bus{QStringLiteral("D-Bus session")};
    E2eProgram m_windowManager{QStringLiteral("openbox")};
};
