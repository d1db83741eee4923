#pragma once

#include "KVDataPath.h"

namespace kvlinux {

// The userspace data path: imagefs decrypts the payload in a FUSE mount, and
// the ext4 inside is mounted from there, by the kernel through a loop device
// when we are root, and by fuse2fs otherwise (an ordinary user may mount FUSE
// file systems but not block devices).
class KVFuseDataPath : public KVDataPath
{
public:
    enum class Driver { Kernel, Fuse2fs };

    // imagefs: the path of the daemon program.
    KVFuseDataPath(QString imagefs, Driver driver = preferredDriver());
    static Driver preferredDriver();

    QString name() const override;
    KVImageResult attach(const KVAttachRequest &request, const KVSecureBytes &volumeKey,
                         KVAttachment &record, const KVAttachmentRegistry &registry) override;
    KVImageResult unmount(const KVAttachment &record, bool force) override;
    KVImageResult eject(const KVAttachment &record, bool force) override;
    Health inspect(const KVAttachment &record, const KVMountTable &mounts) const override;
    QString livePayload(const KVAttachment &record) const override;

private:
    KVImageResult mountVolume(KVAttachment &record, const KVAttachmentRegistry &registry,
                              bool needsRecovery);
    KVImageResult mountWithKernel(KVAttachment &record, const KVAttachmentRegistry &registry,
                                  bool needsRecovery);
    KVImageResult mountWithFuse2fs(KVAttachment &record, const KVAttachmentRegistry &registry,
                                   bool needsRecovery);
    bool isVolumeMounted(const KVAttachment &record, const KVMountTable &mounts) const;
    static KVImageResult unmountPath(const QString &path, bool lazy);
    static void revoke(const KVAttachment &record);
    static void removeLeftovers(const KVAttachment &record);

    QString m_imagefs;
    Driver m_driver;
};

} // namespace kvlinux
