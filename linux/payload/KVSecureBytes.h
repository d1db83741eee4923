#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kvlinux {

// A byte buffer for passwords and volume keys. Its pages are locked into RAM
// (where the lock limit allows: isLocked() tells) and kept out of core dumps,
// and every byte is wiped before the memory is given back.
// It only moves, it never copies, so a secret exists in one place at a time.
class KVSecureBytes
{
public:
    KVSecureBytes() = default;
    explicit KVSecureBytes(size_t size);
    KVSecureBytes(const char *data, size_t size);
    ~KVSecureBytes();

    KVSecureBytes(KVSecureBytes &&other) noexcept;
    KVSecureBytes &operator=(KVSecureBytes &&other) noexcept;
    KVSecureBytes(const KVSecureBytes &) = delete;
    KVSecureBytes &operator=(const KVSecureBytes &) = delete;

    uint8_t *data() { return m_data; }
    const uint8_t *data() const { return m_data; }
    const char *chars() const { return reinterpret_cast<const char *>(m_data); }
    size_t size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    // Whether the pages are locked into RAM.
    bool isLocked() const { return m_locked; }
    std::string_view view() const { return {chars(), m_size}; }

    // Appends, moving the contents to a larger locked block when needed; the old
    // block is wiped before it is freed.
    void append(const char *bytes, size_t count);
    // Shortens the buffer; the bytes beyond the new size are wiped at once.
    void truncate(size_t size);

    // Reads a file descriptor to its end (a password written to standard input
    // with no terminator). Returns false on a read error or when more than
    // maxSize bytes arrive.
    static bool readAll(int fd, size_t maxSize, KVSecureBytes &out);

private:
    void allocate(size_t capacity);
    void release();

    uint8_t *m_data = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
    bool m_locked = false;
};

} // namespace kvlinux
