#pragma once

#include <QByteArray>
#include <QList>

// One range of bytes of a file, both ends included.
struct OrvexByteRange
{
    qint64 first = 0;
    qint64 last = 0;

    qint64 length() const { return last - first + 1; }
    bool operator==(const OrvexByteRange &other) const { return first == other.first && last == other.last; }
};

// The "Range" header of a request for a file of a known size. Ranges are
// answered as asked or refused as a whole: a request may ask for a few
// ranges that do not overlap, so that no client can make the server send
// the file many times over in one answer.
class OrvexByteRanges
{
public:
    enum Outcome {
        Whole,        // no Range header, or one in another unit: the whole file
        Partial,      // the ranges, in the order asked, clipped to the file
        Unsatisfiable // answer 416
    };

    static constexpr int MaxRanges = 8;

    static Outcome parse(const QByteArray &header, qint64 size, QList<OrvexByteRange> *ranges);
};
