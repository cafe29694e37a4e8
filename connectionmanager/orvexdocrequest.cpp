#include "orvexdocrequest.h"

#include <QByteArrayList>
#include <QSet>
#include <QStringList>
#include <QUrl>

#include <climits>

namespace {

const QByteArray kRoute = QByteArrayLiteral("openDoc");
const QStringList kParameters = {QStringLiteral("openmode"), QStringLiteral("docid"),
                                 QStringLiteral("version"),  QStringLiteral("archive"),
                                 QStringLiteral("host"),     QStringLiteral("port"),
                                 QStringLiteral("profileId")};
// The only open mode there is: deliver the file.
const QString kOpenMode = QStringLiteral("4");

OrvexDocRequest refuse(int status, const QString &error)
{
    OrvexDocRequest request;
    request.status = status;
    request.error = error;
    return request;
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Every '%' must start an escape of two hex digits; QUrl would pass a broken
// one through as it is.
bool decodePercent(const QByteArray &raw, QString &decoded)
{
    for (int i = 0; i < raw.size(); ++i) {
        if (raw.at(i) == '%' && (i + 2 >= raw.size() || !isHex(raw.at(i + 1)) || !isHex(raw.at(i + 2))))
            return false;
    }
    decoded = QUrl::fromPercentEncoding(raw);
    return true;
}

bool hasControlCharacter(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f)
            return true;
    }
    return false;
}

// Digits only: no sign, no blanks, no "0x", nothing a lenient conversion would accept.
bool isDigits(const QString &text)
{
    if (text.isEmpty())
        return false;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    }
    return true;
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + (text.size() > 40 ? text.left(40) + QStringLiteral("...") : text)
        + QLatin1Char('"');
}

} // namespace

OrvexDocRequest OrvexDocRequest::parse(const QByteArray &method, const QByteArray &target)
{
    if (method != "GET" && method != "HEAD")
        return refuse(405, QStringLiteral("Only GET and HEAD are served, not %1.")
                               .arg(QString::fromLatin1(method.left(20))));

    const int queryStart = target.indexOf('?');
    const QByteArray rawPath = queryStart < 0 ? target : target.left(queryStart);
    const QByteArray rawQuery = queryStart < 0 ? QByteArray() : target.mid(queryStart + 1);
    if (!rawPath.startsWith('/') || target.contains('#'))
        return refuse(400, QStringLiteral("The request target must be a path with an optional query."));

    // Every segment is checked before routing, so that "/x/../openDoc/.." is
    // refused as a trick instead of being resolved to something served.
    const QByteArrayList rawSegments = rawPath.mid(1).split('/');
    QStringList segments;
    for (const QByteArray &raw : rawSegments) {
        QString segment;
        if (!decodePercent(raw, segment))
            return refuse(400, QStringLiteral("The path holds a broken percent escape."));
        if (segment == QLatin1String(".") || segment == QLatin1String(".."))
            return refuse(400, QStringLiteral("Paths with \".\" or \"..\" segments are not served."));
        if (segment.contains(QLatin1Char('/')) || segment.contains(QLatin1Char('\\')))
            return refuse(400, QStringLiteral("Encoded slashes and backslashes are not served."));
        if (hasControlCharacter(segment))
            return refuse(400, QStringLiteral("The path holds control characters."));
        segments << segment;
    }
    if (rawSegments.first() != kRoute || rawSegments.size() < 2)
        return refuse(404, QStringLiteral("Nothing is served here; documents are served as "
                                          "/openDoc/<file name>?openmode=4&docid=<id>."));
    if (rawSegments.size() > 2)
        return refuse(400, QStringLiteral("The file name after /openDoc/ must be a single path segment."));

    OrvexDocRequest request;
    request.name = segments.at(1);

    QSet<QString> seen;
    QString openMode;
    QString docId;
    QString version;
    QString port;
    bool hasOpenMode = false;
    bool hasVersion = false;
    for (const QByteArray &piece : rawQuery.split('&')) {
        if (piece.isEmpty())
            continue; // "a=1&&b=2", or no query at all
        const int equals = piece.indexOf('=');
        QString key;
        QString value;
        if (!decodePercent(equals < 0 ? piece : piece.left(equals), key)
            || !decodePercent(equals < 0 ? QByteArray() : piece.mid(equals + 1), value))
            return refuse(400, QStringLiteral("The query holds a broken percent escape."));
        if (!kParameters.contains(key))
            return refuse(400, QStringLiteral("Unknown parameter %1; known are %2.")
                                   .arg(quoted(key), kParameters.join(QStringLiteral(", "))));
        if (seen.contains(key))
            return refuse(400, QStringLiteral("The parameter %1 is given more than once.").arg(key));
        if (hasControlCharacter(value))
            return refuse(400, QStringLiteral("The parameter %1 holds control characters.").arg(key));
        seen.insert(key);
        if (key == QLatin1String("openmode")) {
            openMode = value;
            hasOpenMode = true;
        } else if (key == QLatin1String("docid")) {
            docId = value;
        } else if (key == QLatin1String("version")) {
            version = value;
            hasVersion = true;
        } else if (key == QLatin1String("port")) {
            port = value;
        }
    }

    if (hasOpenMode && openMode != kOpenMode)
        return refuse(400, QStringLiteral("Only openmode=4 (deliver the file) is served, not %1.")
                               .arg(quoted(openMode)));
    if (!seen.contains(QStringLiteral("docid")))
        return refuse(400, QStringLiteral("The document id (docid) is missing."));
    bool ok = false;
    request.docId = docId.toLongLong(&ok);
    if (!isDigits(docId) || !ok || request.docId <= 0)
        return refuse(400, QStringLiteral("The document id must be a positive whole number, not %1.")
                               .arg(quoted(docId)));
    if (hasVersion) {
        const qlonglong number = version.toLongLong(&ok);
        if (!isDigits(version) || !ok || number <= 0 || number > INT_MAX)
            return refuse(400, QStringLiteral("The version must be a positive whole number, not %1.")
                                   .arg(quoted(version)));
        request.version = int(number);
    }
    if (!port.isEmpty() && (!isDigits(port) || port.toInt() > 65535 || port.size() > 5))
        return refuse(400, QStringLiteral("The port must be a number up to 65535, not %1.").arg(quoted(port)));
    return request;
}
