#include "KVToolProcess.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

constexpr qsizetype ReadSize = 64 * 1024;
constexpr int ExitPollFallbackMs = 50;

// A file descriptor that closes itself.
class Fd
{
public:
    Fd() = default;
    explicit Fd(int fd) : m_fd(fd) {}
    ~Fd() { reset(); }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    void reset(int fd = -1)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

bool makePipe(Fd &readEnd, Fd &writeEnd)
{
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0)
        return false;
    readEnd.reset(fds[0]);
    writeEnd.reset(fds[1]);
    return true;
}

void setNonBlocking(int fd)
{
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
}

// A tool that exits without reading its standard input must not kill us with
// SIGPIPE: block the signal for this write and swallow it if it was raised.
ssize_t writeWithoutSigpipe(int fd, const char *data, size_t size)
{
    sigset_t pipeSignal;
    sigset_t previous;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);
    const ssize_t written = ::write(fd, data, size);
    const int error = errno;
    if (written < 0 && error == EPIPE) {
        const timespec noWait{};
        sigtimedwait(&pipeSignal, nullptr, &noWait);
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    errno = error;
    return written;
}

// Feeds the standard-input pipe without ever blocking on it.
class InputFeeder
{
public:
    InputFeeder(KVSecret &secret, Fd &writeEnd) : m_secret(secret), m_writeEnd(writeEnd) {}

    // Writes as much as the pipe takes; closes the pipe and wipes the secret
    // when everything is written or the tool has gone away.
    void feed()
    {
        while (m_written < m_secret.size()) {
            const ssize_t n = writeWithoutSigpipe(m_writeEnd.get(), m_secret.data() + m_written,
                                                  size_t(m_secret.size() - m_written));
            if (n > 0) {
                m_written += n;
            } else if (n < 0 && errno == EINTR) {
                continue;
            } else if (n < 0 && errno == EAGAIN) {
                return;
            } else {
                break;
            }
        }
        finish();
    }

    void finish()
    {
        m_writeEnd.reset();
        m_secret.wipe();
    }

    bool pending() const { return m_writeEnd.isOpen(); }

private:
    KVSecret &m_secret;
    Fd &m_writeEnd;
    qsizetype m_written = 0;
};

int pidfdOpen(pid_t pid)
{
#ifdef SYS_pidfd_open
    return int(::syscall(SYS_pidfd_open, pid, 0));
#else
    Q_UNUSED(pid);
    errno = ENOSYS;
    return -1;
#endif
}

bool hasExited(pid_t pid)
{
    siginfo_t info{};
    return ::waitid(P_PID, id_t(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid;
}

int reap(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return WEXITSTATUS(status);
}

// Reads what is available now. Returns false at end of file or on a read error.
bool readAvailable(int fd, QByteArray &buffer, const KVToolProcess::OutputHandler &onOutput,
                   KVToolExit &exit)
{
    for (;;) {
        const ssize_t n = ::read(fd, buffer.data(), size_t(buffer.size()));
        if (n > 0) {
            onOutput(QByteArrayView(buffer.constData(), n));
            if (n < buffer.size())
                return true;
            continue;
        }
        if (n == 0)
            return false;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN)
            return true;
        exit.readError = errno;
        return false;
    }
}

class SpawnSetup
{
public:
    SpawnSetup()
    {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

} // namespace

KVToolExit KVToolProcess::run(KVToolInvocation &invocation, const OutputHandler &onOutput)
{
    KVToolExit exit;
    KVSecret noInput;
    KVSecret &input = invocation.standardInput ? *invocation.standardInput : noInput;

    Fd outputRead, outputWrite, inputRead, inputWrite;
    if (!makePipe(outputRead, outputWrite)
        || (invocation.standardInput && !makePipe(inputRead, inputWrite))) {
        exit.launchError = errno;
        input.wipe();
        return exit;
    }

    InputFeeder feeder(input, inputWrite);
    if (invocation.standardInput) {
        if (input.size() > ::fcntl(inputWrite.get(), F_GETPIPE_SZ))
            ::fcntl(inputWrite.get(), F_SETPIPE_SZ, int(std::min<qsizetype>(input.size(), 1 << 20)));
        setNonBlocking(inputWrite.get());
        feeder.feed(); // normally the whole password, and the pipe closed, before launch
    }

    SpawnSetup spawn;
    if (invocation.standardInput)
        posix_spawn_file_actions_adddup2(&spawn.actions, inputRead.get(), STDIN_FILENO);
    else
        posix_spawn_file_actions_addopen(&spawn.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&spawn.actions, outputWrite.get(), STDOUT_FILENO);
    if (invocation.captureStandardError)
        posix_spawn_file_actions_adddup2(&spawn.actions, outputWrite.get(), STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&spawn.actions, STDERR_FILENO + 1);

    // The tool starts with no blocked signals and SIGPIPE at its default,
    // whatever this process has set up for itself.
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigmask(&spawn.attributes, &none);
    posix_spawnattr_setsigdefault(&spawn.attributes, &defaults);
    posix_spawnattr_setflags(&spawn.attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    const QByteArray program = QFile::encodeName(invocation.program);
    std::vector<QByteArray> encoded;
    encoded.reserve(size_t(invocation.arguments.size()));
    std::vector<char *> argv{const_cast<char *>(program.constData())};
    for (const QString &argument : std::as_const(invocation.arguments)) {
        encoded.push_back(QFile::encodeName(argument));
        argv.push_back(const_cast<char *>(encoded.back().constData()));
    }
    argv.push_back(nullptr);

    pid_t pid = 0;
    const int spawnError =
        posix_spawn(&pid, program.constData(), &spawn.actions, &spawn.attributes, argv.data(), environ);
    inputRead.reset();
    outputWrite.reset();
    if (spawnError != 0) {
        exit.launchError = spawnError;
        feeder.finish();
        return exit;
    }

    Fd exitNotifier(pidfdOpen(pid));
    setNonBlocking(outputRead.get());
    QByteArray buffer(ReadSize, Qt::Uninitialized);
    bool reading = true;
    while (reading) {
        pollfd fds[3];
        nfds_t count = 0;
        fds[count++] = {outputRead.get(), POLLIN, 0};
        const nfds_t exitSlot = count;
        if (exitNotifier.isOpen())
            fds[count++] = {exitNotifier.get(), POLLIN, 0};
        const nfds_t inputSlot = count;
        if (feeder.pending())
            fds[count++] = {inputWrite.get(), POLLOUT, 0};

        const int ready = ::poll(fds, count, exitNotifier.isOpen() ? -1 : ExitPollFallbackMs);
        if (ready < 0 && errno != EINTR) {
            exit.readError = errno;
            break;
        }
        if (feeder.pending() && inputSlot < count && fds[inputSlot].revents)
            feeder.feed();
        const bool exited = exitNotifier.isOpen()
            ? (exitSlot < count && (fds[exitSlot].revents & POLLIN))
            : hasExited(pid);
        if (fds[0].revents || exited)
            reading = readAvailable(outputRead.get(), buffer, onOutput, exit);
        if (exited)
            reading = false;
    }

    feeder.finish();
    exit.status = reap(pid);
    return exit;
}
