#pragma once

#include "KVDiskInventory.h"

#include <QVariantList>
#include <QVariantMap>

namespace kvlinux {

// "system_profiler SPStorageDataType -xml": one entry per mounted volume and
// per encrypted volume that is open or converting, in system_profiler's shape.
class KVStorageReport
{
public:
    static QVariantList build(const KVDiskInventory &inventory);

    static QVariantMap encryptedEntry(const KVEncryptedVolume &volume);
    static QVariantMap plainEntry(const KVPlainVolume &volume);

    struct Space
    {
        qint64 total = 0;
        qint64 free = 0;
    };
    // The file system's figures as statvfs gives them; zeros when there is none.
    static Space spaceAt(const QString &mountPoint);
};

} // namespace kvlinux
