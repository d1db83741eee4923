#include "KVLuksHeaderSnapshot.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace kvlinux {

namespace {

// The binary header's fields (all numbers big-endian).
constexpr qsizetype binaryHeaderSize = 4096;
constexpr qsizetype sizeOffset = 8;
constexpr qsizetype sequenceOffset = 16;
constexpr qsizetype labelOffset = 24;
constexpr qsizetype checksumAlgorithmOffset = 72;
constexpr qsizetype uuidOffset = 168;
constexpr qsizetype checksumOffset = 448;
constexpr qsizetype checksumFieldSize = 64;

// Where a second copy may start when the first is too damaged to say.
constexpr std::array<quint64, 9> secondaryOffsets{0x4000,   0x8000,   0x10000,  0x20000, 0x40000,
                                                   0x80000,  0x100000, 0x200000, 0x400000};

QString textField(const QByteArray &area, qsizetype offset, qsizetype size)
{
    const QByteArray field = area.mid(offset, size);
    return QString::fromUtf8(field.left(field.indexOf('\0') < 0 ? size : field.indexOf('\0')));
}

bool checksumMatches(const QByteArray &area)
{
    const QByteArray algorithm = textField(area, checksumAlgorithmOffset, 32).toLatin1();
    const EVP_MD *digest = EVP_get_digestbyname(algorithm.constData());
    if (!digest)
        return false;
    QByteArray zeroed = area;
    std::fill_n(zeroed.begin() + checksumOffset, checksumFieldSize, '\0');
    unsigned char sum[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!EVP_Digest(zeroed.constData(), size_t(zeroed.size()), sum, &length, digest, nullptr))
        return false;
    return QByteArray::fromRawData(reinterpret_cast<const char *>(sum), qsizetype(length))
        == area.mid(checksumOffset, qsizetype(length));
}

KVLuksPartition::Conversion conversionIn(const QJsonObject &metadata)
{
    const QJsonObject keyslots = metadata.value(QStringLiteral("keyslots")).toObject();
    for (const QJsonValue &keyslot : keyslots) {
        if (keyslot.toObject().value(QStringLiteral("type")).toString() != QLatin1String("reencrypt"))
            continue;
        return keyslot.toObject().value(QStringLiteral("mode")).toString() == QLatin1String("decrypt")
            ? KVLuksPartition::Conversion::Decrypting
            : KVLuksPartition::Conversion::Encrypting;
    }
    return KVLuksPartition::Conversion::None;
}

quint64 declaredSize(const QByteArray &start)
{
    return start.size() >= binaryHeaderSize ? qFromBigEndian<quint64>(start.constData() + sizeOffset) : 0;
}

std::optional<KVLuksHeaderSnapshot> readCopy(QFile &file, quint64 offset)
{
    if (!file.seek(qint64(offset)))
        return std::nullopt;
    QByteArray area = file.read(binaryHeaderSize);
    const quint64 size = declaredSize(area);
    if (size < quint64(binaryHeaderSize) || size > secondaryOffsets.back())
        return std::nullopt;
    area += file.read(qint64(size) - binaryHeaderSize);
    return KVLuksHeaderSnapshot::parse(area);
}

} // namespace

std::optional<KVLuksHeaderSnapshot> KVLuksHeaderSnapshot::parse(const QByteArray &area)
{
    static const QByteArray primaryMagic = QByteArrayLiteral("LUKS\xba\xbe\x00\x02");
    static const QByteArray secondaryMagic = QByteArrayLiteral("SKUL\xba\xbe\x00\x02");
    const QByteArray magic = area.left(8);
    if ((magic != primaryMagic && magic != secondaryMagic) || declaredSize(area) != quint64(area.size())
        || !checksumMatches(area))
        return std::nullopt;
    QByteArray json = area.mid(binaryHeaderSize);
    json.truncate(json.indexOf('\0') < 0 ? json.size() : json.indexOf('\0'));
    const QJsonDocument metadata = QJsonDocument::fromJson(json);
    if (!metadata.isObject())
        return std::nullopt;
    KVLuksHeaderSnapshot snapshot;
    snapshot.uuid = textField(area, uuidOffset, 40).toUpper();
    snapshot.label = textField(area, labelOffset, 48);
    snapshot.sequence = qFromBigEndian<quint64>(area.constData() + sequenceOffset);
    snapshot.conversion = conversionIn(metadata.object());
    return snapshot;
}

std::optional<KVLuksHeaderSnapshot> KVLuksHeaderSnapshot::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    std::optional<KVLuksHeaderSnapshot> best = readCopy(file, 0);
    file.seek(0);
    const quint64 primarySize = declaredSize(file.read(binaryHeaderSize));
    const bool sizeKnown = std::find(secondaryOffsets.cbegin(), secondaryOffsets.cend(), primarySize)
        != secondaryOffsets.cend();
    for (const quint64 offset : secondaryOffsets) {
        // The second copy follows the first; only a first copy that cannot
        // say how long it is leaves every place to be tried.
        if (sizeKnown && offset != primarySize)
            continue;
        const auto secondary = readCopy(file, offset);
        if (secondary && (!best || secondary->sequence > best->sequence))
            best = secondary;
        if (secondary)
            break;
    }
    return best;
}

} // namespace kvlinux
