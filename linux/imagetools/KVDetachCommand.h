#pragma once

#include "KVHdiutilCommand.h"

// hdiutil detach -verbose [-force] DEVICE-OR-MOUNT-POINT
class KVDetachCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;
};
