#include "KVOfflinePayload.h"

#include "KVAttachmentRegistry.h"
#include "KVLuksImage.h"

#include <QDir>

#include <cerrno>

namespace kvlinux {

KVOfflinePayload::KVOfflinePayload(const KVAttachmentRegistry &registry, QString imagefs)
    : m_registry(registry), m_imagefs(std::move(imagefs))
{
}

KVOfflinePayload::~KVOfflinePayload()
{
    close();
}

KVImageResult KVOfflinePayload::open(const KVLuksImage &image, const KVSecureBytes &volumeKey,
                                     bool readOnly)
{
    m_directory = m_registry.makeSessionDirectory();
    if (m_directory.isEmpty())
        return KVImageError::fromErrno(EACCES);
    KVPayloadSession::Launch launch;
    launch.helper = m_imagefs;
    launch.imagePath = image.path();
    launch.geometry = image.geometry();
    launch.readOnly = readOnly;
    launch.directory = m_directory;
    launch.name = QStringLiteral("korvelle:session");
    auto error = m_session.start(launch, volumeKey);
    if (error && error->code() == KVImageError::Busy)
        return KVImageError(KVImageError::TryAgain);
    return error;
}

KVImageResult KVOfflinePayload::close()
{
    KVImageResult error;
    if (m_session.isRunning())
        error = m_session.finish();
    if (!m_directory.isEmpty())
        QDir().rmdir(m_directory);
    m_directory.clear();
    return error;
}

} // namespace kvlinux
