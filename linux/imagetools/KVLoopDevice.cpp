#include "KVLoopDevice.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr int attempts = 20; // other programs race us for free devices
constexpr QByteArrayView readAheadKiB = "4096";

// Every request to the loop device becomes a round trip through imagefs;
// long sequential reads want few, large ones.
void setReadAhead(const QString &device)
{
    QFile readAhead(QStringLiteral("/sys/block/%1/queue/read_ahead_kb").arg(QFileInfo(device).fileName()));
    if (readAhead.open(QIODevice::WriteOnly))
        readAhead.write(readAheadKiB.data(), readAheadKiB.size());
}

} // namespace

KVLoopDevice::~KVLoopDevice()
{
    if (m_fd >= 0)
        close(m_fd);
}

KVImageResult KVLoopDevice::attach(const QString &file, bool readOnly)
{
    const int access = readOnly ? O_RDONLY : O_RDWR;
    const int backing = open(QFile::encodeName(file).constData(), access | O_CLOEXEC | O_DIRECT);
    if (backing < 0)
        return KVImageError::fromErrno(errno);
    const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
    if (control < 0) {
        const int error = errno;
        close(backing);
        return KVImageError::fromErrno(error);
    }

    int error = EBUSY;
    for (int attempt = 0; attempt < attempts && error == EBUSY; ++attempt) {
        const int number = ioctl(control, LOOP_CTL_GET_FREE);
        if (number < 0) {
            error = errno;
            break;
        }
        const QString path = QStringLiteral("/dev/loop%1").arg(number);
        const int device = open(QFile::encodeName(path).constData(), access | O_CLOEXEC);
        if (device < 0) {
            error = errno;
            continue;
        }
        loop_config config{};
        config.fd = __u32(backing);
        config.block_size = 4096;
        config.info.lo_flags = LO_FLAGS_AUTOCLEAR | LO_FLAGS_DIRECT_IO
            | (readOnly ? LO_FLAGS_READ_ONLY : 0);
        std::strncpy(reinterpret_cast<char *>(config.info.lo_file_name),
                     QFile::encodeName(file).constData(), LO_NAME_SIZE - 1);
        if (ioctl(device, LOOP_CONFIGURE, &config) == 0) {
            m_fd = device;
            m_path = path;
            error = 0;
            setReadAhead(path);
        } else {
            error = errno;
            close(device);
        }
    }
    close(control);
    close(backing);
    return error == 0 ? std::nullopt : KVImageResult(KVImageError::fromErrno(error));
}

QString KVLoopDevice::backingFile(const QString &device)
{
    QFile file(QStringLiteral("/sys/block/%1/loop/backing_file").arg(QFileInfo(device).fileName()));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLocal8Bit(file.readAll()).trimmed();
}

void KVLoopDevice::detach(const QString &device)
{
    const int fd = open(QFile::encodeName(device).constData(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        ioctl(fd, LOOP_CLR_FD, 0);
        close(fd);
    }
}

} // namespace kvlinux
