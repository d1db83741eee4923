#include "KVVolumeAccess.h"

#include "KVAttachmentRegistry.h"
#include "KVFuseDataPath.h"
#include "KVLuksImage.h"

#include <QDir>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

KVVolumeAccess::KVVolumeAccess(QString imagefs)
    : m_imagefs(std::move(imagefs))
{
}

QString KVVolumeAccess::defaultMountRoot()
{
    // Started through pkexec, the volume is the asking user's: pkexec names
    // that user in PKEXEC_UID (and clears whatever else the user had set).
    uid_t owner = geteuid();
    bool numeric = false;
    const uint asking = qEnvironmentVariable("PKEXEC_UID").toUInt(&numeric);
    if (owner == 0 && numeric)
        owner = uid_t(asking);
    const passwd *user = getpwuid(owner);
    const QString root = QStringLiteral("/media/") + QString::fromLocal8Bit(user ? user->pw_name : "root");
    QDir().mkpath(root);
    return root;
}

KVImageResult KVVolumeAccess::open(const KVEncryptedVolume &volume, const KVSecureBytes &passphrase,
                                   const QString &mountRoot, KVAttachment &record) const
{
    const QString state = KVDiskInventory::stateDirectory(true);
    if (state.isEmpty())
        return KVImageError::fromErrno(EACCES);
    KVLuksImage header(volume.partition.node());
    if (auto error = header.load())
        return error;
    KVSecureBytes volumeKey;
    if (auto error = header.unlock(passphrase, volumeKey))
        return error;

    const KVAttachmentRegistry registry(state);
    {
        const auto lock = registry.lock();
        auto reserved = registry.reserve();
        if (!reserved)
            return KVImageError::fromErrno(EACCES);
        record = *reserved;
        record.imagePath = volume.partition.node();
        record.imageDevice = volume.partition.number;
        registry.save(record);
    }
    KVAttachRequest request;
    request.imagePath = volume.partition.node();
    request.geometry = header.geometry();
    request.mountRoot = QDir(mountRoot).canonicalPath();
    request.volumeName = volume.name;
    KVFuseDataPath dataPath(m_imagefs, KVFuseDataPath::Driver::Kernel);
    if (auto error = dataPath.attach(request, volumeKey, record, registry)) {
        const auto lock = registry.lock();
        registry.remove(record);
        return error;
    }
    record.stage = KVAttachment::Stage::Attached;
    registry.save(record);
    return std::nullopt;
}

KVImageResult KVVolumeAccess::close(const KVEncryptedVolume &volume, bool force) const
{
    if (!volume.unlocked)
        return std::nullopt;
    const KVAttachment &record = volume.unlocked->record;
    KVFuseDataPath dataPath(m_imagefs, KVFuseDataPath::Driver::Kernel);
    if (volume.unlocked->mounted)
        if (auto error = dataPath.unmount(record, force))
            return error;
    if (auto error = dataPath.eject(record, force))
        return error;
    const KVAttachmentRegistry registry(KVDiskInventory::stateDirectory(true));
    const auto lock = registry.lock();
    registry.remove(record);
    return std::nullopt;
}

} // namespace kvlinux
