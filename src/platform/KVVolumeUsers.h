#pragma once

#include <QList>
#include <QString>

#include <sys/types.h>

// The processes that keep a mounted volume busy, found as fuser -m finds them:
// a process uses the volume when its working folder, root, program, an open
// file or a mapped file lies on the volume's file system. Only the processes
// whose /proc entries this user may read are seen.
//
// It reads /proc, which takes a while on a busy machine: call it off the GUI
// thread.
class KVVolumeUsers
{
public:
    struct Process
    {
        pid_t pid = 0;
        QString name; // the command name of /proc/PID/comm
        bool operator==(const Process &) const = default;
    };

    // Sorted by PID; empty when nothing is found or the mount point cannot be read.
    static QList<Process> processesUsing(const QString &mountPoint, const QString &procRoot = QStringLiteral("/proc"));

    // One line per process: "NAME (PID N)".
    static QString describe(const QList<Process> &processes);
};
