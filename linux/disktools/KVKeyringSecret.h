#pragma once

#include "KVSecureBytes.h"

#include <QString>

#include <optional>

namespace kvlinux {

// A secret kept in the kernel's keyring of the user (never in a file, argv or
// the environment), so that a conversion killed half way can be resumed by
// the next run of the programs without asking for the passphrase again. It
// lives in kernel memory only: a reboot forgets it.
class KVKeyringSecret
{
public:
    explicit KVKeyringSecret(QString description);

    bool store(const KVSecureBytes &secret) const;
    std::optional<KVSecureBytes> read() const;
    void remove() const;

private:
    long find() const;

    QByteArray m_description;
};

} // namespace kvlinux
