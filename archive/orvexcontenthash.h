#pragma once

#include "orvexarchiveglobal.h"

#include <QString>

#include <memory>

// SHA-256 of a document's content, as the archive stores it for the duplicate
// check. OpenSSL's implementation uses the processor's SHA instructions and
// keeps up with a disk, several times faster than QCryptographicHash.
class ORVEXARCHIVE_EXPORT OrvexContentHash
{
public:
    OrvexContentHash();
    ~OrvexContentHash();
    OrvexContentHash(const OrvexContentHash &) = delete;
    OrvexContentHash &operator=(const OrvexContentHash &) = delete;

    void addData(const char *data, qint64 length);
    QString hex(); // lower-case hex digest; ends the hash

    // The digest of a whole file; empty + error when it cannot be read.
    static QString ofFile(const QString &path, QString &error);

private:
    struct Context;
    std::unique_ptr<Context> m_context;
};
