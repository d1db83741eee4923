#pragma once

#include "KVHdiutil.h"
#include "model/KVAppError.h"
#include "model/KVVolumeEngine.h"
#include "model/KVVolumeItem.h"
#include "platform/KVOperationQueue.h"
#include "tools/KVToolPaths.h"

#include <QList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class KVDiskImageDelegate;
class KVWorkspaceNotifications;

// The disk-image engine: everything done to disk images, through hdiutil, and
// the list of encrypted images that are attached and mounted now.
//
// Every operation copies what it needs (passwords as KVSecret at once), queues
// one piece of work on `processingQueue` and returns. The queue runs one
// operation at a time, in the order they were queued, on a worker thread of
// its own. Each operation calls its block exactly once, on that worker thread:
// callers move to the GUI thread themselves before they touch the interface.
// Operations may be queued from any thread. Work that runs after the engine is
// gone does nothing with it.
//
// The list follows the system: a mount makes the engine look for the new image
// (after a short pause, so that the volume settles), an unmount drops it and a
// rename (a moved mount) updates it in place. The list changes on the GUI
// thread only, and each change is followed by the delegate's
// mountedDiskImagesDidChange.
class KVDiskImage : public KVVolumeEngine
{
    Q_OBJECT

public:
    using ErrorBlock = std::function<void(const KVOptionalError &error)>;
    // Once per complete line of progress (finished false, no error), then once
    // with no line, finished true and the outcome.
    using ProgressBlock = std::function<void(const std::optional<QString> &line, bool finished, const KVOptionalError &error)>;
    // The decoded limits (absent when they could not be read) and the outcome.
    using LimitsBlock = std::function<void(const std::optional<QVariantMap> &limits, const KVOptionalError &error)>;

    // Listens to `workspace` (the system's are KVWorkspaceNotifications::shared())
    // until it is destroyed.
    KVDiskImage(KVToolPaths tools, KVWorkspaceNotifications *workspace, QObject *parent = nullptr);
    ~KVDiskImage() override;

    KVDiskImageDelegate *delegate() const;
    void setDelegate(KVDiskImageDelegate *delegate);

    KVOperationQueue &processingQueue() { return m_processingQueue; }
    const QList<KVVolumeItemPtr> &mountedDiskImages() const { return m_mountedDiskImages; }

    // Looks for mounted encrypted images. Without a filter the list is replaced
    // when what was found differs; with a mount point as filter, the one image
    // mounted there is put at the front of the list unless it is there already.
    void updateMountedDiskImages(const std::optional<QString> &filter, ErrorBlock errorBlock);

    // Attaches and mounts an image; `mountPoint`, when given, is the folder
    // under which its volume is mounted. The list learns of the new volume
    // from the system's mount notification.
    void mountDiskImage(const QString &imagePath, const QString &password, bool readOnly, const QUrl &mountPoint,
                        bool autoOpen, ErrorBlock errorBlock);
    // Unmounts a volume and detaches the device beneath it. A volume without a
    // mount point fails at once, on the caller's thread (code 200).
    void unmountVolume(const KVVolumeItemPtr &item, bool force, ErrorBlock errorBlock);
    void detach(const QString &deviceOrPath, bool force, ErrorBlock errorBlock);

    // Creates a growable encrypted image at `imageLocation` (its extension is
    // hdiutil's to add). `sizeInM` is the largest size in megabytes; an
    // encryption other than "AES-128" means AES-256.
    void createDiskImage(const QUrl &imageLocation, std::optional<float> sizeInM, const QString &volumeName,
                         const QString &encryption, const QString &password, bool mountAfterCreation,
                         ProgressBlock usingBlock);

    // Gives the image file of `item` (its location) a new password.
    void changePassword(const KVVolumeItemPtr &item, const QString &oldPassword, const QString &newPassword,
                        ErrorBlock errorBlock);
    // Makes an image unreadable for good.
    void eraseKeys(const QString &imagePath, ErrorBlock errorBlock);

    // The size limits of the image file of `item`.
    void getLimits(const KVVolumeItemPtr &item, const QString &password, LimitsBlock usingBlock);
    void resize(const QString &imagePath, std::optional<float> newSizeInM, const QString &password,
                ErrorBlock errorBlock);
    void compact(const QString &imagePath, const QString &password, ErrorBlock errorBlock);

    void volumeSpaceDidChange() override;

private:
    void updateMountedDiskImagesAfterMount(const QVariantMap &userInfo);
    void updateMountedDiskImagesAfterUnmount(const QVariantMap &userInfo);
    void updateMountedDiskImagesAfterRename(const QVariantMap &userInfo);
    void runUpdateMountedDiskImages(const QVariantMap &userInfo);
    KVVolumeItemPtr mountedDiskImageAt(const QUrl &volume) const;

    // GUI thread: the ends of a scan.
    void replaceMountedDiskImages(const QList<KVVolumeItemPtr> &found);
    void insertMountedDiskImage(const KVVolumeItemPtr &found);
    void mountedDiskImagesDidChange();

    const KVToolPaths m_tools;
    const KVHdiutil m_hdiutil;
    KVOperationQueue m_processingQueue;
    QList<KVVolumeItemPtr> m_mountedDiskImages;
    KVDiskImageDelegate *m_delegate = nullptr;
    std::weak_ptr<const bool> m_delegateLifetime;
};
