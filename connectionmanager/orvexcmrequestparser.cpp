#include "orvexcmrequestparser.h"

#include <array>

namespace {

const QByteArray kDndPort = QByteArrayLiteral("GETDNDPORT");
const QByteArray kProfiles = QByteArrayLiteral("GETPROFILES");
const QByteArray kUseProfile = QByteArrayLiteral("USEPROFILE#");
const QByteArray kReload = QByteArrayLiteral("RELOADPROFILE#");
const QByteArray kOpenChat = QByteArrayLiteral("OPENCHAT");
const QChar kChatSeparator(0xFEFF);

bool isNumber(const QString &text)
{
    bool ok = false;
    text.toLongLong(&ok, 10);
    return ok;
}

// Whether bytes could still grow into one of the requests.
bool isPrefixOfARequest(const QByteArray &bytes)
{
    const std::array<const QByteArray *, 5> starts = {&kDndPort, &kProfiles, &kUseProfile,
                                                      &kReload, &kOpenChat};
    for (const QByteArray *start : starts) {
        if (start->startsWith(bytes))
            return true;
    }
    return false;
}

OrvexCmRequest parseLine(const QByteArray &line)
{
    OrvexCmRequest request;
    request.raw = line;
    if (line == kProfiles) {
        request.kind = OrvexCmRequest::Profiles;
    } else if (line.startsWith(kUseProfile)) {
        // pid#id#path# or pid#id#path; the path comes last, so it may hold "#".
        const QString rest = QString::fromUtf8(line.mid(kUseProfile.size()));
        const QString processId = rest.section(QLatin1Char('#'), 0, 0);
        const QString profileId = rest.section(QLatin1Char('#'), 1, 1);
        QString path = rest.section(QLatin1Char('#'), 2);
        request.trailingHash = path.endsWith(QLatin1Char('#'));
        if (request.trailingHash)
            path.chop(1);
        if (isNumber(processId) && isNumber(profileId) && rest.count(QLatin1Char('#')) >= 2) {
            request.kind = OrvexCmRequest::UseProfile;
            request.args = QStringList{processId, profileId, path};
        }
    } else if (line.startsWith(kReload)) {
        const QString profileId = QString::fromUtf8(line.mid(kReload.size()));
        if (isNumber(profileId)) {
            request.kind = OrvexCmRequest::ReloadProfile;
            request.args = QStringList{profileId};
        }
    }
    return request;
}

} // namespace

void OrvexCmRequestParser::append(const QByteArray &bytes)
{
    m_buffer.append(bytes);
}

void OrvexCmRequestParser::skipLineEnds()
{
    int count = 0;
    while (count < m_buffer.size() && (m_buffer.at(count) == '\r' || m_buffer.at(count) == '\n'))
        ++count;
    m_buffer.remove(0, count);
}

bool OrvexCmRequestParser::takeInvalid(OrvexCmRequest &request)
{
    request = OrvexCmRequest();
    request.raw = m_buffer;
    m_buffer.clear();
    return true;
}

bool OrvexCmRequestParser::next(OrvexCmRequest &request)
{
    skipLineEnds();
    if (m_buffer.isEmpty())
        return false;

    if (m_buffer.startsWith(kDndPort)) {
        request = OrvexCmRequest();
        request.kind = OrvexCmRequest::DndPort;
        request.raw = kDndPort;
        m_buffer.remove(0, kDndPort.size());
        return true;
    }
    if (m_buffer.startsWith(kOpenChat))
        return m_buffer.size() > kMaxRequestSize && takeInvalid(request);
    if (m_buffer.startsWith(kProfiles) || m_buffer.startsWith(kUseProfile)
        || m_buffer.startsWith(kReload)) {
        const int end = m_buffer.indexOf('\n');
        if (end < 0)
            return m_buffer.size() > kMaxRequestSize && takeInvalid(request);
        QByteArray line = m_buffer.left(end);
        m_buffer.remove(0, end + 1);
        if (line.size() > kMaxRequestSize) {
            // Refused even when its end came in the same piece as its start.
            request = OrvexCmRequest();
            request.raw = line.left(kMaxRequestSize);
            return true;
        }
        if (line.endsWith('\r'))
            line.chop(1);
        request = parseLine(line);
        return true;
    }
    if (isPrefixOfARequest(m_buffer))
        return false;
    return takeInvalid(request);
}

bool OrvexCmRequestParser::hasUnterminated() const
{
    return m_buffer.startsWith(kOpenChat);
}

bool OrvexCmRequestParser::takeUnterminated(OrvexCmRequest &request)
{
    if (!hasUnterminated())
        return false;
    request = OrvexCmRequest();
    request.raw = m_buffer;
    const QStringList parts = QString::fromUtf8(m_buffer).split(kChatSeparator);
    m_buffer.clear();
    if (parts.size() < 4 || parts.at(0) != QString::fromLatin1(kOpenChat) || !isNumber(parts.at(1)))
        return true;
    request.kind = OrvexCmRequest::OpenChat;
    // Wire order: id, b, a. The last text takes any separator it contains.
    request.args = QStringList{parts.at(1), parts.mid(3).join(kChatSeparator), parts.at(2)};
    return true;
}
