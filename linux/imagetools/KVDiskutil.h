#pragma once

#include <QStringList>
#include <QVariantMap>

namespace kvlinux {

class KVToolOutput;
struct KVAttachment;

// Korvelle's diskutil for Linux, for the volume of an attached image, named
// by its mount point or its device (diskNs1): "info [-plist] TARGET" and
// "rename TARGET NAME".
class KVDiskutil
{
public:
    // arguments: without the program name. Returns the exit status.
    int run(const QStringList &arguments);

    static QVariantMap volumeInfo(const KVAttachment &record);

private:
    int info(const QString &target, bool plist, KVToolOutput &out);
    int rename(const QString &target, const QString &name, KVToolOutput &out);
};

} // namespace kvlinux
