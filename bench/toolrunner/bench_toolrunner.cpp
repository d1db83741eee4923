// Measures what running a tool through KVToolRun costs over the bare system
// calls, side by side in one run:
//   1. one whole-output run of a trivial program against posix_spawn + waitpid;
//   2. line-stream handling of N lines against reading `cat`'s output through a
//      pipe and splitting it into lines, for N = 100,000 and 1,000,000.
#include "tools/KVToolRun.h"

#include "../common/KVBenchTiming.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {


void bareSpawn(const char *program, const char *argument)
{
    char *argv[] = {const_cast<char *>(program), const_cast<char *>(argument), nullptr};
    pid_t pid = 0;
    posix_spawn(&pid, program, nullptr, nullptr, argv, environ);
    int status = 0;
    waitpid(pid, &status, 0);
}

// The baseline of line handling: cat through a pipe, split into lines, one
// string per line — the least any line reader does.
qsizetype bareCatLines(const QString &file)
{
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    const QByteArray path = QFile::encodeName(file);
    char *argv[] = {const_cast<char *>("/bin/cat"), const_cast<char *>(path.constData()), nullptr};
    pid_t pid = 0;
    posix_spawn(&pid, "/bin/cat", &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    qsizetype lines = 0;
    QByteArray pending;
    char buffer[65536];
    ssize_t n;
    while ((n = read(fds[0], buffer, sizeof buffer)) > 0) {
        pending.append(buffer, n);
        qsizetype start = 0;
        for (qsizetype nl; (nl = pending.indexOf('\n', start)) >= 0; start = nl + 1) {
            const QString line = QString::fromUtf8(pending.constData() + start, nl - start);
            lines += line.isNull() ? 0 : 1;
        }
        pending.remove(0, start);
    }
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return lines;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);

    // Alternate the two so that both see the same machine state.
    std::vector<double> bareTimes, wholeTimes;
    for (int i = 0; i < 400; ++i) {
        bareTimes.push_back(kvTime(1, [] { bareSpawn("/bin/true", nullptr); }).medianMs);
        wholeTimes.push_back(kvTime(1, [] {
            KVToolRun run(QStringLiteral("/bin/true"), {}, QStringLiteral("t"), QStringLiteral("a"));
            run.runWholeOutput([](const QByteArray &) {});
        }).medianMs);
    }
    std::sort(bareTimes.begin(), bareTimes.end());
    std::sort(wholeTimes.begin(), wholeTimes.end());
    const double bare = bareTimes[bareTimes.size() / 2];
    const double whole = wholeTimes[wholeTimes.size() / 2];
    std::printf("whole-output run of /bin/true: %.3f ms  bare posix_spawn+waitpid: %.3f ms  ratio %.2f (target <= 1.2)\n",
                whole, bare, whole / bare);

    QTemporaryDir dir;
    for (int lines : {100000, 1000000}) {
        const QString file = dir.filePath(QStringLiteral("lines-%1").arg(lines));
        {
            QFile out(file);
            out.open(QIODevice::WriteOnly);
            for (int i = 0; i < lines; ++i)
                out.write(QByteArray("PERCENT:") + QByteArray::number(i) + "\n");
        }
        const double baseline = kvTime(5, [&] { bareCatLines(file); }).medianMs;
        qsizetype seen = 0;
        const double streamed = kvTime(5, [&] {
            seen = 0;
            KVToolRun run(QStringLiteral("/bin/cat"), {file}, QStringLiteral("t"), QStringLiteral("a"));
            run.runLineStream([&seen](const QString &, QStringView) { ++seen; });
        }).medianMs;
        std::printf("%7d lines: line stream %.1f ms  cat through a pipe %.1f ms  ratio %.2f (target <= 1.5)  [%lld lines seen]\n",
                    lines, streamed, baseline, streamed / baseline, (long long)seen);
    }
    return 0;
}
