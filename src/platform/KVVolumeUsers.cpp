#include "KVVolumeUsers.h"

#include "model/KVDisplayText.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <sys/stat.h>

namespace {

bool onDevice(const QString &path, dev_t device)
{
    struct stat target{};
    return stat(QFile::encodeName(path).constData(), &target) == 0 && target.st_dev == device;
}

// /proc/PID/maps lists mapped files by path in its sixth column.
bool mapsFileOn(const QString &mapsPath, dev_t device)
{
    QFile maps(mapsPath);
    if (!maps.open(QIODevice::ReadOnly))
        return false;
    QString checked;
    while (!maps.atEnd()) {
        const QByteArray line = maps.readLine().trimmed();
        const qsizetype slash = line.indexOf(" /");
        if (slash < 0)
            continue;
        const QString file = QFile::decodeName(line.mid(slash + 1));
        if (file == checked)
            continue;
        checked = file;
        if (onDevice(file, device))
            return true;
    }
    return false;
}

bool usesDevice(const QDir &process, dev_t device)
{
    for (const char *link : {"cwd", "root", "exe"}) {
        if (onDevice(process.filePath(QString::fromLatin1(link)), device))
            return true;
    }
    const QDir fds(process.filePath(QStringLiteral("fd")));
    for (const QString &fd : fds.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        if (onDevice(fds.filePath(fd), device))
            return true;
    }
    return mapsFileOn(process.filePath(QStringLiteral("maps")), device);
}

QString commandName(const QDir &process)
{
    QFile comm(process.filePath(QStringLiteral("comm")));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    // The kernel keeps at most 15 bytes; a name may hold anything but NUL.
    QString name = QString::fromUtf8(comm.read(64)).trimmed();
    for (QChar &c : name) {
        if (c.category() == QChar::Other_Control)
            c = u' ';
    }
    return name;
}

} // namespace

QList<KVVolumeUsers::Process> KVVolumeUsers::processesUsing(const QString &mountPoint, const QString &procRoot)
{
    struct stat volume{};
    if (mountPoint.isEmpty() || stat(QFile::encodeName(mountPoint).constData(), &volume) != 0)
        return {};
    QList<Process> found;
    const QDir proc(procRoot);
    for (const QString &entry : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isNumber = false;
        const pid_t pid = entry.toInt(&isNumber);
        if (!isNumber || pid <= 0)
            continue;
        const QDir process(proc.filePath(entry));
        if (usesDevice(process, volume.st_dev))
            found.append({pid, commandName(process)});
    }
    std::sort(found.begin(), found.end(), [](const Process &a, const Process &b) { return a.pid < b.pid; });
    return found;
}

QString KVVolumeUsers::describe(const QList<Process> &processes)
{
    QStringList lines;
    for (const Process &process : processes)
        lines.append(QStringLiteral("%1 (PID %2)").arg(KVDisplayText::shortened(process.name)).arg(process.pid));
    return lines.join(u'\n');
}
