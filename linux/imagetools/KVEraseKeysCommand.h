#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil erasekeys IMAGE: destroys every key, so nothing opens it again.
class KVEraseKeysCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;
};

} // namespace kvlinux
