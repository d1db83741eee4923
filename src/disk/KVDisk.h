#pragma once

#include "KVDiskEncryption.h"
#include "KVMountedVolumeLookup.h"
#include "model/KVAppError.h"
#include "model/KVVolumeEngine.h"
#include "model/KVVolumeItem.h"
#include "platform/KVOperationQueue.h"
#include "tools/KVToolPaths.h"

#include <QList>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class KVDiskDelegate;
class KVDiskutilCommand;
class KVWorkspaceNotifications;
struct KVConversionStatus;

// The engine for partitions and encrypted CoreStorage volumes, driven through
// diskutil and system_profiler.
//
// It keeps three lists: the encrypted volumes mounted now (mountedDisks), the
// partitions that may be encrypted (disksToEncrypt) and the encrypted volumes
// that exist but are not mounted (disksToMount). They change only on the GUI
// thread; mountedDisks follows the system's mounts, renames and unmounts by
// itself, the other two are refreshed when asked.
//
// Every tool runs on the engine's one worker thread, one run at a time in the
// order requested. Each operation calls its block exactly once, on that worker
// thread: callers move to the GUI thread themselves before they touch the
// interface. Passphrases are absent (std::nullopt) or given; an empty one is
// still given.
class KVDisk : public KVVolumeEngine
{
    Q_OBJECT

public:
    using ErrorBlock = std::function<void(const KVOptionalError &error)>;
    using ProgressBlock = KVDiskEncryption::ProgressBlock;

    KVDisk(KVToolPaths tools, KVWorkspaceNotifications *workspace, QObject *parent = nullptr);
    ~KVDisk() override;

    KVDiskDelegate *delegate() const;
    void setDelegate(KVDiskDelegate *delegate);

    const QList<KVVolumeItemPtr> &mountedDisks() const { return m_mountedDisks; }
    const QList<KVVolumeItemPtr> &disksToEncrypt() const { return m_disksToEncrypt; }
    const QList<KVVolumeItemPtr> &disksToMount() const { return m_disksToMount; }
    // The wizards that list them empty them when they close (GUI thread).
    void clearDisksToEncrypt() { m_disksToEncrypt.clear(); }
    void clearDisksToMount() { m_disksToMount.clear(); }

    KVOperationQueue &mainDiskProcessingQueue() { return m_mainDiskProcessingQueue; }

    // Rebuilds mountedDisks from the storage report; tells the delegate and
    // looks at the conversion state when the list changed.
    void updateMountedDisks(ErrorBlock block);
    void updateDisksToEncrypt(ErrorBlock block);
    void updateDisksToMount(ErrorBlock block);

    // Reads the conversion state of the mounted volumes into their items.
    // While one converts, polling goes on every few seconds, and the delegate
    // hears of each poll that still finds it converting.
    void updateMountedDisksStatus();
    // The timer's action: the pending poll is due now.
    void runUpdateMountedDisksStatus();
    // The pending poll's timer; inactive when none is pending.
    const QTimer &updateMountedDisksStatusTimer() const { return m_updateMountedDisksStatusTimer; }
    void setUpdateMountedDisksStatusInterval(std::chrono::milliseconds interval);

    // Starts encrypting the partition `disk` (its identifier).
    void encryptDisk(const QString &disk, const std::optional<QString> &password, ProgressBlock usingBlock);
    // Starts turning an encrypted volume back into a plain one.
    void decrypt(const KVVolumeItemPtr &item, const std::optional<QString> &password, ErrorBlock errorBlock);
    void unlockVolume(const KVVolumeItemPtr &item, const std::optional<QString> &password, ErrorBlock errorBlock);
    void mountDisk(const KVVolumeItemPtr &item, ErrorBlock errorBlock);
    void ejectDisk(const KVVolumeItemPtr &item, ErrorBlock errorBlock);
    // Renames the volume mounted at the item's mount point (a disk image's too).
    void renameVolume(const KVVolumeItemPtr &item, const QString &newName, ErrorBlock errorBlock);
    // Both passphrases go to diskutil, or, when either is absent, neither.
    void changePassword(const KVVolumeItemPtr &item, const std::optional<QString> &oldPassword,
                        const std::optional<QString> &newPassword, ErrorBlock errorBlock);

    // Where the engine looks after a mount; the system's unless replaced.
    void setMountedVolumeLookup(KVMountedVolumeLookup lookup);

    void volumeSpaceDidChange() override;

Q_SIGNALS:
    // A poll found that a volume which was converting no longer is; its
    // statusVisible() is the status word the poll read ("Complete" when the
    // conversion went through).
    void conversionEnded(const KVVolumeItemPtr &item);

private:
    void mountedDisksDidChange();

    void updateMountedDisksAfterMount(const QVariantMap &userInfo);
    void runUpdateMountedDisks(const QVariantMap &userInfo);
    void updateMountedDisksAfterUnmount(const QVariantMap &userInfo);
    void updateMountedDisksAfterRename(const QVariantMap &userInfo);
    KVVolumeItemPtr mountedDiskAt(const QString &mountPoint) const;

    void setMountedDisks(const QList<KVVolumeItemPtr> &items);
    void applyConversionStatus(const QList<KVConversionStatus> &statuses, bool pollFailed);

    void queue(KVDiskutilCommand command, ErrorBlock block);

    KVToolPaths m_tools;
    KVMountedVolumeLookup m_mountedVolumeLookup;
    KVDiskDelegate *m_delegate = nullptr;
    std::weak_ptr<const bool> m_delegateLifetime;
    QList<KVVolumeItemPtr> m_mountedDisks;
    QList<KVVolumeItemPtr> m_disksToEncrypt;
    QList<KVVolumeItemPtr> m_disksToMount;
    QTimer m_updateMountedDisksStatusTimer;
    KVOperationQueue m_mainDiskProcessingQueue;
};
