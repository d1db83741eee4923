// What the tools read from an image: the ext4 superblock, the free extents
// that dumpe2fs lists from its bitmaps, and the volume-name token of the
// LUKS2 header. The first byte of the input chooses the reader.

#include "KVExt4.h"
#include "KVLuksImage.h"
#include "KVVolumeName.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

using namespace kvlinux;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray input(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    switch (data[0] % 3) {
    case 0:
        if (const auto superblock = KVExt4::parseSuperblock(input.leftJustified(1024, '\0', true))) {
            // Sizes in bytes must fit a file offset.
            if (superblock->blockCount == 0 || superblock->blockSize < 1024
                || superblock->blockSize > 65536
                || superblock->blockCount > quint64(INT64_MAX) / superblock->blockSize)
                __builtin_trap();
        }
        break;
    case 1: {
        constexpr quint64 blockCount = 1 << 20;
        if (const auto extents = KVExt4::parseFreeExtents(input, blockCount))
            for (const KVExt4::Extent &extent : *extents)
                if (extent.count == 0 || extent.first + extent.count > blockCount)
                    __builtin_trap();
        break;
    }
    case 2:
        if (const auto name = KVLuksImage::volumeNameFromToken(input))
            if (name->contains(QChar(0)) || name->contains(QLatin1Char('\n'))
                || name->size() > KVVolumeName::maxLength)
                __builtin_trap();
        break;
    }
    return 0;
}
