#include "KVKeyringSecret.h"

#include <linux/keyctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr char keyType[] = "user";

} // namespace

KVKeyringSecret::KVKeyringSecret(QString description)
    : m_description(description.toUtf8())
{
}

bool KVKeyringSecret::store(const KVSecureBytes &secret) const
{
    const long id = syscall(SYS_add_key, keyType, m_description.constData(), secret.data(), secret.size(),
                            KEY_SPEC_USER_KEYRING);
    return id >= 0;
}

long KVKeyringSecret::find() const
{
    return syscall(SYS_keyctl, KEYCTL_SEARCH, KEY_SPEC_USER_KEYRING, keyType, m_description.constData(), 0);
}

std::optional<KVSecureBytes> KVKeyringSecret::read() const
{
    const long id = find();
    if (id < 0)
        return std::nullopt;
    const long size = syscall(SYS_keyctl, KEYCTL_READ, id, nullptr, 0);
    if (size < 0)
        return std::nullopt;
    KVSecureBytes secret{size_t(size)};
    if (syscall(SYS_keyctl, KEYCTL_READ, id, secret.data(), secret.size()) != size)
        return std::nullopt;
    return secret;
}

void KVKeyringSecret::remove() const
{
    if (const long id = find(); id >= 0)
        syscall(SYS_keyctl, KEYCTL_INVALIDATE, id);
}

} // namespace kvlinux
