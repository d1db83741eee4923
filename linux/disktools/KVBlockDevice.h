#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <sys/types.h>

namespace kvlinux {

// A partition as the kernel lists it in /sys/class/block. Disk verbs act on
// partitions only: a whole disk is never converted, mounted or ejected here.
struct KVBlockDevice
{
    QString name;       // kernel name: "sda2", "nvme0n1p3", "loop4p1"
    QString parentDisk; // the whole disk: "sda", "loop4"
    dev_t number = 0;
    qint64 size = 0;    // bytes
    QString protocol;   // the bus, as system_profiler names it: "SATA", "USB"...
    bool internal = true;

    QString node() const { return QStringLiteral("/dev/") + name; }

    // Every partition of every disk, in the kernel's order.
    static QList<KVBlockDevice> partitions();
    // "sda2", "/dev/sda2"; nothing when no such partition exists.
    static std::optional<KVBlockDevice> find(const QString &identifier);
    static std::optional<KVBlockDevice> withNumber(dev_t number);
    // The device number of a block special file, or of nothing (0).
    static dev_t numberOf(const QString &path);
    // The disk that holds the running system ("/" and where it boots from).
    static bool isSystemDisk(const QString &disk);

private:
    static std::optional<KVBlockDevice> fromSysfs(const QString &name);
};

} // namespace kvlinux
