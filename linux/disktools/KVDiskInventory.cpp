#include "KVDiskInventory.h"

#include "KVAttachmentRegistry.h"
#include "KVDetachedHeaders.h"
#include "KVExt4.h"
#include "KVFuseDataPath.h"
#include "KVLuksHeaderSnapshot.h"
#include "platform/KVMountTable.h"
#include "KVRuntimeDirectory.h"
#include "KVUdevProperties.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QUuid>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace kvlinux {

namespace {

// The namespace of the UUIDs we derive; any fixed UUID will do.
const QUuid derivedNamespace(QStringLiteral("{6f1c0b52-3a8e-4f0d-9a57-4b3de2c1a9e1}"));

QString upperUuid(const QUuid &uuid)
{
    return uuid.toString(QUuid::WithoutBraces).toUpper();
}

// Where the disk verbs keep their records when root has no runtime
// directory of its own, as when pkexec runs them for a user: machine-wide and
// readable by everybody (device names, mount points and process ids; never
// a key or a header), so that the user's listings see what was opened or is
// being converted for them.
const QString sharedStateDirectory = QStringLiteral("/run/korvelle-disks");

bool hasOwnRuntimeDirectory()
{
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    return runtime.startsWith('/') && QFileInfo(QFile::decodeName(runtime)).isDir();
}

// The header of a partition, without libcryptsetup, whose lock a conversion
// may hold. A partition an ordinary user may not open is described by udev
// where it runs; otherwise it is counted as unreadable.
std::optional<KVLuksHeaderSnapshot> headerOf(const KVBlockDevice &partition, const QString &detachedHeader,
                                             int &unreadable)
{
    if (!detachedHeader.isEmpty())
        return KVLuksHeaderSnapshot::read(detachedHeader);
    const QByteArray node = QFile::encodeName(partition.node());
    if (access(node.constData(), R_OK) == 0)
        return KVLuksPartition::hasHeader(partition.node()) ? KVLuksHeaderSnapshot::read(partition.node())
                                                              : std::nullopt;
    const QHash<QString, QString> udev = KVUdevProperties().of(partition.number);
    if (udev.isEmpty()) {
        ++unreadable;
        return std::nullopt;
    }
    if (udev.value(QStringLiteral("ID_FS_TYPE")) != QLatin1String("crypto_LUKS")
        || udev.value(QStringLiteral("ID_FS_VERSION")) != QLatin1String("2"))
        return std::nullopt;
    KVLuksHeaderSnapshot header;
    header.uuid = udev.value(QStringLiteral("ID_FS_UUID")).toUpper();
    header.label = udev.contains(QStringLiteral("ID_FS_LABEL_ENC"))
        ? KVUdevProperties::decodeEscapes(udev.value(QStringLiteral("ID_FS_LABEL_ENC")))
        : udev.value(QStringLiteral("ID_FS_LABEL"));
    return header;
}

} // namespace

QString KVEncryptedVolume::derivedUuid(const QString &role) const
{
    return upperUuid(QUuid::createUuidV5(derivedNamespace, luksUuid + QLatin1Char('/') + role));
}

QString KVEncryptedVolume::logicalDisk() const
{
    if (unlocked && !unlocked->record.loopDevice.isEmpty())
        return QFileInfo(unlocked->record.loopDevice).fileName();
    return partition.name;
}

QString KVEncryptedVolume::volumeUuid() const
{
    if (unlocked && !unlocked->record.volumeUuid.isEmpty())
        return unlocked->record.volumeUuid;
    return progress ? progress->volumeUuid : QString();
}

bool KVEncryptedVolume::isNamedBy(const QString &identifier) const
{
    const QString name = identifier.startsWith(QLatin1String("/dev/")) ? identifier.mid(5) : identifier;
    const QString upper = identifier.toUpper();
    return upper == groupUuid() || upper == familyUuid() || upper == logicalVolumeUuid()
        || upper == physicalVolumeUuid() || name == partition.name || name == logicalDisk()
        || (isMounted() && QFileInfo(identifier).canonicalFilePath() == mountPoint());
}

QString KVDiskInventory::stateDirectory(bool create)
{
    if (geteuid() != 0) {
        // Only root changes disks; everybody else reads root's records.
        struct stat st{};
        const bool trusted = stat(QFile::encodeName(sharedStateDirectory).constData(), &st) == 0
            && S_ISDIR(st.st_mode) && st.st_uid == 0 && !(st.st_mode & S_IWOTH);
        return !create && trusted ? sharedStateDirectory : QString();
    }
    if (!hasOwnRuntimeDirectory()) {
        if (create && (!QDir().mkpath(sharedStateDirectory)
                       || !QFile::setPermissions(sharedStateDirectory, QFile::ReadOwner | QFile::WriteOwner
                                                     | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup
                                                     | QFile::ReadOther | QFile::ExeOther)))
            return {};
        return QFileInfo(sharedStateDirectory).isDir() ? sharedStateDirectory : QString();
    }
    const auto runtime = KVRuntimeDirectory::locate();
    if (!runtime)
        return {};
    const QString directory = QDir(*runtime).canonicalPath() + QStringLiteral("/disks");
    if (!create)
        return QFileInfo(directory).isDir() ? directory : QString();
    if (!QDir().mkpath(directory))
        return {};
    QFile::setPermissions(directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return directory;
}

QList<KVEncryptedVolume> KVDiskInventory::encryptedVolumes(int *unreadable) const
{
    const QString state = stateDirectory();
    QList<KVAttachedImages::Entry> opened;
    if (!state.isEmpty()) {
        const KVAttachmentRegistry registry(state);
        KVFuseDataPath dataPath{QString()};
        opened = KVAttachedImages(registry, dataPath).current();
    }
    QList<KVEncryptedVolume> volumes;
    int closed = 0;
    for (const KVBlockDevice &partition : KVBlockDevice::partitions()) {
        // Being decrypted, a partition's header is in a file of its own.
        const QString detachedHeader = KVDetachedHeaders::existingFor(partition);
        const auto header = headerOf(partition, detachedHeader, closed);
        if (!header)
            continue;
        KVEncryptedVolume volume;
        volume.partition = partition;
        volume.detachedHeader = detachedHeader;
        volume.luksUuid = header->uuid;
        volume.name = header->label;
        // Until its file is gone, a decryption is not over.
        volume.conversion = detachedHeader.isEmpty() ? header->conversion : KVLuksPartition::Conversion::Decrypting;
        if (!state.isEmpty())
            volume.progress = KVConversionRecord::load(state, volume.luksUuid);
        for (const auto &entry : opened)
            if (KVBlockDevice::numberOf(entry.record.imagePath) == partition.number)
                volume.unlocked = entry;
        if (volume.name.isEmpty())
            volume.name = QStringLiteral("Untitled");
        volumes.append(volume);
    }
    if (unreadable)
        *unreadable = closed;
    return volumes;
}

std::optional<KVEncryptedVolume> KVDiskInventory::findEncrypted(const QString &identifier) const
{
    if (identifier.isEmpty())
        return std::nullopt;
    for (const KVEncryptedVolume &volume : encryptedVolumes())
        if (volume.isNamedBy(identifier))
            return volume;
    return std::nullopt;
}

QList<KVPlainVolume> KVDiskInventory::plainVolumes() const
{
    QSet<dev_t> ours;
    for (const KVEncryptedVolume &volume : encryptedVolumes())
        if (volume.unlocked && !volume.unlocked->record.loopDevice.isEmpty())
            ours.insert(KVBlockDevice::numberOf(volume.unlocked->record.loopDevice));

    QSet<dev_t> seen;
    QList<KVPlainVolume> volumes;
    const KVMountTable mounts = KVMountTable::current();
    for (const KVMount &mount : mounts.mounts()) {
        const dev_t number = KVBlockDevice::numberOf(mount.source);
        if (number == 0 || ours.contains(number) || seen.contains(number))
            continue;
        seen.insert(number);
        KVPlainVolume volume;
        volume.device = QFileInfo(mount.source).fileName();
        volume.mountPoint = mount.mountPoint;
        volume.fileSystem = mount.fileSystemType;
        if (const auto partition = KVBlockDevice::withNumber(number)) {
            volume.device = partition->name;
            volume.protocol = partition->protocol;
            volume.internal = partition->internal;
        } else {
            // A file system on a whole loop device is a disk image (ours,
            // or anybody's), never a disk to encrypt.
            volume.diskImage = volume.device.startsWith(QLatin1String("loop"));
            volume.protocol = volume.diskImage ? QStringLiteral("Disk Image") : QStringLiteral("SCSI");
        }
        const auto superblock = volume.fileSystem == QLatin1String("ext4") ? KVExt4::readSuperblock(mount.source)
                                                                          : std::nullopt;
        volume.name = superblock && !superblock->label.isEmpty() ? superblock->label
                                                                 : QFileInfo(mount.mountPoint).fileName();
        if (mount.mountPoint == QLatin1String("/"))
            volume.name = QStringLiteral("System");
        volume.uuid = superblock ? superblock->uuid
                                 : upperUuid(QUuid::createUuidV5(derivedNamespace, mount.source));
        struct statvfs fs{};
        volume.readOnly = statvfs(QFile::encodeName(mount.mountPoint).constData(), &fs) == 0
            && (fs.f_flag & ST_RDONLY);
        volumes.append(volume);
    }
    return volumes;
}

QString KVDiskInventory::reportedFileSystem(const QString &kernelName)
{
    if (kernelName == QLatin1String("ext4"))
        return QStringLiteral("Journaled HFS+");
    if (kernelName == QLatin1String("vfat"))
        return QStringLiteral("MS-DOS FAT32");
    if (kernelName == QLatin1String("exfat"))
        return QStringLiteral("ExFAT");
    return kernelName;
}

} // namespace kvlinux
