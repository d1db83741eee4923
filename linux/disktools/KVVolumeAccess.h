#pragma once

#include "KVDiskInventory.h"
#include "KVImageError.h"
#include "KVSecureBytes.h"

#include <QString>

namespace kvlinux {

// Opens an encrypted partition as a mounted volume and closes it again,
// through the image tools' data path (imagefs decrypts, the kernel mounts the
// ext4 through a loop device). Opened volumes are recorded in the disks'
// runtime directory, apart from the images.
class KVVolumeAccess
{
public:
    explicit KVVolumeAccess(QString imagefs);

    // Unlocks the header with the passphrase and mounts the volume in a
    // folder named after it in mountRoot.
    KVImageResult open(const KVEncryptedVolume &volume, const KVSecureBytes &passphrase,
                       const QString &mountRoot, KVAttachment &record) const;
    // Unmounts the volume and waits until its key has gone from memory.
    KVImageResult close(const KVEncryptedVolume &volume, bool force = false) const;

    // Where volumes are mounted: as udisks would, in /media/<user>, for the
    // user who asked through pkexec, if one did.
    static QString defaultMountRoot();

private:
    QString m_imagefs;
};

} // namespace kvlinux
