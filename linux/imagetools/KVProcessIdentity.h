#pragma once

#include <QJsonObject>

#include <sys/types.h>

namespace kvlinux {

// A process named by its id and its start time, so that a recorded id that
// the system has since given to another process is not mistaken for ours.
class KVProcessIdentity
{
public:
    KVProcessIdentity() = default;
    static KVProcessIdentity of(pid_t pid);
    static KVProcessIdentity self();

    pid_t pid() const { return m_pid; }
    bool isNull() const { return m_pid <= 0; }
    // Running (not a zombie) and still the same process.
    bool isAlive() const;
    // Waits until the process has gone; false on timeout.
    bool waitForExit(int timeoutMs) const;
    // Asks the process to end (SIGTERM), if it is still this process.
    void terminate() const;

    QJsonObject toJson() const;
    static KVProcessIdentity fromJson(const QJsonObject &json);

    bool operator==(const KVProcessIdentity &) const = default;

private:
    KVProcessIdentity(pid_t pid, quint64 startTime) : m_pid(pid), m_startTime(startTime) {}

    pid_t m_pid = 0;
    quint64 m_startTime = 0;
};

} // namespace kvlinux
