#pragma once

#include "KVAttachment.h"
#include "KVImageError.h"

#include <QString>

namespace kvlinux {

// Renames the volume of an attached image, as "diskutil rename" does:
// - the image's header keeps the full name (and its label as much as fits),
//   so that the volume carries it at the next attach;
// - the ext4 label becomes as much of it as ext4 holds (16 bytes), where the
//   kernel mounts the volume (fuse2fs keeps its own copy of the superblock,
//   which would write the old label back);
// - the volume moves to a folder named after it in the same parent folder,
//   as a renamed volume does under /Volumes; only root may move a mount,
//   so elsewhere it stays where it is.
class KVVolumeRename
{
public:
    // Not blank, no "/", and one safe line of at most 255 units that the
    // programs keep as it is (KVVolumeName).
    static bool isValidName(const QString &name);

    // Changes the record (name, mount point) as the volume changes; the
    // caller saves it.
    static KVImageResult rename(KVAttachment &record, const QString &name);

private:
    static KVImageResult setFileSystemLabel(const KVAttachment &record, const QString &name);
    static void moveMount(KVAttachment &record, const QString &name);
};

} // namespace kvlinux
