#pragma once

#include "KVDiskInventory.h"

#include <QStringList>
#include <QVariantMap>

namespace kvlinux {

// diskutil's CoreStorage views of the encrypted partitions: "cs list" as text
// and as a property list, "cs info -plist" of one group, family, physical or
// logical volume, and "info -plist" of a partition or logical volume.
class KVCoreStorageListing
{
public:
    static QStringList text(const QList<KVEncryptedVolume> &volumes);
    static QVariantMap plist(const QList<KVEncryptedVolume> &volumes);

    // The dictionary of whichever of the volume's parts the UUID names.
    static QVariantMap info(const KVEncryptedVolume &volume, const QString &uuid);
    // diskutil info: the logical volume, or the partition when asked by its name.
    static QVariantMap diskInfo(const KVEncryptedVolume &volume, const QString &identifier);

    static QString conversionStatus(const KVEncryptedVolume &volume);
};

} // namespace kvlinux
