#pragma once

#include "KVDiskToolHarness.h"

#include <QList>
#include <QVariantMap>

namespace kvlinux {

// What the disk programs report about a harness's disk, read the way the
// application reads it.
namespace KVDiskReports {

QVariantList storageItems(const KVDiskToolHarness &disk);
QVariantMap storageEntry(const KVDiskToolHarness &disk, const QString &bsdName);
// The first volume with CoreStorage's logical-volume dictionary.
QVariantMap encryptedEntry(const KVDiskToolHarness &disk);
QString logicalVolumeUuid(const QVariantMap &entry);
bool isMounted(const QVariantMap &entry);

// The progress figures "cs list" shows until the conversion is over and its
// volume mounted again (the encrypted one, or after a decryption the plain
// partition), or 90 seconds have passed.
QList<int> followConversion(const KVDiskToolHarness &disk, bool encrypting = true);

} // namespace KVDiskReports

} // namespace kvlinux
