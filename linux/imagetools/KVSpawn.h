#pragma once

#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace kvlinux {

// Starts a program that must outlive this one without holding its output
// open: a session of its own, standard streams on /dev/null or a log file.
class KVSpawn
{
public:
    // Returns the process id, or -1.
    static pid_t detached(const QString &program, const QStringList &arguments,
                          const QString &logFile = QString());
};

} // namespace kvlinux
