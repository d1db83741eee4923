#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kvlinux {

// imagefs's command line:
//   --image PATH --offset BYTES --key-size BYTES --sector-size BYTES
//   --mountpoint DIR --name NAME --control-fd FD [--read-only] [--direct-io]
// Every value is checked before use: a key size the cipher knows (32 or 64),
// a sector size that is a power of two from 512 to 4096, an offset that is a
// whole number of sectors, a control descriptor above the standard three, and
// a name that cannot smuggle options into the FUSE mount options.
struct KVImagefsOptions
{
    std::string image;
    std::string mountPoint;
    std::string name;
    uint64_t offset = 0;
    size_t keySize = 0;
    size_t sectorSize = 0;
    int controlFd = -1;
    bool readOnly = false;
    bool directIo = false;

    // arguments: without the program name.
    static std::optional<KVImagefsOptions> parse(const std::vector<std::string> &arguments);
};

} // namespace kvlinux
