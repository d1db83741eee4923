#include "KVCompactCommand.h"

#include "KVExt4.h"
#include "KVLuksImage.h"
#include "KVOfflinePayload.h"
#include "KVSecureBytes.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kvlinux {

namespace {

quint64 allocatedBytes(const QString &path)
{
    struct stat st;
    return stat(QFile::encodeName(path).constData(), &st) == 0 ? quint64(st.st_blocks) * 512 : 0;
}

QString formatted(quint64 bytes)
{
    return QLocale::c().formattedDataSize(qint64(bytes), 1, QLocale::DataSizeSIFormat);
}

} // namespace

int KVCompactCommand::run(const KVHdiutilArguments &arguments)
{
    m_out.verbose(QStringLiteral("Starting to compact…"));
    Outcome outcome;
    const KVImageResult error = arguments.operands().size() == 1
        ? compact(QFileInfo(arguments.operands().first()).absoluteFilePath(), outcome)
        : KVImageResult(KVImageError(KVImageError::InvalidArgument));
    if (error) {
        m_out.result(QStringLiteral("compact"), error->code(), {80, 2, 35});
        m_out.error(QStringLiteral("hdiutil: compact failed - ") + error->reason());
        return 1;
    }
    m_out.verbose(QStringLiteral("Finishing compaction…"));
    m_out.line(QStringLiteral("Reclaimed %1 out of %2 possible.")
                   .arg(formatted(outcome.reclaimed), formatted(outcome.possible)));
    return 0;
}

KVImageResult KVCompactCommand::compact(const QString &imagePath, Outcome &outcome)
{
    KVLuksImage image(imagePath);
    if (auto error = image.load())
        return error;
    if (!registry())
        return KVImageError::fromErrno(EACCES);
    if (isInUse(imagePath))
        return KVImageError(KVImageError::TryAgain);
    KVSecureBytes volumeKey;
    if (auto error = unlock(image, volumeKey))
        return error;

    // The bitmaps are trusted only after the journal has been replayed and
    // the file system found consistent.
    std::optional<QList<KVExt4::Extent>> free;
    quint32 blockSize = 0;
    {
        KVOfflinePayload payload(*registry(), m_environment.imagefs);
        if (auto error = payload.open(image, volumeKey, false))
            return error;
        if (auto error = KVExt4::check(payload.path(), false))
            return error;
        const auto superblock = KVExt4::readSuperblock(payload.path());
        if (superblock)
            free = KVExt4::freeExtents(payload.path(), superblock->blockCount);
        if (!free)
            return KVImageError(KVImageError::NoMountableFileSystems);
        blockSize = superblock->blockSize;
        if (auto error = payload.close())
            return error;
    }
    // Only whole encryption sectors may become holes: a hole reads back as
    // ciphertext zeros, which is fine for blocks that hold nothing.
    const KVImageGeometry geometry = image.geometry();
    if (blockSize % geometry.sectorSize != 0)
        return KVImageError(KVImageError::NotSupported);

    m_out.verbose(QStringLiteral("Reclaiming free space…"));
    const quint64 before = allocatedBytes(imagePath);
    const int fd = open(QFile::encodeName(imagePath).constData(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return KVImageError::fromErrno(errno);
    // Nobody may attach the image while its free blocks go: the same lock as
    // imagefs takes, so an attach in between makes us stop here.
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    if (fcntl(fd, F_OFD_SETLK, &lock) != 0) {
        close(fd);
        return KVImageError(KVImageError::TryAgain);
    }
    for (const KVExt4::Extent &extent : *free) {
        outcome.possible += extent.count * blockSize;
        if (fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE,
                      off_t(geometry.dataOffset + extent.first * blockSize),
                      off_t(extent.count * blockSize)) != 0) {
            const int error = errno;
            close(fd);
            return KVImageError::fromErrno(error);
        }
    }
    fsync(fd);
    close(fd);
    const quint64 after = allocatedBytes(imagePath);
    outcome.reclaimed = before > after ? before - after : 0;
    return std::nullopt;
}

} // namespace kvlinux
