#include "KVDiskConversion.h"

#include "KVBlockDevice.h"
#include "KVConversionLock.h"
#include "KVDetachedHeaders.h"
#include "KVExt4.h"
#include "KVKeyringSecret.h"
#include "platform/KVMountTable.h"
#include "KVSpawn.h"
#include "KVStorageReport.h"
#include "KVVolumeAccess.h"
#include "KVVolumeFolder.h"

#include <QDir>
#include <QElapsedTimer>

#include <algorithm>

#include <cerrno>
#include <cstdio>
#include <sys/mount.h>

namespace kvlinux {

namespace {

// diskutil's numbers for the failures the application tells apart.
constexpr int unsupportedFileSystem = -69756;
constexpr int alreadyEncrypted = -69753;
constexpr int otherFailure = -69845;
constexpr int unlockFailure = -69749;

} // namespace

KVDiskConversion::KVDiskConversion(const KVDiskEnvironment &environment, KVToolOutput &out)
    : m_environment(environment), m_out(out)
{
}

QString KVDiskConversion::keyDescription(const QString &luksUuid)
{
    return QStringLiteral("korvelle-conversion:") + luksUuid;
}

int KVDiskConversion::fail(const QString &reason, int code) const
{
    m_out.error(QStringLiteral("Error converting disk to CoreStorage: %1 (%2)").arg(reason).arg(code));
    return 1;
}

int KVDiskConversion::convert(const QString &disk, const std::optional<KVSecureBytes> &passphrase)
{
    const auto partition = KVBlockDevice::find(disk);
    if (!partition) {
        m_out.error(QStringLiteral("Could not find disk: ") + disk);
        return 1;
    }
    const QString state = KVDiskInventory::stateDirectory(true);
    if (state.isEmpty())
        return fail(QStringLiteral("No place for the conversion's records"), otherFailure);
    if (KVBlockDevice::isSystemDisk(partition->parentDisk))
        return fail(QStringLiteral("The disk holds the running system"), otherFailure);
    // Every check below holds only while nobody else converts the partition:
    // a second command that got past them would shrink a file system that is
    // being moved, or write a second header over the first.
    KVConversionLock lock(state, partition->number);
    if (!lock.tryAcquire())
        return fail(QStringLiteral("The disk is being converted already"), otherFailure);
    if (KVLuksPartition::hasHeader(partition->node()) || !KVDetachedHeaders::existingFor(*partition).isEmpty())
        return fail(QStringLiteral("The target disk is already in use by Core Storage"), alreadyEncrypted);
    const auto superblock = KVExt4::readSuperblock(partition->node());
    if (!superblock)
        return fail(QStringLiteral("The given file system is not supported on Core Storage"), unsupportedFileSystem);
    if (!passphrase || passphrase->isEmpty())
        return fail(QStringLiteral("A passphrase is required to encrypt a disk"), otherFailure);

    const QString name = superblock->label.isEmpty() ? QStringLiteral("Untitled") : superblock->label;
    m_out.line(QStringLiteral("Started CoreStorage operation on %1 %2").arg(partition->name, name));

    // Offline: the file system must not change under the conversion. Until
    // the header is written, a failure puts it back where it was.
    QStringList unmounted;
    const auto failMounted = [&](const QString &reason) {
        for (const QString &mountPoint : unmounted)
            ::mount(QFile::encodeName(partition->node()).constData(), QFile::encodeName(mountPoint).constData(),
                    "ext4", 0, nullptr);
        return fail(reason, otherFailure);
    };
    KVStorageReport::Space before;
    const KVMountTable mounts = KVMountTable::current();
    for (const KVMount &mount : mounts.mounts()) {
        if (KVBlockDevice::numberOf(mount.source) != partition->number)
            continue;
        if (!before.total)
            before = KVStorageReport::spaceAt(mount.mountPoint);
        if (umount2(QFile::encodeName(mount.mountPoint).constData(), 0) != 0)
            return failMounted(QStringLiteral("Unable to unmount %1: %2")
                                   .arg(mount.mountPoint, QString::fromLocal8Bit(strerror(errno))));
        unmounted.prepend(mount.mountPoint);
    }

    m_out.line(QStringLiteral("Resizing disk to fit Core Storage headers"));
    if (KVExt4::check(partition->node(), true))
        return failMounted(QStringLiteral("The file system has errors that could not be repaired"));
    const quint64 blockSize = superblock->blockSize;
    const quint64 room = KVLuksPartition::headerRoom;
    const quint64 target = partition->size > qint64(room) ? (quint64(partition->size) - room) / blockSize : 0;
    // resize2fs -P overestimates small file systems badly; resize2fs itself
    // refuses, leaving the file system as it was, when the data do not fit.
    if (target == 0 || (superblock->blockCount > target && KVExt4::resize(partition->node(), target)))
        return failMounted(QStringLiteral("There is not enough free space on the volume to make room for the Core Storage headers"));

    // What the volume will show while it cannot be mounted: its figures from
    // before, less the room it gave up (free blocks, all of it). Unmounted,
    // it has only what its superblock counts, exactly after the check; this
    // is the last look at it before the header takes its place.
    const auto shrunk = KVExt4::readSuperblock(partition->node());
    if (!shrunk)
        return failMounted(QStringLiteral("The file system could not be read after it was resized"));
    const qint64 givenUp = qint64(superblock->blockCount - std::min(shrunk->blockCount, superblock->blockCount))
        * qint64(blockSize);
    const KVStorageReport::Space during = before.total
        ? KVStorageReport::Space{before.total - givenUp, std::max<qint64>(0, before.free - givenUp)}
        : KVStorageReport::Space{qint64(shrunk->blockCount * blockSize), qint64(shrunk->availableBytes())};

    m_out.line(QStringLiteral("Creating Core Storage Logical Volume Group"));
    KVLuksPartition header(partition->node());
    const quint32 sectorSize = quint32(std::min<quint64>(blockSize, 4096));
    if (header.beginEncryption(*passphrase, sectorSize, name, m_environment.derivation,
                               state + QStringLiteral("/header-") + partition->name))
        return failMounted(QStringLiteral("The Core Storage header could not be written"));

    m_out.line(QStringLiteral("Switching %1 to Core Storage").arg(partition->name));
    KVConversionRecord record;
    record.luksUuid = header.uuid();
    record.device = partition->node();
    record.total = quint64(partition->size);
    record.volumeName = name;
    record.volumeUuid = superblock->uuid;
    record.fileSystemSize = quint64(during.total);
    record.freeSpace = quint64(during.free);
    record.save(state);
    if (!KVKeyringSecret(keyDescription(record.luksUuid)).store(*passphrase))
        return fail(QStringLiteral("The passphrase could not be kept for the conversion"), otherFailure);
    lock.release();
    if (!startConverter(state, record.luksUuid, partition->node()))
        return fail(QStringLiteral("The conversion could not be started"), otherFailure);

    KVEncryptedVolume volume;
    volume.partition = *partition;
    volume.luksUuid = record.luksUuid;
    m_out.line(QStringLiteral("Core Storage LVG UUID: ") + volume.groupUuid());
    m_out.line(QStringLiteral("Core Storage PV UUID: ") + volume.physicalVolumeUuid());
    m_out.line(QStringLiteral("Core Storage LV UUID: ") + volume.logicalVolumeUuid());
    m_out.line(QStringLiteral("Core Storage disk: ") + partition->name);
    m_out.line(QStringLiteral("Finished CoreStorage operation on %1 %2").arg(partition->name, name));
    m_out.line(QStringLiteral("Encryption in progress; use `diskutil coreStorage list` for status"));
    return 0;
}

int KVDiskConversion::failRevert(const QString &reason, int code) const
{
    m_out.error(QStringLiteral("Error: %1: %2").arg(code).arg(reason));
    return 1;
}

int KVDiskConversion::revert(const KVEncryptedVolume &volume, const std::optional<KVSecureBytes> &passphrase)
{
    m_out.line(QStringLiteral("Started CoreStorage operation on %1 %2").arg(volume.partition.name, volume.name));
    if (!passphrase)
        return failRevert(QStringLiteral("Unable to unlock the Core Storage volume: no passphrase specified"), unlockFailure);
    if (volume.isConverting())
        return failRevert(QStringLiteral("The volume is being converted already"));
    const QString state = KVDiskInventory::stateDirectory(true);
    const QString headerFile = KVDetachedHeaders::pathFor(volume.partition, true);
    if (state.isEmpty() || headerFile.isEmpty())
        return failRevert(QStringLiteral("No place for the conversion's records"));
    KVConversionLock lock(state, volume.partition.number);
    // The listing the volume came from may be older than the lock: a
    // decryption begun meanwhile has moved the header to its file, and
    // backing up the partition's start again would overwrite that copy.
    if (!lock.tryAcquire() || !KVDetachedHeaders::existingFor(volume.partition).isEmpty())
        return failRevert(QStringLiteral("The volume is being converted already"));

    KVLuksPartition header(volume.partition.node());
    KVImageResult error = header.load();
    if (!error && header.conversion() != KVLuksPartition::Conversion::None)
        return failRevert(QStringLiteral("The volume is being converted already"));
    if (!error)
        error = header.verify(*passphrase);
    if (error)
        return error->code() == KVImageError::Authentication
            ? failRevert(QStringLiteral("Unable to unlock the Core Storage volume"), unlockFailure)
            : failRevert(error->reason());
    const KVStorageReport::Space space = KVStorageReport::spaceAt(volume.mountPoint());
    // Offline: nothing may use the volume while its blocks move.
    if (auto closing = KVVolumeAccess(m_environment.imagefs).close(volume))
        return failRevert(QStringLiteral("Unable to unmount the volume (%1)").arg(closing->reason()));
    if (auto begun = header.beginDecryption(*passphrase, headerFile))
        return failRevert(QStringLiteral("The decryption could not be started (%1)").arg(begun->reason()));
    if (!KVDetachedHeaders::flush(headerFile))
        return failRevert(QStringLiteral("The volume's header could not be kept safe"));

    KVConversionRecord record;
    record.luksUuid = volume.luksUuid;
    record.device = volume.partition.node();
    record.forward = false;
    record.total = quint64(volume.partition.size);
    record.volumeName = volume.name;
    record.volumeUuid = volume.volumeUuid();
    record.fileSystemSize = quint64(space.total);
    record.freeSpace = quint64(space.free);
    record.save(state);
    if (!KVKeyringSecret(keyDescription(record.luksUuid)).store(*passphrase))
        return failRevert(QStringLiteral("The passphrase could not be kept for the conversion"));
    lock.release();
    if (!startConverter(state, record.luksUuid, volume.partition.node()))
        return failRevert(QStringLiteral("The conversion could not be started"));
    m_out.line(QStringLiteral("Finished CoreStorage operation on %1 %2").arg(volume.partition.name, volume.name));
    m_out.line(QStringLiteral("Decryption in progress; use `diskutil coreStorage list` for status"));
    return 0;
}

// The data is plain and at the partition's start now: the header file has
// done its work, the file system gets the header's room back and is mounted.
int KVDiskConversion::finishDecryption(const KVBlockDevice &partition, const QString &volumeName)
{
    QFile::remove(KVDetachedHeaders::pathFor(partition));
    const auto superblock = KVExt4::readSuperblock(partition.node());
    if (!superblock || KVExt4::check(partition.node(), true))
        return 1;
    KVExt4::resize(partition.node(), quint64(partition.size) / superblock->blockSize);
    const QString mountPoint = KVVolumeFolder::create(KVVolumeAccess::defaultMountRoot(), volumeName,
                                                      [](const QString &) {});
    if (mountPoint.isEmpty())
        return 1;
    if (::mount(QFile::encodeName(partition.node()).constData(), QFile::encodeName(mountPoint).constData(), "ext4",
                MS_NOSUID | MS_NODEV, nullptr) != 0) {
        QDir().rmdir(mountPoint);
        return 1;
    }
    return 0;
}

int KVDiskConversion::stopped(const QString &why)
{
    std::fputs(qPrintable(QStringLiteral("The conversion stopped: ") + why + QLatin1Char('\n')), stderr);
    return 1;
}

int KVDiskConversion::runConverter(const QString &device, const QString &imagefs)
{
    const QString state = KVDiskInventory::stateDirectory(true);
    const auto partition = KVBlockDevice::find(device);
    if (state.isEmpty() || !partition)
        return 1;
    KVConversionLock lock(state, partition->number);
    if (!lock.acquire())
        return 1;
    const QString detachedHeader = KVDetachedHeaders::existingFor(*partition);
    KVLuksPartition header(partition->node(), detachedHeader);
    if (header.load())
        return 1;
    const auto conversion = header.conversion();
    auto record = KVConversionRecord::load(state, header.uuid());
    if (conversion == KVLuksPartition::Conversion::None) {
        // A decryption whose process ended between its last block and the end.
        const QString name = record ? record->volumeName : header.label();
        if (record)
            record->remove(state);
        return detachedHeader.isEmpty() ? 0 : finishDecryption(*partition, name);
    }
    const KVKeyringSecret secret(keyDescription(header.uuid()));
    const auto passphrase = secret.read();
    if (!passphrase)
        return stopped(QStringLiteral("the passphrase is no longer at hand; unlocking the volume goes on with it"));
    if (!record) {
        record.emplace();
        record->luksUuid = header.uuid();
        record->total = quint64(partition->size);
        record->volumeName = header.label();
    }
    record->device = partition->node(); // a disk that comes back may get another name
    record->forward = conversion == KVLuksPartition::Conversion::Encrypting;
    record->converter = KVProcessIdentity::self();
    record->save(state);

    QElapsedTimer sinceSaved;
    sinceSaved.start();
    const auto progress = [&](quint64 done, quint64 total) {
        if (sinceSaved.elapsed() >= 250 || done == total) {
            record->done = done;
            record->total = total;
            record->save(state);
            sinceSaved.restart();
        }
        return true;
    };
    // The disk gone or failing: what is converted is journalled in the
    // header, and the conversion goes on from there when the disk is back.
    if (auto error = header.resume(*passphrase, progress))
        return stopped(QStringLiteral("the disk %1 could not be read or written (%2); the conversion goes on "
                                      "when the disk is back")
                           .arg(partition->node(), error->reason()));

    const QString name = record->volumeName.isEmpty() ? header.label() : record->volumeName;
    int result = 0;
    if (record->forward) {
        KVEncryptedVolume volume;
        volume.partition = *partition;
        volume.luksUuid = header.uuid();
        volume.name = name;
        KVAttachment opened;
        KVVolumeAccess(imagefs).open(volume, *passphrase, KVVolumeAccess::defaultMountRoot(), opened);
    } else {
        result = finishDecryption(*partition, name);
    }
    secret.remove();
    record->remove(state);
    return result;
}

bool KVDiskConversion::startConverter(const QString &state, const QString &luksUuid, const QString &device,
                                      const QString &converter)
{
    return KVSpawn::detached(converter, {device}, KVConversionRecord::logPath(state, luksUuid)) >= 0;
}

bool KVDiskConversion::startConverter(const QString &state, const QString &luksUuid, const QString &device) const
{
    return startConverter(state, luksUuid, device, m_environment.converter);
}

void KVDiskConversion::resumeInterrupted(const QList<KVEncryptedVolume> &volumes, const QString &converter)
{
    const QString state = KVDiskInventory::stateDirectory(true);
    if (geteuid() != 0 || state.isEmpty())
        return;
    for (const KVEncryptedVolume &volume : volumes)
        if (volume.isConverting() && (!volume.progress || !volume.progress->converter.isAlive()))
            startConverter(state, volume.luksUuid, volume.partition.node(), converter);
}

} // namespace kvlinux
