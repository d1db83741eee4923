#include "KVPayloadSession.h"

#include "KVSecureBytes.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace kvlinux {

namespace {

constexpr int controlFdInChild = 3;
constexpr int startTimeoutMs = 30000;
constexpr int exitTimeoutMs = 120000;

bool writeAll(int fd, const uint8_t *data, size_t size)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t n = send(fd, data + done, size - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += size_t(n);
    }
    return true;
}

// "OK\n" or "ERR <errno>\n"; anything else, or silence, means it failed.
int readAnswer(int fd)
{
    QByteArray answer;
    while (!answer.endsWith('\n')) {
        pollfd p{fd, POLLIN, 0};
        const int n = poll(&p, 1, startTimeoutMs);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return ETIMEDOUT;
        char chunk[32];
        const ssize_t got = recv(fd, chunk, sizeof chunk, 0);
        if (got <= 0)
            return EIO;
        answer.append(chunk, got);
    }
    if (answer == "OK\n")
        return 0;
    if (answer.startsWith("ERR ")) {
        const int code = answer.mid(4).trimmed().toInt();
        return code > 0 ? code : EIO;
    }
    return EIO;
}

} // namespace

KVPayloadSession::~KVPayloadSession()
{
    if (isRunning())
        finish();
}

QString KVPayloadSession::payloadPath() const
{
    return m_directory + QStringLiteral("/payload");
}

KVImageResult KVPayloadSession::start(const Launch &launch, const KVSecureBytes &volumeKey)
{
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return KVImageError::fromErrno(errno);

    const std::vector<QByteArray> args = {
        QFile::encodeName(launch.helper),
        "--image", QFile::encodeName(launch.imagePath),
        "--offset", QByteArray::number(launch.geometry.dataOffset),
        "--key-size", QByteArray::number(launch.geometry.volumeKeySize),
        "--sector-size", QByteArray::number(launch.geometry.sectorSize),
        "--mountpoint", QFile::encodeName(launch.directory),
        "--name", launch.name.toUtf8(),
        "--control-fd", QByteArray::number(controlFdInChild),
        launch.readOnly ? "--read-only" : "",
        launch.directIo ? "--direct-io" : "",
    };
    std::vector<char *> argv;
    for (const QByteArray &arg : args)
        if (!arg.isEmpty())
            argv.push_back(const_cast<char *>(arg.constData()));
    argv.push_back(nullptr);

    // The daemon must not hold the tool's output open (the application reads
    // it to its end), so its standard streams go to /dev/null, and it gets a
    // session of its own so that it outlives the tool.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd <= 2; ++fd)
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions, sockets[1], controlFdInChild);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    const int spawned = posix_spawn(&m_pid, argv[0], &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    close(sockets[1]);
    if (spawned != 0) {
        close(sockets[0]);
        m_pid = 0;
        return KVImageError(KVImageError::NotSupported,
                            QStringLiteral("cannot start %1 (%2)").arg(launch.helper, QString::fromLocal8Bit(strerror(spawned))));
    }
    m_control = sockets[0];
    m_daemon = KVProcessIdentity::of(m_pid);
    m_directory = launch.directory;

    const int answer = writeAll(m_control, volumeKey.data(), volumeKey.size()) ? readAnswer(m_control)
                                                                               : EIO;
    if (answer != 0) {
        finish();
        return KVImageError::fromErrno(answer);
    }
    return std::nullopt;
}

void KVPayloadSession::leaveRunning()
{
    if (m_control >= 0)
        close(m_control);
    m_control = -1;
}

KVImageResult KVPayloadSession::finish()
{
    leaveRunning();
    if (m_pid <= 0)
        return std::nullopt;
    const bool exited = m_daemon.isNull() || m_daemon.waitForExit(exitTimeoutMs);
    if (!exited)
        return KVImageError(KVImageError::Busy);
    reap();
    return std::nullopt;
}

void KVPayloadSession::reap()
{
    int status = 0;
    while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
    }
    m_pid = 0;
}

} // namespace kvlinux
