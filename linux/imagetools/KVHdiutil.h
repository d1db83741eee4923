#pragma once

#include "KVHdiutilCommand.h"

#include <QStringList>

namespace kvlinux {

// Korvelle's hdiutil for Linux: answers the application's command lines.
class KVHdiutil
{
public:
    explicit KVHdiutil(KVToolEnvironment environment);

    // arguments: without the program name. Returns the exit status.
    int run(const QStringList &arguments);

private:
    KVToolEnvironment m_environment;
};

} // namespace kvlinux
