#pragma once

#include <QStringList>

#include <functional>
#include <optional>

// What the disk engine asks when a volume has been mounted: the mount points
// of the system, and the type of the file system at one of them (nothing when
// it cannot be examined). The engine uses the system's answers; tests give it
// their own.
struct KVMountedVolumeLookup
{
    std::function<QStringList()> mountedVolumePaths;
    std::function<std::optional<QString>(const QString &path)> fileSystemType;

    static KVMountedVolumeLookup system();
};
