#include "KVDetachedHeaders.h"

#include <QDir>
#include <QFileInfo>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace kvlinux {

namespace {

bool syncPath(const QString &path, int flags)
{
    const int fd = open(QFile::encodeName(path).constData(), flags | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = fsync(fd) == 0;
    close(fd);
    return synced;
}

} // namespace

QString KVDetachedHeaders::directory(bool create)
{
    QString base = QString::fromLocal8Bit(std::getenv("XDG_STATE_HOME"));
    if (!base.startsWith(QLatin1Char('/'))) {
        const QString home = QString::fromLocal8Bit(std::getenv("HOME"));
        if (!home.startsWith(QLatin1Char('/')))
            return {};
        base = home + QStringLiteral("/.local/state");
    }
    const QString path = base + QStringLiteral("/korvelle/disks");
    if (create) {
        if (!QDir().mkpath(path))
            return {};
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    return QFileInfo(path).isDir() ? path : QString();
}

QString KVDetachedHeaders::pathFor(const KVBlockDevice &partition, bool create)
{
    const QString folder = directory(create);
    if (folder.isEmpty())
        return {};
    return QStringLiteral("%1/%2-%3.luks2").arg(folder, partition.name).arg(partition.size);
}

QString KVDetachedHeaders::existingFor(const KVBlockDevice &partition)
{
    const QString path = pathFor(partition);
    return !path.isEmpty() && QFileInfo(path).isFile() ? path : QString();
}

bool KVDetachedHeaders::flush(const QString &path)
{
    return syncPath(path, O_RDONLY) && syncPath(QFileInfo(path).absolutePath(), O_RDONLY | O_DIRECTORY);
}

} // namespace kvlinux
