#pragma once

#include "KVAttachment.h"
#include "KVImageError.h"
#include "KVLuksImage.h"

class KVMountTable;

namespace kvlinux {

class KVAttachmentRegistry;
class KVSecureBytes;

struct KVAttachRequest
{
    QString imagePath;
    KVImageGeometry geometry;
    bool readOnly = false;
    QString mountRoot;  // the volume's folder is made in here
    QString volumeName;
};

// How an unlocked image becomes a mounted volume, and back. The FUSE data
// path (KVFuseDataPath) decrypts in userspace and works without
// device-mapper; a kernel path through udisks2 (dm-crypt, unprivileged for
// the desktop's user) can take its place behind this interface.
class KVDataPath
{
public:
    enum class Health {
        Mounted,   // the volume is mounted where the record says
        Unmounted, // pieces are still there, but no mounted volume
        Gone,      // nothing of it is left
    };

    virtual ~KVDataPath() = default;

    // The name that records made by this path carry.
    virtual QString name() const = 0;

    // Fills in the record as the pieces come up and saves it after each
    // step, so that a run killed half way leaves a trail to clean up.
    virtual KVImageResult attach(const KVAttachRequest &request, const KVSecureBytes &volumeKey,
                                 KVAttachment &record, const KVAttachmentRegistry &registry) = 0;
    // Unmounts the volume; Busy when files on it are open and force is off.
    // With force, the volume is written back and detached from the folder
    // even while files on it are open.
    virtual KVImageResult unmount(const KVAttachment &record, bool force) = 0;
    // Takes down what is left after the unmount and waits until the volume
    // key is gone from memory and the image is free. With force, files still
    // open on the volume lose it (their I/O fails) rather than keep the
    // image attached.
    virtual KVImageResult eject(const KVAttachment &record, bool force) = 0;

    virtual Health inspect(const KVAttachment &record, const KVMountTable &mounts) const = 0;
    // A path from which the payload of an attached image can be read.
    virtual QString livePayload(const KVAttachment &record) const = 0;
};

} // namespace kvlinux
