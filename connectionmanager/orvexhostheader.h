#pragma once

#include <QByteArray>
#include <QString>

// The "Host" header of a request to a server on the loopback interface. Only
// names of this machine are served: a web page that points a name of its own
// at 127.0.0.1 (DNS rebinding) sends that name, and is refused.
class OrvexHostHeader
{
public:
    // localhost, 127.0.0.1, [::1] or machineName (any letter case), each with
    // or without ":port".
    static bool isLocal(const QByteArray &value, int port, const QString &machineName);
};
