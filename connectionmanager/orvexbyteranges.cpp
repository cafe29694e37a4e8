#include "orvexbyteranges.h"

#include <algorithm>

namespace {

// Decimal digits only, short enough never to overflow.
bool readNumber(const QByteArray &text, qint64 *value)
{
    if (text.isEmpty() || text.size() > 18)
        return false;
    qint64 number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return false;
        number = number * 10 + (c - '0');
    }
    *value = number;
    return true;
}

} // namespace

OrvexByteRanges::Outcome OrvexByteRanges::parse(const QByteArray &header, qint64 size, QList<OrvexByteRange> *ranges)
{
    ranges->clear();
    const QByteArray trimmed = header.trimmed();
    if (trimmed.isEmpty())
        return Whole;
    const int equals = trimmed.indexOf('=');
    if (equals < 0 || trimmed.left(equals).trimmed().toLower() != "bytes")
        return Whole; // a unit this server does not know is ignored

    QList<OrvexByteRange> asked;
    int rangeCount = 0;
    for (const QByteArray &piece : trimmed.mid(equals + 1).split(',')) {
        const QByteArray rangeText = piece.trimmed();
        if (rangeText.isEmpty())
            continue;
        if (++rangeCount > MaxRanges)
            return Unsatisfiable;
        const int dash = rangeText.indexOf('-');
        if (dash < 0)
            return Unsatisfiable;
        const QByteArray firstText = rangeText.left(dash);
        const QByteArray lastText = rangeText.mid(dash + 1);
        OrvexByteRange range;
        if (firstText.isEmpty()) {
            // "-n": the last n bytes.
            qint64 suffix = 0;
            if (!readNumber(lastText, &suffix))
                return Unsatisfiable;
            if (suffix == 0 || size == 0)
                continue;
            range.first = size - std::min(suffix, size);
            range.last = size - 1;
        } else {
            if (!readNumber(firstText, &range.first))
                return Unsatisfiable;
            range.last = size - 1;
            if (!lastText.isEmpty()) {
                if (!readNumber(lastText, &range.last) || range.last < range.first)
                    return Unsatisfiable;
            }
            if (range.first >= size)
                continue; // this one asks for nothing the file has
            range.last = std::min(range.last, size - 1);
        }
        asked << range;
    }
    if (asked.isEmpty())
        return Unsatisfiable;

    QList<OrvexByteRange> sorted = asked;
    std::sort(sorted.begin(), sorted.end(),
              [](const OrvexByteRange &a, const OrvexByteRange &b) { return a.first < b.first; });
    for (int i = 1; i < sorted.size(); ++i) {
        if (sorted.at(i).first <= sorted.at(i - 1).last)
            return Unsatisfiable;
    }
    *ranges = asked;
    return Partial;
}
