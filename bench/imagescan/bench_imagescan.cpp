// What a full scan of mounted images costs over the tool runs it is made of.
//
// 200 encrypted images are attached (as far as an hdiutil double says): a full
// scan runs hdiutil once and diskutil once per image, then builds the items and
// hands the list to the GUI thread. Side by side, in one run, the same 201 runs
// of the same doubles spawned bare (posix_spawn, read to the end, waitpid),
// and made through the tool runner without reading their output, which tells
// the runner's share from the scan's own.
#include "diskimage/KVDiskImage.h"
#include "diskimage/KVDiskImageDelegate.h"
#include "platform/KVMainQueue.h"
#include "tools/KVPropertyList.h"
#include "tools/KVToolRun.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

constexpr int Images = 200;
constexpr int Repetitions = 9;

void writeFile(const QString &path, const QByteArray &contents, bool executable = false)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(contents) != contents.size())
        qFatal("cannot write %s", qPrintable(path));
    if (executable)
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QVariantMap imageEntry(int index, const QString &mountPoint)
{
    const QString disk = QStringLiteral("/dev/disk%1").arg(index + 4);
    return {
        {QStringLiteral("image-encrypted"), true},
        {QStringLiteral("image-path"), QStringLiteral("/Users/someone/Images/Image %1.sparseimage").arg(index)},
        {QStringLiteral("image-type"), QStringLiteral("sparse disk image")},
        {QStringLiteral("system-entities"),
         QVariantList{
             QVariantMap{{QStringLiteral("content-hint"), QStringLiteral("GUID_partition_scheme")}, {QStringLiteral("dev-entry"), disk}},
             QVariantMap{{QStringLiteral("content-hint"), QStringLiteral("C12A7328-F81F-11D2-BA4B-00A0C93EC93B")},
                         {QStringLiteral("dev-entry"), QString(disk + u"s1")}},
             QVariantMap{{QStringLiteral("content-hint"), QStringLiteral("48465300-0000-11AA-AA11-00306543ECAC")},
                         {QStringLiteral("dev-entry"), QString(disk + u"s2")},
                         {QStringLiteral("mount-point"), mountPoint}},
         }},
        {QStringLiteral("writeable"), true},
    };
}

// diskutil's answer for the volume it is asked about ($3), printed by the
// shell alone: the double starts no other program.
QByteArray diskutilScript()
{
    const QByteArray plist = KVPropertyList::encodeXml(QVariantMap{
        {QStringLiteral("DeviceIdentifier"), QStringLiteral("disk4s2")},
        {QStringLiteral("FilesystemName"), QStringLiteral("Journaled HFS+")},
        {QStringLiteral("FreeSpace"), qint64(78643200)},
        {QStringLiteral("MountPoint"), QStringLiteral("@@")},
        {QStringLiteral("TotalSize"), qint64(104857600)},
        {QStringLiteral("VolumeName"), QStringLiteral("Image")},
        {QStringLiteral("VolumeUUID"), QStringLiteral("@@")},
        {QStringLiteral("Writable"), true},
    });
    const QList<QByteArray> pieces = plist.split('@');
    // pieces: before, "", between, "", after
    return "#!/bin/sh\nprintf '%s%s%s%s%s' '" + pieces[0] + "' \"$3\" '" + pieces[2] + "' \"$3\" '" + pieces[4] + "'\n";
}

// One run of a tool the least any runner does it: output and errors to one
// pipe, read to the end, wait for the exit.
void spawnAndRead(const QByteArray &program, const QList<QByteArray> &arguments)
{
    std::vector<char *> argv{const_cast<char *>(program.constData())};
    for (const QByteArray &argument : arguments)
        argv.push_back(const_cast<char *>(argument.constData()));
    argv.push_back(nullptr);
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0)
        qFatal("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
    pid_t pid = 0;
    if (posix_spawn(&pid, program.constData(), &actions, nullptr, argv.data(), environ) != 0)
        qFatal("spawn");
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    char buffer[65536];
    while (read(fds[0], buffer, sizeof buffer) > 0) {
    }
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

class ListWatcher : public KVDiskImageDelegate
{
public:
    void mountedDiskImagesDidChange(KVDiskImage *, const QList<KVVolumeItemPtr> &volumes) override
    {
        listed = volumes.size();
    }
    qsizetype listed = -1;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;

    QVariantList images;
    QList<QByteArray> mountPoints;
    for (int i = 0; i < Images; ++i) {
        const QString mountPoint = dir.filePath(QStringLiteral("Volumes/Image %1").arg(i));
        QDir().mkpath(mountPoint); // real folders, so that every item watches one
        mountPoints.append(QFile::encodeName(mountPoint));
        images.append(imageEntry(i, mountPoint));
    }
    const QString info = dir.filePath(QStringLiteral("info.plist"));
    writeFile(info, KVPropertyList::encodeXml(QVariantMap{{QStringLiteral("images"), images}}));
    const QString hdiutil = dir.filePath(QStringLiteral("hdiutil"));
    const QString diskutil = dir.filePath(QStringLiteral("diskutil"));
    writeFile(hdiutil, "#!/bin/sh\nexec cat '" + QFile::encodeName(info) + "'\n", true);
    writeFile(diskutil, diskutilScript(), true);

    const auto runThroughRunner = [](const QString &program, const QStringList &arguments) {
        KVToolRun run(program, arguments, QStringLiteral("t"), QStringLiteral("a"));
        run.runWholeOutput([](const QByteArray &) {});
    };

    std::vector<double> bare;
    std::vector<double> runner;
    std::vector<double> scans;
    for (int repetition = 0; repetition < Repetitions; ++repetition) {
        QElapsedTimer clock;
        clock.start();
        spawnAndRead(QFile::encodeName(hdiutil), {"info", "-plist"});
        for (const QByteArray &mountPoint : std::as_const(mountPoints))
            spawnAndRead(QFile::encodeName(diskutil), {"info", "-plist", mountPoint});
        bare.push_back(double(clock.nsecsElapsed()) / 1e6);

        clock.restart();
        runThroughRunner(hdiutil, {QStringLiteral("info"), QStringLiteral("-plist")});
        for (const QByteArray &mountPoint : std::as_const(mountPoints))
            runThroughRunner(diskutil, {QStringLiteral("info"), QStringLiteral("-plist"), QFile::decodeName(mountPoint)});
        runner.push_back(double(clock.nsecsElapsed()) / 1e6);

        ListWatcher watcher;
        auto engine = std::make_unique<KVDiskImage>(KVToolPaths{hdiutil, diskutil, QString()}, nullptr);
        engine->setDelegate(&watcher);
        QEventLoop loop;
        clock.restart();
        engine->updateMountedDiskImages(std::nullopt, [&loop](const KVOptionalError &error) {
            if (error)
                qFatal("scan failed: %s", qPrintable(error->localizedFailureReason()));
            // The list reached the GUI thread before this.
            KVMainQueue::post([&loop] { loop.quit(); });
        });
        loop.exec();
        scans.push_back(double(clock.nsecsElapsed()) / 1e6);
        if (watcher.listed != Images)
            qFatal("listed %lld images, not %d", (long long)watcher.listed, Images);
    }

    const double scan = median(scans);
    const double baseline = median(bare);
    std::printf("full scan of %d mounted encrypted images: %.1f ms   %d bare spawns of the same doubles: %.1f ms   "
                "ratio %.2f (target <= 1.3)   [median of %d]\n",
                Images, scan, Images + 1, baseline, scan / baseline, Repetitions);
    std::printf("  of which the same runs through the tool runner, output unread: %.1f ms (%.2f of bare)\n",
                median(runner), median(runner) / baseline);
    return 0;
}
