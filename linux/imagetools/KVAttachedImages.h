#pragma once

#include "KVAttachment.h"

#include <QList>

#include <optional>

namespace kvlinux {

class KVAttachmentRegistry;
class KVDataPath;

// The images attached now, as the system shows them: each record is checked
// against the mount table, the processes and the loop devices it names, and
// a record that describes nothing any more (a crash, a reboot, a volume
// unmounted behind our back) is cleared away on the way.
class KVAttachedImages
{
public:
    struct Entry
    {
        KVAttachment record;
        bool mounted = false;
    };

    KVAttachedImages(const KVAttachmentRegistry &registry, KVDataPath &dataPath);

    // includeAttaching: also the images that a running hdiutil is attaching
    // right now (they are busy, but not yet there to be listed).
    QList<Entry> current(bool includeAttaching = false) const;

    // diskN, /dev/diskN, diskNs1, /dev/diskNs1, the mount point or the image.
    std::optional<Entry> find(const QString &target) const;
    std::optional<Entry> findImage(quint64 device, quint64 inode) const;

private:
    const KVAttachmentRegistry &m_registry;
    KVDataPath &m_dataPath;
};

} // namespace kvlinux
