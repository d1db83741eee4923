#include "KVSecret.h"

#include <cstring>
#include <string.h>

namespace {
void wipeBytes(QByteArray &bytes)
{
    // data() on a buffer that nobody shares does not detach, so this clears the
    // very memory that held the password.
    if (!bytes.isEmpty())
        explicit_bzero(bytes.data(), size_t(bytes.size()));
    bytes.clear();
}
} // namespace

KVSecret::KVSecret(const QString &password)
    : m_bytes(password.toUtf8())
{
}

KVSecret::~KVSecret()
{
    wipe();
}

KVSecret::KVSecret(KVSecret &&other) noexcept
    : m_bytes(std::move(other.m_bytes))
{
    other.m_bytes.clear();
}

KVSecret &KVSecret::operator=(KVSecret &&other) noexcept
{
    if (this != &other) {
        wipe();
        m_bytes = std::move(other.m_bytes);
        other.m_bytes.clear();
    }
    return *this;
}

KVSecret KVSecret::joined(const QString &first, char separator, const QString &second)
{
    QByteArray a = first.toUtf8();
    QByteArray b = second.toUtf8();
    KVSecret secret;
    secret.m_bytes.resize(a.size() + 1 + b.size());
    char *out = secret.m_bytes.data();
    std::memcpy(out, a.constData(), size_t(a.size()));
    out[a.size()] = separator;
    std::memcpy(out + a.size() + 1, b.constData(), size_t(b.size()));
    wipeBytes(a);
    wipeBytes(b);
    return secret;
}

void KVSecret::wipe()
{
    wipeBytes(m_bytes);
}
