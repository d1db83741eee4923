#include "KVHdiutilCommand.h"

#include "KVFuseDataPath.h"
#include "KVLuksImage.h"
#include "KVRuntimeDirectory.h"
#include "KVSecureBytes.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace kvlinux {

namespace {

constexpr size_t maxPasswordBytes = 64 * 1024;

} // namespace

KVHdiutilCommand::KVHdiutilCommand(const KVToolEnvironment &environment, KVToolOutput &out)
    : m_environment(environment), m_out(out)
{
}

KVHdiutilCommand::~KVHdiutilCommand() = default;

std::optional<KVSecureBytes> KVHdiutilCommand::readPassword() const
{
    KVSecureBytes password;
    if (!KVSecureBytes::readAll(m_environment.passwordFd, maxPasswordBytes, password))
        return std::nullopt;
    return password;
}

const KVAttachmentRegistry *KVHdiutilCommand::registry()
{
    if (!m_registry) {
        const auto directory = KVRuntimeDirectory::locate();
        if (!directory)
            return nullptr;
        m_registry.emplace(QDir(*directory).canonicalPath());
    }
    return &*m_registry;
}

KVDataPath &KVHdiutilCommand::dataPath()
{
    if (!m_dataPath)
        m_dataPath = std::make_unique<KVFuseDataPath>(m_environment.imagefs);
    return *m_dataPath;
}

KVAttachedImages KVHdiutilCommand::attachedImages()
{
    Q_ASSERT(registry());
    return KVAttachedImages(*registry(), dataPath());
}

bool KVHdiutilCommand::isInUse(const QString &imagePath)
{
    const QByteArray native = QFile::encodeName(imagePath);
    struct stat st;
    if (stat(native.constData(), &st) != 0)
        return false;
    if (registry() && attachedImages().findImage(st.st_dev, st.st_ino))
        return true;
    const int fd = open(native.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    struct flock probe{};
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    const bool locked = fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
    close(fd);
    return locked;
}

KVImageResult KVHdiutilCommand::unlock(const KVLuksImage &image, KVSecureBytes &volumeKey) const
{
    const auto password = readPassword();
    if (!password)
        return KVImageError(KVImageError::Authentication);
    return image.unlock(*password, volumeKey);
}

} // namespace kvlinux
