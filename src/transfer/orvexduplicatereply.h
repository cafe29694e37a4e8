#pragma once

#include "orvexworkbenchglobal.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// One document the archive found with the content of an uploaded page.
struct OrvexDuplicateHit
{
    QString docId;        // as received, checked to be a number
    int version = 0;
    int page = 0;         // counted from 0
    QString originalKey;  // key of the uploaded page image it matches
};

// The archive's answer to a duplicate check, read from the front:
//   upload id (empty: the upload failed)
//   N, the number of the uploaded file's page images
//   N lines "key;Base64 image"
//   one line per duplicate "docId;version;page;unused;key"
// It is read leniently: duplicate lines without exactly five fields, or with
// a document id, version or page that is not a number, are skipped. A count N
// that is no number or more than the lines that follow is reported, and the
// lines are then told apart by their shape, so that the readable duplicates
// are still found. Anything else that does not fit is described in
// problems(); what could be read is kept. Numbers are checked, never wrapped.
class ORVEXWORKBENCH_EXPORT OrvexDuplicateReply
{
public:
    static OrvexDuplicateReply parse(const QStringList &lines);

    QString uploadId() const { return m_uploadId; }
    // True when the archive sent more than the upload id: it found duplicates,
    // even if none of their lines could be read.
    bool reportsDuplicates() const { return m_reportsDuplicates; }
    QMap<QString, QByteArray> originals() const { return m_originals; }
    QList<OrvexDuplicateHit> duplicates() const { return m_duplicates; }
    int skippedLines() const { return m_skippedLines; }
    QStringList problems() const { return m_problems; }

private:
    bool readOriginal(const QString &line);
    bool readDuplicate(const QString &line);

    QString m_uploadId;
    bool m_reportsDuplicates = false;
    QMap<QString, QByteArray> m_originals;
    QList<OrvexDuplicateHit> m_duplicates;
    int m_skippedLines = 0;
    QStringList m_problems;
};
