#include "orvexarchivelocation.h"

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QUrl>

#include <pwd.h>
#include <unistd.h>

namespace {
const QLatin1String kSchemes[] = {QLatin1String("postgresql://"), QLatin1String("postgres://")};

QString decoded(const QString &text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}

QString encoded(const QString &text, const QByteArray &keep = {})
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, keep));
}

bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

QString tr(const char *text)
{
    return QCoreApplication::translate("OrvexArchiveLocation", text);
}
} // namespace

bool OrvexArchiveLocation::isServerAddress(const QString &text)
{
    const QString trimmed = text.trimmed();
    for (const QLatin1String &scheme : kSchemes)
        if (trimmed.startsWith(scheme, Qt::CaseInsensitive))
            return true;
    return false;
}

OrvexArchiveLocation OrvexArchiveLocation::parse(const QString &text, QString *error)
{
    OrvexArchiveLocation location;
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        fail(error, tr("No archive folder given"));
        return location;
    }
    if (!isServerAddress(trimmed)) {
        location.m_kind = Kind::Folder;
        location.m_folder = QDir::cleanPath(QDir(trimmed).absolutePath());
        return location;
    }

    QString rest = trimmed.mid(trimmed.indexOf(QLatin1String("://")) + 3);
    QString query;
    const int queryStart = rest.indexOf(QLatin1Char('?'));
    if (queryStart >= 0) {
        query = rest.mid(queryStart + 1);
        rest.truncate(queryStart);
    }
    const int pathStart = rest.indexOf(QLatin1Char('/'));
    const QString authority = pathStart >= 0 ? rest.left(pathStart) : rest;
    const QString path = pathStart >= 0 ? rest.mid(pathStart + 1) : QString();

    QString hostPort = authority;
    const int at = authority.lastIndexOf(QLatin1Char('@'));
    if (at >= 0) {
        const QString userInfo = authority.left(at);
        hostPort = authority.mid(at + 1);
        const int colon = userInfo.indexOf(QLatin1Char(':'));
        location.m_user = decoded(colon >= 0 ? userInfo.left(colon) : userInfo);
        if (colon >= 0)
            location.m_password = decoded(userInfo.mid(colon + 1));
    }
    QString portText;
    if (hostPort.startsWith(QLatin1Char('['))) { // [IPv6]:port
        const int close = hostPort.indexOf(QLatin1Char(']'));
        if (close < 0) {
            fail(error, tr("The server address %1 has an unclosed [").arg(trimmed));
            return {};
        }
        location.m_host = hostPort.mid(1, close - 1);
        if (hostPort.mid(close + 1).startsWith(QLatin1Char(':')))
            portText = hostPort.mid(close + 2);
    } else {
        const int colon = hostPort.lastIndexOf(QLatin1Char(':'));
        location.m_host = decoded(colon >= 0 ? hostPort.left(colon) : hostPort);
        if (colon >= 0)
            portText = hostPort.mid(colon + 1);
    }
    location.m_database = decoded(path);

    for (const QString &item : query.split(QLatin1Char('&'), Qt::SkipEmptyParts)) {
        const int equals = item.indexOf(QLatin1Char('='));
        const QString key = decoded(equals >= 0 ? item.left(equals) : item).trimmed();
        const QString value = decoded(equals >= 0 ? item.mid(equals + 1) : QString());
        if (key.isEmpty() || !key.contains(QRegularExpression(QStringLiteral("^[a-z_]+$")))) {
            fail(error, tr("The server address %1 has an unknown option \"%2\"").arg(trimmed, key));
            return {};
        }
        if (key == QLatin1String("host"))
            location.m_host = value;
        else if (key == QLatin1String("port"))
            portText = value;
        else if (key == QLatin1String("user"))
            location.m_user = value;
        else if (key == QLatin1String("password"))
            location.m_password = value;
        else if (key == QLatin1String("dbname"))
            location.m_database = value;
        else
            location.m_options.append({key, value});
    }
    if (!portText.isEmpty()) {
        bool ok = false;
        location.m_port = portText.toInt(&ok);
        if (!ok || location.m_port <= 0 || location.m_port > 65535) {
            fail(error, tr("The server address %1 has no valid port: %2").arg(trimmed, portText));
            return {};
        }
    }
    if (location.m_database.isEmpty() || location.m_database.contains(QLatin1Char('/'))) {
        fail(error, tr("The server address %1 names no database (postgresql://user@host:port/database)").arg(trimmed));
        return {};
    }
    location.m_kind = Kind::Server;
    return location;
}

QString OrvexArchiveLocation::effectiveUser() const
{
    if (!m_user.isEmpty())
        return m_user;
    if (const passwd *entry = ::getpwuid(::geteuid()))
        return QString::fromLocal8Bit(entry->pw_name);
    return qEnvironmentVariable("USER");
}

OrvexArchiveLocation OrvexArchiveLocation::withUser(const QString &user, const QString &password) const
{
    OrvexArchiveLocation location = *this;
    location.m_user = user;
    location.m_password = password;
    return location;
}

OrvexArchiveLocation OrvexArchiveLocation::withPort(int port) const
{
    OrvexArchiveLocation location = *this;
    location.m_port = port;
    return location;
}

QString OrvexArchiveLocation::toString() const
{
    if (m_kind != Kind::Server)
        return m_folder;
    QString text = QStringLiteral("postgresql://");
    if (!m_user.isEmpty())
        text += encoded(m_user) + QLatin1Char('@');
    const bool socket = m_host.startsWith(QLatin1Char('/'));
    if (!socket)
        text += m_host.contains(QLatin1Char(':')) ? QLatin1Char('[') + m_host + QLatin1Char(']') : encoded(m_host, "-.");
    if (m_port > 0 && !socket)
        text += QLatin1Char(':') + QString::number(m_port);
    text += QLatin1Char('/') + encoded(m_database, "-._");
    QStringList query;
    if (socket) {
        query << QStringLiteral("host=") + encoded(m_host, "/-._");
        if (m_port > 0)
            query << QStringLiteral("port=%1").arg(m_port);
    }
    for (const auto &option : m_options)
        query << option.first + QLatin1Char('=') + encoded(option.second, "/-._");
    if (!query.isEmpty())
        text += QLatin1Char('?') + query.join(QLatin1Char('&'));
    return text;
}

QString OrvexArchiveLocation::archiveKey() const
{
    return m_kind == Kind::Server ? withUser(QString()).toString() : m_folder;
}
