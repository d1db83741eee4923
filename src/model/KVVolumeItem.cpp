#include "KVVolumeItem.h"

#include "KVVolumeEngine.h"
#include "platform/KVFileSystemEventWatcher.h"
#include "platform/KVFileSystemInfo.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "tools/KVPropertyList.h"
#include "tools/KVToolProcess.h"
#include "tools/KVValue.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <cmath>
#include <limits>

using namespace KVValue;

namespace {

constexpr int UpdateSpaceIntervalMs = 15000;
// After a file-system event, further events are ignored for this long, so a
// burst of writes costs one free-space refresh.
constexpr int IgnoreEventsMs = 4500;

const QString HdiutilInfoKey = QStringLiteral("hdiutilInfo");
const QString DiskutilInfoKey = QStringLiteral("diskutilInfo");
const QString SysProfilerInfoKey = QStringLiteral("sysProfilerInfo");
const QString LogicalVolumeGroupKey = QStringLiteral("LogicalVolumeGroup");
const QString LogicalVolumeFamilyInfoKey = QStringLiteral("LogicalVolumeFamilyInfo");

// Items may be released by a worker thread (a scan that found nothing new
// drops the items it built), but they live on the GUI thread.
void releaseItem(KVVolumeItem *item)
{
    if (item->thread() == QThread::currentThread())
        delete item;
    else
        item->deleteLater();
}

} // namespace

KVVolumeItemPtr KVVolumeItem::create(const QVariantMap &data, const QPointer<KVVolumeEngine> &reference,
                                     const KVToolPaths &tools)
{
    return KVVolumeItemPtr(new KVVolumeItem(data, reference, tools), releaseItem);
}

KVVolumeItem::KVVolumeItem(const QVariantMap &data, const QPointer<KVVolumeEngine> &reference, const KVToolPaths &tools)
    : m_raw(data)
{
    if (m_raw.contains(HdiutilInfoKey) && !m_raw.contains(DiskutilInfoKey)) {
        const QVariantList entities = array(dictionary(m_raw.value(HdiutilInfoKey)).value(QStringLiteral("system-entities")));
        for (const QVariant &entityValue : entities) {
            const QVariantMap entity = dictionary(entityValue);
            if (entity.contains(QStringLiteral("mount-point")))
                m_mountPoint = pathValue(entity.value(QStringLiteral("mount-point")));
            if (stringValue(entity.value(QStringLiteral("content-hint"))) == u"GUID_partition_scheme")
                m_guidDevice = pathValue(entity.value(QStringLiteral("dev-entry")));
        }
        diskutilInfoFromHdiutilInfo(tools.diskutil);
    }

    const QString diskutilMountPoint =
        pathValue(dictionary(m_raw.value(DiskutilInfoKey)).value(QStringLiteral("MountPoint")));
    if (m_raw.contains(LogicalVolumeGroupKey) && diskutilMountPoint.isEmpty()) {
        m_type = KVVolumeKind::NotMountedDisk;
    } else if (m_raw.contains(SysProfilerInfoKey)) {
        m_type = KVVolumeKind::Disk;
        m_diskReference = reference;
    } else if (m_raw.contains(HdiutilInfoKey)) {
        m_type = KVVolumeKind::DiskImage;
        m_diReference = reference;
    } else {
        m_type = KVVolumeKind::None;
    }

    if (m_raw.contains(DiskutilInfoKey))
        readDiskutilInfo();
    if (m_raw.contains(SysProfilerInfoKey))
        readSysProfilerInfo();
    if (m_type == KVVolumeKind::DiskImage)
        m_location = pathValue(dictionary(m_raw.value(HdiutilInfoKey)).value(QStringLiteral("image-path")));
    if ((m_type == KVVolumeKind::Disk || m_type == KVVolumeKind::NotMountedDisk) && m_raw.contains(DiskutilInfoKey))
        readLogicalVolumeStatus();

    // The item lives on the GUI thread from now on; its timers run there.
    moveToThread(QCoreApplication::instance()->thread());
    KVMainQueue::post(QPointer<KVVolumeItem>(this), [this] { startWatching(); });
}

KVVolumeItem::~KVVolumeItem() = default;

void KVVolumeItem::diskutilInfoFromHdiutilInfo(const QString &diskutil)
{
    KVToolInvocation invocation{diskutil, {QStringLiteral("info"), QStringLiteral("-plist"), m_mountPoint}, {}, false};
    QByteArray output;
    const KVToolExit exit = KVToolProcess::run(invocation, [&output](QByteArrayView chunk) { output.append(chunk); });
    if (!exit.started())
        return;
    KVPropertyListError error;
    const std::optional<QVariant> info = KVPropertyList::decode(output, &error);
    if (!info) {
        KVSystemLog::write(QStringLiteral("Error: %1").arg(error.description));
        return;
    }
    m_raw.insert(DiskutilInfoKey, *info);
}

void KVVolumeItem::readDiskutilInfo()
{
    const QVariantMap info = dictionary(m_raw.value(DiskutilInfoKey));
    m_name = nameValue(info.value(QStringLiteral("VolumeName")));
    if (m_name.isEmpty())
        m_name = nameValue(info.value(QStringLiteral("MediaName")));
    m_mountPoint = pathValue(info.value(QStringLiteral("MountPoint")));
    m_uuid = stringValue(info.value(QStringLiteral("VolumeUUID")));
    m_readOnly = !boolValue(info.value(QStringLiteral("Writable")));
    setSpace(integerValue(info.value(QStringLiteral("TotalSize"))), integerValue(info.value(QStringLiteral("FreeSpace"))));
    m_fileSystemName = stringValue(info.value(QStringLiteral("FilesystemName")));
    m_diskIdentifier = stringValue(info.value(QStringLiteral("DeviceIdentifier")));
}

void KVVolumeItem::readSysProfilerInfo()
{
    const QVariantMap info = dictionary(m_raw.value(SysProfilerInfoKey));
    m_name = nameValue(info.value(QStringLiteral("_name")));
    m_mountPoint = pathValue(info.value(QStringLiteral("mount_point")));
    m_uuid = stringValue(info.value(QStringLiteral("volume_uuid")));
    m_readOnly = !boolValue(info.value(QStringLiteral("writable")));
    m_isSystemPartition = m_mountPoint == u"/";
    setSpace(integerValue(info.value(QStringLiteral("size_in_bytes"))),
             integerValue(info.value(QStringLiteral("free_space_in_bytes"))));
    m_fileSystemName = stringValue(info.value(QStringLiteral("file_system")));
    m_diskIdentifier = stringValue(info.value(QStringLiteral("bsd_name")));
    const QVariantMap logicalVolume = dictionary(info.value(QStringLiteral("com.apple.corestorage.lv")));
    m_logicalVolumeUUID = stringValue(logicalVolume.value(QStringLiteral("com.apple.corestorage.lv.uuid")));
    // The report's key has a doubled first letter and so never matches: the
    // lock state always comes from the encrypted volume's family status.
    m_locked = boolValue(logicalVolume.value(QStringLiteral("ccom.apple.corestorage.lv.locked")));
}

void KVVolumeItem::setSpace(qint64 totalSize, qint64 freeSpace)
{
    m_totalSize = totalSize;
    m_freeSpace = freeSpace;
    m_usedSpace = m_totalSize - m_freeSpace;
    m_usedSpacePercentage = usedSpacePercentageText(m_usedSpace, m_totalSize);
}

void KVVolumeItem::readLogicalVolumeStatus()
{
    const QVariantMap group = dictionary(m_raw.value(LogicalVolumeGroupKey));
    const QVariantMap family = firstDictionary(group.value(QStringLiteral("CoreStorageLogicalVolumeFamilies")));
    const QVariantMap volume = firstDictionary(family.value(QStringLiteral("CoreStorageLogicalVolumes")));
    m_logicalVolumeUUID = stringValue(volume.value(QStringLiteral("CoreStorageUUID")));

    const QString status = stringValue(dictionary(m_raw.value(LogicalVolumeFamilyInfoKey))
                                           .value(QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionStatus")));
    if (status == u"Unlocked")
        m_locked = false;
    else if (status == u"Locked")
        m_locked = true;
}

void KVVolumeItem::startWatching()
{
    m_updateSpaceTimer = new QTimer(this);
    // The refresh may drift by up to an interval: let the system batch wake-ups.
    m_updateSpaceTimer->setTimerType(Qt::VeryCoarseTimer);
    m_updateSpaceTimer->setInterval(UpdateSpaceIntervalMs);
    connect(m_updateSpaceTimer, &QTimer::timeout, this, &KVVolumeItem::updateSpace);
    m_updateSpaceTimer->start();

    if (!m_mountPoint.isEmpty())
        setEvents(new KVFileSystemEventWatcher(m_mountPoint, this));
}

void KVVolumeItem::setMountPoint(const QString &mountPoint)
{
    if (m_mountPoint == mountPoint)
        return;
    m_mountPoint = mountPoint;
    if (m_events)
        setEvents(new KVFileSystemEventWatcher(m_mountPoint, this));
}

KVVolumeEngine *KVVolumeItem::diReference() const
{
    return m_diReference;
}

KVVolumeEngine *KVVolumeItem::diskReference() const
{
    return m_diskReference;
}

void KVVolumeItem::setEvents(KVFileSystemEventWatcher *watcher)
{
    if (m_events == watcher)
        return;
    delete m_events;
    m_events = watcher;
    if (m_events) {
        m_events->setParent(this);
        connect(m_events, &KVFileSystemEventWatcher::eventOccurred, this, &KVVolumeItem::fileSystemEventOccurred);
    }
}

void KVVolumeItem::fileSystemEventOccurred()
{
    Q_EMIT fileSystemActivity();
    if (m_ignoreEvents)
        return;
    m_ignoreEvents = true;
    QTimer::singleShot(IgnoreEventsMs, this, &KVVolumeItem::resetIgnoreEvents);
    updateSpace();
}

void KVVolumeItem::resetIgnoreEvents()
{
    m_ignoreEvents = false;
}

void KVVolumeItem::updateSpace()
{
    const std::optional<qint64> free = KVFileSystemInfo::freeSpace(m_mountPoint);
    if (!free)
        return;
    const qint64 previousFreeSpace = m_freeSpace;
    // The capacity is never read again, only the free space.
    setSpace(m_totalSize, *free);

    if ((!m_diReference && !m_diskReference) || m_freeSpace == previousFreeSpace)
        return;
    if (m_type == KVVolumeKind::DiskImage && m_diReference)
        m_diReference->volumeSpaceDidChange();
    else if (m_type == KVVolumeKind::Disk && m_diskReference)
        m_diskReference->volumeSpaceDidChange();
}

bool KVVolumeItem::isEqualToVolumeItem(const KVVolumeItem &other) const
{
    return this == &other
        || (m_uuid == other.m_uuid && m_readOnly == other.m_readOnly && m_type == other.m_type);
}

size_t KVVolumeItem::hash() const
{
    const quint64 h = 31u * quint64(qHash(m_uuid)) + (m_readOnly ? 1u : 0u);
    return qHash(kvVolumeKindText(m_type)) + (h == quint64(0) - 961u ? 38347u : 38161u);
}

QString KVVolumeItem::usedSpacePercentageText(qint64 usedSpace, qint64 totalSize)
{
    const double percent = double(float(usedSpace) / float(totalSize)) * 100.0;
    // Truncation toward zero; what does not fit a 32-bit integer (including
    // the NaN and infinities of an empty volume) becomes its smallest value.
    const bool fits = std::isfinite(percent) && percent > -2147483649.0 && percent < 2147483648.0;
    const qint32 truncated = fits ? qint32(percent) : std::numeric_limits<qint32>::min();
    return QString::asprintf("%d %%", truncated);
}

bool kvSameVolumes(const QList<KVVolumeItemPtr> &a, const QList<KVVolumeItemPtr> &b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const KVVolumeItemPtr &x, const KVVolumeItemPtr &y) { return *x == *y; });
}

bool kvContainsVolume(const QList<KVVolumeItemPtr> &list, const KVVolumeItem &item)
{
    return std::any_of(list.cbegin(), list.cend(), [&item](const KVVolumeItemPtr &x) { return *x == item; });
}
