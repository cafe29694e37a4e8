#pragma once

#include <QByteArray>
#include <QString>

// One request to the drag-and-drop document server, checked before anything
// touches the archive. The served form is
//
//   GET /openDoc/<file name>?openmode=4&docid=<id>[&version=<n>]
//       [&archive=..][&host=..][&port=..][&profileId=..]
//
// The document is chosen by docid alone; the file name is informational (it
// only names the delivered file) and is never used to find a file. Requests
// that try path tricks ("." or ".." segments, encoded slashes or backslashes,
// control characters, broken percent escapes), carry unknown or repeated
// parameters or malformed values are refused with a status and a reason.
// archive, host and profileId describe where the drag came from; the stand-in
// serves one archive and only checks that they are well-formed parameters.
struct OrvexDocRequest
{
    int status = 0;       // 0: a valid request; otherwise the HTTP status to answer
    QString error;        // the reason for the refusal, for the answer's body
    QString name;         // the decoded file name from the path; may be empty
    qlonglong docId = 0;  // > 0
    int version = 0;      // 0: the current version

    bool isValid() const { return status == 0; }

    // method and target as they came in the request line (target still
    // percent-encoded).
    static OrvexDocRequest parse(const QByteArray &method, const QByteArray &target);
};
