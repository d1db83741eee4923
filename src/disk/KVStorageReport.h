#pragma once

#include "model/KVAppError.h"

#include <QVariantList>
#include <QVariantMap>

#include <optional>

// The storage report of `system_profiler SPStorageDataType -xml`: one entry
// per mounted volume, with its encrypted-volume data when it is a CoreStorage
// logical volume.
class KVStorageReport
{
public:
    // How a non-zero exit is reported when the output was understood anyway.
    enum class AbnormalExit { KeepsRecognisedMessage, OverridesMessage };

    // Runs system_profiler on the calling thread. `volumes` is absent when the
    // output could not be read as a report.
    static KVStorageReport read(const QString &systemProfiler, AbnormalExit abnormalExit);

    // The volume entries of a decoded report: the "_items" of its first data
    // type. A report of any other shape has none.
    static QVariantList volumesOf(const QVariant &report);

    // Mounted encrypted CoreStorage volumes are listed as such.
    static bool isEncryptedCoreStorageVolume(const QVariantMap &entry);
    // Plain Journaled HFS+ volumes (and unencrypted CoreStorage ones) may be
    // encrypted, except the start-up volume and mounted disk images.
    static bool canBeEncrypted(const QVariantMap &entry);

    std::optional<QVariantList> volumes;
    KVOptionalError error;
};
