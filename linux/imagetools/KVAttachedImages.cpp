#include "KVAttachedImages.h"

#include "KVAttachmentRegistry.h"
#include "KVDataPath.h"

#include "platform/KVMountTable.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace kvlinux {

KVAttachedImages::KVAttachedImages(const KVAttachmentRegistry &registry, KVDataPath &dataPath)
    : m_registry(registry), m_dataPath(dataPath)
{
}

QList<KVAttachedImages::Entry> KVAttachedImages::current(bool includeAttaching) const
{
    const auto lock = m_registry.lock();
    const KVMountTable mounts = KVMountTable::current();
    const QString boot = KVAttachmentRegistry::bootId();
    QList<Entry> entries;
    for (const KVAttachment &record : m_registry.records()) {
        const bool beingAttached = record.stage == KVAttachment::Stage::Attaching
            && record.tool.isAlive();
        if (beingAttached) {
            if (includeAttaching)
                entries.append({record, false});
            continue;
        }
        const auto health = record.bootId == boot ? m_dataPath.inspect(record, mounts)
                                                  : KVDataPath::Health::Gone;
        if (health == KVDataPath::Health::Gone)
            m_registry.remove(record);
        else
            entries.append({record, health == KVDataPath::Health::Mounted});
    }
    m_registry.removeAbandonedSessions();
    return entries;
}

std::optional<KVAttachedImages::Entry> KVAttachedImages::find(const QString &target) const
{
    const QString name = target.startsWith(QLatin1String("/dev/")) ? target.mid(5) : target;
    const QString canonical = QFileInfo(target).canonicalFilePath();
    for (const Entry &entry : current()) {
        const KVAttachment &r = entry.record;
        if (name == r.wholeDisk() || name == r.volumeDisk()
            || (!canonical.isEmpty()
                && (canonical == r.mountPoint || canonical == QFileInfo(r.imagePath).canonicalFilePath())))
            return entry;
    }
    return std::nullopt;
}

std::optional<KVAttachedImages::Entry> KVAttachedImages::findImage(quint64 device, quint64 inode) const
{
    for (const Entry &entry : current(true))
        if (entry.record.imageDevice == device && entry.record.imageInode == inode)
            return entry;
    return std::nullopt;
}

} // namespace kvlinux
