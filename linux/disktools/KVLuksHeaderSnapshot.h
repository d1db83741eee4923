#pragma once

#include "KVLuksPartition.h"

#include <QString>

#include <optional>

namespace kvlinux {

// What a listing needs from a LUKS2 header, read straight from the device
// (or a detached header file) without libcryptsetup and without its
// metadata lock. A conversion holds that lock for as long as it updates
// the header, and a listing must answer even when the converter is stopped
// or stuck in the middle of such an update: a copy that is torn or half
// written fails its checksum, and the other copy is used.
struct KVLuksHeaderSnapshot
{
    QString uuid;  // upper case, as CoreStorage prints UUIDs
    QString label;
    KVLuksPartition::Conversion conversion = KVLuksPartition::Conversion::None;
    quint64 sequence = 0;

    // The newer of the two header copies that passes its checksum.
    static std::optional<KVLuksHeaderSnapshot> read(const QString &path);
    // One copy: the binary header and its JSON area (hdr_size bytes).
    static std::optional<KVLuksHeaderSnapshot> parse(const QByteArray &area);
};

} // namespace kvlinux
