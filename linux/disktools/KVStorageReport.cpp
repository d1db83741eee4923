#include "KVStorageReport.h"

#include <QFile>

#include <sys/statvfs.h>

namespace kvlinux {

namespace {

QString yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QVariantMap physicalDrive(const QString &protocol, bool internal, const QString &device)
{
    return {
        {QStringLiteral("device_name"), device},
        {QStringLiteral("is_internal_disk"), yesNo(internal)},
        {QStringLiteral("media_name"), QString(device + QStringLiteral(" Media"))},
        {QStringLiteral("medium_type"), QStringLiteral("ssd")},
        {QStringLiteral("partition_map_type"), QStringLiteral("guid_partition_map_type")},
        {QStringLiteral("protocol"), protocol},
        {QStringLiteral("smart_status"), QStringLiteral("Not Supported")},
    };
}

} // namespace

KVStorageReport::Space KVStorageReport::spaceAt(const QString &mountPoint)
{
    struct statvfs fs{};
    if (mountPoint.isEmpty() || statvfs(QFile::encodeName(mountPoint).constData(), &fs) != 0)
        return {};
    return {qint64(fs.f_blocks) * qint64(fs.f_frsize), qint64(fs.f_bavail) * qint64(fs.f_frsize)};
}

QVariantMap KVStorageReport::plainEntry(const KVPlainVolume &volume)
{
    const Space space = spaceAt(volume.mountPoint);
    return {
        {QStringLiteral("_name"), volume.name},
        {QStringLiteral("bsd_name"), volume.device},
        {QStringLiteral("file_system"), KVDiskInventory::reportedFileSystem(volume.fileSystem)},
        {QStringLiteral("free_space_in_bytes"), space.free},
        {QStringLiteral("ignore_ownership"), QStringLiteral("no")},
        {QStringLiteral("mount_point"), volume.mountPoint},
        {QStringLiteral("physical_drive"),
         physicalDrive(volume.protocol, volume.internal, volume.diskImage ? QStringLiteral("Disk Image") : volume.device)},
        {QStringLiteral("size_in_bytes"), space.total},
        {QStringLiteral("volume_uuid"), volume.uuid},
        {QStringLiteral("writable"), yesNo(!volume.readOnly)},
    };
}

QVariantMap KVStorageReport::encryptedEntry(const KVEncryptedVolume &volume)
{
    Space space = spaceAt(volume.mountPoint());
    // Converted offline, the volume is not mounted: its figures from the start.
    if (!space.total && volume.progress && volume.progress->fileSystemSize)
        space = {qint64(volume.progress->fileSystemSize), qint64(volume.progress->freeSpace)};
    const qint64 converted = volume.progress ? qint64(volume.progress->done) : volume.partition.size;
    const bool writable = volume.isMounted() && !volume.unlocked->record.readOnly;
    return {
        {QStringLiteral("_name"), volume.name},
        {QStringLiteral("bsd_name"), volume.logicalDisk()},
        {QStringLiteral("com.apple.corestorage.lv"),
         QVariantMap{
             {QStringLiteral("com.apple.corestorage.lv.bytesConverted"), converted},
             {QStringLiteral("com.apple.corestorage.lv.conversionState"),
              volume.isConverting() ? QStringLiteral("Converting") : QStringLiteral("Complete")},
             {QStringLiteral("com.apple.corestorage.lv.encrypted"), QStringLiteral("yes")},
             {QStringLiteral("com.apple.corestorage.lv.encryptionType"), QStringLiteral("AES-XTS")},
             {QStringLiteral("com.apple.corestorage.lv.locked"), yesNo(volume.isLocked())},
             {QStringLiteral("com.apple.corestorage.lv.revertible"), QStringLiteral("yes")},
             {QStringLiteral("com.apple.corestorage.lv.uuid"), volume.logicalVolumeUuid()},
         }},
        {QStringLiteral("com.apple.corestorage.lvg"),
         QVariantMap{
             {QStringLiteral("com.apple.corestorage.lvg.free_space"), qint64(0)},
             {QStringLiteral("com.apple.corestorage.lvg.name"), volume.name},
             {QStringLiteral("com.apple.corestorage.lvg.size"), volume.partition.size},
             {QStringLiteral("com.apple.corestorage.lvg.uuid"), volume.groupUuid()},
         }},
        {QStringLiteral("com.apple.corestorage.pv"),
         QVariantList{QVariantMap{
             {QStringLiteral("_name"), volume.partition.name},
             {QStringLiteral("com.apple.corestorage.pv.size"), volume.partition.size},
             {QStringLiteral("com.apple.corestorage.pv.status"), QStringLiteral("Online")},
             {QStringLiteral("com.apple.corestorage.pv.uuid"), volume.physicalVolumeUuid()},
         }}},
        {QStringLiteral("file_system"), KVDiskInventory::reportedFileSystem(QStringLiteral("ext4"))},
        {QStringLiteral("free_space_in_bytes"), space.free},
        {QStringLiteral("ignore_ownership"), QStringLiteral("no")},
        {QStringLiteral("mount_point"), volume.mountPoint()},
        {QStringLiteral("physical_drive"),
         physicalDrive(volume.partition.protocol, volume.partition.internal, volume.partition.parentDisk)},
        {QStringLiteral("size_in_bytes"), space.total ? space.total : volume.partition.size},
        {QStringLiteral("volume_uuid"), volume.volumeUuid()},
        {QStringLiteral("writable"), yesNo(writable)},
    };
}

QVariantList KVStorageReport::build(const KVDiskInventory &inventory)
{
    QVariantList items;
    for (const KVPlainVolume &volume : inventory.plainVolumes())
        items.append(plainEntry(volume));
    // A locked volume is not a volume the system can see.
    for (const KVEncryptedVolume &volume : inventory.encryptedVolumes())
        if (!volume.isLocked())
            items.append(encryptedEntry(volume));
    const QVariantMap dataType{
        {QStringLiteral("_SPCommandLineArguments"),
         QVariantList{QStringLiteral("system_profiler"), QStringLiteral("-xml"), QStringLiteral("SPStorageDataType")}},
        {QStringLiteral("_dataType"), QStringLiteral("SPStorageDataType")},
        {QStringLiteral("_detailLevel"), -1},
        {QStringLiteral("_items"), items},
        {QStringLiteral("_parentDataType"), QStringLiteral("SPHardwareDataType")},
    };
    return {dataType};
}

} // namespace kvlinux
