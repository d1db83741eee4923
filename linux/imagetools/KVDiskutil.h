#pragma once

#include <QStringList>
#include <QVariantMap>

namespace kvlinux {

class KVToolOutput;
struct KVAttachment;

// Korvelle's diskutil for Linux: "info [-plist] TARGET" for the volume of an
// attached image, named by its mount point or its device (diskNs1).
class KVDiskutil
{
public:
    // arguments: without the program name. Returns the exit status.
    int run(const QStringList &arguments);

    static QVariantMap volumeInfo(const KVAttachment &record);

private:
    int info(const QString &target, bool plist, KVToolOutput &out);
};

} // namespace kvlinux
