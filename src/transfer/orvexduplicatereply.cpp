#include "orvexduplicatereply.h"

#include "orvexlog.h"

#include <climits>

namespace {

// A count or number from the reply: decimal digits (blanks around allowed),
// at most limit; anything else, however large, is no number.
bool readNumber(const QString &text, qint64 limit, qint64 *value)
{
    const QString digits = text.trimmed();
    if (digits.isEmpty() || digits.size() > 18)
        return false;
    qint64 number = 0;
    for (const QChar c : digits) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
        number = number * 10 + (c.unicode() - '0');
    }
    if (number > limit)
        return false;
    *value = number;
    return true;
}

bool readInt(const QString &text, int *value)
{
    qint64 number = 0;
    if (!readNumber(text, INT_MAX, &number))
        return false;
    *value = int(number);
    return true;
}

QString shortened(const QString &text)
{
    return text.size() > 40 ? text.left(40) + QStringLiteral("...") : text;
}

} // namespace

bool OrvexDuplicateReply::readOriginal(const QString &line)
{
    const int separator = line.indexOf(QLatin1Char(';'));
    if (separator < 0) {
        m_problems << QStringLiteral("page image line \"%1\" has no key").arg(shortened(line));
        return false;
    }
    const auto decoded = QByteArray::fromBase64Encoding(line.mid(separator + 1).trimmed().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) {
        m_problems << QStringLiteral("page image \"%1\" is not valid Base64").arg(shortened(line.left(separator)));
        return false;
    }
    m_originals.insert(line.left(separator), *decoded);
    return true;
}

bool OrvexDuplicateReply::readDuplicate(const QString &line)
{
    const QStringList fields = line.split(QLatin1Char(';'));
    if (fields.size() != 5)
        return false;
    OrvexDuplicateHit hit;
    hit.docId = fields.at(0).trimmed();
    qint64 id = 0;
    if (!readNumber(hit.docId, Q_INT64_C(999999999999999999), &id) || id <= 0 || !readInt(fields.at(1), &hit.version)
        || !readInt(fields.at(2), &hit.page))
        return false;
    hit.originalKey = fields.at(4);
    m_duplicates << hit;
    return true;
}

OrvexDuplicateReply OrvexDuplicateReply::parse(const QStringList &lines)
{
    OrvexDuplicateReply reply;
    if (lines.isEmpty())
        return reply;
    reply.m_uploadId = lines.at(0);
    if (lines.size() == 1)
        return reply;
    reply.m_reportsDuplicates = true;

    const qint64 following = lines.size() - 2;
    qint64 originalCount = 0;
    const bool countKnown = readNumber(lines.at(1), following, &originalCount);
    if (!countKnown) {
        qint64 announced = 0;
        reply.m_problems << (readNumber(lines.at(1), Q_INT64_C(999999999999999999), &announced)
                                 ? QStringLiteral("%1 page images announced, but only %2 lines follow")
                                       .arg(announced).arg(following)
                                 : QStringLiteral("unreadable number of page images: \"%1\"").arg(shortened(lines.at(1))));
    }
    for (int i = 2; i < lines.size(); ++i) {
        const QString &line = lines.at(i);
        if (countKnown && i < 2 + originalCount) {
            reply.readOriginal(line);
            continue;
        }
        // Without a count to trust, each line is what its shape says: five
        // fields make a duplicate, anything else may be a page image.
        if (!reply.readDuplicate(line) && !(!countKnown && line.count(QLatin1Char(';')) == 1 && reply.readOriginal(line)))
            ++reply.m_skippedLines;
    }
    if (!reply.m_problems.isEmpty())
        orvexWarning() << "DUPLICATES" << "malformed reply:" << reply.m_problems;
    return reply;
}
