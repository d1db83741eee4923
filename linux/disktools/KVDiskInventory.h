#pragma once

#include "KVAttachedImages.h"
#include "KVBlockDevice.h"
#include "KVConversionRecord.h"
#include "KVLuksPartition.h"

#include <QList>
#include <QString>

#include <optional>

namespace kvlinux {

// An encrypted partition, shown to the application as a CoreStorage group
// with one physical volume (the partition), one family and one logical volume
// (the file system inside). The group's UUIDs are derived from the LUKS2 UUID,
// so they stay the same across runs, locked or not.
struct KVEncryptedVolume
{
    KVBlockDevice partition;
    QString detachedHeader; // while it is decrypted
    QString luksUuid;
    QString name;
    KVLuksPartition::Conversion conversion = KVLuksPartition::Conversion::None;
    std::optional<KVConversionRecord> progress;
    std::optional<KVAttachedImages::Entry> unlocked; // opened through the data path

    QString groupUuid() const { return derivedUuid(QStringLiteral("group")); }
    QString familyUuid() const { return derivedUuid(QStringLiteral("family")); }
    QString logicalVolumeUuid() const { return derivedUuid(QStringLiteral("volume")); }
    QString physicalVolumeUuid() const { return luksUuid; }

    // Until its converter has mounted the result, a finished conversion is
    // still under way.
    bool isConverting() const
    {
        return conversion != KVLuksPartition::Conversion::None || (progress && progress->converter.isAlive());
    }
    // "Locked" when nothing has it open: neither a mount nor a conversion.
    bool isLocked() const { return !unlocked && !isConverting(); }
    bool isMounted() const { return unlocked && unlocked->mounted; }
    // The device of the logical volume: the loop device that serves the
    // opened volume, else the partition itself.
    QString logicalDisk() const;
    QString mountPoint() const { return isMounted() ? unlocked->record.mountPoint : QString(); }
    QString volumeUuid() const;

    // Any of the group's UUIDs, the partition's name or the volume's device.
    bool isNamedBy(const QString &identifier) const;

private:
    QString derivedUuid(const QString &role) const;
};

// A mounted file system that is not one of ours.
struct KVPlainVolume
{
    QString device;      // kernel name of the mounted device
    QString mountPoint;
    QString fileSystem;  // the kernel's name: "ext4", "vfat"...
    QString name;
    QString uuid;
    bool readOnly = false;
    bool diskImage = false; // a loop device without partitions
    QString protocol;
    bool internal = true;
};

// What the disk verbs see: the encrypted partitions and the mounted volumes.
class KVDiskInventory
{
public:
    // The directory of the disks' records; empty when there is none (a
    // listing never makes it: only opening or converting a volume does).
    // Root keeps them in its runtime directory, or machine-wide when it has
    // none (run through pkexec); an ordinary user reads the machine-wide ones.
    static QString stateDirectory(bool create = false);

    // unreadable: set to the number of partitions that could be neither
    // opened nor looked up in udev's database (an ordinary user without udev).
    QList<KVEncryptedVolume> encryptedVolumes(int *unreadable = nullptr) const;
    QList<KVPlainVolume> plainVolumes() const;

    std::optional<KVEncryptedVolume> findEncrypted(const QString &identifier) const;

    // The file-system name the storage report gives: Linux's journaled file
    // system answers to the name of the one the application knows.
    static QString reportedFileSystem(const QString &kernelName);
};

} // namespace kvlinux
