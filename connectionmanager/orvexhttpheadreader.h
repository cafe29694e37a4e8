#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

// The head of one HTTP request: request line and header fields.
struct OrvexHttpHead
{
    QByteArray method;
    QByteArray target;  // as sent, still percent-encoded
    QByteArray version; // "HTTP/1.0" or "HTTP/1.1"
    // Field names in lower case, values without surrounding blanks, in order.
    QList<QPair<QByteArray, QByteArray>> fields;

    // The first value of a field; empty when it is missing.
    QByteArray field(const QByteArray &lowerCaseName) const;
    int fieldCount(const QByteArray &lowerCaseName) const;
};

// Reads the head of an HTTP request from bytes as they arrive, within fixed
// limits, so that a client can make the server hold only a bounded amount of
// its bytes. A line that outgrows its limit fails at once, without waiting for
// its end. Bytes after the head are not read: the server takes no request
// bodies and answers one request per connection.
class OrvexHttpHeadReader
{
public:
    enum State { Reading, Complete, Failed };

    static constexpr int MaxRequestLine = 8 * 1024;
    static constexpr int MaxFieldLine = 8 * 1024;
    static constexpr int MaxFields = 64;
    static constexpr int MaxHeadSize = 32 * 1024;

    // Takes the next bytes of the connection; returns the state after them.
    State feed(const char *data, qsizetype size);
    State feed(const QByteArray &bytes) { return feed(bytes.constData(), bytes.size()); }

    State state() const { return m_state; }
    // Failed: the status to answer (400, 414, 431, 505) and the reason.
    int errorStatus() const { return m_errorStatus; }
    QString error() const { return m_error; }
    // Complete: what was read.
    const OrvexHttpHead &head() const { return m_head; }

private:
    State fail(int status, const QString &reason);
    State takeLine(const QByteArray &line);
    State takeRequestLine(const QByteArray &line);
    State takeField(const QByteArray &line);

    State m_state = Reading;
    int m_errorStatus = 0;
    QString m_error;
    OrvexHttpHead m_head;
    QByteArray m_line;      // the line read so far, without its end
    qsizetype m_headSize = 0;
    int m_emptyLinesBefore = 0;
    bool m_haveRequestLine = false;
};
