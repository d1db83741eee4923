#pragma once

#include "KVImageError.h"

#include <QList>
#include <QString>

#include <optional>
#include <sys/types.h>

namespace kvlinux {

// The ext4 file system inside an image's payload, worked on with e2fsprogs
// while the payload is served as a plain file (nothing mounted).
class KVExt4
{
public:
    static constexpr quint32 blockSize = 4096;

    struct Superblock
    {
        quint64 blockCount = 0;
        quint32 blockSize = 0;
        // As the superblock last counted them: exact after a check.
        quint64 freeBlocks = 0;
        quint64 reservedBlocks = 0; // for root only
        // What an ordinary user could still write, as statvfs's f_bavail.
        quint64 availableBytes() const
        {
            return freeBlocks > reservedBlocks ? (freeBlocks - reservedBlocks) * blockSize : 0;
        }
        QString uuid; // upper case, as diskutil prints volume UUIDs
        QString label;
        bool needsRecovery = false; // the journal holds transactions to replay
    };
    // Reads the primary superblock; nothing when the payload holds no ext4,
    // or one whose fields make no sense (damaged or crafted).
    static std::optional<Superblock> readSuperblock(const QString &payload);
    // sb: the 1024 bytes of the superblock.
    static std::optional<Superblock> parseSuperblock(const QByteArray &sb);

    // ext4 with 4 KiB blocks (one per encryption sector), no reserved blocks,
    // owned by the user, and without writing tables or the journal in full, so
    // that a new sparse image stays small.
    static KVImageResult format(const QString &payload, const QString &label, uid_t owner,
                                gid_t group);
    // e2fsck -p; force checks a clean file system too. Replays the journal.
    static KVImageResult check(const QString &payload, bool force);
    // resize2fs -P: the smallest block count the content allows.
    static std::optional<quint64> minimumBlocks(const QString &payload);
    static KVImageResult resize(const QString &payload, quint64 blocks);

    struct Extent
    {
        quint64 first = 0;
        quint64 count = 0;
        bool operator==(const Extent &) const = default;
    };
    // The free blocks, from the block bitmaps, as dumpe2fs lists them;
    // nothing when a listed block lies outside the blockCount blocks.
    static std::optional<QList<Extent>> freeExtents(const QString &payload, quint64 blockCount);
    static std::optional<QList<Extent>> parseFreeExtents(const QByteArray &dumpe2fsOutput,
                                                         quint64 blockCount);

    // ext4 labels hold 16 bytes.
    static QString labelFor(const QString &volumeName);
};

} // namespace kvlinux
