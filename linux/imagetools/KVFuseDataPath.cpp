#include "KVFuseDataPath.h"

#include "KVAttachmentRegistry.h"
#include "KVExt4.h"
#include "KVExternalCommand.h"
#include "KVLoopDevice.h"
#include "KVPayloadSession.h"
#include "KVSpawn.h"
#include "KVVolumeFolder.h"

#include "platform/KVMountTable.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kvlinux {

namespace {

const QString kernelName = QStringLiteral("fuse+kernel");
const QString fuse2fsName = QStringLiteral("fuse+fuse2fs");
constexpr int mountTimeoutMs = 30000;
constexpr int ejectTimeoutMs = 60000;
constexpr int forcedEjectTimeoutMs = 2000;
constexpr int revokeTimeoutMs = 20000;

// Waits until a mount shows up at folder or the process serving it ends.
bool waitForMount(const QString &folder, const KVProcessIdentity &server)
{
    const int table = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (table < 0)
        return false;
    const int pidfd = int(syscall(SYS_pidfd_open, server.pid(), 0));
    QElapsedTimer clock;
    clock.start();
    bool mounted = false;
    for (;;) {
        mounted = KVMountTable::read(table).value_or(KVMountTable()).at(folder).has_value();
        if (mounted || !server.isAlive() || clock.elapsed() > mountTimeoutMs)
            break;
        // The mount table signals every change with POLLPRI, the pidfd the exit.
        pollfd fds[2] = {{table, POLLPRI, 0}, {pidfd, POLLIN, 0}};
        poll(fds, pidfd >= 0 ? 2 : 1, 200);
    }
    close(table);
    if (pidfd >= 0)
        close(pidfd);
    return mounted;
}

} // namespace

KVFuseDataPath::KVFuseDataPath(QString imagefs, Driver driver)
    : m_imagefs(std::move(imagefs)), m_driver(driver)
{
}

KVFuseDataPath::Driver KVFuseDataPath::preferredDriver()
{
    return geteuid() == 0 ? Driver::Kernel : Driver::Fuse2fs;
}

QString KVFuseDataPath::name() const
{
    return m_driver == Driver::Kernel ? kernelName : fuse2fsName;
}

KVImageResult KVFuseDataPath::attach(const KVAttachRequest &request, const KVSecureBytes &volumeKey,
                                     KVAttachment &record, const KVAttachmentRegistry &registry)
{
    record.dataPath = name();
    record.imagePath = request.imagePath;
    record.readOnly = request.readOnly;
    record.volumeName = request.volumeName;

    KVPayloadSession session;
    KVPayloadSession::Launch launch;
    launch.helper = m_imagefs;
    launch.imagePath = request.imagePath;
    launch.geometry = request.geometry;
    launch.readOnly = request.readOnly;
    // Under a loop device the kernel caches the plaintext; fuse2fs reads
    // small blocks and needs the cache of the image file.
    launch.directIo = m_driver == Driver::Kernel;
    launch.directory = record.payloadDirectory;
    launch.name = QStringLiteral("korvelle:") + record.wholeDisk();
    if (auto error = session.start(launch, volumeKey))
        return error;
    record.daemon = session.daemon();
    registry.save(record);

    const auto superblock = KVExt4::readSuperblock(session.payloadPath());
    if (!superblock)
        return KVImageError(KVImageError::NoMountableFileSystems);
    record.volumeUuid = superblock->uuid;
    record.payloadSize = qint64(superblock->blockCount * superblock->blockSize);
    // Images made elsewhere may carry no name in their header.
    if (record.volumeName.isEmpty())
        record.volumeName = superblock->label.isEmpty() ? QStringLiteral("Untitled") : superblock->label;

    record.createdMountPoint = true;
    record.mountPoint = KVVolumeFolder::create(request.mountRoot, record.volumeName,
                                               [&](const QString &candidate) {
                                                   record.mountPoint = candidate;
                                                   registry.save(record);
                                               });
    if (record.mountPoint.isEmpty()) {
        record.createdMountPoint = false;
        registry.save(record);
        return KVImageError(KVImageError::NoMountableFileSystems);
    }

    if (auto error = mountVolume(record, registry, superblock->needsRecovery)) {
        QDir().rmdir(record.mountPoint);
        return error;
    }
    // The mounted volume holds the payload open from here on; the daemon ends
    // when it lets go.
    session.leaveRunning();
    return std::nullopt;
}

KVImageResult KVFuseDataPath::mountVolume(KVAttachment &record, const KVAttachmentRegistry &registry,
                                          bool needsRecovery)
{
    return m_driver == Driver::Kernel ? mountWithKernel(record, registry, needsRecovery)
                                      : mountWithFuse2fs(record, registry, needsRecovery);
}

KVImageResult KVFuseDataPath::mountWithKernel(KVAttachment &record,
                                              const KVAttachmentRegistry &registry,
                                              bool needsRecovery)
{
    KVLoopDevice loop;
    if (auto error = loop.attach(record.payloadPath(), record.readOnly))
        return error;
    record.loopDevice = loop.path();
    registry.save(record);

    // Images are data, not systems: no device nodes or set-uid programs. The
    // inode tables are left for ext4 to fill lazily, never all at once, which
    // would allocate them in the sparse file. A read-only mount cannot replay
    // the journal and reads the file system as it is.
    QByteArray options = "noinit_itable";
    if (record.readOnly && needsRecovery)
        options += ",noload";
    const unsigned long flags = MS_NOSUID | MS_NODEV | (record.readOnly ? MS_RDONLY : 0);
    if (::mount(QFile::encodeName(record.loopDevice).constData(),
                QFile::encodeName(record.mountPoint).constData(), "ext4", flags,
                options.constData()) != 0)
        return errno == EBUSY ? KVImageError(KVImageError::Busy)
                              : KVImageError(KVImageError::NoMountableFileSystems);
    return std::nullopt;
}

KVImageResult KVFuseDataPath::mountWithFuse2fs(KVAttachment &record,
                                               const KVAttachmentRegistry &registry,
                                               bool needsRecovery)
{
    // fuse2fs does not replay the journal; e2fsck does, when we may write.
    if (needsRecovery && !record.readOnly)
        if (auto error = KVExt4::check(record.payloadPath(), false))
            return error;
    const QString fuse2fs = KVExternalCommand::locate(QStringLiteral("fuse2fs"));
    if (fuse2fs.isEmpty())
        return KVImageError(KVImageError::NotSupported);
    // fakeroot: the volume belongs to whoever attached it, as on macOS where
    // ownership on disk images is ignored.
    QString options = QStringLiteral("fakeroot");
    if (record.readOnly)
        options += needsRecovery ? QStringLiteral(",ro,norecovery") : QStringLiteral(",ro");
    const pid_t pid = KVSpawn::detached(
        fuse2fs, {record.payloadPath(), record.mountPoint, QStringLiteral("-f"), QStringLiteral("-o"), options},
        registry.directory() + QStringLiteral("/%1.log").arg(record.wholeDisk()));
    if (pid < 0)
        return KVImageError(KVImageError::NotSupported);
    record.fuse2fs = KVProcessIdentity::of(pid);
    registry.save(record);
    if (!waitForMount(record.mountPoint, record.fuse2fs)) {
        kill(pid, SIGTERM);
        return KVImageError(KVImageError::NoMountableFileSystems);
    }
    return std::nullopt;
}

KVImageResult KVFuseDataPath::unmountPath(const QString &path, bool lazy)
{
    if (geteuid() == 0) {
        if (umount2(QFile::encodeName(path).constData(), lazy ? MNT_DETACH : 0) == 0
            || errno == EINVAL || errno == ENOENT)
            return std::nullopt;
        return KVImageError::fromErrno(errno);
    }
    QStringList args = {QStringLiteral("-u")};
    if (lazy)
        args << QStringLiteral("-z");
    args << QStringLiteral("--") << path;
    const auto result = KVExternalCommand::run(QStringLiteral("fusermount3"), args);
    if (result.exitCode == 0 || result.output.contains("not found in") || result.output.contains("not mounted"))
        return std::nullopt;
    return result.output.contains("busy") ? KVImageError(KVImageError::Busy)
                                          : KVImageError::fromErrno(EIO);
}

KVImageResult KVFuseDataPath::unmount(const KVAttachment &record, bool force)
{
    if (!isVolumeMounted(record, KVMountTable::current()))
        return std::nullopt;
    // A forced unmount detaches the volume while files on it are open, and
    // eject() then takes the volume away from them: what they wrote must be
    // on the image before that.
    if (force)
        KVVolumeFolder::flush(record.mountPoint);
    return unmountPath(record.mountPoint, force);
}

KVImageResult KVFuseDataPath::eject(const KVAttachment &record, bool force)
{
    if (record.createdMountPoint && !KVMountTable::current().at(record.mountPoint))
        QDir().rmdir(record.mountPoint);
    // The daemon goes once nothing holds the payload: the loop device clears
    // itself when its file system is unmounted, fuse2fs exits with its mount.
    if (record.daemon.waitForExit(force ? forcedEjectTimeoutMs : ejectTimeoutMs)) {
        removeLeftovers(record);
        return std::nullopt;
    }
    if (!force)
        return KVImageError(KVImageError::Busy);
    // Files on the detached volume are still open. A forced eject ends the
    // attachment anyway, as it does on macOS: their I/O fails from now on.
    revoke(record);
    if (!record.daemon.waitForExit(revokeTimeoutMs))
        return KVImageError(KVImageError::Busy);
    removeLeftovers(record);
    return std::nullopt;
}

// Ends the processes that serve the volume although it is still in use.
// fuse2fs writes its file system back and exits; the daemon then wipes the
// key, lets go of the image and closes its FUSE connection, after which
// every request still on the way to the payload fails. What remains is a
// detached file system on a loop device whose file is dead; both vanish by
// themselves when the last file on them is closed. Nothing of it holds the
// image, so it can be attached again at once.
void KVFuseDataPath::revoke(const KVAttachment &record)
{
    if (record.fuse2fs.isAlive()) {
        record.fuse2fs.terminate();
        record.fuse2fs.waitForExit(revokeTimeoutMs);
    }
    if (record.daemon.waitForExit(forcedEjectTimeoutMs))
        return;
    unmountPath(record.payloadDirectory, true);
    record.daemon.terminate();
}

// What a crash can leave behind: a FUSE mount without its daemon, a loop
// device whose file system is gone, a fuse2fs without its mount.
void KVFuseDataPath::removeLeftovers(const KVAttachment &record)
{
    if (!record.loopDevice.isEmpty()
        && KVLoopDevice::backingFile(record.loopDevice) == record.payloadPath())
        KVLoopDevice::detach(record.loopDevice);
    if (record.fuse2fs.isAlive())
        kill(record.fuse2fs.pid(), SIGTERM);
    if (KVMountTable::current().at(record.payloadDirectory))
        unmountPath(record.payloadDirectory, true);
}

bool KVFuseDataPath::isVolumeMounted(const KVAttachment &record, const KVMountTable &mounts) const
{
    const auto mount = mounts.at(record.mountPoint);
    if (record.mountPoint.isEmpty() || !mount)
        return false;
    if (record.dataPath == kernelName)
        return mount->source == record.loopDevice
            && KVLoopDevice::backingFile(record.loopDevice) == record.payloadPath();
    // fuse2fs names the file system after the file it serves.
    return mount->fileSystemType.startsWith(QLatin1String("fuse")) && mount->source == record.payloadPath();
}

KVDataPath::Health KVFuseDataPath::inspect(const KVAttachment &record, const KVMountTable &mounts) const
{
    if (isVolumeMounted(record, mounts))
        return Health::Mounted;
    const bool anythingLeft = record.daemon.isAlive() || record.fuse2fs.isAlive()
        || mounts.at(record.payloadDirectory).has_value()
        || (!record.loopDevice.isEmpty()
            && KVLoopDevice::backingFile(record.loopDevice) == record.payloadPath());
    return anythingLeft ? Health::Unmounted : Health::Gone;
}

QString KVFuseDataPath::livePayload(const KVAttachment &record) const
{
    return record.payloadPath();
}

} // namespace kvlinux
