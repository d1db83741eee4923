#include "KVDisk.h"

#include "KVConversionStatusPoll.h"
#include "KVDiskDelegate.h"
#include "KVDiskutilCommand.h"
#include "KVStorageReport.h"
#include "KVUnmountedVolumeScan.h"
#include "platform/KVMainQueue.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVValue.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QUrl>

using namespace std::chrono_literals;

namespace {

// A mounted volume is looked at a moment after the system announced it.
constexpr auto MountSettleDelay = 100ms;
// How often the conversion state is read while a volume converts.
constexpr auto StatusPollInterval = 4000ms;

const QString SysProfilerInfoKey = QStringLiteral("sysProfilerInfo");

// Paths are compared as the directories they name: absolute, without "." or
// ".." or a trailing slash.
QString standardizedPath(const QString &path)
{
    return path.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

bool isSamePath(const QString &standardized, const QString &other)
{
    return !standardized.isEmpty() && QString::localeAwareCompare(standardized, standardizedPath(other)) == 0;
}

QString pathOf(const QVariant &url)
{
    QString path = url.toUrl().toLocalFile();
    if (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

std::optional<KVSecret> secretFrom(const std::optional<QString> &password)
{
    if (!password)
        return std::nullopt;
    return KVSecret(*password);
}

} // namespace

KVDisk::KVDisk(KVToolPaths tools, KVWorkspaceNotifications *workspace, QObject *parent)
    : KVVolumeEngine(parent)
    , m_tools(std::move(tools))
    , m_mountedVolumeLookup(KVMountedVolumeLookup::system())
{
    m_updateMountedDisksStatusTimer.setSingleShot(true);
    m_updateMountedDisksStatusTimer.setInterval(StatusPollInterval);
    connect(&m_updateMountedDisksStatusTimer, &QTimer::timeout, this, &KVDisk::runUpdateMountedDisksStatus);

    if (workspace) {
        connect(workspace, &KVWorkspaceNotifications::didMount, this, &KVDisk::updateMountedDisksAfterMount);
        connect(workspace, &KVWorkspaceNotifications::didUnmount, this, &KVDisk::updateMountedDisksAfterUnmount);
        connect(workspace, &KVWorkspaceNotifications::didRenameVolume, this, &KVDisk::updateMountedDisksAfterRename);
    }
}

KVDisk::~KVDisk() = default;

KVDiskDelegate *KVDisk::delegate() const
{
    return m_delegateLifetime.expired() ? nullptr : m_delegate;
}

void KVDisk::setDelegate(KVDiskDelegate *delegate)
{
    m_delegate = delegate;
    m_delegateLifetime = delegate ? delegate->m_lifetime : nullptr;
}

void KVDisk::mountedDisksDidChange()
{
    if (KVDiskDelegate *delegate = this->delegate())
        delegate->mountedDisksDidChange(this, m_mountedDisks);
}

void KVDisk::volumeSpaceDidChange()
{
    mountedDisksDidChange();
}

void KVDisk::setMountedVolumeLookup(KVMountedVolumeLookup lookup)
{
    m_mountedVolumeLookup = std::move(lookup);
}

// Discovery ------------------------------------------------------------------

void KVDisk::updateMountedDisks(ErrorBlock block)
{
    m_mainDiskProcessingQueue.addOperation(
        [tools = m_tools, self = QPointer<KVDisk>(this), reference = QPointer<KVVolumeEngine>(this), block] {
            // A report that says something although system_profiler failed is
            // still reported as the failure.
            const KVStorageReport report =
                KVStorageReport::read(tools.systemProfiler, KVStorageReport::AbnormalExit::OverridesMessage);
            if (report.volumes) {
                QList<KVVolumeItemPtr> items;
                for (const QVariant &entry : *report.volumes) {
                    if (KVStorageReport::isEncryptedCoreStorageVolume(KVValue::dictionary(entry)))
                        items.append(KVVolumeItem::create({{SysProfilerInfoKey, entry}}, reference, tools));
                }
                KVMainQueue::post(self, [self, items] {
                    self->setMountedDisks(items);
                });
            }
            block(report.error);
        });
}

void KVDisk::setMountedDisks(const QList<KVVolumeItemPtr> &items)
{
    if (kvSameVolumes(items, m_mountedDisks))
        return;
    m_mountedDisks = items;
    updateMountedDisksStatus();
    mountedDisksDidChange();
}

void KVDisk::updateDisksToEncrypt(ErrorBlock block)
{
    m_mainDiskProcessingQueue.addOperation(
        [tools = m_tools, self = QPointer<KVDisk>(this), reference = QPointer<KVVolumeEngine>(this), block] {
            KVMainQueue::post(self, [self] {
                self->m_disksToEncrypt.clear();
            });
            const KVStorageReport report =
                KVStorageReport::read(tools.systemProfiler, KVStorageReport::AbnormalExit::KeepsRecognisedMessage);
            QList<KVVolumeItemPtr> items;
            for (const QVariant &entry : report.volumes.value_or(QVariantList())) {
                if (KVStorageReport::canBeEncrypted(KVValue::dictionary(entry)))
                    items.append(KVVolumeItem::create({{SysProfilerInfoKey, entry}}, reference, tools));
            }
            KVMainQueue::post(self, [self, items] {
                self->m_disksToEncrypt = items;
            });
            block(report.error);
        });
}

void KVDisk::updateDisksToMount(ErrorBlock block)
{
    m_mainDiskProcessingQueue.addOperation(
        [tools = m_tools, self = QPointer<KVDisk>(this), reference = QPointer<KVVolumeEngine>(this), block] {
            KVMainQueue::post(self, [self] {
                self->m_disksToMount.clear();
            });
            const KVUnmountedVolumeScan scan = KVUnmountedVolumeScan::run(tools.diskutil);
            QList<KVVolumeItemPtr> items;
            for (const QVariantMap &volume : scan.volumes)
                items.append(KVVolumeItem::create(volume, reference, tools));
            KVMainQueue::post(self, [self, items] {
                self->m_disksToMount.append(items);
            });
            block(scan.error);
        });
}

// Following the system's volumes ---------------------------------------------

void KVDisk::updateMountedDisksAfterMount(const QVariantMap &userInfo)
{
    QTimer::singleShot(MountSettleDelay, this, [this, userInfo] { runUpdateMountedDisks(userInfo); });
}

// Only HFS+ volumes can be encrypted CoreStorage volumes; other mounts do not
// concern the engine. When several mounts share the path, the latest counts.
void KVDisk::runUpdateMountedDisks(const QVariantMap &userInfo)
{
    const QString devicePath = standardizedPath(KVValue::stringValue(userInfo.value(NSDevicePath)));
    const QStringList volumes = m_mountedVolumeLookup.mountedVolumePaths();
    for (auto volume = volumes.crbegin(); volume != volumes.crend(); ++volume) {
        if (!isSamePath(devicePath, *volume))
            continue;
        const std::optional<QString> type = m_mountedVolumeLookup.fileSystemType(*volume);
        if (!type)
            continue;
        if (*type == u"hfs") {
            updateMountedDisks([self = QPointer<KVDisk>(this)](const KVOptionalError &error) {
                if (!error)
                    return;
                KVMainQueue::post([self, error = *error] {
                    if (KVDiskDelegate *delegate = self ? self->delegate() : nullptr)
                        delegate->mountedDisksUpdateDidFail(self, error);
                });
            });
        }
        return;
    }
}

KVVolumeItemPtr KVDisk::mountedDiskAt(const QString &mountPoint) const
{
    const QString path = standardizedPath(mountPoint);
    for (const KVVolumeItemPtr &item : m_mountedDisks) {
        if (isSamePath(path, item->mountPoint()))
            return item;
    }
    return nullptr;
}

void KVDisk::updateMountedDisksAfterUnmount(const QVariantMap &userInfo)
{
    const KVVolumeItemPtr item = mountedDiskAt(pathOf(userInfo.value(NSWorkspaceVolumeURLKey)));
    if (!item)
        return;
    KVMainQueue::post(this, [this, item] {
        m_mountedDisks.removeAll(item);
        mountedDisksDidChange();
    });
}

void KVDisk::updateMountedDisksAfterRename(const QVariantMap &userInfo)
{
    const KVVolumeItemPtr item = mountedDiskAt(pathOf(userInfo.value(NSWorkspaceVolumeOldURLKey)));
    if (!item)
        return;
    const QString mountPoint = pathOf(userInfo.value(NSWorkspaceVolumeURLKey));
    const QString name = KVValue::stringValue(userInfo.value(NSWorkspaceVolumeLocalizedNameKey));
    KVMainQueue::post(this, [this, item, mountPoint, name] {
        item->setMountPoint(mountPoint);
        item->setName(name);
        mountedDisksDidChange();
    });
}

// Conversion state -------------------------------------------------------------

void KVDisk::updateMountedDisksStatus()
{
    m_mainDiskProcessingQueue.addOperation([diskutil = m_tools.diskutil, self = QPointer<KVDisk>(this)] {
        const KVConversionStatusPoll poll = KVConversionStatusPoll::run(diskutil);
        KVMainQueue::post(self, [self, poll] {
            self->applyConversionStatus(poll.statuses, poll.failed);
        });
    });
}

void KVDisk::setUpdateMountedDisksStatusInterval(std::chrono::milliseconds interval)
{
    m_updateMountedDisksStatusTimer.setInterval(interval);
}

void KVDisk::runUpdateMountedDisksStatus()
{
    m_updateMountedDisksStatusTimer.stop();
    updateMountedDisksStatus();
}

// Polling goes on only while a volume converts and the listing could be read.
// A poll that finds the conversion over updates the items without telling the
// delegate, and one made while the next is already scheduled tells nobody.
void KVDisk::applyConversionStatus(const QList<KVConversionStatus> &statuses, bool pollFailed)
{
    QHash<QString, KVVolumeItemPtr> itemsByVolume;
    for (const KVVolumeItemPtr &item : std::as_const(m_mountedDisks)) {
        if (!itemsByVolume.contains(item->logicalVolumeUUID()))
            itemsByVolume.insert(item->logicalVolumeUUID(), item);
    }

    bool anyConverting = false;
    QList<KVVolumeItemPtr> ended;
    for (const KVConversionStatus &status : statuses) {
        const KVVolumeItemPtr item = itemsByVolume.value(status.lvUUID);
        if (!item)
            continue;
        if (status.status != u"Converting") {
            if (item->converting())
                ended.append(item);
            item->setConverting(false);
            item->setStatusVisible(status.status);
            continue;
        }
        anyConverting = true;
        const bool forward = status.conversionDirection == u"forward";
        item->setConverting(true);
        item->setStatusVisible(forward                                         ? QStringLiteral("Encrypting")
                               : status.conversionDirection == u"backward" ? QStringLiteral("Decrypting")
                                                                               : status.conversionDirection);
        item->setConversionDirectionForward(forward);
        item->setConversionProgress(KVValue::integerValue(status.conversionProgress));
    }

    if (anyConverting && !pollFailed && !m_updateMountedDisksStatusTimer.isActive()) {
        m_updateMountedDisksStatusTimer.start();
        mountedDisksDidChange();
    }
    for (const KVVolumeItemPtr &item : std::as_const(ended))
        Q_EMIT conversionEnded(item);
}

// Encrypting, decrypting and the single-volume commands --------------------------

void KVDisk::encryptDisk(const QString &disk, const std::optional<QString> &password, ProgressBlock usingBlock)
{
    m_mainDiskProcessingQueue.addOperation(
        [diskutil = m_tools.diskutil, encryption = KVDiskEncryption(disk, secretFrom(password)), usingBlock]() mutable {
            encryption.run(diskutil, usingBlock);
        });
}

void KVDisk::decrypt(const KVVolumeItemPtr &item, const std::optional<QString> &password, ErrorBlock errorBlock)
{
    queue(KVDiskutilCommand::revert(item->logicalVolumeUUID(), secretFrom(password)), std::move(errorBlock));
}

void KVDisk::unlockVolume(const KVVolumeItemPtr &item, const std::optional<QString> &password, ErrorBlock errorBlock)
{
    queue(KVDiskutilCommand::unlockVolume(item->logicalVolumeUUID(), secretFrom(password)), std::move(errorBlock));
}

void KVDisk::mountDisk(const KVVolumeItemPtr &item, ErrorBlock errorBlock)
{
    queue(KVDiskutilCommand::mount(item->logicalVolumeUUID()), std::move(errorBlock));
}

void KVDisk::ejectDisk(const KVVolumeItemPtr &item, ErrorBlock errorBlock)
{
    queue(KVDiskutilCommand::eject(item->diskIdentifier()), std::move(errorBlock));
}

void KVDisk::renameVolume(const KVVolumeItemPtr &item, const QString &newName, ErrorBlock errorBlock)
{
    queue(KVDiskutilCommand::rename(item->mountPoint(), newName), std::move(errorBlock));
}

void KVDisk::changePassword(const KVVolumeItemPtr &item, const std::optional<QString> &oldPassword,
                            const std::optional<QString> &newPassword, ErrorBlock errorBlock)
{
    std::optional<KVSecret> oldAndNew;
    if (oldPassword && newPassword)
        oldAndNew = KVSecret::joined(*oldPassword, '\n', *newPassword);
    queue(KVDiskutilCommand::changeVolumePassphrase(item->logicalVolumeUUID(), std::move(oldAndNew)),
          std::move(errorBlock));
}

void KVDisk::queue(KVDiskutilCommand command, ErrorBlock block)
{
    m_mainDiskProcessingQueue.addOperation(
        [diskutil = m_tools.diskutil, command = std::move(command), block = std::move(block)]() mutable {
            block(command.run(diskutil));
        });
}
