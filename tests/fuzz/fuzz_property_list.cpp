// Property lists, XML or binary, as the tools print them and the settings keep
// them: decoded, read through the accessors the readers use, and written back.
// What was read must be writable in binary form and read back again.

#include "tools/KVPropertyList.h"
#include "tools/KVValue.h"

#include <cstddef>
#include <cstdint>

namespace {

void readThrough(const QVariant &value)
{
    (void)KVValue::boolValue(value);
    (void)KVValue::integerValue(value);
    (void)KVValue::stringValue(value);
    if (KVValue::nameValue(value).contains(QChar(0)) || KVValue::pathValue(value).contains(QChar(0)))
        __builtin_trap();
    for (const QVariant &element : KVValue::array(value))
        readThrough(element);
    const QVariantMap map = KVValue::dictionary(value);
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        readThrough(it.value());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QVariant> value = KVPropertyList::decode(input);
    if (!value)
        return 0;
    readThrough(*value);
    if (!KVPropertyList::decode(KVPropertyList::encodeBinary(*value)))
        __builtin_trap();
    (void)KVPropertyList::decode(KVPropertyList::encodeXml(*value));
    return 0;
}
