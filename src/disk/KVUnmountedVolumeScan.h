#pragma once

#include "model/KVAppError.h"

#include <QList>
#include <QVariantMap>

// Finds the encrypted CoreStorage volumes that exist but are not mounted,
// locked or not, by asking diskutil about every volume group, family, physical
// volume and volume in turn.
//
// Only simple groups count: one family on one physical volume, with one
// logical volume. A locked volume has no disk of its own yet, so it is looked
// up by its physical volume's disk; an unlocked one by its own UUID.
//
// The runs share one error. A failure diskutil prints replaces an earlier one;
// an abnormal end counts only when nothing was recorded before; the scan goes
// on after a failed run and keeps what it found. The error is always in
// NSCocoaErrorDomain, even for a disk that diskutil could not find.
class KVUnmountedVolumeScan
{
public:
    // Runs diskutil (at `diskutil`) on the calling thread.
    static KVUnmountedVolumeScan run(const QString &diskutil);

    // One source dictionary per volume: "LogicalVolumeGroup",
    // "LogicalVolumeFamilyInfo" and "diskutilInfo".
    QList<QVariantMap> volumes;
    KVOptionalError error;
};
