#include "KVMountedVolumeLookup.h"

#include "platform/KVFileSystemType.h"
#include "platform/KVMountTable.h"

#include <QFile>

namespace {

// Read from the mount table alone: nothing here touches the mounted file
// systems, so a hung network volume cannot stall the GUI thread.
QStringList mountPoints()
{
    QFile mountInfo(QStringLiteral("/proc/self/mountinfo"));
    if (!mountInfo.open(QIODevice::ReadOnly))
        return {};
    const KVMountTable table = KVMountTable::parse(mountInfo.readAll());
    QStringList paths;
    for (const KVMount &mount : table.mounts())
        paths.append(mount.mountPoint);
    return paths;
}

} // namespace

KVMountedVolumeLookup KVMountedVolumeLookup::system()
{
    return {mountPoints, KVFileSystemType::ofPath};
}
