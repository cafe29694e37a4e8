#include "orvexlogindata.h"

#include "orvexlog.h"
#include "orvexlogindialog.h"
#include "orvexprofiledata.h"
#include "orvexprofilelist.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDataStream>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>

#include <algorithm>

#include <unistd.h>

namespace {

QString &serverNameOverride()
{
    static QString name;
    return name;
}

// The protocol's data stream version (Qt 4.4).
constexpr int kStreamVersion = 10;
// Rounds of waiting: for a one-line reply, for the profile list's block length
// and for the rest of the block.
constexpr int kLineRounds = 500;
constexpr int kLengthRounds = 101;
constexpr int kBlockRounds = 501;
constexpr int kUseProfileWriteTimeout = 10000;
// A reply line longer than this is garbage; it is cut rather than buffered.
constexpr qint64 kMaxLineLength = 4096;

const QChar kChatSeparator(0xFEFF);

} // namespace

orvexLoginData::orvexLoginData(QObject *parent)
    : QObject(parent)
{
}

QString orvexLoginData::serverNameForUser(quint32 userId)
{
    return QStringLiteral("Orvex-") + QString::number(userId, 16);
}

QString orvexLoginData::serverName()
{
    if (!serverNameOverride().isEmpty())
        return serverNameOverride();
    const QString fromEnvironment = qEnvironmentVariable("ORVEX_CONNECTION_MANAGER");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    return serverNameForUser(quint32(::getuid()));
}

void orvexLoginData::setServerNameOverride(const QString &name)
{
    serverNameOverride() = name;
}

void orvexLoginData::setConnectTimeout(int ms)
{
    m_connectTimeout = ms;
}

void orvexLoginData::setWaitInterval(int ms)
{
    m_waitInterval = ms;
}

void orvexLoginData::setAutoStart(bool autoStart)
{
    m_autoStart = autoStart;
}

bool orvexLoginData::getIsUserCanceled() const
{
    return m_userCanceled;
}

QLocalSocket *orvexLoginData::connectToManager(const char *logTag)
{
    auto *socket = new QLocalSocket(this);
    if (logTag)
        orvexDebug() << logTag;
    socket->connectToServer(serverName(), QIODevice::ReadWrite);
    if (!socket->waitForConnected(m_connectTimeout)) {
        orvexDebug() << "CONNECTION MANAGER NOT REACHABLE" << serverName() << socket->errorString();
        socket->close();
        delete socket;
        return nullptr;
    }
    return socket;
}

void orvexLoginData::closeSocket(QLocalSocket *socket)
{
    socket->close();
    delete socket;
}

QByteArray orvexLoginData::readOneLine(QLocalSocket *socket)
{
    for (int round = 0; round < kLineRounds; ++round) {
        if (socket->waitForReadyRead(m_waitInterval) || socket->bytesAvailable() > 0)
            break;
        // Nothing can arrive any more once the Connection Manager hung up.
        if (socket->state() != QLocalSocket::ConnectedState)
            break;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    const QByteArray line = socket->readLine(kMaxLineLength);
    closeSocket(socket);
    return line;
}

bool orvexLoginData::waitForBytes(QLocalSocket *socket, qint64 count, int rounds)
{
    for (int round = 0; round < rounds && socket->bytesAvailable() < count; ++round) {
        if (socket->state() != QLocalSocket::ConnectedState)
            break;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        socket->waitForReadyRead(m_waitInterval);
    }
    return socket->bytesAvailable() >= count;
}

bool orvexLoginData::listProfiles(QLocalSocket *socket, OrvexProfileList &list)
{
    socket->write(QByteArrayLiteral("GETPROFILES\r\n"));
    socket->flush();

    QDataStream in(socket);
    in.setVersion(kStreamVersion);
    if (!waitForBytes(socket, sizeof(qint64), kLengthRounds)) {
        orvexDebug() << "PROFILE LIST: NO BLOCK LENGTH";
        return false;
    }
    qint64 blockLength = 0;
    in >> blockLength;
    if (in.status() != QDataStream::Ok || blockLength < 0) {
        orvexWarning() << "PROFILE LIST: INVALID BLOCK LENGTH" << blockLength;
        return false;
    }
    if (!waitForBytes(socket, blockLength, kBlockRounds)) {
        orvexDebug() << "PROFILE LIST: BLOCK INCOMPLETE" << socket->bytesAvailable() << "OF"
                     << blockLength;
        return false;
    }

    // Nothing after the block is consumed.
    if (!OrvexProfileList::read(socket->read(blockLength), list)) {
        orvexWarning() << "PROFILE LIST: UNREADABLE HEADER";
        return false;
    }
    if (!list.complete)
        orvexWarning() << "PROFILE LIST: RECORD CUT OR CORRUPT AFTER" << list.profiles.size() << "RECORDS";
    return true;
}

void orvexLoginData::sendUseProfile(QLocalSocket *socket, qint64 profileId, bool trailingHash)
{
    QString request = QStringLiteral("USEPROFILE#%1#%2#%3")
                          .arg(QString::number(QCoreApplication::applicationPid()),
                               QString::number(profileId),
                               QCoreApplication::applicationFilePath());
    request += trailingHash ? QStringLiteral("#\r\n") : QStringLiteral("\r\n");
    socket->write(request.toUtf8());
    socket->flush();
    socket->waitForBytesWritten(kUseProfileWriteTimeout);
}

int orvexLoginData::getDNDPort()
{
    QLocalSocket *socket = connectToManager("DO RELOAD (DND)");
    if (!socket)
        return 0;
    socket->write(QByteArrayLiteral("GETDNDPORT"));
    socket->flush();
    QByteArray line = readOneLine(socket);
    const int nul = line.indexOf('\0');
    if (nul >= 0)
        line.truncate(nul);
    bool ok = false;
    const int port = line.trimmed().toInt(&ok, 10);
    if (!ok || port < 0 || port > 65535) {
        orvexDebug() << "DND PORT: NO PORT IN REPLY" << line.left(64);
        return 0;
    }
    orvexDebug() << "DND PORT" << port;
    return port;
}

bool orvexLoginData::getProfileById(orvexProfileData &profile, QString &error, int id)
{
    QLocalSocket *socket = connectToManager(nullptr);
    OrvexProfileList list;
    if (!socket || !listProfiles(socket, list)) {
        if (socket)
            closeSocket(socket);
        error = tr("The profile information could not be loaded. Please start the Connection Manager!");
        return false;
    }
    const auto found = std::find_if(list.profiles.cbegin(), list.profiles.cend(),
                                    [id](const orvexProfileData &p) { return p.id == id; });
    if (found == list.profiles.cend()) {
        closeSocket(socket);
        error = tr("The profile %1 is not known to the Connection Manager.").arg(id);
        return false;
    }
    profile = *found;
    sendUseProfile(socket, profile.id, true);
    closeSocket(socket);
    return true;
}

bool orvexLoginData::getProfile(orvexProfileData &profile, QString &error, QWidget *parent,
                                bool rememberGeometry)
{
    m_userCanceled = false;
    const QString notConnected =
        tr("You are not connected to any profile. Please connect using the Connection Manager Orvex!");

    QLocalSocket *socket = connectToManager(nullptr);
    OrvexProfileList list;
    const bool listed = socket && listProfiles(socket, list);
    if (socket)
        closeSocket(socket); // not held open while the user chooses
    if (!listed) {
        error = tr("The profile information could not be loaded. Trying to start the Connection Manager...");
        if (m_autoStart)
            startManager();
        return false;
    }
    if (list.profiles.isEmpty()) {
        error = notConnected;
        return false;
    }

    QStringList names;
    names.reserve(list.profiles.size());
    for (const orvexProfileData &p : qAsConst(list.profiles))
        names.append(p.name);
    orvexLoginDialog dialog(parent, rememberGeometry);
    dialog.setProfiles(names);
    const int result = dialog.exec();
    const int index = dialog.getProfileIndex();
    if (result != QDialog::Accepted || index < 0 || index >= list.profiles.size()) {
        m_userCanceled = result != QDialog::Accepted;
        error = notConnected;
        return false;
    }
    profile = list.profiles.at(index);

    QLocalSocket *useSocket = connectToManager(nullptr);
    if (!useSocket) {
        error = tr("The profile information could not be loaded. Please start the Connection Manager!");
        return false;
    }
    sendUseProfile(useSocket, profile.id, false);
    closeSocket(useSocket);
    return true;
}

void orvexLoginData::reloadProfile(qint64 id)
{
    QLocalSocket *socket = connectToManager("DO RELOAD (PROFILE)");
    if (!socket)
        return;
    socket->write(QStringLiteral("RELOADPROFILE#%1\r\n").arg(id).toUtf8());
    socket->flush();
    orvexDebug() << "RELOAD PROFILE REPLY" << readOneLine(socket);
}

void orvexLoginData::openChat(qint64 id, const QString &a, const QString &b)
{
    QLocalSocket *socket = connectToManager("DO RELOAD (CHAT)");
    if (!socket)
        return;
    const QString request = QStringLiteral("OPENCHAT") + kChatSeparator + QString::number(id)
        + kChatSeparator + b + kChatSeparator + a;
    socket->write(request.toUtf8());
    socket->flush();
    orvexDebug() << "OPEN CHAT REPLY" << readOneLine(socket);
}

void orvexLoginData::startManager()
{
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/orvexconnectionmanager");
    if (!QFileInfo(program).isExecutable()) {
        orvexDebug() << "CONNECTION MANAGER NOT INSTALLED" << program;
        return;
    }
    const bool started =
        QProcess::startDetached(program, {QStringLiteral("--name"), serverName()});
    orvexDebug() << "START CONNECTION MANAGER" << program << started;
}
