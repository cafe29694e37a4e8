#include "e2edesktop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>

#include <unistd.h>

E2eDesktop::E2eDesktop() = default;

E2eDesktop::~E2eDesktop()
{
    stop();
}

QString E2eDesktop::binFolder()
{
    return QCoreApplication::applicationDirPath();
}

void E2eDesktop::setVariable(const QString &name, const QString &value)
{
    m_overrides.insert(name, value);
    m_env.insert(name, value);
}

QString E2eDesktop::logFile(const QString &program) const
{
    return m_home.filePath(program + QStringLiteral(".log"));
}

bool E2eDesktop::start(QString *error)
{
    if (!m_home.isValid()) {
        *error = QStringLiteral("no temporary folder");
        return false;
    }
    for (const char *tool : {"xdotool", "openbox", "dbus-daemon"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty()) {
            *error = QStringLiteral("%1 is missing: run make setup").arg(QLatin1String(tool));
            return false;
        }
    }
    if (!startServer(error))
        return false;

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DBUS_SESSION_BUS_ADDRESS", "SESSION_MANAGER", "WAYLAND_DISPLAY", "XAUTHORITY",
                             "ORVEX_ARCHIVE_DIR", "ORVEX_CONNECTION_MANAGER", "QT_QPA_PLATFORM"})
        env.remove(QLatin1String(name));
    env.insert(QStringLiteral("DISPLAY"), m_display);
    env.insert(QStringLiteral("HOME"), m_home.path());
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        const QString folder = m_home.filePath(QLatin1String(name));
        QDir().mkpath(folder);
        env.insert(QLatin1String(name), folder);
    }
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path()); // private (0700), as Qt wants it
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    // One language for the texts the tests read.
    env.remove(QStringLiteral("LC_ALL"));
    env.remove(QStringLiteral("LANGUAGE"));
    env.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    // Widgets and web pages on the accessibility bus, where the tests find them.
    env.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    env.insert(QStringLiteral("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY"), QStringLiteral("1"));
    if (::getuid() == 0)
        env.insert(QStringLiteral("QTWEBENGINE_DISABLE_SANDBOX"), QStringLiteral("1"));
    if (!env.contains(QStringLiteral("QTWEBENGINE_CHROMIUM_FLAGS")))
        env.insert(QStringLiteral("QTWEBENGINE_CHROMIUM_FLAGS"),
                   QStringLiteral("--disable-gpu --disable-background-networking"));
    for (const QString &name : m_overrides.keys())
        env.insert(name, m_overrides.value(name));
    m_env = env;

    if (!m_bus.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")},
                     m_env, logFile(QStringLiteral("dbus")), true)) {
        *error = QStringLiteral("dbus-daemon did not start");
        return false;
    }
    m_sessionBus = m_bus.readLine(10000);
    if (m_sessionBus.isEmpty()) {
        *error = QStringLiteral("dbus-daemon gave no address");
        return false;
    }
    m_env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_sessionBus);

    if (!m_windowManager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")}, m_env,
                               logFile(QStringLiteral("openbox")))
        || !waitForWindowManager()) {
        *error = QStringLiteral("openbox did not start on %1; see %2").arg(m_display, m_windowManager.logFile());
        return false;
    }
    return true;
}

// A server of another file system view (a chroot, a container on the same
// network) holds the display's abstract socket without a lock file here;
// the clients would reach that server instead of ours.
bool E2eDesktop::displayInUse(int display)
{
    QFile sockets(QStringLiteral("/proc/net/unix"));
    if (!sockets.open(QIODevice::ReadOnly))
        return false;
    const QByteArray name = "@/tmp/.X11-unix/X" + QByteArray::number(display);
    for (const QByteArray &line : sockets.readAll().split('\n'))
        if (line.endsWith(' ' + name))
            return true;
    return false;
}

bool E2eDesktop::startServer(QString *error)
{
    const QString requested = qEnvironmentVariable("ORVEX_E2E_XSERVER", QStringLiteral("Xvfb"));
    const QString size = QStringLiteral("%1x%2").arg(screenSize().width()).arg(screenSize().height());
    // Display numbers well away from the ones desktops and xvfb-run take; the
    // server reports on stdout once it listens, or exits when the number is taken.
    const int first = 200 + int(QCoreApplication::applicationPid() % 500);
    for (int display = first; display < first + 20; ++display) {
        if (displayInUse(display))
            continue;
        QStringList arguments{QLatin1Char(':') + QString::number(display), QStringLiteral("-displayfd"),
                              QStringLiteral("1"), QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                              QStringLiteral("-screen")};
        if (requested == QLatin1String("Xephyr"))
            arguments << size << QStringLiteral("-title") << QStringLiteral("orvex real-input test");
        else
            arguments << QStringLiteral("0") << size + QStringLiteral("x24");
        if (!m_server.start(requested, arguments, QProcessEnvironment::systemEnvironment(),
                            logFile(QStringLiteral("xserver")), true)) {
            *error = QStringLiteral("%1 did not start").arg(requested);
            return false;
        }
        if (m_server.readLine(20000) == QString::number(display)) {
            m_display = QLatin1Char(':') + QString::number(display);
            return true;
        }
        m_server.stop();
    }
    *error = QStringLiteral("%1 found no free display; see %2").arg(requested, logFile(QStringLiteral("xserver")));
    return false;
}

bool E2eDesktop::waitForWindowManager()
{
    // openbox announces itself on the root window once it manages windows.
    QDeadlineTimer deadline(20000);
    while (!deadline.hasExpired()) {
        QByteArray out;
        if (run(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")}, 5000,
                &out) == 0
            && out.contains("window id"))
            return true;
        QThread::msleep(100);
    }
    return false;
}

void E2eDesktop::stop()
{
    m_windowManager.stop();
    m_bus.stop();
    m_server.stop();
}

QString E2eDesktop::accessibilityBusAddress() const
{
    QDBusConnection session = QDBusConnection::connectToBus(m_sessionBus, QStringLiteral("e2e-session-") + m_display);
    QDBusInterface bus(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"), QStringLiteral("org.a11y.Bus"),
                       session);
    const QDBusReply<QString> reply = bus.call(QStringLiteral("GetAddress"));
    return reply.isValid() ? reply.value() : QString();
}

int E2eDesktop::run(const QString &program, const QStringList &arguments, int timeoutMs, QByteArray *output) const
{
    QProcess process;
    QProcessEnvironment env = m_env;
    if (env.isEmpty()) { // before start() has finished: only the display is known
        env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), m_display);
    }
    process.setProcessEnvironment(env);
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(2000);
        return -1;
    }
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool E2eDesktop::screenshot(const QString &file) const
{
    if (m_display.isEmpty())
        return false;
    QDir().mkpath(QFileInfo(file).absolutePath());
    return run(binFolder() + QStringLiteral("/orvexe2egrab"), {file}) == 0 && QFile::exists(file);
}
