// The kernel's mount table, read twice: the input is the table before and the
// table after, separated by a line that is a single "~". Every mount listed
// must be found at its own mount point, and the changes between the two
// readings computed.

#include "platform/KVMountTable.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView input(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype separator = input.indexOf(QByteArrayView("\n~\n"));
    const KVMountTable before = KVMountTable::parse(separator < 0 ? input : input.first(separator));
    const KVMountTable after = KVMountTable::parse(separator < 0 ? QByteArrayView() : input.sliced(separator + 3));
    for (const KVMount &mount : after.mounts()) {
        if (!after.at(mount.mountPoint))
            __builtin_trap();
    }
    (void)after.changesSince(before);
    return 0;
}
