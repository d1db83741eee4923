#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kvlinux {

// Runs one of the system's programs (mkfs.ext4, e2fsck, resize2fs, dumpe2fs,
// fuse2fs, fusermount3) and collects its output. Programs are looked up in
// PATH and in the sbin directories that an ordinary user's PATH lacks.
class KVExternalCommand
{
public:
    struct Result
    {
        bool started = false;
        int exitCode = -1;
        QByteArray output; // standard output and standard error together
    };

    static Result run(const QString &program, const QStringList &arguments);
    static QString locate(const QString &program);
};

} // namespace kvlinux
