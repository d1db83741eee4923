#include "KVFileSystemInfo.h"

#include <QFile>

#include <sys/statvfs.h>

namespace KVFileSystemInfo {

std::optional<qint64> freeSpace(const QString &path)
{
    if (path.isEmpty())
        return std::nullopt;
    struct statvfs info{};
    if (::statvfs(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return qint64(info.f_bavail) * qint64(info.f_frsize);
}

} // namespace KVFileSystemInfo
