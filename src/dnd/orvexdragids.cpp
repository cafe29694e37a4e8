#include "orvexdragids.h"

#include <QDataStream>

namespace {

bool isNumber(const QString &text)
{
    bool ok = false;
    text.toLongLong(&ok, 10);
    return ok;
}

} // namespace

bool OrvexDragIds::Entry::isValid() const
{
    return isNumber(docId) && (version.isEmpty() || isNumber(version));
}

OrvexDragIds::Entry OrvexDragIds::entry(const QString &text)
{
    Entry entry{text, {}, text};
    if (text.contains(QLatin1Char(';'))) {
        const QStringList parts = text.split(QLatin1Char(';'));
        entry.docId = parts.at(0);
        entry.version = parts.at(1);
        entry.remarkKey = QString(text).replace(QLatin1Char(';'), QLatin1Char('#'));
    }
    return entry;
}

QStringList OrvexDragIds::fromIdFormat(const QByteArray &bytes)
{
    const int nul = bytes.indexOf('\0');
    const QString text = QString::fromUtf8(nul >= 0 ? bytes.left(nul) : bytes).trimmed();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char(';'));
}

QList<qlonglong> OrvexDragIds::fromDocumentStream(const QByteArray &bytes)
{
    QList<qlonglong> docsIds;
    QDataStream in(bytes);
    while (!in.atEnd()) {
        QString docsId;
        in >> docsId;
        if (in.status() != QDataStream::Ok)
            break;
        docsIds.append(docsId.toLongLong(nullptr, 10));
    }
    return docsIds;
}
