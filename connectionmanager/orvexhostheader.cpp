#include "orvexhostheader.h"

bool OrvexHostHeader::isLocal(const QByteArray &value, int port, const QString &machineName)
{
    QByteArray host = value;
    // The port follows the last colon, except inside an IPv6 literal "[...]".
    const int colon = host.lastIndexOf(':');
    if (colon >= 0 && colon > host.lastIndexOf(']')) {
        if (host.mid(colon + 1) != QByteArray::number(port))
            return false;
        host.truncate(colon);
    }
    host = host.toLower();
    if (host.isEmpty())
        return false;
    if (host == "localhost" || host == "127.0.0.1" || host == "[::1]")
        return true;
    const QByteArray machine = machineName.toLower().toUtf8();
    return !machine.isEmpty() && host == machine;
}
