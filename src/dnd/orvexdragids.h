#pragma once

#include "orvexworkbenchglobal.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// The readers of document drag data, which may come from another process or
// another program: whatever the bytes, they give lists of texts and numbers
// and never fail in any other way.
class ORVEXWORKBENCH_EXPORT OrvexDragIds
{
public:
    // A dragged document entry: "4711", or "4711;3" for a chosen version
    // (further fields are ignored).
    struct Entry
    {
        QString docId;
        QString version;   // empty: the current one
        QString remarkKey; // the entry with every ";" as "#"

        bool isValid() const; // id and version (if any) are decimal numbers
    };

    static Entry entry(const QString &text);
    // One of the id formats ("x-application-orvex-docids", "...-docsids"):
    // UTF-8 text, ";"-separated, ending at the first NUL. Empty parts stay, so
    // that one missing id cannot shift the pairs after it.
    static QStringList fromIdFormat(const QByteArray &bytes);
    // The docs-id stream of this process's drags: texts in Qt's stream format,
    // each taken as a decimal number (0 when it is none); a cut-off last item
    // is no id.
    static QList<qlonglong> fromDocumentStream(const QByteArray &bytes);
};
