#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <sys/types.h>

#include "KVSectorCipher.h"

namespace kvlinux {

// The decrypted view of a LUKS2 image file: payload byte p lives, encrypted, at
// dataOffset + p of the file. Reads and writes may start and end anywhere;
// partial sectors are read, decrypted, patched and encrypted again. All I/O
// goes through one buffer that is allocated up front, so serving a request
// never allocates memory (a loop device on top may be writing back under
// memory pressure).
//
// A view serves one thread; several views of one image share the lock that
// keeps their read-modify-write of partial sectors apart.
class KVPayloadFile
{
public:
    KVPayloadFile(int imageFd, uint64_t dataOffset, const KVSectorCipher &cipher, size_t maxRequest,
                  std::mutex &partialSectors);

    // Payload size in bytes, whole sectors only: the file may grow or shrink
    // between runs, the LUKS2 segment always spans the rest of the file.
    uint64_t size() const;
    static uint64_t sizeOf(int imageFd, uint64_t dataOffset, size_t sectorSize);

    // Returns the number of bytes read (short only at the end of the payload),
    // or -errno. The plaintext is at *data, valid until the next call.
    ssize_t read(uint64_t offset, size_t length, const uint8_t **data);
    // Returns the number of bytes written or -errno.
    ssize_t write(uint64_t offset, const uint8_t *data, size_t length);
    // Makes a range read back as zeros by writing encrypted zeros, the way
    // dm-crypt answers a discard or write-zeroes, so that the image stays
    // readable by any LUKS2 implementation. Returns 0 or -errno.
    int zero(uint64_t offset, uint64_t length);
    int sync();

    size_t maxRequest() const { return m_maxRequest; }

private:
    ssize_t writeChunk(uint64_t offset, const uint8_t *data, size_t length);
    int loadSector(uint64_t sectorOffset, uint8_t *into);

    int m_fd;
    uint64_t m_dataOffset;
    std::unique_ptr<KVSectorCipher> m_cipher;
    std::mutex &m_partialSectors;
    size_t m_sector;
    size_t m_maxRequest;
    // Page aligned, so that the image may be opened with O_DIRECT.
    std::unique_ptr<uint8_t, void (*)(void *)> m_buffer;
};

} // namespace kvlinux
