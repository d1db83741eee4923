// imagefs's command line (arguments separated by NUL bytes in the input):
// whatever is accepted holds only values the daemon can use.

#include "KVImagefsOptions.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using namespace kvlinux;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<std::string> arguments(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0)
            arguments.emplace_back();
        else
            arguments.back().push_back(char(data[i]));
    }
    const auto options = KVImagefsOptions::parse(arguments);
    if (options
        && ((options->keySize != 32 && options->keySize != 64) || options->sectorSize < 512
            || options->sectorSize > 4096 || options->offset % options->sectorSize != 0
            || options->controlFd < 3 || options->name.find(',') != std::string::npos))
        __builtin_trap();
    return 0;
}
