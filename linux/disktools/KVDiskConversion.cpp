#include "KVDiskConversion.h"

#include "KVBlockDevice.h"
#include "KVConversionLock.h"
#include "KVExt4.h"
#include "KVKeyringSecret.h"
#include "platform/KVMountTable.h"
#include "KVSpawn.h"
#include "KVVolumeAccess.h"

#include <QDir>
#include <QElapsedTimer>

#include <cerrno>
#include <sys/mount.h>

namespace kvlinux {

namespace {

// diskutil's numbers for the failures the application tells apart.
constexpr int unsupportedFileSystem = -69756;
constexpr int alreadyEncrypted = -69753;
constexpr int otherFailure = -69845;

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
    if (KVLuksPartition::hasHeader(partition->node()))
        return fail(QStringLiteral("The target disk is already in use by Core Storage"), alreadyEncrypted);
    const auto superblock = KVExt4::readSuperblock(partition->node());
    if (!superblock)
        return fail(QStringLiteral("The given file system is not supported on Core Storage"), unsupportedFileSystem);
    if (!passphrase || passphrase->isEmpty())
        return fail(QStringLiteral("A passphrase is required to encrypt a disk"), otherFailure);

    KVConversionLock lock(state, partition->number);
    if (!lock.tryAcquire())
        return fail(QStringLiteral("The disk is being converted already"), otherFailure);

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
    const KVMountTable mounts = KVMountTable::current();
    for (const KVMount &mount : mounts.mounts()) {
        if (KVBlockDevice::numberOf(mount.source) != partition->number)
            continue;
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
    record.save(state);
    if (!KVKeyringSecret(keyDescription(record.luksUuid)).store(*passphrase))
        return fail(QStringLiteral("The passphrase could not be kept for the conversion"), otherFailure);
    lock.release();
    if (KVSpawn::detached(m_environment.converter, {partition->node()}) < 0)
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

int KVDiskConversion::runConverter(const QString &device, const QString &imagefs)
{
    const QString state = KVDiskInventory::stateDirectory(true);
    const auto partition = KVBlockDevice::find(device);
    if (state.isEmpty() || !partition)
        return 1;
    KVConversionLock lock(state, partition->number);
    if (!lock.acquire())
        return 1;
    KVLuksPartition header(partition->node());
    if (header.load())
        return 1;
    const auto conversion = header.conversion();
    auto record = KVConversionRecord::load(state, header.uuid());
    if (conversion == KVLuksPartition::Conversion::None) {
        if (record)
            record->remove(state);
        return 0;
    }
    const KVKeyringSecret secret(keyDescription(header.uuid()));
    const auto passphrase = secret.read();
    if (!passphrase)
        return 1; // only the user can go on: unlocking with the passphrase resumes it
    if (!record) {
        record.emplace();
        record->luksUuid = header.uuid();
        record->device = partition->node();
        record->total = quint64(partition->size);
        record->volumeName = header.label();
    }
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
    if (header.resume(*passphrase, progress))
        return 1;

    if (record->forward) {
        KVEncryptedVolume volume;
        volume.partition = *partition;
        volume.luksUuid = header.uuid();
        volume.name = record->volumeName.isEmpty() ? header.label() : record->volumeName;
        KVAttachment opened;
        KVVolumeAccess(imagefs).open(volume, *passphrase, KVVolumeAccess::defaultMountRoot(), opened);
    }
    secret.remove();
    record->remove(state);
    return 0;
}

void KVDiskConversion::resumeInterrupted(const QList<KVEncryptedVolume> &volumes, const QString &converter)
{
    if (geteuid() != 0)
        return;
    for (const KVEncryptedVolume &volume : volumes)
        if (volume.isConverting() && (!volume.progress || !volume.progress->converter.isAlive()))
            KVSpawn::detached(converter, {volume.partition.node()});
}

} // namespace kvlinux
