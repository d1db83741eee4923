#pragma once

#include <QObject>
#include <QPointer>
#include <QVariantMap>

#include "KVVolumeEngine.h"
#include "KVVolumeKind.h"
#include "tools/KVToolPaths.h"

#include <memory>

class KVFileSystemEventWatcher;

class QTimer;

class KVVolumeItem;
using KVVolumeItemPtr = std::shared_ptr<KVVolumeItem>;

// The one record for everything the lists show: a mounted encrypted disk image,
// a partition, an encrypted volume, or a locked volume that can be unlocked.
//
// An item keeps the dictionary it was built from and derives its display
// fields from it. Its keys say where it came from: "hdiutilInfo" (an entry of
// `hdiutil info -plist`), "diskutilInfo" (`diskutil info -plist`),
// "sysProfilerInfo" (a volume of the storage report), "LogicalVolumeGroup" and
// "LogicalVolumeFamilyInfo" (encrypted-volume data). Once mounted, an item keeps
// its free space current and tells its engine when it changes.
//
// Items are built on an engine's worker thread and then live on the GUI thread;
// they are shared (KVVolumeItemPtr) between the engines' lists and the interface.
class KVVolumeItem : public QObject
{
    Q_OBJECT

public:
    // Builds an item from its source dictionary. An image entry runs diskutil
    // (`tools.diskutil`) once, so engines call this on their worker thread. The
    // item only keeps the engine weakly and never touches it off the GUI thread.
    static KVVolumeItemPtr create(const QVariantMap &data, const QPointer<KVVolumeEngine> &reference,
                                  const KVToolPaths &tools = KVToolPaths::defaults());
    ~KVVolumeItem() override;

    const QVariantMap &raw() const { return m_raw; }
    const QVariantMap &diskutilRaw() const { return m_diskutilRaw; }
    void setDiskutilRaw(const QVariantMap &value) { m_diskutilRaw = value; }

    KVVolumeKind type() const { return m_type; }
    const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    const QString &mountPoint() const { return m_mountPoint; }
    // A renamed volume moves: the watcher of its mount point moves with it.
    void setMountPoint(const QString &mountPoint);
    const QString &uuid() const { return m_uuid; }
    bool readOnly() const { return m_readOnly; }
    bool isSystemPartition() const { return m_isSystemPartition; }
    qint64 totalSize() const { return m_totalSize; }
    qint64 freeSpace() const { return m_freeSpace; }
    qint64 usedSpace() const { return m_usedSpace; }
    const QString &usedSpacePercentage() const { return m_usedSpacePercentage; }
    const QString &fileSystemName() const { return m_fileSystemName; }
    const QString &diskIdentifier() const { return m_diskIdentifier; }
    const QString &guidDevice() const { return m_guidDevice; }
    const QString &location() const { return m_location; }
    const QString &logicalVolumeUUID() const { return m_logicalVolumeUUID; }
    bool locked() const { return m_locked; }

    // Conversion state, kept current while an encrypted volume converts.
    bool converting() const { return m_converting; }
    void setConverting(bool converting) { m_converting = converting; }
    qint64 conversionProgress() const { return m_conversionProgress; }
    void setConversionProgress(qint64 percent) { m_conversionProgress = percent; }
    bool conversionDirectionForward() const { return m_conversionDirectionForward; }
    void setConversionDirectionForward(bool forward) { m_conversionDirectionForward = forward; }
    // The status text shown for the item ("Encrypting", "Decrypting", or what diskutil printed).
    const QString &statusVisible() const { return m_statusVisible; }
    void setStatusVisible(const QString &status) { m_statusVisible = status; }

    KVVolumeEngine *diReference() const;
    KVVolumeEngine *diskReference() const;

    // The watcher of the mount point; the item listens to the one it is given.
    KVFileSystemEventWatcher *events() const { return m_events; }
    void setEvents(KVFileSystemEventWatcher *watcher);
    bool ignoreEvents() const { return m_ignoreEvents; }

    // Reads the free space again; tells the engine when it changed.
    void updateSpace();

    // Items are the same volume when their UUID, read-only state and type agree;
    // mount point, name and sizes do not count.
    bool isEqualToVolumeItem(const KVVolumeItem &other) const;
    bool operator==(const KVVolumeItem &other) const { return isEqualToVolumeItem(other); }
    size_t hash() const;

    // "%d %%" of used / total, computed in single precision and truncated; an
    // empty volume (total 0) reads "-2147483648 %", as the processor's
    // truncation of a non-finite quotient gives.
    static QString usedSpacePercentageText(qint64 usedSpace, qint64 totalSize);

Q_SIGNALS:
    // Something changed on the volume: every event of its watcher, also
    // those that come too soon to read the free space again.
    void fileSystemActivity();

private:
    KVVolumeItem(const QVariantMap &data, const QPointer<KVVolumeEngine> &reference, const KVToolPaths &tools);

    void diskutilInfoFromHdiutilInfo(const QString &diskutil);
    void readDiskutilInfo();
    void readSysProfilerInfo();
    void readLogicalVolumeStatus();
    void setSpace(qint64 totalSize, qint64 freeSpace);
    void startWatching();
    void fileSystemEventOccurred();
    void resetIgnoreEvents();

    QVariantMap m_raw;
    QVariantMap m_diskutilRaw;
    KVVolumeKind m_type = KVVolumeKind::None;
    QString m_name;
    QString m_mountPoint;
    QString m_uuid;
    bool m_readOnly = false;
    bool m_isSystemPartition = false;
    qint64 m_totalSize = 0;
    qint64 m_freeSpace = 0;
    qint64 m_usedSpace = 0;
    QString m_usedSpacePercentage;
    QString m_fileSystemName;
    QString m_diskIdentifier;
    QString m_guidDevice;
    QString m_location;
    bool m_converting = false;
    qint64 m_conversionProgress = 0;
    bool m_conversionDirectionForward = true;
    QString m_statusVisible;
    QString m_logicalVolumeUUID;
    bool m_locked = false;

    KVFileSystemEventWatcher *m_events = nullptr;
    bool m_ignoreEvents = false;
    QTimer *m_updateSpaceTimer = nullptr;
    QPointer<KVVolumeEngine> m_diReference;
    QPointer<KVVolumeEngine> m_diskReference;
};

inline size_t qHash(const KVVolumeItem &item, size_t = 0)
{
    return item.hash();
}

// Element-by-element item equality of two lists, in order.
bool kvSameVolumes(const QList<KVVolumeItemPtr> &a, const QList<KVVolumeItemPtr> &b);
// Whether a list holds an item equal to `item`.
bool kvContainsVolume(const QList<KVVolumeItemPtr> &list, const KVVolumeItem &item);
