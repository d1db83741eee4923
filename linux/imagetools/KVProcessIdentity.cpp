#include "KVProcessIdentity.h"

#include <QFile>

#include <cerrno>
#include <optional>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kvlinux {

namespace {

struct ProcessStat
{
    char state = 0;
    quint64 startTime = 0;
};

// /proc/PID/stat: "pid (comm) state ppid ... starttime(22) ...". The command
// name may hold blanks and parentheses, so fields are counted from the last ')'.
std::optional<ProcessStat> statOf(pid_t pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid <= 0 || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray line = file.readAll();
    const qsizetype close = line.lastIndexOf(')');
    if (close < 0)
        return std::nullopt;
    const QList<QByteArray> fields = line.mid(close + 2).split(' ');
    // fields[0] is field 3 (state); starttime is field 22.
    if (fields.size() < 20)
        return std::nullopt;
    return ProcessStat{fields[0].isEmpty() ? char(0) : fields[0][0], fields[19].toULongLong()};
}

} // namespace

KVProcessIdentity KVProcessIdentity::of(pid_t pid)
{
    const auto stat = statOf(pid);
    return stat ? KVProcessIdentity(pid, stat->startTime) : KVProcessIdentity();
}

KVProcessIdentity KVProcessIdentity::self()
{
    return of(getpid());
}

bool KVProcessIdentity::isAlive() const
{
    const auto stat = statOf(m_pid);
    return stat && stat->startTime == m_startTime && stat->state != 'Z' && stat->state != 'X';
}

bool KVProcessIdentity::waitForExit(int timeoutMs) const
{
    const int pidfd = int(syscall(SYS_pidfd_open, m_pid, 0));
    if (pidfd < 0)
        return !isAlive();
    bool gone = !isAlive();
    if (!gone) {
        pollfd fd{pidfd, POLLIN, 0};
        int n;
        do {
            n = poll(&fd, 1, timeoutMs);
        } while (n < 0 && errno == EINTR);
        // A zombie child of ours also reports in; it no longer holds anything.
        gone = n > 0 || !isAlive();
    }
    close(pidfd);
    return gone;
}

void KVProcessIdentity::terminate() const
{
    // Through a pidfd opened before the identity check, the signal cannot
    // reach another process that was given the same id in between.
    const int pidfd = int(syscall(SYS_pidfd_open, m_pid, 0));
    if (pidfd < 0)
        return;
    if (isAlive())
        syscall(SYS_pidfd_send_signal, pidfd, SIGTERM, nullptr, 0);
    close(pidfd);
}

QJsonObject KVProcessIdentity::toJson() const
{
    return {{QStringLiteral("pid"), qint64(m_pid)},
            {QStringLiteral("start"), QString::number(m_startTime)}};
}

KVProcessIdentity KVProcessIdentity::fromJson(const QJsonObject &json)
{
    return KVProcessIdentity(pid_t(json.value(QStringLiteral("pid")).toInteger()),
                             json.value(QStringLiteral("start")).toString().toULongLong());
}

} // namespace kvlinux
