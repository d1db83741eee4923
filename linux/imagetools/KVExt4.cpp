#include "KVExt4.h"

#include "KVExternalCommand.h"
#include "KVVolumeName.h"

#include <QFile>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <limits>

namespace kvlinux {

namespace {

constexpr qint64 superblockOffset = 1024;
constexpr int labelBytes = 16;

quint32 le32(const QByteArray &b, int at)
{
    return quint32(uchar(b[at])) | quint32(uchar(b[at + 1])) << 8 | quint32(uchar(b[at + 2])) << 16
        | quint32(uchar(b[at + 3])) << 24;
}

quint16 le16(const QByteArray &b, int at)
{
    return quint16(uchar(b[at]) | uchar(b[at + 1]) << 8);
}

// e2fsck: 0 clean, 1 errors fixed, 2 fixed and a reboot advised; the rest
// means errors remain or the check could not run.
bool e2fsckSucceeded(int exitCode)
{
    return exitCode >= 0 && exitCode <= 2;
}

} // namespace

std::optional<KVExt4::Superblock> KVExt4::readSuperblock(const QString &payload)
{
    QFile file(payload);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(superblockOffset))
        return std::nullopt;
    const auto superblock = parseSuperblock(file.read(1024));
    // A file system larger than the payload that carries it is damaged. The
    // payload may be a partition, whose size only its end tells.
    const off_t size = lseek(file.handle(), 0, SEEK_END);
    if (!superblock || size < 0 || superblock->blockCount > quint64(size) / superblock->blockSize)
        return std::nullopt;
    return superblock;
}

// Every field is checked before it is used: the image may have been made by
// anybody.
std::optional<KVExt4::Superblock> KVExt4::parseSuperblock(const QByteArray &sb)
{
    if (sb.size() < 1024 || le16(sb, 0x38) != 0xEF53)
        return std::nullopt;
    constexpr quint32 incompatRecover = 0x4;
    constexpr quint32 incompat64Bit = 0x80;
    constexpr quint32 maxLogBlockSize = 6; // 64 KiB, the largest block ext4 knows
    const quint32 incompat = le32(sb, 0x60);
    const quint32 logBlockSize = le32(sb, 0x18);
    if (logBlockSize > maxLogBlockSize)
        return std::nullopt;
    Superblock s;
    s.blockSize = 1024u << logBlockSize;
    s.blockCount = le32(sb, 0x04);
    s.reservedBlocks = le32(sb, 0x08);
    s.freeBlocks = le32(sb, 0x0C);
    if (incompat & incompat64Bit) {
        s.blockCount |= quint64(le32(sb, 0x150)) << 32;
        s.reservedBlocks |= quint64(le32(sb, 0x154)) << 32;
        s.freeBlocks |= quint64(le32(sb, 0x158)) << 32;
    }
    // Counts beyond the file system are damage; nothing is free then.
    if (s.freeBlocks > s.blockCount || s.reservedBlocks > s.blockCount)
        s.freeBlocks = s.reservedBlocks = 0;
    // Sizes in bytes must fit the 63 bits that file offsets have.
    if (s.blockCount == 0 || s.blockCount > quint64(std::numeric_limits<qint64>::max()) / s.blockSize)
        return std::nullopt;
    s.uuid = QUuid::fromRfc4122(sb.mid(0x68, 16)).toString(QUuid::WithoutBraces).toUpper();
    s.label = KVVolumeName::fromUtf8(sb.mid(0x78, labelBytes));
    s.needsRecovery = incompat & incompatRecover;
    return s;
}

KVImageResult KVExt4::format(const QString &payload, const QString &label, uid_t owner, gid_t group)
{
    QStringList args = {QStringLiteral("-F"), QStringLiteral("-q"), QStringLiteral("-t"),
                        QStringLiteral("ext4"), QStringLiteral("-b"), QString::number(blockSize),
                        QStringLiteral("-m"), QStringLiteral("0"), QStringLiteral("-E"),
                        QStringLiteral("lazy_itable_init=1,lazy_journal_init=1,nodiscard,root_owner=%1:%2")
                            .arg(owner)
                            .arg(group)};
    if (!label.isEmpty())
        args << QStringLiteral("-L") << label;
    args << payload;
    const auto result = KVExternalCommand::run(QStringLiteral("mkfs.ext4"), args);
    if (!result.started)
        return KVImageError(KVImageError::NotSupported);
    if (result.exitCode != 0)
        return result.output.contains("No space left")
            ? KVImageError(KVImageError::NoSpace)
            : KVImageError::fromErrno(EIO);
    return std::nullopt;
}

KVImageResult KVExt4::check(const QString &payload, bool force)
{
    QStringList args = {QStringLiteral("-p")};
    if (force)
        args << QStringLiteral("-f");
    args << payload;
    const auto result = KVExternalCommand::run(QStringLiteral("e2fsck"), args);
    if (!result.started)
        return KVImageError(KVImageError::NotSupported);
    return e2fsckSucceeded(result.exitCode) ? std::nullopt
                                            : KVImageResult(KVImageError::fromErrno(EIO));
}

std::optional<quint64> KVExt4::minimumBlocks(const QString &payload)
{
    const auto result = KVExternalCommand::run(QStringLiteral("resize2fs"),
                                               {QStringLiteral("-P"), payload});
    static const QRegularExpression estimate(QStringLiteral("minimum size of the filesystem: (\\d+)"));
    const auto match = estimate.match(QString::fromUtf8(result.output));
    if (result.exitCode != 0 || !match.hasMatch())
        return std::nullopt;
    return match.captured(1).toULongLong();
}

KVImageResult KVExt4::resize(const QString &payload, quint64 blocks)
{
    // -f: we checked the file system ourselves just before.
    const auto result = KVExternalCommand::run(QStringLiteral("resize2fs"),
                                               {QStringLiteral("-f"), payload, QString::number(blocks)});
    if (!result.started)
        return KVImageError(KVImageError::NotSupported);
    if (result.exitCode != 0)
        return result.output.contains("No space left") ? KVImageError(KVImageError::NoSpace)
                                                       : KVImageError::fromErrno(EIO);
    return std::nullopt;
}

std::optional<QList<KVExt4::Extent>> KVExt4::freeExtents(const QString &payload, quint64 blockCount)
{
    const auto result = KVExternalCommand::run(QStringLiteral("dumpe2fs"), {payload});
    if (result.exitCode != 0)
        return std::nullopt;
    return parseFreeExtents(result.output, blockCount);
}

// Group lines are indented: "  Free blocks: 1537-2047, 4096, 8193-32767".
// Every extent must lie inside the file system's blockCount blocks: its
// blocks are punched out of the image.
std::optional<QList<KVExt4::Extent>> KVExt4::parseFreeExtents(const QByteArray &dumpe2fsOutput,
                                                              quint64 blockCount)
{
    QList<Extent> extents;
    for (const QByteArray &line : dumpe2fsOutput.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (!line.startsWith(' ') || !trimmed.startsWith("Free blocks:"))
            continue;
        for (const QByteArray &range : trimmed.mid(12).split(',')) {
            if (range.trimmed().isEmpty())
                continue;
            const QList<QByteArray> ends = range.trimmed().split('-');
            bool firstOk = false, lastOk = true;
            const quint64 first = ends[0].toULongLong(&firstOk);
            const quint64 last = ends.size() > 1 ? ends[1].toULongLong(&lastOk) : first;
            if (ends.size() > 2 || !firstOk || !lastOk || last < first || last >= blockCount)
                return std::nullopt;
            extents.append({first, last - first + 1});
        }
    }
    return extents;
}

QString KVExt4::labelFor(const QString &volumeName)
{
    QByteArray bytes = volumeName.toUtf8();
    qsizetype end = std::min<qsizetype>(bytes.size(), labelBytes);
    while (end > 0 && end < bytes.size() && (uchar(bytes[end]) & 0xC0) == 0x80)
        --end;
    return QString::fromUtf8(bytes.left(end));
}

} // namespace kvlinux
