#pragma once

#include <QByteArray>
#include <QStringList>

// The mount points of this system, read from the mount table alone: nothing
// here touches the mounted file systems, so a hung network volume cannot stall
// the caller.
namespace KVMountedVolumes {

// In the order the volumes were mounted.
QStringList paths();

// The mount points listed in text of the /proc/self/mountinfo format.
QStringList parseMountInfo(const QByteArray &text);

} // namespace KVMountedVolumes
