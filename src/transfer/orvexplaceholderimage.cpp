#include "orvexplaceholderimage.h"

#include <QCryptographicHash>
#include <QMutex>
#include <QMutexLocker>
#include <QSet>

namespace {

const char kServerPlaceholderMd5[] = "dbb46ef7cc9e25fc2670162853d97f6c";

struct Registry
{
    QMutex mutex;
    QSet<QByteArray> extra;
};

Registry &registry()
{
    static Registry r;
    return r;
}

bool isMd5Hex(const QByteArray &text)
{
    if (text.size() != 32)
        return false;
    for (const char c : text) {
        const bool digit = c >= '0' && c <= '9';
        const bool letter = (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (!digit && !letter)
            return false;
    }
    return true;
}

} // namespace

QByteArray OrvexPlaceholderImage::serverFingerprint()
{
    return QByteArray(kServerPlaceholderMd5);
}

QByteArray OrvexPlaceholderImage::fingerprint(const QByteArray &imageBytes)
{
    return QCryptographicHash::hash(imageBytes, QCryptographicHash::Md5).toHex();
}

bool OrvexPlaceholderImage::isPlaceholderFingerprint(const QByteArray &md5Hex)
{
    const QByteArray digest = md5Hex.toLower();
    if (digest == kServerPlaceholderMd5)
        return true;
    Registry &r = registry();
    QMutexLocker lock(&r.mutex);
    return r.extra.contains(digest);
}

bool OrvexPlaceholderImage::isPlaceholder(const QByteArray &imageBytes)
{
    // An empty answer is a missing image, not the placeholder (whose digest
    // could be registered by mistake as the digest of nothing).
    if (imageBytes.isEmpty())
        return false;
    return isPlaceholderFingerprint(fingerprint(imageBytes));
}

bool OrvexPlaceholderImage::addFingerprint(const QByteArray &md5Hex)
{
    const QByteArray digest = md5Hex.trimmed().toLower();
    if (!isMd5Hex(digest))
        return false;
    Registry &r = registry();
    QMutexLocker lock(&r.mutex);
    r.extra.insert(digest);
    return true;
}

void OrvexPlaceholderImage::resetFingerprints()
{
    Registry &r = registry();
    QMutexLocker lock(&r.mutex);
    r.extra.clear();
}
