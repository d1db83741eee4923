#include "KVImagefsOptions.h"

#include <charconv>
#include <map>

namespace kvlinux {

namespace {

// The largest offset that leaves room for a payload in a 63-bit file offset.
constexpr uint64_t maxOffset = uint64_t(1) << 62;

// Decimal digits only, all of them, within the range of T.
template<typename T>
std::optional<T> number(const std::optional<std::string> &text)
{
    if (!text)
        return std::nullopt;
    T value{};
    const char *end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, value);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

} // namespace

std::optional<KVImagefsOptions> KVImagefsOptions::parse(const std::vector<std::string> &arguments)
{
    KVImagefsOptions o;
    std::map<std::string, std::string> values;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string &arg = arguments[i];
        if (arg == "--read-only")
            o.readOnly = true;
        else if (arg == "--direct-io")
            o.directIo = true;
        else if (arg.rfind("--", 0) == 0 && i + 1 < arguments.size() && !values.count(arg))
            values[arg] = arguments[++i];
        else
            return std::nullopt;
    }
    const auto text = [&values](const char *key) -> std::optional<std::string> {
        const auto it = values.find(key);
        if (it == values.end() || it->second.empty() || it->second.find('\0') != std::string::npos)
            return std::nullopt;
        return it->second;
    };
    const auto image = text("--image");
    const auto mountPoint = text("--mountpoint");
    const auto name = text("--name");
    const auto offset = number<uint64_t>(text("--offset"));
    const auto keySize = number<size_t>(text("--key-size"));
    const auto sectorSize = number<size_t>(text("--sector-size"));
    const auto controlFd = number<int>(text("--control-fd"));
    if (values.size() != 7 || !image || !mountPoint || !name || !offset || !keySize || !sectorSize
        || !controlFd)
        return std::nullopt;
    const bool sectorOk = *sectorSize >= 512 && *sectorSize <= 4096 && (*sectorSize & (*sectorSize - 1)) == 0;
    if ((*keySize != 32 && *keySize != 64) || !sectorOk || *offset % *sectorSize != 0
        || *offset > maxOffset || *controlFd < 3 || name->find_first_of(",\\") != std::string::npos)
        return std::nullopt;
    o.image = *image;
    o.mountPoint = *mountPoint;
    o.name = *name;
    o.offset = *offset;
    o.keySize = *keySize;
    o.sectorSize = *sectorSize;
    o.controlFd = *controlFd;
    return o;
}

} // namespace kvlinux
