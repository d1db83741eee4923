#include "KVKeyMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <openssl/crypto.h>
#include <openssl/evp.h>

namespace kvlinux {

namespace {

thread_local int scopeDepth = 0;

bool inKeyScope()
{
    // Without the arena, CRYPTO_secure_malloc would come back here.
    return scopeDepth > 0 && CRYPTO_secure_malloc_initialized();
}

void *allocate(size_t size, const char *file, int line)
{
    return inKeyScope() ? CRYPTO_secure_malloc(size, file, line) : std::malloc(size);
}

void *reallocate(void *old, size_t size, const char *file, int line)
{
    if (!old)
        return allocate(size, file, line);
    if (!CRYPTO_secure_allocated(old))
        return std::realloc(old, size);
    // Secure memory stays secure: a new block, then the old one wiped.
    void *block = CRYPTO_secure_malloc(size, file, line);
    if (!block)
        return nullptr;
    std::memcpy(block, old, std::min(size, CRYPTO_secure_actual_size(old)));
    CRYPTO_secure_free(old, file, line);
    return block;
}

void release(void *block, const char *file, int line)
{
    if (block && CRYPTO_secure_allocated(block))
        CRYPTO_secure_free(block, file, line); // wipes it
    else
        std::free(block);
}

} // namespace

bool KVKeyMemory::install(size_t arenaSize)
{
    // 1: made and locked; 2 would mean made but not locked.
    if (CRYPTO_set_mem_functions(allocate, reallocate, release) != 1
        || CRYPTO_secure_malloc_init(arenaSize, 16) != 1)
        return false;
    // The first use of a cipher loads OpenSSL's provider and its tables, far
    // more than the keys need; that happens here, in ordinary memory, so that
    // a Scope later allocates only the contexts themselves.
    for (const char *name : {"AES-128-XTS", "AES-256-XTS"}) {
        EVP_CIPHER *cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
        if (!cipher)
            return false;
        EVP_CIPHER_free(cipher);
    }
    return true;
}

size_t KVKeyMemory::used()
{
    return CRYPTO_secure_used();
}

KVKeyMemory::Scope::Scope()
{
    ++scopeDepth;
}

KVKeyMemory::Scope::~Scope()
{
    --scopeDepth;
}

} // namespace kvlinux
