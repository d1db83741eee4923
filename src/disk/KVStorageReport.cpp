#include "KVStorageReport.h"

#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"
#include "tools/KVValue.h"

using namespace KVValue;

namespace {
const QString CoreStorageVolumeKey = QStringLiteral("com.apple.corestorage.lv");
}

KVStorageReport KVStorageReport::read(const QString &systemProfiler, AbnormalExit abnormalExit)
{
    KVToolRun run(systemProfiler, {QStringLiteral("SPStorageDataType"), QStringLiteral("-xml")},
                  KVLocalization::tr("Error executing system_profiler command"),
                  KVLocalization::tr("system_profiler ended abnormally."));
    run.setAbnormalExitOverridesMessage(abnormalExit == AbnormalExit::OverridesMessage);
    KVStorageReport report;
    report.error = run.runWholeOutput([&](const QByteArray &output) {
        if (std::optional<QVariant> decoded =
                run.decodePropertyList(output, KVLocalization::tr("system_profiler output is not a property list.")))
            report.volumes = volumesOf(*decoded);
    });
    return report;
}

QVariantList KVStorageReport::volumesOf(const QVariant &report)
{
    const QVariantList dataTypes = array(report);
    if (dataTypes.isEmpty())
        return {};
    return array(dictionary(dataTypes.first()).value(QStringLiteral("_items")));
}

bool KVStorageReport::isEncryptedCoreStorageVolume(const QVariantMap &entry)
{
    const QVariant logicalVolume = entry.value(CoreStorageVolumeKey);
    return logicalVolume.metaType() == QMetaType::fromType<QVariantMap>()
        && boolValue(logicalVolume.toMap().value(QStringLiteral("com.apple.corestorage.lv.encrypted")));
}

bool KVStorageReport::canBeEncrypted(const QVariantMap &entry)
{
    return !isEncryptedCoreStorageVolume(entry)
        && stringValue(entry.value(QStringLiteral("file_system"))) == u"Journaled HFS+"
        && stringValue(entry.value(QStringLiteral("mount_point"))) != u"/"
        && stringValue(dictionary(entry.value(QStringLiteral("physical_drive"))).value(QStringLiteral("protocol")))
               != u"Disk Image";
}
