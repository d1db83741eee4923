// What the disk engine reads from diskutil and system_profiler: the text of
// "cs list" through the conversion-status parser, and the storage report's
// property list through the readers of its volume entries.

#include "disk/KVConversionStatusParser.h"
#include "disk/KVStorageReport.h"
#include "tools/KVPropertyList.h"
#include "tools/KVValue.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray output(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const KVConversionStatus &status : KVConversionStatusParser::parse(QString::fromUtf8(output))) {
        // Only logical volumes with a name of two characters or more are listed.
        if (status.lvUUID.size() < 2)
            __builtin_trap();
    }
    if (const std::optional<QVariant> report = KVPropertyList::decode(output)) {
        for (const QVariant &entry : KVStorageReport::volumesOf(*report)) {
            (void)KVStorageReport::isEncryptedCoreStorageVolume(KVValue::dictionary(entry));
            (void)KVStorageReport::canBeEncrypted(KVValue::dictionary(entry));
        }
    }
    return 0;
}
