#pragma once

// A blocking HTTP client for tests that sends exactly the bytes it is given,
// so that a test can send what no library would (a foreign Host header, a
// request cut short, bytes one at a time), and reads the answer until the
// server closes.
#include <QByteArray>
#include <QElapsedTimer>
#include <QMap>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace RawHttp {

struct Answer
{
    int status = -1; // -1: no answer at all
    QMap<QByteArray, QByteArray> fields; // names in lower case
    QByteArray body;
    bool closed = false; // the server closed the connection
};

// A connected socket to 127.0.0.1:port, or -1.
inline int connectTo(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

inline bool sendAll(int fd, const QByteArray &bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n = ::send(fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (n <= 0)
            return false;
        sent += n;
    }
    return true;
}

// Reads until the server closes or timeoutMs passes.
inline QByteArray readAll(int fd, int timeoutMs, bool *closed = nullptr)
{
    QByteArray received;
    QElapsedTimer timer;
    timer.start();
    char buffer[65536];
    for (;;) {
        const qint64 left = timeoutMs - timer.elapsed();
        pollfd poller{fd, POLLIN, 0};
        if (left <= 0 || ::poll(&poller, 1, int(left)) <= 0)
            break;
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0) {
            if (closed)
                *closed = true;
            break;
        }
        received.append(buffer, int(n));
    }
    return received;
}

inline Answer parse(const QByteArray &received, bool closed)
{
    Answer answer;
    answer.closed = closed;
    const int end = received.indexOf("\r\n\r\n");
    if (!received.startsWith("HTTP/1.1 ") || end < 0)
        return answer;
    const QList<QByteArray> lines = received.left(end).split('\n');
    answer.status = lines.first().mid(9, 3).toInt();
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        if (colon > 0)
            answer.fields.insert(lines.at(i).left(colon).trimmed().toLower(), lines.at(i).mid(colon + 1).trimmed());
    }
    answer.body = received.mid(end + 4);
    return answer;
}

// Sends request on a new connection and reads the whole answer.
inline Answer exchange(int port, const QByteArray &request, int timeoutMs = 30000)
{
    const int fd = connectTo(port);
    if (fd < 0)
        return {};
    bool closed = false;
    const QByteArray received = sendAll(fd, request) ? readAll(fd, timeoutMs, &closed) : QByteArray();
    ::close(fd);
    return parse(received, closed);
}

inline QByteArray get(const QByteArray &target, const QByteArray &host, const QByteArray &extraFields = {},
                      const QByteArray &method = "GET")
{
    return method + ' ' + target + " HTTP/1.1\r\nHost: " + host + "\r\n" + extraFields + "\r\n";
}

} // namespace RawHttp
