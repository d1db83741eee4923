#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// One mount as the kernel lists it.
struct KVMount
{
    int id = 0;          // unique while mounted; a moved mount keeps it
    QByteArray device;   // "major:minor"
    QString mountPoint;
    QString fileSystemType; // "ext4", "fuse.fuse2fs"...; after the " - " separator
    QString source;         // "/dev/loop3", or what a FUSE file system calls itself
};

// What happened to one mount between two readings of the table.
struct KVMountChange
{
    enum Kind { Mounted, Unmounted, Moved };
    Kind kind = Mounted;
    QString mountPoint;    // where it is now; where it was, for Unmounted
    QString oldMountPoint; // where a moved mount was

    bool operator==(const KVMountChange &) const = default;
};

// The mount table of this process's mount namespace (/proc/self/mountinfo).
class KVMountTable
{
public:
    // Lines of mountinfo: "ID PARENT MAJOR:MINOR ROOT MOUNTPOINT ...", with
    // blanks, tabs, newlines and backslashes in paths written as octal escapes.
    static KVMountTable parse(QByteArrayView mountinfo);
    // Reads the table afresh from an open mountinfo file; nothing if it cannot.
    static std::optional<KVMountTable> read(int fd);
    // The table as it is now; empty if /proc/self/mountinfo cannot be read.
    static KVMountTable current();

    // The mount at mountPoint that is visible there: a later mount over the
    // same folder hides the earlier one.
    std::optional<KVMount> at(const QString &mountPoint) const;

    const QList<KVMount> &mounts() const { return m_mounts; }

    // Unmounts first, then moves and mounts in the order of this table. A
    // mount is the same when its ID and device are: an ID may be reused by a
    // new mount once the old one is gone.
    QList<KVMountChange> changesSince(const KVMountTable &before) const;

private:
    QList<KVMount> m_mounts;
};
