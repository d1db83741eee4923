#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil compact -stdinpass -batteryallowed -verbose IMAGE: gives the space
// of the file system's free blocks back to the disk the image lives on.
class KVCompactCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

private:
    struct Outcome
    {
        quint64 reclaimed = 0;
        quint64 possible = 0;
    };
    KVImageResult compact(const QString &imagePath, Outcome &outcome);
};

} // namespace kvlinux
