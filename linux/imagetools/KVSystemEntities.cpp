#include "KVSystemEntities.h"

#include <QVariantMap>

namespace kvlinux {

QList<KVSystemEntity> KVSystemEntities::of(const KVAttachment &record, bool mounted)
{
    KVSystemEntity whole;
    whole.contentHint = partitionScheme;
    whole.devEntry = QStringLiteral("/dev/") + record.wholeDisk();
    KVSystemEntity volume;
    volume.contentHint = linuxFileSystem;
    volume.devEntry = QStringLiteral("/dev/") + record.volumeDisk();
    volume.potentiallyMountable = true;
    volume.volumeKind = QStringLiteral("ext4");
    if (mounted)
        volume.mountPoint = record.mountPoint;
    return {whole, volume};
}

QVariantList KVSystemEntities::toPropertyList(const QList<KVSystemEntity> &entities)
{
    QVariantList list;
    for (const KVSystemEntity &entity : entities) {
        QVariantMap dict{
            {QStringLiteral("content-hint"), entity.contentHint},
            {QStringLiteral("dev-entry"), entity.devEntry},
            {QStringLiteral("potentially-mountable"), entity.potentiallyMountable},
            {QStringLiteral("unmapped-content-hint"), entity.contentHint},
        };
        if (!entity.mountPoint.isEmpty())
            dict.insert(QStringLiteral("mount-point"), entity.mountPoint);
        if (!entity.volumeKind.isEmpty())
            dict.insert(QStringLiteral("volume-kind"), entity.volumeKind);
        list.append(dict);
    }
    return list;
}

} // namespace kvlinux
