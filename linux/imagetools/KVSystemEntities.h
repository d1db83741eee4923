#pragma once

#include "KVAttachment.h"

#include <QList>
#include <QVariantList>

namespace kvlinux {

// The devices of an attached image the way hdiutil presents them: the whole
// image /dev/diskN with a GUID partition scheme, and its one volume
// /dev/diskNs1 (a Linux file system partition) with its mount point.
struct KVSystemEntity
{
    QString contentHint;
    QString devEntry;
    QString mountPoint; // empty when not mounted
    bool potentiallyMountable = false;
    QString volumeKind;
};

class KVSystemEntities
{
public:
    static inline const QString partitionScheme = QStringLiteral("GUID_partition_scheme");
    // GPT's type for a Linux file system partition.
    static inline const QString linuxFileSystem = QStringLiteral("0FC63DAF-8483-4772-8E79-3D69D8477DE4");

    static QList<KVSystemEntity> of(const KVAttachment &record, bool mounted);
    // As the "system-entities" array of hdiutil info -plist.
    static QVariantList toPropertyList(const QList<KVSystemEntity> &entities);
};

} // namespace kvlinux
