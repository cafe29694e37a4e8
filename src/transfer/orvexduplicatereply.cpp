#include "orvexduplicatereply.h"

#include "orvexlog.h"

namespace {

bool readCount(const QString &text, int *value)
{
    bool ok = false;
    const int number = text.trimmed().toInt(&ok);
    if (!ok || number < 0)
        return false;
    *value = number;
    return true;
}

} // namespace

OrvexDuplicateReply OrvexDuplicateReply::parse(const QStringList &lines)
{
    OrvexDuplicateReply reply;
    if (lines.isEmpty())
        return reply;
    reply.m_uploadId = lines.at(0);
    if (lines.size() == 1)
        return reply;
    reply.m_reportsDuplicates = true;

    int originalCount = 0;
    if (!readCount(lines.at(1), &originalCount)) {
        // Without the count the originals cannot be told from the duplicates;
        // the original lines (two fields) fall out as duplicate lines below.
        reply.m_problems << QStringLiteral("unreadable number of page images: \"%1\"").arg(lines.at(1));
    }
    int next = 2;
    const int lastOriginal = qMin(lines.size(), next + originalCount);
    if (next + originalCount > lines.size()) {
        reply.m_problems << QStringLiteral("%1 page images announced, %2 sent")
                                .arg(originalCount).arg(lines.size() - next);
    }
    for (; next < lastOriginal; ++next) {
        const QString &line = lines.at(next);
        const int separator = line.indexOf(QLatin1Char(';'));
        if (separator < 0) {
            reply.m_problems << QStringLiteral("page image line %1 has no key").arg(next);
            continue;
        }
        const auto decoded = QByteArray::fromBase64Encoding(line.mid(separator + 1).trimmed().toLatin1(),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded) {
            reply.m_problems << QStringLiteral("page image \"%1\" is not valid Base64").arg(line.left(separator));
            continue;
        }
        reply.m_originals.insert(line.left(separator), *decoded);
    }

    for (; next < lines.size(); ++next) {
        const QStringList fields = lines.at(next).split(QLatin1Char(';'));
        OrvexDuplicateHit hit;
        bool idOk = false;
        bool versionOk = false;
        bool pageOk = false;
        if (fields.size() == 5) {
            hit.docId = fields.at(0).trimmed();
            const qlonglong id = hit.docId.toLongLong(&idOk);
            idOk = idOk && id > 0;
            versionOk = readCount(fields.at(1), &hit.version);
            pageOk = readCount(fields.at(2), &hit.page);
            hit.originalKey = fields.at(4);
        }
        if (!idOk || !versionOk || !pageOk) {
            ++reply.m_skippedLines;
            continue;
        }
        reply.m_duplicates << hit;
    }
    if (!reply.m_problems.isEmpty())
        orvexWarning() << "DUPLICATES" << "malformed reply:" << reply.m_problems;
    return reply;
}
