#include "KVVolumeRename.h"

#include "KVExt4.h"
#include "KVLuksImage.h"
#include "KVVolumeFolder.h"
#include "KVVolumeName.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace kvlinux {

bool KVVolumeRename::isValidName(const QString &name)
{
    return !name.trimmed().isEmpty() && !name.contains(QLatin1Char('/')) && KVVolumeName::sanitized(name) == name;
}

KVImageResult KVVolumeRename::rename(KVAttachment &record, const QString &name)
{
    KVLuksImage image(record.imagePath);
    if (auto error = image.load())
        return error;
    if (auto error = image.setVolumeName(name))
        return error;
    if (auto error = setFileSystemLabel(record, name))
        return error;
    record.volumeName = name;
    moveMount(record, name);
    return std::nullopt;
}

KVImageResult KVVolumeRename::setFileSystemLabel(const KVAttachment &record, const QString &name)
{
    if (record.loopDevice.isEmpty() || record.readOnly)
        return std::nullopt;
    // The kernel changes the label of a mounted ext4 itself: writing the
    // superblock behind its back would be undone at the next write-back.
    const int fd = open(QFile::encodeName(record.mountPoint).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return KVImageError::fromErrno(errno);
    char label[FSLABEL_MAX] = {};
    const QByteArray bytes = KVExt4::labelFor(name).toUtf8();
    memcpy(label, bytes.constData(), std::min<size_t>(size_t(bytes.size()), sizeof label - 1));
    const int result = ioctl(fd, FS_IOC_SETFSLABEL, label);
    const int error = errno;
    close(fd);
    return result == 0 ? std::nullopt : KVImageResult(KVImageError::fromErrno(error));
}

void KVVolumeRename::moveMount(KVAttachment &record, const QString &name)
{
    const QFileInfo current(record.mountPoint);
    if (current.fileName() == KVVolumeFolder::folderName(name))
        return;
    const QString folder = KVVolumeFolder::create(current.absolutePath(), name, [](const QString &) {});
    if (folder.isEmpty())
        return;
    if (mount(QFile::encodeName(record.mountPoint).constData(), QFile::encodeName(folder).constData(), nullptr,
              MS_MOVE, nullptr) != 0) {
        QDir().rmdir(folder);
        return;
    }
    if (record.createdMountPoint)
        QDir().rmdir(record.mountPoint);
    record.mountPoint = folder;
    record.createdMountPoint = true;
}

} // namespace kvlinux
