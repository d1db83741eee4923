#include "KVSectorCipher.h"

#include "KVKeyMemory.h"

#include <cstring>
#include <openssl/evp.h>

namespace kvlinux {

KVSectorCipher::KVSectorCipher(const uint8_t *key, size_t keySize, size_t sectorSize)
    : m_sectorSize(sectorSize)
{
    const EVP_CIPHER *cipher = keySize == 64 ? EVP_aes_256_xts()
                             : keySize == 32 ? EVP_aes_128_xts()
                                             : nullptr;
    if (!cipher || sectorSize == 0 || sectorSize % ivUnit != 0)
        return;
    const KVKeyMemory::Scope keyMaterial;
    m_encrypt = EVP_CIPHER_CTX_new();
    m_decrypt = EVP_CIPHER_CTX_new();
    m_valid = m_encrypt && m_decrypt
        && EVP_CipherInit_ex2(m_encrypt, cipher, key, nullptr, 1, nullptr) == 1
        && EVP_CipherInit_ex2(m_decrypt, cipher, key, nullptr, 0, nullptr) == 1;
}

std::unique_ptr<KVSectorCipher> KVSectorCipher::clone() const
{
    std::unique_ptr<KVSectorCipher> copy(new KVSectorCipher(m_sectorSize));
    if (!m_valid)
        return copy;
    const KVKeyMemory::Scope keyMaterial;
    copy->m_encrypt = EVP_CIPHER_CTX_new();
    copy->m_decrypt = EVP_CIPHER_CTX_new();
    copy->m_valid = copy->m_encrypt && copy->m_decrypt
        && EVP_CIPHER_CTX_copy(copy->m_encrypt, m_encrypt) == 1
        && EVP_CIPHER_CTX_copy(copy->m_decrypt, m_decrypt) == 1;
    return copy;
}

KVSectorCipher::~KVSectorCipher()
{
    // Freeing a context cleanses its key schedule.
    EVP_CIPHER_CTX_free(m_encrypt);
    EVP_CIPHER_CTX_free(m_decrypt);
}

bool KVSectorCipher::encrypt(const uint8_t *in, uint8_t *out, size_t length, uint64_t payloadOffset)
{
    return run(m_encrypt, in, out, length, payloadOffset);
}

bool KVSectorCipher::decrypt(const uint8_t *in, uint8_t *out, size_t length, uint64_t payloadOffset)
{
    return run(m_decrypt, in, out, length, payloadOffset);
}

bool KVSectorCipher::run(EVP_CIPHER_CTX *ctx, const uint8_t *in, uint8_t *out, size_t length,
                         uint64_t payloadOffset)
{
    if (!m_valid || length % m_sectorSize != 0 || payloadOffset % m_sectorSize != 0)
        return false;
    uint8_t iv[16] = {};
    for (size_t done = 0; done < length; done += m_sectorSize) {
        uint64_t unit = (payloadOffset + done) / ivUnit;
        for (int i = 0; i < 8; ++i, unit >>= 8)
            iv[i] = uint8_t(unit & 0xff);
        int produced = 0;
        if (EVP_CipherInit_ex2(ctx, nullptr, nullptr, iv, -1, nullptr) != 1
            || EVP_CipherUpdate(ctx, out + done, &produced, in + done, int(m_sectorSize)) != 1
            || size_t(produced) != m_sectorSize)
            return false;
    }
    return true;
}

} // namespace kvlinux
