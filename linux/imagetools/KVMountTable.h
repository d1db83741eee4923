#pragma once

#include <QList>
#include <QString>

#include <optional>

// The mounts of this process's namespace, read from /proc/self/mountinfo.
class KVMountTable
{
public:
    struct Mount
    {
        QString mountPoint;
        QString fileSystemType; // "ext4", "fuse.fuse2fs", "fuse.korvelle"...
        QString source;         // "/dev/loop3", or what a FUSE file system calls itself
    };

    static KVMountTable read();
    static KVMountTable parse(const QByteArray &mountinfo);

    std::optional<Mount> at(const QString &mountPoint) const;
    const QList<Mount> &mounts() const { return m_mounts; }

private:
    QList<Mount> m_mounts;
};
