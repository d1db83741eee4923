#include "KVSecureBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace kvlinux {

namespace {

size_t pageRounded(size_t size)
{
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

} // namespace

KVSecureBytes::KVSecureBytes(size_t size)
{
    allocate(size);
    m_size = size;
}

KVSecureBytes::KVSecureBytes(const char *data, size_t size)
    : KVSecureBytes(size)
{
    if (size > 0)
        std::memcpy(m_data, data, size);
}

KVSecureBytes::~KVSecureBytes()
{
    release();
}

KVSecureBytes::KVSecureBytes(KVSecureBytes &&other) noexcept
    : m_data(other.m_data), m_size(other.m_size), m_capacity(other.m_capacity), m_locked(other.m_locked)
{
    other.m_data = nullptr;
    other.m_size = other.m_capacity = 0;
    other.m_locked = false;
}

KVSecureBytes &KVSecureBytes::operator=(KVSecureBytes &&other) noexcept
{
    if (this != &other) {
        release();
        m_data = other.m_data;
        m_size = other.m_size;
        m_capacity = other.m_capacity;
        m_locked = other.m_locked;
        other.m_data = nullptr;
        other.m_size = other.m_capacity = 0;
        other.m_locked = false;
    }
    return *this;
}

void KVSecureBytes::allocate(size_t capacity)
{
    if (capacity == 0)
        return;
    // A mapping of our own, rather than the heap, so that no allocator keeps a
    // copy behind our back and the pages can be locked and excluded from dumps.
    const size_t length = pageRounded(capacity);
    void *block = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED)
        throw std::bad_alloc();
    m_locked = mlock(block, length) == 0;
    madvise(block, length, MADV_DONTDUMP);
    m_data = static_cast<uint8_t *>(block);
    m_capacity = length;
}

void KVSecureBytes::release()
{
    if (!m_data)
        return;
    explicit_bzero(m_data, m_capacity);
    munlock(m_data, m_capacity);
    munmap(m_data, m_capacity);
    m_data = nullptr;
    m_size = m_capacity = 0;
    m_locked = false;
}

void KVSecureBytes::append(const char *bytes, size_t count)
{
    if (count == 0)
        return;
    if (m_size + count > m_capacity) {
        KVSecureBytes larger;
        larger.allocate(std::max(m_size + count, m_capacity * 2));
        if (m_size > 0)
            std::memcpy(larger.m_data, m_data, m_size);
        larger.m_size = m_size;
        *this = std::move(larger);
    }
    std::memcpy(m_data + m_size, bytes, count);
    m_size += count;
}

void KVSecureBytes::truncate(size_t size)
{
    if (size >= m_size)
        return;
    explicit_bzero(m_data + size, m_size - size);
    m_size = size;
}

bool KVSecureBytes::readAll(int fd, size_t maxSize, KVSecureBytes &out)
{
    KVSecureBytes result;
    char chunk[512];
    bool ok = true;
    for (;;) {
        const ssize_t n = read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 || result.size() + size_t(n) > maxSize) {
            ok = false;
            break;
        }
        if (n == 0)
            break;
        result.append(chunk, size_t(n));
    }
    explicit_bzero(chunk, sizeof chunk);
    if (ok)
        out = std::move(result);
    return ok;
}

} // namespace kvlinux
