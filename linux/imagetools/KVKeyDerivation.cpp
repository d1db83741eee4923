#include "KVKeyDerivation.h"

#include <libcryptsetup.h>

namespace kvlinux {

int KVKeyDerivation::applyTo(crypt_device *cd) const
{
    if (!m_cheap)
        return crypt_set_pbkdf_type(cd, crypt_get_pbkdf_default(CRYPT_LUKS2));
    static const crypt_pbkdf_type cheap = {
        CRYPT_KDF_PBKDF2, "sha256", 0, 1000, 0, 0, CRYPT_PBKDF_NO_BENCHMARK,
    };
    return crypt_set_pbkdf_type(cd, &cheap);
}

} // namespace kvlinux
