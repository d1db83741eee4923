#include "KVDiskToolHarness.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QThread>

#include <unistd.h>

namespace kvlinux {

KVDiskToolHarness::KVDiskToolHarness(const QString &ext4Size, const QString &fatSize)
{
    if (!m_directory.isValid() || !unavailable().isEmpty())
        return;
    m_root = QDir(m_directory.path()).canonicalPath();
    QDir().mkpath(runtimeDirectory());
    QDir().mkpath(mountPoint());
    // Without udev, partx tells the kernel about the partitions and
    // devtmpfs makes their nodes.
    const Run made = shell(QStringLiteral(
        "set -e; truncate -s 400M disk.img; printf 'label: gpt\\n,%1\\n,%2\\n' | sfdisk -q disk.img;"
        "loop=$(losetup -P -f --show disk.img); partx -a $loop 2>/dev/null || true;"
        "for i in 1 2 3 4 5 6 7 8 9 10; do [ -b ${loop}p2 ] && break; sleep 0.1; done;"
        "mkfs.ext4 -q -F -b 4096 -L Data ${loop}p1; mkfs.vfat -n STICK ${loop}p2 >/dev/null;"
        "basename $loop").arg(ext4Size, fatSize));
    m_loop = made.output.trimmed().section(QLatin1Char('\n'), -1);
    m_valid = made.exitCode == 0 && m_loop.startsWith(QLatin1String("loop"));
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

KVDiskToolHarness::Run KVDiskToolHarness::run(const QString &program, const QStringList &arguments,
                                              const QByteArray &input, const QStringList &extraEnvironment) const
{
    QProcess process;
    process.setWorkingDirectory(m_root);
    process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeDirectory());
    environment.insert(QStringLiteral("XDG_STATE_HOME"), stateDirectory());
    for (const QString &setting : extraEnvironment)
        environment.insert(setting.section(QLatin1Char('='), 0, 0), setting.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAll())};
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
    QProcess::execute(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral(
        "R='%1'; ROOT='%2';"
        "for l in $(losetup -n -O NAME,BACK-FILE | awk -v r=\"$R\" 'index($2, r) == 1 {print $1}'); do"
        "  for m in $(awk -v l=\" $l \" 'index($0, \" - ext4\" l) {print $5}' /proc/self/mountinfo); do"
        "    m=$(printf '%b' \"$m\"); umount -l \"$m\"; rmdir \"$m\"; done; done;"
        "for m in $(awk -v d=/dev/%3p '{s = \"\"; for (i = 7; i < NF; i++) if ($i == \"-\") s = $(i + 2);"
        "  if (index(s, d) == 1) print $5}' /proc/self/mountinfo); do"
        "  m=$(printf '%b' \"$m\"); umount -l \"$m\"; rmdir \"$m\"; done;"
        "for p in $(grep -la \"XDG_RUNTIME_DIR=$R\" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3); do"
        "  [ $p = $$ ] || kill -9 $p 2>/dev/null; done; sleep 0.2;"
        "for m in $(awk '{print $5}' /proc/self/mountinfo | grep \"^$ROOT/\"); do umount -l \"$m\"; done;"
        "for l in $(losetup -n -O NAME,BACK-FILE | awk -v r=\"$ROOT\" 'index($2, r) == 1 {print $1}'); do"
        "  losetup -d $l; done; true").arg(runtimeDirectory(), m_root, m_loop)});
}

} // namespace kvlinux
