#pragma once

#include "KVBlockDevice.h"

#include <QString>

namespace kvlinux {

// The headers of partitions being decrypted. Decryption moves the data down
// over the header's place on the partition, so until it is done the header
// lives in a file of its own. Losing that file half way loses the volume:
// it is kept with the user's persistent state ($XDG_STATE_HOME, else
// ~/.local/state), never in the runtime directory, and flushed to disk
// before the first block moves. A file belongs to the partition of that
// name and size.
class KVDetachedHeaders
{
public:
    // Empty when there is none (and create is false, or it cannot be made).
    static QString directory(bool create = false);
    // Where the header of a partition is kept while it is decrypted.
    static QString pathFor(const KVBlockDevice &partition, bool create = false);
    // The partition's header file if it has one; empty otherwise.
    static QString existingFor(const KVBlockDevice &partition);
    // Makes a written file (and its directory entry) durable.
    static bool flush(const QString &path);
};

} // namespace kvlinux
