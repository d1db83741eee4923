#include "KVPayloadFile.h"

#include "KVSectorCipher.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

// Full reads and writes: pread/pwrite may return early on a signal or at a
// hole's edge. A read past the end of the file yields zeros, as a sparse tail.
int preadFully(int fd, uint8_t *buffer, size_t length, off_t offset)
{
    size_t done = 0;
    while (done < length) {
        const ssize_t n = pread(fd, buffer + done, length - done, offset + off_t(done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -errno;
        if (n == 0) {
            std::memset(buffer + done, 0, length - done);
            break;
        }
        done += size_t(n);
    }
    return 0;
}

int pwriteFully(int fd, const uint8_t *buffer, size_t length, off_t offset)
{
    size_t done = 0;
    while (done < length) {
        const ssize_t n = pwrite(fd, buffer + done, length - done, offset + off_t(done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -errno;
        done += size_t(n);
    }
    return 0;
}

constexpr size_t earlyWritebackSpan = 256 * 1024;
constexpr size_t bufferAlignment = 4096;

} // namespace

KVPayloadFile::KVPayloadFile(int imageFd, uint64_t dataOffset, const KVSectorCipher &cipher,
                             size_t maxRequest, std::mutex &partialSectors)
    : m_fd(imageFd),
      m_dataOffset(dataOffset),
      m_cipher(cipher.clone()),
      m_partialSectors(partialSectors),
      m_sector(cipher.sectorSize()),
      m_maxRequest(maxRequest),
      m_buffer(nullptr, free)
{
    // Room for the largest request plus the partial sectors at either end.
    void *buffer = nullptr;
    if (posix_memalign(&buffer, bufferAlignment, maxRequest + 2 * m_sector) != 0)
        throw std::bad_alloc();
    m_buffer.reset(static_cast<uint8_t *>(buffer));
}

uint64_t KVPayloadFile::size() const
{
    return sizeOf(m_fd, m_dataOffset, m_sector);
}

uint64_t KVPayloadFile::sizeOf(int imageFd, uint64_t dataOffset, size_t sectorSize)
{
    struct stat st;
    if (fstat(imageFd, &st) != 0)
        return 0;
    // An encrypted partition is a block device: its size is the device's.
    uint64_t total = uint64_t(st.st_size);
    if (S_ISBLK(st.st_mode) && ioctl(imageFd, BLKGETSIZE64, &total) != 0)
        return 0;
    if (total <= dataOffset)
        return 0;
    return (total - dataOffset) / sectorSize * sectorSize;
}

ssize_t KVPayloadFile::read(uint64_t offset, size_t length, const uint8_t **data)
{
    const uint64_t end = std::min(offset + std::min(length, m_maxRequest), size());
    if (offset >= end) {
        *data = m_buffer.get();
        return 0;
    }
    const uint64_t first = offset / m_sector * m_sector;
    const uint64_t last = (end + m_sector - 1) / m_sector * m_sector;
    const size_t span = size_t(last - first);
    if (const int err = preadFully(m_fd, m_buffer.get(), span, off_t(m_dataOffset + first)))
        return err;
    if (!m_cipher->decrypt(m_buffer.get(), m_buffer.get(), span, first))
        return -EIO;
    *data = m_buffer.get() + (offset - first);
    return ssize_t(end - offset);
}

ssize_t KVPayloadFile::write(uint64_t offset, const uint8_t *data, size_t length)
{
    const uint64_t limit = size();
    if (offset >= limit && length > 0)
        return -ENOSPC;
    length = size_t(std::min<uint64_t>(length, limit - offset));
    size_t done = 0;
    while (done < length) {
        const size_t chunk = std::min(length - done, m_maxRequest);
        const ssize_t n = writeChunk(offset + done, data ? data + done : nullptr, chunk);
        if (n < 0)
            return n;
        done += size_t(n);
    }
    return ssize_t(done);
}

int KVPayloadFile::zero(uint64_t offset, uint64_t length)
{
    const uint64_t end = std::min(offset + length, size());
    while (offset < end) {
        const size_t chunk = size_t(std::min<uint64_t>(end - offset, m_maxRequest));
        const ssize_t n = writeChunk(offset, nullptr, chunk);
        if (n < 0)
            return int(n);
        offset += uint64_t(n);
    }
    return 0;
}

int KVPayloadFile::sync()
{
    return fdatasync(m_fd) == 0 ? 0 : -errno;
}

int KVPayloadFile::loadSector(uint64_t sectorOffset, uint8_t *into)
{
    if (const int err = preadFully(m_fd, into, m_sector, off_t(m_dataOffset + sectorOffset)))
        return err;
    return m_cipher->decrypt(into, into, m_sector, sectorOffset) ? 0 : -EIO;
}

// data == nullptr writes zeros.
ssize_t KVPayloadFile::writeChunk(uint64_t offset, const uint8_t *data, size_t length)
{
    const uint64_t end = offset + length;
    const uint64_t first = offset / m_sector * m_sector;
    const uint64_t last = (end + m_sector - 1) / m_sector * m_sector;
    const size_t span = size_t(last - first);
    uint8_t *buffer = m_buffer.get();

    // Partial sectors at either end keep the bytes around the new data; two
    // such writes into one sector must not interleave.
    std::unique_lock<std::mutex> partial(m_partialSectors, std::defer_lock);
    if (offset != first || end != last)
        partial.lock();
    if (offset != first)
        if (const int err = loadSector(first, buffer))
            return err;
    if (end != last && (last - m_sector != first || offset == first))
        if (const int err = loadSector(last - m_sector, buffer + span - m_sector))
            return err;

    if (data)
        std::memcpy(buffer + (offset - first), data, length);
    else
        std::memset(buffer + (offset - first), 0, length);

    if (!m_cipher->encrypt(buffer, buffer, span, first))
        return -EIO;
    if (const int err = pwriteFully(m_fd, buffer, span, off_t(m_dataOffset + first)))
        return err;
    // Start writing a large range to the disk now, without waiting for it:
    // the disk then works while the next request is encrypted, instead of all
    // at once when the file system above asks for a flush. Small writes are
    // left to the page cache, which gathers them.
    if (span >= earlyWritebackSpan)
        sync_file_range(m_fd, off_t(m_dataOffset + first), off_t(span), SYNC_FILE_RANGE_WRITE);
    return ssize_t(length);
}

} // namespace kvlinux
