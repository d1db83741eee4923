#include "KVRuntimeDirectory.h"

#include <QDir>

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

std::optional<QString> KVRuntimeDirectory::locate()
{
    QString base;
    const char *xdg = std::getenv("XDG_RUNTIME_DIR");
    if (xdg && *xdg == '/' && QDir(QString::fromLocal8Bit(xdg)).exists())
        base = QString::fromLocal8Bit(xdg) + QStringLiteral("/korvelle");
    else if (geteuid() == 0)
        base = QStringLiteral("/run/korvelle");
    else
        base = QStringLiteral("/tmp/korvelle-%1").arg(geteuid());
    if (!ensurePrivateDirectory(base))
        return std::nullopt;
    return base;
}

bool KVRuntimeDirectory::ensurePrivateDirectory(const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    if (mkdir(native.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat st;
    if (lstat(native.constData(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != geteuid())
        return false;
    return (st.st_mode & 077) == 0 || chmod(native.constData(), 0700) == 0;
}

} // namespace kvlinux
