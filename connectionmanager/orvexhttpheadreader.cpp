#include "orvexhttpheadreader.h"

#include <cctype>
#include <cstring>

namespace {

// Empty lines a client may send before its request line.
constexpr int kMaxEmptyLinesBefore = 2;

bool isTokenChar(char c)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    return std::strchr("!#$%&'*+-.^_`|~", c) != nullptr && c != '\0';
}

bool isToken(const QByteArray &text)
{
    if (text.isEmpty())
        return false;
    for (const char c : text) {
        if (!isTokenChar(c))
            return false;
    }
    return true;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

} // namespace

QByteArray OrvexHttpHead::field(const QByteArray &lowerCaseName) const
{
    for (const auto &entry : fields) {
        if (entry.first == lowerCaseName)
            return entry.second;
    }
    return {};
}

int OrvexHttpHead::fieldCount(const QByteArray &lowerCaseName) const
{
    int count = 0;
    for (const auto &entry : fields)
        count += entry.first == lowerCaseName ? 1 : 0;
    return count;
}

OrvexHttpHeadReader::State OrvexHttpHeadReader::fail(int status, const QString &reason)
{
    m_state = Failed;
    m_errorStatus = status;
    m_error = reason;
    m_line.clear();
    return m_state;
}

OrvexHttpHeadReader::State OrvexHttpHeadReader::feed(const char *data, qsizetype size)
{
    qsizetype offset = 0;
    while (m_state == Reading && offset < size) {
        const char *start = data + offset;
        const auto *end = static_cast<const char *>(std::memchr(start, '\n', size_t(size - offset)));
        const qsizetype taken = end ? qsizetype(end - start) + 1 : size - offset;
        m_headSize += taken;
        if (m_headSize > MaxHeadSize)
            return fail(431, QStringLiteral("The request head is longer than %1 bytes.").arg(MaxHeadSize));
        const int lineLimit = m_haveRequestLine ? MaxFieldLine : MaxRequestLine;
        // The line end ("\r\n") does not count against the limit.
        const qsizetype content = end ? taken - 1 : taken;
        if (m_line.size() + content > lineLimit + 1) {
            return m_haveRequestLine
                ? fail(431, QStringLiteral("A header line is longer than %1 bytes.").arg(MaxFieldLine))
                : fail(414, QStringLiteral("The request line is longer than %1 bytes.").arg(MaxRequestLine));
        }
        m_line.append(start, int(content));
        offset += taken;
        if (!end)
            break;
        QByteArray line;
        line.swap(m_line);
        if (line.endsWith('\r'))
            line.chop(1);
        if (line.size() > lineLimit) {
            return m_haveRequestLine
                ? fail(431, QStringLiteral("A header line is longer than %1 bytes.").arg(MaxFieldLine))
                : fail(414, QStringLiteral("The request line is longer than %1 bytes.").arg(MaxRequestLine));
        }
        takeLine(line);
    }
    return m_state;
}

OrvexHttpHeadReader::State OrvexHttpHeadReader::takeLine(const QByteArray &line)
{
    if (!m_haveRequestLine) {
        if (line.isEmpty()) {
            return ++m_emptyLinesBefore > kMaxEmptyLinesBefore
                ? fail(400, QStringLiteral("The request line is missing."))
                : m_state;
        }
        return takeRequestLine(line);
    }
    if (line.isEmpty()) {
        m_state = Complete;
        return m_state;
    }
    return takeField(line);
}

OrvexHttpHeadReader::State OrvexHttpHeadReader::takeRequestLine(const QByteArray &line)
{
    const QList<QByteArray> parts = line.split(' ');
    if (parts.size() != 3 || !isToken(parts.at(0)) || parts.at(1).isEmpty())
        return fail(400, QStringLiteral("The request line is not \"method target version\"."));
    for (const char c : parts.at(1)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte >= 0x7f)
            return fail(400, QStringLiteral("The request target holds characters that must be percent-encoded."));
    }
    const QByteArray &version = parts.at(2);
    if (version != "HTTP/1.1" && version != "HTTP/1.0") {
        const bool isHttp = version.size() == 8 && version.startsWith("HTTP/") && version.at(6) == '.'
            && std::isdigit(static_cast<unsigned char>(version.at(5)))
            && std::isdigit(static_cast<unsigned char>(version.at(7)));
        return isHttp ? fail(505, QStringLiteral("Only HTTP/1.0 and HTTP/1.1 are served."))
                      : fail(400, QStringLiteral("The request line does not end in an HTTP version."));
    }
    m_head.method = parts.at(0);
    m_head.target = parts.at(1);
    m_head.version = version;
    m_haveRequestLine = true;
    return m_state;
}

OrvexHttpHeadReader::State OrvexHttpHeadReader::takeField(const QByteArray &line)
{
    if (isBlank(line.at(0)))
        return fail(400, QStringLiteral("Header lines folded over several lines are not accepted."));
    const int colon = line.indexOf(':');
    const QByteArray name = colon < 0 ? QByteArray() : line.left(colon);
    if (!isToken(name))
        return fail(400, QStringLiteral("A header line is not \"name: value\"."));
    if (m_head.fields.size() >= MaxFields)
        return fail(431, QStringLiteral("The request has more than %1 header lines.").arg(MaxFields));
    int from = colon + 1;
    int to = line.size();
    while (from < to && isBlank(line.at(from)))
        ++from;
    while (to > from && isBlank(line.at(to - 1)))
        --to;
    const QByteArray value = line.mid(from, to - from);
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && c != '\t') || byte == 0x7f)
            return fail(400, QStringLiteral("A header value holds control characters."));
    }
    m_head.fields.append({name.toLower(), value});
    return m_state;
}
