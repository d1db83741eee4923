#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil detach -verbose [-force] DEVICE-OR-MOUNT-POINT
class KVDetachCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;
};

} // namespace kvlinux
