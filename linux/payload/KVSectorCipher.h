#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

typedef struct evp_cipher_ctx_st EVP_CIPHER_CTX;

namespace kvlinux {

// AES-XTS over the sectors of a LUKS2 payload, byte for byte what dm-crypt
// does for "aes-xts-plain64": each sector is one XTS data unit whose tweak is
// the sector's position counted in 512-byte units (also for 4096-byte
// sectors), as a little-endian 64-bit number followed by zeros.
class KVSectorCipher
{
public:
    // key: 32 bytes for AES-128-XTS, 64 bytes for AES-256-XTS. The cipher keeps
    // its own key schedule; the caller keeps and wipes its key buffer.
    KVSectorCipher(const uint8_t *key, size_t keySize, size_t sectorSize);
    ~KVSectorCipher();
    KVSectorCipher(const KVSectorCipher &) = delete;
    KVSectorCipher &operator=(const KVSectorCipher &) = delete;

    // A cipher with the same key and contexts of its own: a context serves one
    // thread at a time, and the key need not be kept to make more.
    std::unique_ptr<KVSectorCipher> clone() const;

    bool isValid() const { return m_valid; }
    size_t sectorSize() const { return m_sectorSize; }

    // Both work on whole sectors; payloadOffset is the byte offset of data[0]
    // within the payload and must be sector aligned, as must length.
    // In and out may be the same buffer.
    bool encrypt(const uint8_t *in, uint8_t *out, size_t length, uint64_t payloadOffset);
    bool decrypt(const uint8_t *in, uint8_t *out, size_t length, uint64_t payloadOffset);

    static constexpr uint64_t ivUnit = 512;

private:
    explicit KVSectorCipher(size_t sectorSize) : m_sectorSize(sectorSize) {}
    bool run(EVP_CIPHER_CTX *ctx, const uint8_t *in, uint8_t *out, size_t length,
             uint64_t payloadOffset);

    EVP_CIPHER_CTX *m_encrypt = nullptr;
    EVP_CIPHER_CTX *m_decrypt = nullptr;
    size_t m_sectorSize;
    bool m_valid = false;
};

} // namespace kvlinux
