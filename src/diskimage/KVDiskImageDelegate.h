#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QList>

#include <memory>

class KVDiskImage;

// What the disk-image engine tells the one who shows its volumes. Every call
// comes on the GUI thread.
//
// The engine keeps its delegate weakly: a delegate that is destroyed is never
// called again, without having to unregister itself.
class KVDiskImageDelegate
{
public:
    virtual ~KVDiskImageDelegate() = default;

    // The list of mounted encrypted images has changed (or one of them has new
    // space figures); `volumes` is the engine's whole list.
    virtual void mountedDiskImagesDidChange(KVDiskImage *engine, const QList<KVVolumeItemPtr> &volumes)
    {
        Q_UNUSED(engine);
        Q_UNUSED(volumes);
    }

    // A refresh that the engine started by itself, after a volume was mounted,
    // failed. Nobody else hears of it: the delegate shows it (as an alert).
    virtual void mountedDiskImagesUpdateDidFail(KVDiskImage *engine, const KVAppError &error)
    {
        Q_UNUSED(engine);
        Q_UNUSED(error);
    }

protected:
    KVDiskImageDelegate() = default;
    KVDiskImageDelegate(const KVDiskImageDelegate &) = delete;
    KVDiskImageDelegate &operator=(const KVDiskImageDelegate &) = delete;

private:
    friend class KVDiskImage;
    // Expires with the delegate; the engine holds it weakly.
    const std::shared_ptr<const bool> m_lifetime = std::make_shared<const bool>(true);
};
