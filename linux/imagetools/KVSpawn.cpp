#include "KVSpawn.h"

#include <QFile>

#include <fcntl.h>
#include <spawn.h>
#include <vector>

extern char **environ;

namespace kvlinux {

pid_t KVSpawn::detached(const QString &program, const QStringList &arguments, const QString &logFile)
{
    std::vector<QByteArray> args = {QFile::encodeName(program)};
    for (const QString &argument : arguments)
        args.push_back(argument.toUtf8());
    std::vector<char *> argv;
    for (QByteArray &arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);

    const QByteArray log = logFile.isEmpty() ? QByteArrayLiteral("/dev/null") : QFile::encodeName(logFile);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, log.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, &attributes, argv.data(), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return pid;
}

} // namespace kvlinux
