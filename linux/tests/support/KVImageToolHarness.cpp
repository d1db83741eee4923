#include "KVImageToolHarness.h"

#include "tools/KVPropertyList.h"


#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <QProcess>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace kvlinux {

namespace {

// /proc/self/mountinfo, fifth field, with \040 and friends decoded.
QStringList mountPointsUnder(const QString &root)
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    QStringList found;
    if (!file.open(QIODevice::ReadOnly))
        return found;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        QByteArray point = fields[4];
        for (int i = point.indexOf('\\'); i >= 0 && i + 3 < point.size(); i = point.indexOf('\\', i + 1))
            point.replace(i, 4, QByteArray(1, char(point.mid(i + 1, 3).toInt(nullptr, 8))));
        const QString path = QString::fromUtf8(point);
        if (path.startsWith(root + QLatin1Char('/')))
            found.append(path);
    }
    return found;
}

QStringList loopDevicesUnder(const QString &root)
{
    QStringList found;
    for (const QString &name : QDir(QStringLiteral("/sys/block")).entryList({QStringLiteral("loop*")})) {
        QFile backing(QStringLiteral("/sys/block/%1/loop/backing_file").arg(name));
        if (backing.open(QIODevice::ReadOnly)
            && QString::fromUtf8(backing.readAll()).trimmed().startsWith(root + QLatin1Char('/')))
            found.append(QStringLiteral("/dev/") + name);
    }
    return found;
}

// Folders the tools make and remove again: volume folders in the mount root,
// payload and session directories in the runtime directory.
QStringList foldersIn(const QStringList &directories)
{
    QStringList found;
    for (const QString &directory : directories)
        for (const QFileInfo &folder : QDir(directory).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden))
            found.append(folder.filePath());
    return found;
}

QList<pid_t> processesUsing(const QString &root)
{
    QList<pid_t> found;
    for (const QString &name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool isPid = false;
        const pid_t pid = name.toInt(&isPid);
        if (!isPid || pid == getpid())
            continue;
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (cmdline.open(QIODevice::ReadOnly) && cmdline.readAll().contains(root.toUtf8()))
            found.append(pid);
    }
    return found;
}

// Everything below root that outlived its user: processes first (they hold
// the rest), then mounts (deepest first), then loop devices.
void removeEverythingUnder(const QString &root)
{
    for (pid_t pid : processesUsing(root))
        kill(pid, SIGKILL);
    QStringList mounts = mountPointsUnder(root);
    std::sort(mounts.begin(), mounts.end(), [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &mount : mounts)
        umount2(QFile::encodeName(mount).constData(), MNT_DETACH);
    for (const QString &device : loopDevicesUnder(root)) {
        const int fd = open(QFile::encodeName(device).constData(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0) {
            ioctl(fd, LOOP_CLR_FD, 0);
            close(fd);
        }
    }
}

const QString ownerFile = QStringLiteral("owner.pid");

// Work folders of test runs that were killed (by a timeout, say) before
// they could clean up.
void removeAbandonedWorkFolders()
{
    const QDir temp(QDir::tempPath());
    for (const QString &name : temp.entryList({QStringLiteral("kvimg-*")}, QDir::Dirs)) {
        const QString root = temp.filePath(name);
        QFile owner(root + QLatin1Char('/') + ownerFile);
        if (!owner.open(QIODevice::ReadOnly))
            continue;
        const pid_t pid = owner.readAll().trimmed().toInt();
        if (pid > 0 && kill(pid, 0) != 0 && errno == ESRCH) {
            removeEverythingUnder(root);
            QDir(root).removeRecursively();
        }
    }
}

} // namespace

KVImageToolHarness::KVImageToolHarness(uid_t user, gid_t group)
    : m_directory(QDir::tempPath() + QStringLiteral("/kvimg-XXXXXX")), m_user(user), m_group(group)
{
    removeAbandonedWorkFolders();
    if (!m_directory.isValid())
        return;
    m_root = QDir(m_directory.path()).canonicalPath();
    QFile owner(path(ownerFile));
    if (owner.open(QIODevice::WriteOnly))
        owner.write(QByteArray::number(getpid()));
    m_valid = QDir().mkdir(runtimeDirectory()) && QDir().mkdir(mountRoot());
    QFile::setPermissions(runtimeDirectory(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (m_user != 0) {
        for (const QString &dir : {m_root, runtimeDirectory(), mountRoot()})
            m_valid = m_valid && chown(QFile::encodeName(dir).constData(), m_user, m_group) == 0;
    }
}

KVImageToolHarness::~KVImageToolHarness()
{
    if (m_valid)
        cleanUp();
}

QString KVImageToolHarness::kernelPathUnavailable()
{
    if (geteuid() != 0)
        return QStringLiteral("Attaching on the kernel path needs root (loop devices, mount)");
    if (!QFile::exists(QStringLiteral("/dev/fuse")))
        return QStringLiteral("This machine has no /dev/fuse");
    if (!QFile::exists(QStringLiteral("/dev/loop-control")))
        return QStringLiteral("This machine has no loop devices");
    return {};
}

QStringList KVImageToolHarness::environment() const
{
    return {QStringLiteral("XDG_RUNTIME_DIR=") + runtimeDirectory(), QStringLiteral("HOME=") + m_root,
            QStringLiteral("LC_ALL=C.UTF-8"),
            QStringLiteral("PATH=/usr/local/bin:/usr/bin:/bin")};
}

QStringList KVImageToolHarness::commandAsUser(const QString &program, const QStringList &arguments) const
{
    QStringList command;
    if (m_user != 0)
        command << QStringLiteral("setpriv") << QStringLiteral("--reuid=%1").arg(m_user)
                << QStringLiteral("--regid=%1").arg(m_group) << QStringLiteral("--clear-groups")
                << QStringLiteral("--");
    return command << program << arguments;
}

QStringList KVImageToolHarness::hdiutilCommand(const QStringList &arguments) const
{
    return commandAsUser(QStringLiteral(KV_TEST_HDIUTIL), arguments);
}

KVImageToolHarness::Run KVImageToolHarness::run(const QString &tool, const QStringList &arguments,
                                                const QByteArray &input) const
{
    const QStringList command = commandAsUser(tool, arguments);
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setEnvironment(environment());
    process.setWorkingDirectory(m_root);
    process.start(command.first(), command.mid(1));
    Run result;
    if (!process.waitForStarted())
        return result;
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    result.output = QString::fromUtf8(process.readAll());
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return result;
}

KVImageToolHarness::Run KVImageToolHarness::hdiutil(const QStringList &arguments, const QByteArray &input) const
{
    return run(QStringLiteral(KV_TEST_HDIUTIL), arguments, input);
}

KVImageToolHarness::Run KVImageToolHarness::diskutil(const QStringList &arguments) const
{
    return run(QStringLiteral(KV_TEST_DISKUTIL), arguments, QByteArray());
}

KVImageToolHarness::Run KVImageToolHarness::shell(const QString &script, const QStringList &arguments) const
{
    return run(QStringLiteral("/bin/sh"), QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")} + arguments,
               QByteArray());
}

KVImageToolHarness::Run KVImageToolHarness::create(const QString &name, const QByteArray &password,
                                                   const QString &volumeName, const QString &encryption,
                                                   const QString &size) const
{
    QStringList args = {QStringLiteral("create"), QStringLiteral("-verbose"), QStringLiteral("-stdinpass"),
                        QStringLiteral("-puppetstrings"), QStringLiteral("-fs"),
                        QStringLiteral("Journaled HFS+"), QStringLiteral("-type"), QStringLiteral("SPARSE"),
                        QStringLiteral("-size"), size};
    if (!volumeName.isEmpty())
        args << QStringLiteral("-volname") << volumeName;
    args << QStringLiteral("-encryption") << encryption << path(name);
    return hdiutil(args, password);
}

KVImageToolHarness::Run KVImageToolHarness::attach(const QString &image, const QByteArray &password,
                                                   const QStringList &options) const
{
    return hdiutil(QStringList{QStringLiteral("attach"), QStringLiteral("-verbose"),
                               QStringLiteral("-stdinpass"), QStringLiteral("-puppetstrings"), image}
                       + options + QStringList{QStringLiteral("-mountroot"), mountRoot()},
                   password);
}

KVImageToolHarness::Run KVImageToolHarness::detach(const QString &device, bool force) const
{
    QStringList args = {QStringLiteral("detach"), QStringLiteral("-verbose")};
    if (force)
        args << QStringLiteral("-force");
    return hdiutil(args << device);
}

QVariantMap KVImageToolHarness::info() const
{
    return KVPropertyList::decode(
               hdiutil({QStringLiteral("info"), QStringLiteral("-plist")}).output.toUtf8())
        .value_or(QVariant()).toMap();
}

QVariantMap KVImageToolHarness::diskutilInfo(const QString &mountPoint) const
{
    return KVPropertyList::decode(
               diskutil({QStringLiteral("info"), QStringLiteral("-plist"), mountPoint}).output.toUtf8())
        .value_or(QVariant()).toMap();
}

QString KVImageToolHarness::onlyMountPoint() const
{
    const QVariantList images = info().value(QStringLiteral("images")).toList();
    if (images.size() != 1)
        return {};
    QString mountPoint;
    for (const QVariant &entity : images.first().toMap().value(QStringLiteral("system-entities")).toList())
        if (entity.toMap().contains(QStringLiteral("mount-point")))
            mountPoint = entity.toMap().value(QStringLiteral("mount-point")).toString();
    return mountPoint;
}

QStringList KVImageToolHarness::leftovers() const
{
    QStringList found = mountPointsUnder(m_root) + loopDevicesUnder(m_root);
    for (const QString &folder : foldersIn({mountRoot(), runtimeDirectory() + QStringLiteral("/korvelle")}))
        if (!found.contains(folder))
            found.append(folder);
    for (pid_t pid : processesUsing(m_root))
        found.append(QStringLiteral("process %1").arg(pid));
    return found;
}

void KVImageToolHarness::cleanUp() const
{
    for (const QVariant &image : info().value(QStringLiteral("images")).toList()) {
        const QVariantList entities = image.toMap().value(QStringLiteral("system-entities")).toList();
        if (!entities.isEmpty())
            detach(entities.first().toMap().value(QStringLiteral("dev-entry")).toString(), true);
    }
    removeEverythingUnder(m_root);
}

} // namespace kvlinux
