#include "KVCoreStorageListing.h"

#include <QFile>

#include <sys/statvfs.h>

namespace kvlinux {

namespace {

QString bytes(qint64 size)
{
    return QStringLiteral("%1 B (%2 GB)").arg(size).arg(double(size) / 1e9, 0, 'f', 1);
}

QString row(const QString &indent, const QString &key, int width, const QString &value)
{
    return indent + QString(key + QLatin1Char(':')).leftJustified(width) + value;
}

QString underline(const QString &indent, const QString &heading, QChar mark)
{
    return indent + QString(heading.size(), mark);
}

QVariantMap node(const QString &role, const QString &uuid)
{
    return {{QStringLiteral("CoreStorageRole"), role}, {QStringLiteral("CoreStorageUUID"), uuid}};
}

QString direction(const KVEncryptedVolume &volume)
{
    return volume.conversion == KVLuksPartition::Conversion::Decrypting ? QStringLiteral("backward")
                                                                         : QStringLiteral("forward");
}

} // namespace

QString KVCoreStorageListing::conversionStatus(const KVEncryptedVolume &volume)
{
    return volume.isConverting() ? QStringLiteral("Converting") : QStringLiteral("Complete");
}

QStringList KVCoreStorageListing::text(const QList<KVEncryptedVolume> &volumes)
{
    QStringList lines;
    if (volumes.isEmpty()) {
        lines << QStringLiteral("No CoreStorage logical volume groups found");
        return lines;
    }
    lines << QStringLiteral("CoreStorage logical volume groups (%1 found)").arg(volumes.size());
    for (const KVEncryptedVolume &v : volumes) {
        const QString size = bytes(v.partition.size);
        const QString status = conversionStatus(v);
        const QString group = QStringLiteral("+-- Logical Volume Group ") + v.groupUuid();
        lines << QStringLiteral("|") << group << underline(QStringLiteral("    "), group.mid(4), QLatin1Char('='));
        lines << row(QStringLiteral("    "), QStringLiteral("Name"), 14, v.name)
              << row(QStringLiteral("    "), QStringLiteral("Status"), 14, QStringLiteral("Online"))
              << row(QStringLiteral("    "), QStringLiteral("Size"), 14, size)
              << row(QStringLiteral("    "), QStringLiteral("Free Space"), 14, bytes(0)) << QStringLiteral("    |");
        const QString pv = QStringLiteral("+-< Physical Volume ") + v.physicalVolumeUuid();
        lines << QStringLiteral("    ") + pv << QStringLiteral("    |   ") + QString(pv.size() - 4, QLatin1Char('-'));
        lines << row(QStringLiteral("    |   "), QStringLiteral("Index"), 10, QStringLiteral("0"))
              << row(QStringLiteral("    |   "), QStringLiteral("Disk"), 10, v.partition.name)
              << row(QStringLiteral("    |   "), QStringLiteral("Status"), 10, QStringLiteral("Online"))
              << row(QStringLiteral("    |   "), QStringLiteral("Size"), 10, size) << QStringLiteral("    |");
        const QString family = QStringLiteral("+-> Logical Volume Family ") + v.familyUuid();
        lines << QStringLiteral("    ") + family << QStringLiteral("        ") + QString(family.size() - 4, QLatin1Char('-'));
        const QString familyIndent = QStringLiteral("        ");
        lines << row(familyIndent, QStringLiteral("Encryption Type"), 25, QStringLiteral("AES-XTS"))
              << row(familyIndent, QStringLiteral("Encryption Status"), 25,
                     v.isLocked() ? QStringLiteral("Locked") : QStringLiteral("Unlocked"))
              << row(familyIndent, QStringLiteral("Conversion Status"), 25,
                     v.isConverting() ? status + QStringLiteral(" (") + direction(v) + QLatin1Char(')') : status)
              << row(familyIndent, QStringLiteral("Conversion Direction"), 25,
                     v.isConverting() ? direction(v) : QStringLiteral("-"))
              << row(familyIndent, QStringLiteral("High Level Queries"), 25,
                     v.isConverting() ? QStringLiteral("Not Fully Secure") : QStringLiteral("Fully Secure"))
              << QStringLiteral("        |                        Passphrase Required")
              << QStringLiteral("        |                        Has Visible Users") << QStringLiteral("        |");
        const QString lv = QStringLiteral("+-> Logical Volume ") + v.logicalVolumeUuid();
        lines << familyIndent + lv << QStringLiteral("            ") + QString(lv.size() - 4, QLatin1Char('-'));
        const QString lvIndent = QStringLiteral("            ");
        const QString progress = v.isConverting()
            ? QString::number(v.progress ? v.progress->percent() : 0) + QLatin1Char('%')
            : status;
        lines << row(lvIndent, QStringLiteral("Disk"), 23, v.isLocked() ? QStringLiteral("-") : v.logicalDisk())
              << row(lvIndent, QStringLiteral("Status"), 23, v.isLocked() ? QStringLiteral("Locked") : QStringLiteral("Online"))
              << row(lvIndent, QStringLiteral("Size (Total)"), 23, size)
              << row(lvIndent, QStringLiteral("Conversion Progress"), 23, progress)
              << row(lvIndent, QStringLiteral("Revertible"), 23, QStringLiteral("Yes (unlock and decryption required)"))
              << row(lvIndent, QStringLiteral("LV Name"), 23, v.name)
              << row(lvIndent, QStringLiteral("Volume Name"), 23, v.name)
              << row(lvIndent, QStringLiteral("Content Hint"), 23, QStringLiteral("Apple_HFS"));
    }
    return lines;
}

QVariantMap KVCoreStorageListing::plist(const QList<KVEncryptedVolume> &volumes)
{
    QVariantList groups;
    for (const KVEncryptedVolume &v : volumes) {
        QVariantMap family = node(QStringLiteral("LVF"), v.familyUuid());
        family.insert(QStringLiteral("CoreStorageLogicalVolumes"),
                      QVariantList{node(QStringLiteral("LV"), v.logicalVolumeUuid())});
        QVariantMap group = node(QStringLiteral("LVG"), v.groupUuid());
        group.insert(QStringLiteral("CoreStorageLogicalVolumeFamilies"), QVariantList{family});
        group.insert(QStringLiteral("CoreStoragePhysicalVolumes"),
                     QVariantList{node(QStringLiteral("PV"), v.physicalVolumeUuid())});
        groups.append(group);
    }
    return {{QStringLiteral("CoreStorageLogicalVolumeGroups"), groups}};
}

QVariantMap KVCoreStorageListing::info(const KVEncryptedVolume &v, const QString &uuid)
{
    const QString asked = uuid.toUpper();
    const QVariantMap member{{QStringLiteral("MemberOfCoreStorageLogicalVolumeGroup"), v.groupUuid()}};
    if (asked == v.familyUuid()) {
        QVariantMap family = node(QStringLiteral("LVF"), v.familyUuid());
        family.insert(member);
        family.insert({
            {QStringLiteral("CoreStorageLogicalVolumeFamilyAcceptsNewUsers"), true},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyConversionStatus"), conversionStatus(v)},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionStatus"),
             v.isLocked() ? QStringLiteral("Locked") : QStringLiteral("Unlocked")},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionType"), QStringLiteral("AES-XTS")},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyFullySecure"), !v.isConverting()},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyHasVisibleUsers"), true},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyHasVolumeKey"), !v.isLocked()},
            {QStringLiteral("CoreStorageLogicalVolumeFamilyPassphraseRequired"), true},
        });
        return family;
    }
    if (asked == v.physicalVolumeUuid()) {
        QVariantMap pv = node(QStringLiteral("PV"), v.physicalVolumeUuid());
        pv.insert(member);
        pv.insert({
            {QStringLiteral("CoreStoragePhysicalVolumeIndex"), 0},
            {QStringLiteral("CoreStoragePhysicalVolumeSize"), v.partition.size},
            {QStringLiteral("CoreStoragePhysicalVolumeStatus"), QStringLiteral("Online")},
            {QStringLiteral("DeviceIdentifier"), v.partition.name},
        });
        return pv;
    }
    if (asked == v.logicalVolumeUuid()) {
        QVariantMap lv = node(QStringLiteral("LV"), v.logicalVolumeUuid());
        lv.insert({
            {QStringLiteral("CoreStorageLogicalVolumeConversionState"), conversionStatus(v)},
            {QStringLiteral("CoreStorageLogicalVolumeName"), v.name},
            {QStringLiteral("CoreStorageLogicalVolumeSize"), v.partition.size},
            {QStringLiteral("CoreStorageLogicalVolumeStatus"), v.isLocked() ? QStringLiteral("Locked") : QStringLiteral("Online")},
            {QStringLiteral("DeviceIdentifier"), v.logicalDisk()},
            {QStringLiteral("MemberOfCoreStorageLogicalVolumeFamily"), v.familyUuid()},
            {QStringLiteral("MemberOfCoreStorageLogicalVolumeGroup"), v.groupUuid()},
        });
        return lv;
    }
    QVariantMap group = node(QStringLiteral("LVG"), v.groupUuid());
    group.insert({
        {QStringLiteral("CoreStorageLogicalVolumeGroupFreeSpace"), 0},
        {QStringLiteral("CoreStorageLogicalVolumeGroupName"), v.name},
        {QStringLiteral("CoreStorageLogicalVolumeGroupSize"), v.partition.size},
        {QStringLiteral("CoreStorageLogicalVolumeGroupStatus"), QStringLiteral("Online")},
    });
    return group;
}

QVariantMap KVCoreStorageListing::diskInfo(const KVEncryptedVolume &v, const QString &identifier)
{
    const QString name = identifier.startsWith(QLatin1String("/dev/")) ? identifier.mid(5) : identifier;
    const bool physical = name == v.partition.name || identifier.toUpper() == v.physicalVolumeUuid();
    const QString device = physical ? v.partition.name : v.logicalDisk();
    const QString mountPoint = physical ? QString() : v.mountPoint();
    struct statvfs fs{};
    const bool hasSpace = !mountPoint.isEmpty() && statvfs(QFile::encodeName(mountPoint).constData(), &fs) == 0;
    const bool writable = !physical && v.isMounted() && !v.unlocked->record.readOnly;
    QVariantMap info{
        {QStringLiteral("Bootable"), false},
        {QStringLiteral("BusProtocol"), v.partition.protocol},
        {QStringLiteral("Content"), physical ? QStringLiteral("Apple_CoreStorage") : QStringLiteral("Apple_HFS")},
        {QStringLiteral("DeviceBlockSize"), 512},
        {QStringLiteral("DeviceIdentifier"), device},
        {QStringLiteral("DeviceNode"), QString(QStringLiteral("/dev/") + device)},
        {QStringLiteral("DiskUUID"), physical ? v.physicalVolumeUuid() : v.logicalVolumeUuid()},
        {QStringLiteral("Ejectable"), true},
        {QStringLiteral("FreeSpace"), hasSpace ? qint64(fs.f_bavail) * qint64(fs.f_frsize) : qint64(0)},
        {QStringLiteral("Internal"), v.partition.internal},
        // A locked volume is known by its partition, named like a GPT
        // partition of a CoreStorage group: after the volume.
        {QStringLiteral("MediaName"), physical ? v.name : QString()},
        {QStringLiteral("MediaType"), QStringLiteral("Generic")},
        {QStringLiteral("MountPoint"), mountPoint},
        {QStringLiteral("ParentWholeDisk"), physical ? v.partition.parentDisk : device},
        {QStringLiteral("Size"), v.partition.size},
        {QStringLiteral("TotalSize"), hasSpace ? qint64(fs.f_blocks) * qint64(fs.f_frsize) : v.partition.size},
        {QStringLiteral("VolumeName"), physical ? QString() : v.name},
        {QStringLiteral("WholeDisk"), !physical},
        {QStringLiteral("Writable"), writable},
        {QStringLiteral("WritableMedia"), true},
        {QStringLiteral("WritableVolume"), writable},
    };
    if (!physical) {
        info.insert(QStringLiteral("CoreStorageEncrypted"), true);
        info.insert(QStringLiteral("FilesystemName"), KVDiskInventory::reportedFileSystem(QStringLiteral("ext4")));
        info.insert(QStringLiteral("FilesystemType"), QStringLiteral("ext4"));
        info.insert(QStringLiteral("VolumeUUID"), v.volumeUuid());
    }
    return info;
}

} // namespace kvlinux
