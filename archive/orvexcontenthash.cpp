#include "orvexcontenthash.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>

#include <openssl/evp.h>

struct OrvexContentHash::Context
{
    EVP_MD_CTX *md = EVP_MD_CTX_new();
    ~Context() { EVP_MD_CTX_free(md); }
};

OrvexContentHash::OrvexContentHash()
    : m_context(new Context)
{
    EVP_DigestInit_ex(m_context->md, EVP_sha256(), nullptr);
}

OrvexContentHash::~OrvexContentHash() = default;

void OrvexContentHash::addData(const char *data, qint64 length)
{
    if (length > 0)
        EVP_DigestUpdate(m_context->md, data, size_t(length));
}

QString OrvexContentHash::hex()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(m_context->md, digest, &length);
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char *>(digest), int(length)).toHex());
}

QString OrvexContentHash::ofFile(const QString &path, QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        error = QCoreApplication::translate("OrvexContentHash", "Cannot read %1: %2").arg(path, file.errorString());
        return {};
    }
    OrvexContentHash hash;
    QByteArray buffer(1024 * 1024, Qt::Uninitialized);
    qint64 read = 0;
    while ((read = file.read(buffer.data(), buffer.size())) > 0)
        hash.addData(buffer.constData(), read);
    if (read < 0) {
        error = QCoreApplication::translate("OrvexContentHash", "Cannot read %1: %2").arg(path, file.errorString());
        return {};
    }
    return hash.hex();
}
