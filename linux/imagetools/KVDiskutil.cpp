#include "KVDiskutil.h"

#include "KVAttachedImages.h"
#include "KVAttachmentRegistry.h"
#include "KVFuseDataPath.h"
#include "KVRuntimeDirectory.h"
#include "KVSystemEntities.h"
#include "KVToolOutput.h"
#include "KVVolumeName.h"
#include "KVVolumeRename.h"

#include "tools/KVPropertyList.h"

#include <QDir>

#include <sys/statvfs.h>

namespace kvlinux {

int KVDiskutil::run(const QStringList &arguments)
{
    KVToolOutput out;
    QStringList rest = arguments;
    const bool plist = rest.removeAll(QStringLiteral("-plist")) > 0;
    if (rest.size() == 2 && rest.first() == QLatin1String("info"))
        return info(rest.at(1), plist, out);
    if (rest.size() == 3 && rest.first() == QLatin1String("rename") && !plist)
        return rename(rest.at(1), rest.at(2), out);
    out.error(QStringLiteral("Usage:  diskutil info [-plist] <MountPoint|DiskIdentifier|DeviceNode>\n"
                             "        diskutil rename <MountPoint|DiskIdentifier|DeviceNode> <NewName>"));
    return 1;
}

int KVDiskutil::rename(const QString &target, const QString &name, KVToolOutput &out)
{
    const auto directory = KVRuntimeDirectory::locate();
    if (!directory) {
        out.error(QStringLiteral("Could not find disk for ") + target);
        return 1;
    }
    const KVAttachmentRegistry registry(QDir(*directory).canonicalPath());
    KVFuseDataPath dataPath{QString()};
    std::optional<KVAttachedImages::Entry> entry = KVAttachedImages(registry, dataPath).find(target);
    if (!entry || !entry->mounted) {
        out.error(QStringLiteral("Could not find disk for ") + target);
        return 1;
    }
    if (!KVVolumeRename::isValidName(name)) {
        out.error(QStringLiteral("%1 does not appear to be a valid volume name for its file system")
                      .arg(KVVolumeName::sanitized(name)));
        return 1;
    }
    KVAttachment &record = entry->record;
    // Nothing attaches, detaches or renames meanwhile (the listing above
    // takes the lock itself).
    const KVAttachmentRegistry::Lock lock = registry.lock();
    const KVImageResult error = KVVolumeRename::rename(record, name);
    registry.save(record);
    if (error) {
        out.error(QStringLiteral("Failed to rename volume on %1: %2").arg(record.volumeDisk(), error->reason()));
        return 1;
    }
    out.line(QStringLiteral("Volume on %1 renamed to %2").arg(record.volumeDisk(), name));
    return 0;
}

int KVDiskutil::info(const QString &target, bool plist, KVToolOutput &out)
{
    std::optional<KVAttachedImages::Entry> entry;
    if (const auto directory = KVRuntimeDirectory::locate()) {
        const KVAttachmentRegistry registry(QDir(*directory).canonicalPath());
        KVFuseDataPath dataPath{QString()};
        entry = KVAttachedImages(registry, dataPath).find(target);
    }
    const QString notFound = QStringLiteral("Could not find disk: ") + target;
    if (!entry || !entry->mounted) {
        if (plist)
            out.data(KVPropertyList::encodeXml(QVariantMap{{QStringLiteral("Error"), true},
                                                       {QStringLiteral("ErrorMessage"), notFound},
                                                       {QStringLiteral("ExitCode"), 1}}));
        else
            out.error(notFound);
        return 1;
    }
    const QVariantMap info = volumeInfo(entry->record);
    if (plist) {
        out.data(KVPropertyList::encodeXml(info));
        return 0;
    }
    for (auto it = info.cbegin(); it != info.cend(); ++it)
        out.line(QStringLiteral("   %1 %2").arg(it.key() + QLatin1Char(':'), -34).arg(it.value().toString()));
    return 0;
}

QVariantMap KVDiskutil::volumeInfo(const KVAttachment &record)
{
    struct statvfs fs{};
    statvfs(QFile::encodeName(record.mountPoint).constData(), &fs);
    const qint64 total = qint64(fs.f_blocks) * qint64(fs.f_frsize);
    const qint64 free = qint64(fs.f_bavail) * qint64(fs.f_frsize);
    const bool writable = !record.readOnly && !(fs.f_flag & ST_RDONLY);
    return {
        {QStringLiteral("Bootable"), false},
        {QStringLiteral("BusProtocol"), QStringLiteral("Disk Image")},
        {QStringLiteral("Content"), KVSystemEntities::linuxFileSystem},
        {QStringLiteral("DeviceBlockSize"), 4096},
        {QStringLiteral("DeviceIdentifier"), record.volumeDisk()},
        {QStringLiteral("DeviceNode"), QString(QStringLiteral("/dev/") + record.volumeDisk())},
        {QStringLiteral("Ejectable"), true},
        {QStringLiteral("FilesystemName"), QStringLiteral("ext4")},
        {QStringLiteral("FilesystemType"), QStringLiteral("ext4")},
        {QStringLiteral("FilesystemUserVisibleName"), QStringLiteral("Linux ext4 (Journaled)")},
        {QStringLiteral("FreeSpace"), free},
        {QStringLiteral("Internal"), false},
        {QStringLiteral("IOKitSize"), record.payloadSize},
        {QStringLiteral("MediaName"), QString()},
        {QStringLiteral("MediaType"), QStringLiteral("Generic")},
        {QStringLiteral("MountPoint"), record.mountPoint},
        {QStringLiteral("ParentWholeDisk"), record.wholeDisk()},
        {QStringLiteral("Removable"), true},
        {QStringLiteral("RemovableMedia"), true},
        {QStringLiteral("Size"), record.payloadSize},
        {QStringLiteral("TotalSize"), total},
        {QStringLiteral("VolumeAllocationBlockSize"), 4096},
        {QStringLiteral("VolumeName"), record.volumeName},
        {QStringLiteral("VolumeSize"), total},
        {QStringLiteral("VolumeUUID"), record.volumeUuid},
        {QStringLiteral("WholeDisk"), false},
        {QStringLiteral("Writable"), writable},
        {QStringLiteral("WritableMedia"), !record.readOnly},
        {QStringLiteral("WritableVolume"), writable},
    };
}

} // namespace kvlinux
