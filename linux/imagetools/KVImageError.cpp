#include "KVImageError.h"

#include <cerrno>
#include <cstring>

namespace kvlinux {

namespace {

// hdiutil's own wording where it differs from Linux's strerror().
QString reasonFor(int code)
{
    switch (code) {
    case KVImageError::Busy: return QStringLiteral("Resource busy");
    case KVImageError::TryAgain: return QStringLiteral("Resource temporarily unavailable");
    case KVImageError::NotSupported: return QStringLiteral("Operation not supported");
    case KVImageError::Authentication: return QStringLiteral("Authentication error");
    case KVImageError::NoMountableFileSystems: return QStringLiteral("no mountable file systems");
    case KVImageError::ImageNotRecognized: return QStringLiteral("image not recognized");
    case KVImageError::Damaged: return QStringLiteral("the image is damaged: its key area cannot be read");
    default: return QString::fromLocal8Bit(strerror(code));
    }
}

} // namespace

KVImageError::KVImageError(int code, QString reason)
    : m_code(code), m_reason(std::move(reason))
{
}

KVImageError::KVImageError(Code code)
    : KVImageError(code, reasonFor(code))
{
}

KVImageError KVImageError::fromErrno(int linuxErrno)
{
    switch (linuxErrno) {
    case EAGAIN: return KVImageError(TryAgain);
    case EOPNOTSUPP: return KVImageError(NotSupported);
    case EBUSY: return KVImageError(Busy);
    default: return KVImageError(linuxErrno, reasonFor(linuxErrno));
    }
}

} // namespace kvlinux
