#include "KVDiskToolHarness.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QThread>

#include <fcntl.h>
#include <memory>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

namespace kvlinux {

KVDiskToolHarness::KVDiskToolHarness(const QString &ext4Size, const QString &fatSize, Drive drive)
    : m_removable(drive == Drive::Removable)
{
    if (!m_directory.isValid() || !unavailable().isEmpty())
        return;
    m_root = QDir(m_directory.path()).canonicalPath();
    QDir().mkpath(runtimeDirectory());
    QDir().mkpath(mountPoint());
    // The drive's file system holds the sparse disk file with room to spare.
    if (m_removable
        && shell(QStringLiteral("set -e; truncate -s 480M drive.img; mkfs.ext4 -q -F drive.img; mkdir drive;"
                                "mount -o loop drive.img drive")).exitCode != 0)
        return;
    m_diskFile = m_root + (m_removable ? QStringLiteral("/drive/disk.img") : QStringLiteral("/disk.img"));
    if (shell(QStringLiteral("set -e; truncate -s 400M '%3'; printf 'label: gpt\\n,%1\\n,%2\\n' | sfdisk -q '%3'")
                  .arg(ext4Size, fatSize, m_diskFile)).exitCode != 0)
        return;
    m_loop = attach(m_diskFile);
    m_valid = !m_loop.isEmpty()
        && shell(QStringLiteral("set -e; mkfs.ext4 -q -F -b 4096 -L Data /dev/%1p1; mkfs.vfat -n STICK /dev/%1p2 >/dev/null")
                     .arg(m_loop)).exitCode == 0;
}

// Without udev, partx tells the kernel about the partitions and devtmpfs
// makes their nodes.
QString KVDiskToolHarness::attach(const QString &file) const
{
    const Run attached = shell(QStringLiteral(
        "set -e; loop=$(losetup -P -f --show '%1'); partx -a $loop 2>/dev/null || true;"
        "for i in 1 2 3 4 5 6 7 8 9 10; do [ -b ${loop}p2 ] && break; sleep 0.1; done;"
        "[ -b ${loop}p2 ]; basename $loop").arg(file));
    const QString loop = attached.output.trimmed().section(QLatin1Char('\n'), -1);
    return attached.exitCode == 0 && loop.startsWith(QLatin1String("loop")) ? loop : QString();
}

// FS_IOC_SHUTDOWN (ext4 and XFS know it) with flags 0: the file system is
// written back first, then every read and write of it fails.
bool KVDiskToolHarness::unplug() const
{
    if (!m_removable)
        return false;
    const int folder = open(QFile::encodeName(m_root + QStringLiteral("/drive")).constData(), O_RDONLY | O_DIRECTORY);
    quint32 flags = 0;
    const bool shutDown = folder >= 0 && ioctl(folder, _IOR('X', 125, quint32), &flags) == 0;
    if (folder >= 0)
        close(folder);
    return shutDown;
}

// The old loop device lets go of the dead file when nothing has it open any
// more; until then the drive cannot be unmounted (and mounting it again would
// give back the shut-down file system).
bool KVDiskToolHarness::plugBackIn()
{
    if (!m_removable || shell(QStringLiteral(
            "losetup -d /dev/%1; for i in $(seq 100); do umount drive 2>/dev/null && exit 0; sleep 0.1; done; exit 1")
                                  .arg(m_loop)).exitCode != 0)
        return false;
    if (shell(QStringLiteral("mount -o loop drive.img drive")).exitCode != 0)
        return false;
    m_loop = attach(m_diskFile);
    return !m_loop.isEmpty();
}

KVDiskToolHarness::~KVDiskToolHarness()
{
    cleanUp();
}

QString KVDiskToolHarness::unavailable()
{
    if (geteuid() != 0)
        return QStringLiteral("the disk verbs need root");
    if (!QFile::exists(QStringLiteral("/dev/loop-control")) || !QFile::exists(QStringLiteral("/dev/fuse")))
        return QStringLiteral("no loop devices or FUSE here");
    return {};
}

void KVDiskToolHarness::prepare(QProcess &process, const QStringList &extraEnvironment) const
{
    process.setWorkingDirectory(m_root);
    process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDirectory());
    environment.insert(QStringLiteral("XDG_STATE_HOME"), stateDirectory());
    for (const QString &setting : extraEnvironment)
        environment.insert(setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(environment);
}

KVDiskToolHarness::Run KVDiskToolHarness::run(const QString &program, const QStringList &arguments,
                                              const QByteArray &input, const QStringList &extraEnvironment) const
{
    QProcess process;
    prepare(process, extraEnvironment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
}

// Each waits for its standard input before it does anything: they are all
// given it at once.
QList<KVDiskToolHarness::Run> KVDiskToolHarness::diskutilTogether(const QList<QStringList> &commands,
                                                                  const QByteArray &input) const
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QStringList &arguments : commands) {
        processes.push_back(std::make_unique<QProcess>());
        prepare(*processes.back(), {});
        processes.back()->start(QStringLiteral(KV_TEST_DISK_DISKUTIL), arguments);
        processes.back()->waitForStarted();
    }
    for (const auto &process : processes) {
        process->write(input);
        process->closeWriteChannel();
    }
    QList<Run> runs;
    for (const auto &process : processes) {
        process->waitForFinished(120000);
        runs.append({process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -1,
                     QString::fromUtf8(process->readAll())});
    }
    return runs;
}

bool KVDiskToolHarness::conversionLocksAreFree() const
{
    return shell(QStringLiteral("for l in '%1'/korvelle/disks/convert-*.lock; do"
                                "  [ -e \"$l\" ] || continue; flock -n \"$l\" true || exit 1; done")
                     .arg(runtimeDirectory())).exitCode == 0;
}

QString KVDiskToolHarness::conversionLogs() const
{
    return shell(QStringLiteral("cat '%1'/korvelle/disks/conversion-*.log 2>/dev/null; true").arg(runtimeDirectory()))
        .output;
}

KVDiskToolHarness::Run KVDiskToolHarness::diskutil(const QStringList &arguments, const QByteArray &input,
                                                   const QStringList &environment) const
{
    return run(QStringLiteral(KV_TEST_DISK_DISKUTIL), arguments, input, environment);
}

KVDiskToolHarness::Run KVDiskToolHarness::systemProfiler() const
{
    return run(QStringLiteral(KV_TEST_SYSTEM_PROFILER), {QStringLiteral("SPStorageDataType"), QStringLiteral("-xml")},
               {});
}

KVDiskToolHarness::Run KVDiskToolHarness::shell(const QString &script) const
{
    return run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, {});
}

qint64 KVDiskToolHarness::busyConverter() const
{
    const QDir records(runtimeDirectory() + QStringLiteral("/korvelle/disks"));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 20000) {
        for (const QString &name : records.entryList({QStringLiteral("conversion-*.json")})) {
            QFile file(records.filePath(name));
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
            if (record.value(QStringLiteral("done")).toString().toULongLong() > 0)
                return record.value(QStringLiteral("converter")).toObject().value(QStringLiteral("pid")).toInteger();
        }
        QThread::msleep(5);
    }
    return 0;
}

QString KVDiskToolHarness::fillWithFiles(int megabytes) const
{
    shell(QStringLiteral("mount /dev/%1 %2 && mkdir -p %2/folder && "
                         "head -c %3M /dev/urandom > %2/folder/big && echo hello > %2/small")
              .arg(ext4Partition(), mountPoint())
              .arg(megabytes));
    return checksums(mountPoint());
}

QString KVDiskToolHarness::checksums(const QString &folder) const
{
    return shell(QStringLiteral("cd '%1' && sha256sum folder/big small").arg(folder)).output;
}

// The volumes mounted from our runtime directory's payloads, the converters
// and daemons started for it (not this cleanup itself, which inherits the
// runtime directory when the test process has set it), its FUSE mounts, the disk's own partitions
// wherever they are mounted, and the disk's loop device.
void KVDiskToolHarness::cleanUp() const
{
    if (m_root.isEmpty())
        return;
    // mountinfo writes a blank as "\040"; awk decodes it, since printf %b
    // would read "Data\0401" as one octal number.
    QProcess::execute(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QString::fromLatin1(R"(
        R='%1'; ROOT='%2'; DISK='/dev/%3'
        unmount_from() {
            awk -v d="$1" -v exact="$2" '{s = ""; for (i = 7; i < NF; i++) if ($i == "-") s = $(i + 2);
                p = $5; gsub(/\\040/, " ", p); if (exact ? s == d : index(s, d) == 1) print p}' /proc/self/mountinfo |
            while IFS= read -r m; do umount -l "$m"; rmdir "$m" 2>/dev/null; done
        }
        for l in $(losetup -n -O NAME,BACK-FILE | awk -v r="$R" 'index($2, r) == 1 {print $1}'); do
            unmount_from "$l" 1; done
        unmount_from "${DISK}p" ""
        for p in $(grep -la "XDG_RUNTIME_DIR=$R" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3); do
            [ $p = $$ ] || kill -9 $p 2>/dev/null; done
        sleep 0.2
        # A converter may have mounted its volume between the first look and its end.
        unmount_from "${DISK}p" ""
        detach() {
            for l in $(losetup -n -O NAME,BACK-FILE | awk -v r="$ROOT" 'index($2, r) == 1 {print $1}'); do
                losetup -d $l; done
        }
        losetup -d $DISK 2>/dev/null; detach
        for m in $(awk '{print $5}' /proc/self/mountinfo | grep "^$ROOT/" | sort -r); do umount -l "$m"; done
        detach; true)").arg(runtimeDirectory(), m_root, m_loop)});
}

} // namespace kvlinux
