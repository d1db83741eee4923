// A favourite's bookmark as the settings keep it, read without touching any
// file. A bookmark that reads names a path, and never one cut at a NUL.

#include "platform/KVBookmark.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const KVResult<KVBookmark::Record> record =
        KVBookmark::read(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (record && (record.value().path.isEmpty() || record.value().path.contains(QChar(0))))
        __builtin_trap();
    return 0;
}
