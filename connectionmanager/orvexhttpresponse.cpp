#include "orvexhttpresponse.h"

#include "orvexbyteranges.h"

#include <QUuid>

qint64 OrvexHttpResponse::bodyLength() const
{
    qint64 length = 0;
    for (const Piece &piece : body)
        length += piece.size();
    return length;
}

QByteArray OrvexHttpResponse::reasonPhrase(int status)
{
    switch (status) {
    case 200: return "OK";
    case 206: return "Partial Content";
    case 400: return "Bad Request";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 405: return "Method Not Allowed";
    case 408: return "Request Timeout";
    case 413: return "Payload Too Large";
    case 414: return "URI Too Long";
    case 416: return "Range Not Satisfiable";
    case 431: return "Request Header Fields Too Large";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    case 505: return "HTTP Version Not Supported";
    default: return status >= 500 ? "Server Error" : "Error";
    }
}

QByteArray OrvexHttpResponse::headBytes() const
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\n";
    for (const auto &field : fields)
        head += field.first + ": " + field.second + "\r\n";
    head += "Content-Length: " + QByteArray::number(bodyLength()) + "\r\n";
    head += "Connection: close\r\n\r\n";
    return head;
}

OrvexHttpResponse OrvexHttpResponse::text(int status, const QString &reason)
{
    OrvexHttpResponse response;
    response.status = status;
    response.addField("Content-Type", "text/plain; charset=utf-8");
    response.body.append({QStringLiteral("%1 %2: %3\n")
                              .arg(status)
                              .arg(QString::fromLatin1(reasonPhrase(status)), reason)
                              .toUtf8()});
    return response;
}

OrvexHttpResponse OrvexHttpResponse::file(qint64 size, const QByteArray &type, const QByteArray &rangeHeader)
{
    const QByteArray total = QByteArray::number(size);
    QList<OrvexByteRange> ranges;
    const OrvexByteRanges::Outcome outcome = OrvexByteRanges::parse(rangeHeader, size, &ranges);
    if (outcome == OrvexByteRanges::Unsatisfiable) {
        OrvexHttpResponse response = text(416, QStringLiteral("The file has %1 bytes; ask for at most %2 ranges "
                                                              "within it that do not overlap.")
                                                   .arg(size)
                                                   .arg(OrvexByteRanges::MaxRanges));
        response.addField("Content-Range", "bytes */" + total);
        return response;
    }

    OrvexHttpResponse response;
    response.addField("Accept-Ranges", "bytes");
    const auto rangeText = [&](const OrvexByteRange &range) {
        return "bytes " + QByteArray::number(range.first) + '-' + QByteArray::number(range.last) + '/' + total;
    };
    if (outcome == OrvexByteRanges::Whole) {
        response.addField("Content-Type", type);
        if (size > 0)
            response.body.append({{}, 0, size});
        return response;
    }
    response.status = 206;
    if (ranges.size() == 1) {
        response.addField("Content-Type", type);
        response.addField("Content-Range", rangeText(ranges.first()));
        response.body.append({{}, ranges.first().first, ranges.first().length()});
        return response;
    }
    const QByteArray boundary = QUuid::createUuid().toByteArray(QUuid::Id128);
    response.addField("Content-Type", "multipart/byteranges; boundary=" + boundary);
    for (int i = 0; i < ranges.size(); ++i) {
        const QByteArray partHead = (i == 0 ? QByteArray() : QByteArray("\r\n")) + "--" + boundary
            + "\r\nContent-Type: " + type + "\r\nContent-Range: " + rangeText(ranges.at(i)) + "\r\n\r\n";
        response.body.append({partHead});
        response.body.append({{}, ranges.at(i).first, ranges.at(i).length()});
    }
    response.body.append({"\r\n--" + boundary + "--\r\n"});
    return response;
}
