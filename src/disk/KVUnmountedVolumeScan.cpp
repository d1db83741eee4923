#include "KVUnmountedVolumeScan.h"

#include "model/KVLocalization.h"
#include "platform/KVSystemLog.h"
#include "tools/KVToolRun.h"
#include "tools/KVValue.h"

#include <functional>

using namespace KVValue;

namespace {

const QString GroupKey = QStringLiteral("LogicalVolumeGroup");
const QString FamilyInfoKey = QStringLiteral("LogicalVolumeFamilyInfo");
const QString PhysicalVolumeInfoKey = QStringLiteral("PhysicalVolumeInfo");
const QString DiskutilInfoKey = QStringLiteral("diskutilInfo");
const QString FamiliesKey = QStringLiteral("CoreStorageLogicalVolumeFamilies");
const QString PhysicalVolumesKey = QStringLiteral("CoreStoragePhysicalVolumes");
const QString LogicalVolumesKey = QStringLiteral("CoreStorageLogicalVolumes");
const QString UUIDKey = QStringLiteral("CoreStorageUUID");

QVariantMap onlyElement(const QVariant &array)
{
    const QVariantList list = KVValue::array(array);
    return list.size() == 1 ? dictionary(list.first()) : QVariantMap();
}

bool isSimpleGroup(const QVariantMap &group)
{
    return array(group.value(FamiliesKey)).size() == 1 && array(group.value(PhysicalVolumesKey)).size() == 1
        && array(onlyElement(group.value(FamiliesKey)).value(LogicalVolumesKey)).size() == 1;
}

// The diskutil runs of one scan and the one error they report between them.
class ScanRuns
{
public:
    explicit ScanRuns(QString diskutil)
        : m_diskutil(std::move(diskutil))
    {
    }

    // `diskutil <arguments>`, read as a property list.
    std::optional<QVariant> propertyList(const QStringList &arguments)
    {
        std::optional<QVariant> result;
        run(arguments, [&](KVToolRun &run, const QByteArray &output) { result = decode(run, output); });
        return result;
    }

    // `diskutil info -plist <identifier>`; diskutil answers a disk it does not
    // know in plain text.
    std::optional<QVariant> diskInfo(const QString &identifier)
    {
        std::optional<QVariant> result;
        run({QStringLiteral("info"), QStringLiteral("-plist"), identifier},
            [&](KVToolRun &run, const QByteArray &output) {
                if (output.startsWith("Could not find disk")) {
                    KVSystemLog::write(QStringLiteral("Error diskutil info: Could not find disk"));
                    run.failWithSystemError(KVLocalization::tr("Error diskutil info: Could not find disk"),
                                            static_cast<int>(KVAppErrorCode::DiskNotFound));
                    return;
                }
                result = decode(run, output);
            });
        return result;
    }

    KVOptionalError error() const
    {
        if (!m_message)
            return std::nullopt;
        return KVAppError(NSCocoaErrorDomain, m_code, KVLocalization::tr("Error executing diskutil command"),
                          *m_message);
    }

private:
    using Handler = std::function<void(KVToolRun &run, const QByteArray &output)>;

    static std::optional<QVariant> decode(KVToolRun &run, const QByteArray &output)
    {
        return run.decodePropertyList(output, KVLocalization::tr("diskutil output is not a property list."));
    }

    void run(const QStringList &arguments, const Handler &handler)
    {
        KVToolRun run(m_diskutil, arguments, KVLocalization::tr("Error executing diskutil command"),
                      KVLocalization::tr("diskutil ended abnormally."));
        bool recognised = false;
        const KVOptionalError error = run.runWholeOutput([&](const QByteArray &output) {
            handler(run, output);
            recognised = run.hasFailed();
        });
        if (!error)
            return;
        const bool abnormalEndOnly = !recognised && run.exit().started() && run.exit().readError == 0;
        if (abnormalEndOnly && m_message)
            return;
        m_message = error->localizedFailureReason();
        m_code = error->code();
    }

    QString m_diskutil;
    std::optional<QString> m_message;
    int m_code = 0;
};

} // namespace

KVUnmountedVolumeScan KVUnmountedVolumeScan::run(const QString &diskutil)
{
    ScanRuns runs(diskutil);
    const QVariantMap listing =
        dictionary(runs.propertyList({QStringLiteral("cs"), QStringLiteral("list"), QStringLiteral("-plist")})
                       .value_or(QVariant()));

    // Encrypted families, the unlocked ones first and then the locked ones.
    QList<QVariantMap> candidates;
    QList<QVariantMap> locked;
    for (const QVariant &groupValue : array(listing.value(QStringLiteral("CoreStorageLogicalVolumeGroups")))) {
        const QVariantMap group = dictionary(groupValue);
        if (!isSimpleGroup(group))
            continue;
        const QString familyUUID = stringValue(onlyElement(group.value(FamiliesKey)).value(UUIDKey));
        const std::optional<QVariant> familyInfo =
            runs.propertyList({QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"), familyUUID});
        if (!familyInfo)
            continue;
        const QVariantMap family = dictionary(*familyInfo);
        if (stringValue(family.value(QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionType"))) != u"AES-XTS")
            continue;
        const QVariantMap candidate{{GroupKey, groupValue}, {FamilyInfoKey, *familyInfo}};
        if (stringValue(family.value(QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionStatus"))) == u"Locked")
            locked.append(candidate);
        else
            candidates.append(candidate);
    }

    for (QVariantMap candidate : std::as_const(locked)) {
        const QVariantMap group = dictionary(candidate.value(GroupKey));
        const QString physicalVolumeUUID = stringValue(firstDictionary(group.value(PhysicalVolumesKey)).value(UUIDKey));
        const std::optional<QVariant> physicalVolumeInfo = runs.propertyList(
            {QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"), physicalVolumeUUID});
        if (!physicalVolumeInfo)
            continue;
        candidate.insert(PhysicalVolumeInfoKey, *physicalVolumeInfo);
        candidates.append(candidate);
    }

    KVUnmountedVolumeScan scan;
    for (const QVariantMap &candidate : std::as_const(candidates)) {
        const QVariantMap group = dictionary(candidate.value(GroupKey));
        const QString identifier =
            candidate.contains(PhysicalVolumeInfoKey)
                ? stringValue(dictionary(candidate.value(PhysicalVolumeInfoKey)).value(QStringLiteral("DeviceIdentifier")))
                : stringValue(firstDictionary(firstDictionary(group.value(FamiliesKey)).value(LogicalVolumesKey)).value(UUIDKey));
        const std::optional<QVariant> info = runs.diskInfo(identifier);
        if (!info || !stringValue(dictionary(*info).value(QStringLiteral("MountPoint"))).isEmpty())
            continue;
        scan.volumes.append({{GroupKey, candidate.value(GroupKey)},
                             {FamilyInfoKey, candidate.value(FamilyInfoKey)},
                             {DiskutilInfoKey, *info}});
    }
    scan.error = runs.error();
    return scan;
}
