#pragma once

#include <QString>

// What a listed volume is: an attached disk image, a partition or CoreStorage
// volume, an encrypted CoreStorage volume that is not mounted, or none of these.
// The text form ("diskImage", "disk", "notMountedDisk", "none") is what
// favourites keep in their archive.
enum class KVVolumeKind { DiskImage, Disk, NotMountedDisk, None };

QString kvVolumeKindText(KVVolumeKind kind);
// Any text that names no kind reads as None.
KVVolumeKind kvVolumeKindFromText(QStringView text);
