#include "KVVolumeKind.h"

QString kvVolumeKindText(KVVolumeKind kind)
{
    switch (kind) {
    case KVVolumeKind::DiskImage:
        return QStringLiteral("diskImage");
    case KVVolumeKind::Disk:
        return QStringLiteral("disk");
    case KVVolumeKind::NotMountedDisk:
        return QStringLiteral("notMountedDisk");
    case KVVolumeKind::None:
        break;
    }
    return QStringLiteral("none");
}

KVVolumeKind kvVolumeKindFromText(QStringView text)
{
    for (KVVolumeKind kind : {KVVolumeKind::DiskImage, KVVolumeKind::Disk, KVVolumeKind::NotMountedDisk}) {
        if (text == kvVolumeKindText(kind))
            return kind;
    }
    return KVVolumeKind::None;
}
