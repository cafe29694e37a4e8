#pragma once

#include "orvexworkbenchglobal.h"

#include <QObject>
#include <QString>

class QLocalSocket;
struct OrvexProfileList;
class QWidget;
class orvexProfileData;

// Client of the Connection Manager, the desktop program that keeps the user's
// connection profiles and serves the drag-and-drop document port. Every call
// opens its own local-socket connection, sends one request, reads the reply
// and closes. The waits process events (user input excluded), so callers must
// tolerate re-entrant timer and paint events during a call.
class ORVEXWORKBENCH_EXPORT orvexLoginData : public QObject
{
    Q_OBJECT

public:
    explicit orvexLoginData(QObject *parent = nullptr);

    // Port of the Connection Manager's drag-and-drop document server; 0 when it
    // is not reachable or the reply is not a port number.
    int getDNDPort();
    // Fills profile from the listed record with this id and tells the
    // Connection Manager that this process uses it.
    bool getProfileById(orvexProfileData &profile, QString &error, int id);
    // Lists the profiles, lets the user pick one and uses it.
    bool getProfile(orvexProfileData &profile, QString &error, QWidget *parent,
                    bool rememberGeometry);
    void reloadProfile(qint64 id);
    // The chat request carries b before a.
    void openChat(qint64 id, const QString &a, const QString &b);
    bool getIsUserCanceled() const;

    // "Orvex-" + the user id in lower-case hex, unless overridden (see below).
    static QString serverName();
    static QString serverNameForUser(quint32 userId);
    // Points every client of this process at another server name (tests, and a
    // private Connection Manager); the variable ORVEX_CONNECTION_MANAGER does the
    // same for a whole process tree. An empty name restores the default.
    static void setServerNameOverride(const QString &name);

    // Waits, for tests: connecting (50000 ms) and one wait round (100 ms); the
    // number of rounds stays as it is.
    void setConnectTimeout(int ms);
    void setWaitInterval(int ms);
    // Whether getProfile starts the Connection Manager when it cannot be reached.
    void setAutoStart(bool autoStart);

private:
    QLocalSocket *connectToManager(const char *logTag);
    QByteArray readOneLine(QLocalSocket *socket);
    bool listProfiles(QLocalSocket *socket, OrvexProfileList &list);
    bool waitForBytes(QLocalSocket *socket, qint64 count, int rounds);
    void sendUseProfile(QLocalSocket *socket, qint64 profileId, bool trailingHash);
    void closeSocket(QLocalSocket *socket);
    void startManager();

    bool m_userCanceled = false;
    int m_connectTimeout = 50000;
    int m_waitInterval = 100;
    bool m_autoStart = true;
};
