#include "KVResizeCommand.h"

#include "KVCreateCommand.h"
#include "KVExt4.h"
#include "KVLuksImage.h"
#include "KVOfflinePayload.h"
#include "KVSecureBytes.h"
#include "KVSizeArgument.h"
#include "KVSystemEntities.h"
#include "KVVolumeFolder.h"

#include "platform/KVMountTable.h"
#include "tools/KVPropertyList.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr quint64 sector = 512;

quint64 payloadSizeOf(const KVLuksImage &image)
{
    const quint64 fileSize = quint64(QFileInfo(image.path()).size());
    const quint64 offset = image.geometry().dataOffset;
    return fileSize > offset ? (fileSize - offset) / KVExt4::blockSize * KVExt4::blockSize : 0;
}

KVImageResult truncateImage(const KVLuksImage &image, quint64 payloadSize)
{
    if (truncate(QFile::encodeName(image.path()).constData(),
                 off_t(image.geometry().dataOffset + payloadSize)) != 0)
        return KVImageError::fromErrno(errno);
    return std::nullopt;
}

} // namespace

int KVResizeCommand::run(const KVHdiutilArguments &arguments)
{
    KVImageResult error;
    if (arguments.operands().size() != 1 || !arguments.incomplete().isEmpty())
        error = KVImageError(KVImageError::InvalidArgument);
    else if (!registry())
        error = KVImageError::fromErrno(EACCES);
    const QString imagePath = error ? QString()
                                    : QFileInfo(arguments.operands().first()).absoluteFilePath();

    if (!error && arguments.has(QStringLiteral("-limits"))) {
        Limits found;
        error = limits(imagePath, found);
        if (!error)
            printLimits(found, arguments.has(QStringLiteral("-plist")));
    } else if (!error) {
        const auto size = KVSizeArgument::parse(arguments.value(QStringLiteral("-size")));
        error = size ? resize(imagePath, *size) : KVImageError(KVImageError::InvalidArgument);
    }
    if (!error)
        return 0;
    m_out.error(QStringLiteral("hdiutil: resize: failed. %1 (%2)").arg(error->reason()).arg(error->code()));
    return 1;
}

KVImageResult KVResizeCommand::limits(const QString &imagePath, Limits &limits)
{
    KVLuksImage image(imagePath);
    if (auto error = image.load())
        return error;
    KVSecureBytes volumeKey;
    if (auto error = unlock(image, volumeKey))
        return error;
    limits.current = payloadSizeOf(image);
    limits.maximum = std::max(maximumPayload, limits.current);

    // An attached image is measured where it is served; the resize itself
    // happens after it has been detached, and checks again.
    std::optional<quint64> blocks;
    struct stat st;
    const auto attached = stat(QFile::encodeName(imagePath).constData(), &st) == 0
        ? attachedImages().findImage(st.st_dev, st.st_ino)
        : std::nullopt;
    if (attached) {
        if (attached->mounted)
            KVVolumeFolder::flush(attached->record.mountPoint); // so that its payload shows what it holds
        blocks = KVExt4::minimumBlocks(dataPath().livePayload(attached->record));
    } else {
        KVOfflinePayload payload(*registry(), m_environment.imagefs);
        if (auto error = payload.open(image, volumeKey, true))
            return error;
        blocks = KVExt4::minimumBlocks(payload.path());
        if (auto error = payload.close())
            return error;
    }
    if (!blocks)
        return KVImageError(KVImageError::NoMountableFileSystems);
    // resize2fs's estimate comes from the image: it may exceed the payload,
    // and the payload may be below the smallest size we make.
    const quint64 needed = *blocks > limits.current / KVExt4::blockSize ? limits.current
                                                                        : *blocks * KVExt4::blockSize;
    limits.minimum = std::min(std::max(needed, KVCreateCommand::minimumPayload), limits.current);
    return std::nullopt;
}

void KVResizeCommand::printLimits(const Limits &limits, bool plist) const
{
    if (!plist) {
        m_out.line(QStringLiteral("%1\t%2\t%3")
                       .arg(limits.minimum / sector, 10)
                       .arg(limits.current / sector, 10)
                       .arg(limits.maximum / sector, 10));
        return;
    }
    const QVariantMap volume{
        {QStringLiteral("content-hint"), KVSystemEntities::linuxFileSystem},
        {QStringLiteral("content-length"), limits.current / sector},
        {QStringLiteral("content-max-length"), limits.maximum / sector},
        {QStringLiteral("content-min-length"), limits.minimum / sector},
    };
    const QVariantMap result{
        {QStringLiteral("current-size"), limits.current / sector},
        {QStringLiteral("max-size"), limits.maximum / sector},
        {QStringLiteral("min-size"), limits.minimum / sector},
        {QStringLiteral("subcontent-list"), QVariantList{volume}},
    };
    m_out.data(KVPropertyList::encodeXml(result));
}

KVImageResult KVResizeCommand::resize(const QString &imagePath, quint64 newSize)
{
    newSize = newSize / KVExt4::blockSize * KVExt4::blockSize;
    if (newSize < KVCreateCommand::minimumPayload || newSize > maximumPayload)
        return KVImageError(KVImageError::InvalidArgument);
    KVLuksImage image(imagePath);
    if (auto error = image.load())
        return error;
    if (isInUse(imagePath))
        return KVImageError(KVImageError::TryAgain);
    KVSecureBytes volumeKey;
    if (auto error = unlock(image, volumeKey))
        return error;
    const quint64 current = payloadSizeOf(image);
    if (newSize == current)
        return std::nullopt;
    return newSize > current ? grow(image, volumeKey, current, newSize)
                             : shrink(image, volumeKey, newSize);
}

// The payload grows with the file (the LUKS2 segment spans the rest of it),
// then ext4 grows into it. On failure the file returns to its old size.
KVImageResult KVResizeCommand::grow(const KVLuksImage &image, const KVSecureBytes &volumeKey,
                                    quint64 current, quint64 newSize)
{
    if (auto error = truncateImage(image, newSize))
        return error;
    KVOfflinePayload payload(*registry(), m_environment.imagefs);
    KVImageResult error = payload.open(image, volumeKey, false);
    if (!error)
        error = KVExt4::check(payload.path(), true);
    if (!error)
        error = KVExt4::resize(payload.path(), newSize / KVExt4::blockSize);
    if (auto closed = payload.close(); closed && !error)
        error = closed;
    if (error)
        truncateImage(image, current);
    return error;
}

// ext4 shrinks first; the file is cut only after the file system is seen to
// end within the new size, so a failed shrink never loses data. A size below
// the content's minimum is refused before anything is written.
KVImageResult KVResizeCommand::shrink(const KVLuksImage &image, const KVSecureBytes &volumeKey,
                                      quint64 newSize)
{
    const quint64 blocks = newSize / KVExt4::blockSize;
    {
        KVOfflinePayload payload(*registry(), m_environment.imagefs);
        if (auto error = payload.open(image, volumeKey, true))
            return error;
        if (auto error = ensureRoomFor(payload.path(), blocks))
            return error;
    }
    KVOfflinePayload payload(*registry(), m_environment.imagefs);
    if (auto error = payload.open(image, volumeKey, false))
        return error;
    if (auto error = KVExt4::check(payload.path(), true))
        return error;
    if (auto error = ensureRoomFor(payload.path(), blocks))
        return error;
    if (auto error = KVExt4::resize(payload.path(), blocks))
        return error;
    const auto superblock = KVExt4::readSuperblock(payload.path());
    if (!superblock || superblock->blockCount * superblock->blockSize > newSize)
        return KVImageError::fromErrno(EIO);
    if (auto error = payload.close())
        return error;
    return truncateImage(image, newSize);
}

KVImageResult KVResizeCommand::ensureRoomFor(const QString &payload, quint64 blocks)
{
    const auto minimum = KVExt4::minimumBlocks(payload);
    if (!minimum)
        return KVImageError(KVImageError::NoMountableFileSystems);
    return blocks < *minimum ? KVImageResult(KVImageError(KVImageError::NoSpace)) : std::nullopt;
}

} // namespace kvlinux
