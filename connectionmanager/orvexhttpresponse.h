#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

// One answer of the document server: status, header fields and a body made
// of pieces, each either literal bytes or a range of the delivered file, so
// that a file goes out in chunks as the connection takes them. Every answer
// closes its connection.
struct OrvexHttpResponse
{
    struct Piece
    {
        QByteArray bytes;  // literal bytes, or empty for a range of the file
        qint64 offset = 0; // the file range
        qint64 length = 0;

        qint64 size() const { return bytes.isEmpty() ? length : bytes.size(); }
    };

    int status = 200;
    QList<QPair<QByteArray, QByteArray>> fields;
    QList<Piece> body;
    bool headOnly = false; // HEAD: the head alone, announcing the body's length

    void addField(const QByteArray &name, const QByteArray &value) { fields.append(qMakePair(name, value)); }
    qint64 bodyLength() const;
    // Status line, fields, Content-Length and Connection, and the blank line.
    QByteArray headBytes() const;

    // A status with its reason as plain text.
    static OrvexHttpResponse text(int status, const QString &reason);
    // A file of size bytes and content type, whole (200), in the ranges that
    // rangeHeader asks for (206, several as multipart/byteranges), or 416.
    static OrvexHttpResponse file(qint64 size, const QByteArray &type, const QByteArray &rangeHeader);

    static QByteArray reasonPhrase(int status);
};
