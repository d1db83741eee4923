#pragma once

struct crypt_device;

namespace kvlinux {

// How the keyslots we write derive their keys from a password. Real images
// use libcryptsetup's defaults (Argon2id, benchmarked to about two seconds
// and up to a large share of memory). The test build of the tools uses a
// cheap PBKDF2 so that the suite stays fast; the application never runs it.
class KVKeyDerivation
{
public:
    static KVKeyDerivation libraryDefault() { return KVKeyDerivation(false); }
    static KVKeyDerivation cheapForTests() { return KVKeyDerivation(true); }

    // Sets the parameters for the next keyslot on cd; 0 or -errno.
    int applyTo(crypt_device *cd) const;

private:
    explicit KVKeyDerivation(bool cheap) : m_cheap(cheap) {}

    bool m_cheap;
};

} // namespace kvlinux
