#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QList>

#include <memory>

class KVDisk;

// What the disk engine tells the one who shows its volumes. Every call comes
// on the GUI thread, and every one is optional: the defaults do nothing.
//
// The engine keeps its delegate weakly: a delegate that is destroyed is never
// called again, without having to unregister itself.
class KVDiskDelegate
{
public:
    virtual ~KVDiskDelegate() = default;

    // The list of mounted encrypted volumes has changed, one of them has new
    // space figures, or a conversion is still running; `volumes` is the
    // engine's whole list.
    virtual void mountedDisksDidChange(KVDisk *disks, const QList<KVVolumeItemPtr> &volumes)
    {
        Q_UNUSED(disks);
        Q_UNUSED(volumes);
    }

    virtual void willDismountVolume(KVDisk *disks, const KVVolumeItemPtr &volume)
    {
        Q_UNUSED(disks);
        Q_UNUSED(volume);
    }

    virtual void willDismountAllVolumes(KVDisk *disks) { Q_UNUSED(disks); }

    // A refresh that the engine started by itself, after a volume was mounted,
    // failed. Nobody else hears of it: the delegate shows it (as an alert).
    virtual void mountedDisksUpdateDidFail(KVDisk *disks, const KVAppError &error)
    {
        Q_UNUSED(disks);
        Q_UNUSED(error);
    }

protected:
    KVDiskDelegate() = default;
    KVDiskDelegate(const KVDiskDelegate &) = delete;
    KVDiskDelegate &operator=(const KVDiskDelegate &) = delete;

private:
    friend class KVDisk;
    // Expires with the delegate; the engine holds it weakly.
    const std::shared_ptr<const bool> m_lifetime = std::make_shared<const bool>(true);
};
