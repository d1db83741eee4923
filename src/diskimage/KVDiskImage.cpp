#include "KVDiskImage.h"

#include "KVDiskImageDelegate.h"
#include "model/KVLocalization.h"
#include "platform/KVMainQueue.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVValue.h"

#include <QDir>
#include <QPointer>
#include <QTimer>

using namespace KVValue;

namespace {

// A new volume is given this long to settle before hdiutil is asked about it.
constexpr int MountSettleTimeMs = 200;

// The path of a URL as the file system knows it, without a trailing slash.
QString filePath(const QUrl &url)
{
    QString path = url.path(QUrl::FullyDecoded);
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

// hdiutil adds the image's extension itself.
QString pathWithoutExtension(const QUrl &imageLocation)
{
    QString path = filePath(imageLocation);
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot > path.lastIndexOf(u'/') + 1)
        path.truncate(dot);
    return path;
}

// The mount point of an attached image is that of the last of its devices
// that has one.
QString lastMountPoint(const QVariantMap &image)
{
    QString mountPoint;
    for (const QVariant &entity : array(image.value(QStringLiteral("system-entities")))) {
        const QVariantMap device = dictionary(entity);
        if (device.contains(QStringLiteral("mount-point")))
            mountPoint = pathValue(device.value(QStringLiteral("mount-point")));
    }
    return mountPoint;
}

// Items for the encrypted images of an "info" output that are mounted (at
// `filter`, when one is given). Runs diskutil once per item.
QList<KVVolumeItemPtr> mountedEncryptedImages(const QVariant &info, const std::optional<QString> &filter,
                                              const QPointer<KVVolumeEngine> &engine, const KVToolPaths &tools)
{
    QList<KVVolumeItemPtr> found;
    for (const QVariant &entry : array(dictionary(info).value(QStringLiteral("images")))) {
        const QVariantMap image = dictionary(entry);
        if (!boolValue(image.value(QStringLiteral("image-encrypted"))))
            continue;
        const QString mountPoint = lastMountPoint(image);
        if (mountPoint.isEmpty() || (filter && mountPoint != *filter))
            continue;
        found.append(KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), image}}, engine, tools));
    }
    return found;
}

} // namespace

KVDiskImage::KVDiskImage(KVToolPaths tools, KVWorkspaceNotifications *workspace, QObject *parent)
    : KVVolumeEngine(parent)
    , m_tools(std::move(tools))
    , m_hdiutil(m_tools.hdiutil)
{
    if (workspace) {
        connect(workspace, &KVWorkspaceNotifications::didMount, this, &KVDiskImage::updateMountedDiskImagesAfterMount);
        connect(workspace, &KVWorkspaceNotifications::didUnmount, this,
                &KVDiskImage::updateMountedDiskImagesAfterUnmount);
        connect(workspace, &KVWorkspaceNotifications::didRenameVolume, this,
                &KVDiskImage::updateMountedDiskImagesAfterRename);
    }
}

// The connections to the workspace end with the engine, and so does the queue:
// operations that have not started are dropped.
KVDiskImage::~KVDiskImage() = default;

KVDiskImageDelegate *KVDiskImage::delegate() const
{
    return m_delegateLifetime.expired() ? nullptr : m_delegate;
}

void KVDiskImage::setDelegate(KVDiskImageDelegate *delegate)
{
    m_delegate = delegate;
    m_delegateLifetime = delegate ? delegate->m_lifetime : nullptr;
}

void KVDiskImage::updateMountedDiskImages(const std::optional<QString> &filter, ErrorBlock errorBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, tools = m_tools, self = QPointer<KVDiskImage>(this),
                                    reference = QPointer<KVVolumeEngine>(this), filter,
                                    errorBlock = std::move(errorBlock)] {
        const KVHdiutil::PropertyList info = hdiutil.info();
        if (info.value) {
            const QList<KVVolumeItemPtr> found = mountedEncryptedImages(*info.value, filter, reference, tools);
            if (!filter) {
                KVMainQueue::post(self, [self, found] {
                    self->replaceMountedDiskImages(found);
                });
            } else if (found.size() == 1) {
                KVMainQueue::post(self, [self, found] {
                    self->insertMountedDiskImage(found.first());
                });
            }
        }
        errorBlock(info.error);
    });
}

void KVDiskImage::replaceMountedDiskImages(const QList<KVVolumeItemPtr> &found)
{
    if (kvSameVolumes(found, m_mountedDiskImages))
        return;
    m_mountedDiskImages = found;
    mountedDiskImagesDidChange();
}

void KVDiskImage::insertMountedDiskImage(const KVVolumeItemPtr &found)
{
    if (kvContainsVolume(m_mountedDiskImages, *found))
        return;
    // Newly mounted images come first.
    m_mountedDiskImages.prepend(found);
    mountedDiskImagesDidChange();
}

void KVDiskImage::mountedDiskImagesDidChange()
{
    if (KVDiskImageDelegate *delegate = this->delegate())
        delegate->mountedDiskImagesDidChange(this, m_mountedDiskImages);
}

void KVDiskImage::volumeSpaceDidChange()
{
    mountedDiskImagesDidChange();
}

void KVDiskImage::updateMountedDiskImagesAfterMount(const QVariantMap &userInfo)
{
    QTimer::singleShot(MountSettleTimeMs, this, [this, userInfo] { runUpdateMountedDiskImages(userInfo); });
}

void KVDiskImage::runUpdateMountedDiskImages(const QVariantMap &userInfo)
{
    // A mount of any volume costs one hdiutil run: what is not an encrypted
    // image is simply not found. Without a path, everything is looked at.
    const std::optional<QString> filter =
        userInfo.contains(NSDevicePath) ? std::optional(userInfo.value(NSDevicePath).toString()) : std::nullopt;
    updateMountedDiskImages(filter, [self = QPointer<KVDiskImage>(this)](const KVOptionalError &error) {
        if (!error)
            return;
        KVMainQueue::post(self, [self, error = *error] {
            if (KVDiskImageDelegate *delegate = self->delegate())
                delegate->mountedDiskImagesUpdateDidFail(self, error);
        });
    });
}

KVVolumeItemPtr KVDiskImage::mountedDiskImageAt(const QUrl &volume) const
{
    const QString path = QDir::cleanPath(filePath(volume));
    for (const KVVolumeItemPtr &item : m_mountedDiskImages) {
        if (!item->mountPoint().isEmpty()
            && QString::localeAwareCompare(path, QDir::cleanPath(item->mountPoint())) == 0)
            return item;
    }
    return nullptr;
}

void KVDiskImage::updateMountedDiskImagesAfterUnmount(const QVariantMap &userInfo)
{
    const KVVolumeItemPtr gone = mountedDiskImageAt(userInfo.value(NSWorkspaceVolumeURLKey).toUrl());
    if (!gone)
        return;
    KVMainQueue::post(this, [this, gone] {
        m_mountedDiskImages.removeIf([&gone](const KVVolumeItemPtr &item) { return *item == *gone; });
        mountedDiskImagesDidChange();
    });
}

void KVDiskImage::updateMountedDiskImagesAfterRename(const QVariantMap &userInfo)
{
    const KVVolumeItemPtr renamed = mountedDiskImageAt(userInfo.value(NSWorkspaceVolumeOldURLKey).toUrl());
    if (!renamed)
        return;
    const QString mountPoint = filePath(userInfo.value(NSWorkspaceVolumeURLKey).toUrl());
    const QString name = userInfo.value(NSWorkspaceVolumeLocalizedNameKey).toString();
    KVMainQueue::post(this, [this, renamed, mountPoint, name] {
        // Equality does not look at the mount point or the name: the item
        // keeps its place.
        renamed->setMountPoint(mountPoint);
        renamed->setName(name);
        mountedDiskImagesDidChange();
    });
}

void KVDiskImage::mountDiskImage(const QString &imagePath, const QString &password, bool readOnly,
                                 const QUrl &mountPoint, bool autoOpen, ErrorBlock errorBlock)
{
    const std::optional<QString> mountRoot =
        mountPoint.toString().isEmpty() ? std::nullopt : std::optional(filePath(mountPoint));
    m_processingQueue.addOperation([hdiutil = m_hdiutil, imagePath, secret = std::make_shared<KVSecret>(password),
                                    readOnly, mountRoot, autoOpen, errorBlock = std::move(errorBlock)] {
        errorBlock(hdiutil.attach(imagePath, std::move(*secret), readOnly, mountRoot, autoOpen));
    });
}

void KVDiskImage::unmountVolume(const KVVolumeItemPtr &item, bool force, ErrorBlock errorBlock)
{
    if (item->type() == KVVolumeKind::DiskImage) {
        // An image's volume usually lives on a slice of the image's own
        // partition-scheme device (disk3s2 on /dev/disk3): detaching that
        // device is enough. Otherwise the volume's own whole disk goes first.
        const QString identifier = item->diskIdentifier();
        const qsizetype slice = identifier.lastIndexOf(u's');
        const QString volumeWholeDisk = slice < 0 ? identifier : identifier.left(slice);
        const QString imageWholeDisk = item->guidDevice().mid(5); // after "/dev/"
        if (volumeWholeDisk == imageWholeDisk) {
            detach(item->guidDevice(), force, std::move(errorBlock));
            return;
        }
        // Both runs in one operation, so that nothing queued meanwhile comes
        // between them.
        m_processingQueue.addOperation([hdiutil = m_hdiutil, volumeWholeDisk, imageDevice = item->guidDevice(), force,
                                        errorBlock = std::move(errorBlock)] {
            KVOptionalError error = hdiutil.detach(volumeWholeDisk, force);
            if (!error)
                error = hdiutil.detach(imageDevice, force);
            errorBlock(error);
        });
    } else if (!item->mountPoint().isEmpty()) {
        detach(item->mountPoint(), force, std::move(errorBlock));
    } else {
        errorBlock(KVAppError(KVAppErrorCode::NoMountPoint, KVLocalization::tr("Unmount failed"),
                              KVLocalization::tr("Volume has no mount point")));
    }
}

void KVDiskImage::detach(const QString &deviceOrPath, bool force, ErrorBlock errorBlock)
{
    m_processingQueue.addOperation(
        [hdiutil = m_hdiutil, deviceOrPath, force, errorBlock = std::move(errorBlock)] {
            errorBlock(hdiutil.detach(deviceOrPath, force));
        });
}

void KVDiskImage::createDiskImage(const QUrl &imageLocation, std::optional<float> sizeInM, const QString &volumeName,
                                  const QString &encryption, const QString &password, bool mountAfterCreation,
                                  ProgressBlock usingBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, path = pathWithoutExtension(imageLocation), sizeInM,
                                    volumeName, encryption, mountAfterCreation,
                                    secret = std::make_shared<KVSecret>(password), usingBlock = std::move(usingBlock)] {
        const KVOptionalError error =
            hdiutil.create(path, sizeInM, volumeName, encryption, mountAfterCreation, std::move(*secret),
                           [&usingBlock](const QString &line) { usingBlock(line, false, std::nullopt); });
        usingBlock(std::nullopt, true, error);
    });
}

void KVDiskImage::changePassword(const KVVolumeItemPtr &item, const QString &oldPassword, const QString &newPassword,
                                 ErrorBlock errorBlock)
{
    m_processingQueue.addOperation(
        [hdiutil = m_hdiutil, imagePath = item->location(),
         secret = std::make_shared<KVSecret>(KVHdiutil::passwordChange(oldPassword, newPassword)),
         errorBlock = std::move(errorBlock)] { errorBlock(hdiutil.changePassword(imagePath, std::move(*secret))); });
}

void KVDiskImage::eraseKeys(const QString &imagePath, ErrorBlock errorBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, imagePath, errorBlock = std::move(errorBlock)] {
        errorBlock(hdiutil.eraseKeys(imagePath));
    });
}

void KVDiskImage::getLimits(const KVVolumeItemPtr &item, const QString &password, LimitsBlock usingBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, imagePath = item->location(),
                                    secret = std::make_shared<KVSecret>(password), usingBlock = std::move(usingBlock)] {
        const KVHdiutil::PropertyList limits = hdiutil.limits(imagePath, std::move(*secret));
        usingBlock(limits.value ? std::optional(dictionary(*limits.value)) : std::nullopt, limits.error);
    });
}

void KVDiskImage::resize(const QString &imagePath, std::optional<float> newSizeInM, const QString &password,
                         ErrorBlock errorBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, imagePath, newSizeInM,
                                    secret = std::make_shared<KVSecret>(password), errorBlock = std::move(errorBlock)] {
        errorBlock(hdiutil.resize(imagePath, newSizeInM, std::move(*secret)));
    });
}

void KVDiskImage::compact(const QString &imagePath, const QString &password, ErrorBlock errorBlock)
{
    m_processingQueue.addOperation([hdiutil = m_hdiutil, imagePath, secret = std::make_shared<KVSecret>(password),
                                    errorBlock = std::move(errorBlock)] {
        errorBlock(hdiutil.compact(imagePath, std::move(*secret)));
    });
}
