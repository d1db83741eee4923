#include "KVVolumeFolder.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr int maxNameBytes = 240; // room for " 99" within NAME_MAX
constexpr int maxAttempts = 100;

} // namespace

QString KVVolumeFolder::folderName(const QString &volumeName)
{
    QString name = volumeName;
    name.replace(QLatin1Char('/'), QLatin1Char(':'));
    name.remove(QChar(0));
    while (name.toUtf8().size() > maxNameBytes)
        name.chop(1);
    if (name.trimmed().isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        name = QStringLiteral("Untitled");
    return name;
}

QString KVVolumeFolder::create(const QString &root, const QString &volumeName,
                               const std::function<void(const QString &candidate)> &claim)
{
    const QString base = QDir(root).absoluteFilePath(folderName(volumeName));
    for (int n = 0; n < maxAttempts; ++n) {
        const QString candidate = n == 0 ? base : QStringLiteral("%1 %2").arg(base).arg(n);
        claim(candidate);
        if (mkdir(QFile::encodeName(candidate).constData(), 0755) == 0)
            return candidate;
        if (errno != EEXIST)
            return {};
    }
    return {};
}

void KVVolumeFolder::flush(const QString &folder)
{
    const int fd = open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        syncfs(fd);
        close(fd);
    }
}

} // namespace kvlinux
