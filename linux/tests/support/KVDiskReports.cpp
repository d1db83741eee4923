#include "KVDiskReports.h"

#include "tools/KVPropertyList.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>

namespace kvlinux::KVDiskReports {

QVariantList storageItems(const KVDiskToolHarness &disk)
{
    const QVariantList report = KVPropertyList::decode(disk.systemProfiler().output.toUtf8()).value_or(QVariant()).toList();
    return report.isEmpty() ? QVariantList() : report.first().toMap().value(QStringLiteral("_items")).toList();
}

QVariantMap storageEntry(const KVDiskToolHarness &disk, const QString &bsdName)
{
    for (const QVariant &item : storageItems(disk))
        if (item.toMap().value(QStringLiteral("bsd_name")).toString() == bsdName)
            return item.toMap();
    return {};
}

QVariantMap encryptedEntry(const KVDiskToolHarness &disk)
{
    for (const QVariant &item : storageItems(disk))
        if (item.toMap().contains(QStringLiteral("com.apple.corestorage.lv")))
            return item.toMap();
    return {};
}

QString logicalVolumeUuid(const QVariantMap &entry)
{
    return entry.value(QStringLiteral("com.apple.corestorage.lv")).toMap()
        .value(QStringLiteral("com.apple.corestorage.lv.uuid")).toString();
}

bool isMounted(const QVariantMap &entry)
{
    return !entry.value(QStringLiteral("mount_point")).toString().isEmpty();
}

QList<int> followConversion(const KVDiskToolHarness &disk, bool encrypting)
{
    static const QRegularExpression progress(QStringLiteral("Conversion Progress:\\s*(\\d+)%"));
    QList<int> seen;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 90000) {
        const QString listing = disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).output;
        const auto match = progress.match(listing);
        if (!listing.contains(QLatin1String("Converting"))
            && isMounted(encrypting ? encryptedEntry(disk) : storageEntry(disk, disk.ext4Partition())))
            break;
        if (match.hasMatch())
            seen.append(match.captured(1).toInt());
        QThread::msleep(100);
    }
    return seen;
}

} // namespace kvlinux::KVDiskReports
