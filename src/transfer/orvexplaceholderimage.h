#pragma once

#include "orvexworkbenchglobal.h"

#include <QByteArray>

// Recognises the placeholder image an archive sends instead of a page the user
// may not see. The image is known by the MD5 digest of its bytes; the archive
// server's placeholder is always known, further archives (for example the
// embedded one) register their own with addFingerprint().
//
// The registry is shared by the whole process and safe to use from any thread.
class ORVEXWORKBENCH_EXPORT OrvexPlaceholderImage
{
public:
    // Lower-case hexadecimal MD5 digest of the archive server's placeholder.
    static QByteArray serverFingerprint();

    // Lower-case hexadecimal MD5 digest of the bytes.
    static QByteArray fingerprint(const QByteArray &imageBytes);

    // True when the digest (any case) names a known placeholder.
    static bool isPlaceholderFingerprint(const QByteArray &md5Hex);
    // True when the bytes are a known placeholder image. Empty bytes are not.
    static bool isPlaceholder(const QByteArray &imageBytes);

    // Registers one more placeholder by its MD5 digest in hexadecimal. Returns
    // false, and registers nothing, when the text is not 32 hexadecimal digits.
    static bool addFingerprint(const QByteArray &md5Hex);
    // Forgets every registered digest except the server's one.
    static void resetFingerprints();
};
