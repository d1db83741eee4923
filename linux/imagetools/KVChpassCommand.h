#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil chpass -oldstdinpass -newstdinpass -verbose IMAGE
// Standard input holds the old password, one NUL and the new password.
class KVChpassCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

private:
    KVImageResult changePassword(const QString &imagePath);
};

} // namespace kvlinux
