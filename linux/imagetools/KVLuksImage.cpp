#include "KVLuksImage.h"

#include "KVSecureBytes.h"
#include "KVVolumeName.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <fcntl.h>
#include <libcryptsetup.h>
#include <openssl/rand.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace kvlinux {

namespace {

const QString volumeNameToken = QStringLiteral("korvelle-volume");
constexpr int labelBytes = 47; // LUKS2 labels hold 48 bytes with the terminator

// libcryptsetup's default log handler writes to stderr, which is the tool's
// output channel: our own texts are the only ones the application may see.
void quietLog(int, const char *, void *)
{
}

// A UTF-8 prefix of at most maxBytes that does not end inside a character.
QByteArray utf8Prefix(const QString &text, int maxBytes)
{
    QByteArray bytes = text.toUtf8();
    if (bytes.size() <= maxBytes)
        return bytes;
    qsizetype end = maxBytes;
    while (end > 0 && (uchar(bytes[end]) & 0xC0) == 0x80)
        --end;
    return bytes.left(end);
}

// The anti-forensic split that LUKS2 keyslots use: the key material is the
// key size times this many stripes, and reads as random data.
constexpr quint64 keyslotStripes = 4000;

// libcryptsetup reports a failed write as an I/O error, also when the disk
// is full. Less room than a keyslot needs means it was the disk.
bool fileSystemIsFull(const QString &imagePath)
{
    struct statvfs fs;
    constexpr quint64 keyslotRoom = 64 * keyslotStripes;
    return statvfs(QFile::encodeName(QFileInfo(imagePath).absolutePath()).constData(), &fs) == 0
        && quint64(fs.f_bavail) * fs.f_frsize < keyslotRoom;
}

// Random data never holds a 512-byte run of one byte value; a keyslot area
// that does (zeros where a block was lost, say) or that ends beyond the end
// of the file is damaged.
bool areaIsDamaged(int fd, quint64 offset, quint64 length)
{
    QByteArray block(512, Qt::Uninitialized);
    for (quint64 at = offset; at < offset + length; at += quint64(block.size())) {
        if (pread(fd, block.data(), size_t(block.size()), off_t(at)) != block.size())
            return true;
        if (block.count(block[0]) == block.size())
            return true;
    }
    return false;
}

} // namespace

KVLuksImage::KVLuksImage(QString path)
    : m_path(std::move(path))
{
    crypt_set_log_callback(nullptr, quietLog, nullptr);
}

KVLuksImage::~KVLuksImage()
{
    crypt_free(m_cd);
}

KVImageResult KVLuksImage::openDevice()
{
    crypt_free(m_cd);
    m_cd = nullptr;
    const QByteArray native = QFile::encodeName(m_path);
    struct stat st;
    if (stat(native.constData(), &st) != 0)
        return KVImageError::fromErrno(errno);
    // Images are files; encrypted partitions (the disk verbs) block devices.
    if (!S_ISREG(st.st_mode) && !S_ISBLK(st.st_mode))
        return KVImageError(KVImageError::ImageNotRecognized);
    if (const int r = crypt_init(&m_cd, native.constData()); r < 0)
        return KVImageError::fromErrno(-r);
    crypt_set_log_callback(m_cd, quietLog, nullptr);
    return std::nullopt;
}

KVImageResult KVLuksImage::load()
{
    if (auto error = openDevice())
        return error;
    if (crypt_load(m_cd, CRYPT_LUKS2, nullptr) < 0)
        return KVImageError(KVImageError::ImageNotRecognized);
    // The data path speaks aes-xts-plain64 with AES-128 or AES-256 only, in
    // whole sectors that start inside the file. (An image whose keys were
    // erased has no key size any more; it loads, and nothing unlocks it.)
    const KVImageGeometry g = geometry();
    const bool supportedCipher = qstrcmp(crypt_get_cipher(m_cd), "aes") == 0
        && qstrcmp(crypt_get_cipher_mode(m_cd), "xts-plain64") == 0
        && (g.volumeKeySize == 32 || g.volumeKeySize == 64 || g.volumeKeySize == 0);
    const bool supportedSectors = g.sectorSize >= 512 && g.sectorSize <= 4096
        && (g.sectorSize & (g.sectorSize - 1)) == 0;
    if (!supportedCipher || !supportedSectors)
        return KVImageError(KVImageError::NotSupported);
    // A partition's size is where its device ends; a file's is its length.
    QFile container(m_path);
    const off_t size = container.open(QIODevice::ReadOnly) ? lseek(container.handle(), 0, SEEK_END) : -1;
    if (g.dataOffset == 0 || g.dataOffset % g.sectorSize != 0 || size < 0 || g.dataOffset > quint64(size))
        return KVImageError(KVImageError::ImageNotRecognized);
    return std::nullopt;
}

KVImageResult KVLuksImage::format(const Format &format, const KVSecureBytes &volumeKey,
                                  const KVSecureBytes &password,
                                  const KVKeyDerivation &derivation)
{
    if (auto error = openDevice())
        return error;
    const QByteArray label = utf8Prefix(format.volumeName, labelBytes);
    crypt_params_luks2 params{};
    params.sector_size = format.sectorSize;
    params.label = label.isEmpty() ? nullptr : label.constData();
    int r = crypt_set_data_offset(m_cd, format.dataOffset / 512);
    if (r == 0)
        r = derivation.applyTo(m_cd);
    if (r == 0)
        r = crypt_format(m_cd, CRYPT_LUKS2, "aes", "xts-plain64", nullptr, volumeKey.chars(),
                         volumeKey.size(), &params);
    // Discards pass through when the image is opened by cryptsetup elsewhere:
    // sparse images want their free space back.
    if (r == 0)
        r = crypt_persistent_flags_set(m_cd, CRYPT_FLAGS_ACTIVATION, CRYPT_ACTIVATE_ALLOW_DISCARDS);
    if (r == 0 && !format.volumeName.isEmpty()) {
        const QJsonObject token{{QStringLiteral("type"), volumeNameToken},
                                {QStringLiteral("keyslots"), QJsonArray()},
                                {QStringLiteral("volume_name"), format.volumeName}};
        const int id = crypt_token_json_set(m_cd, CRYPT_ANY_TOKEN,
                                            QJsonDocument(token).toJson(QJsonDocument::Compact).constData());
        r = id < 0 ? id : 0;
    }
    if (r == 0) {
        const int slot = crypt_keyslot_add_by_volume_key(m_cd, CRYPT_ANY_SLOT, volumeKey.chars(),
                                                         volumeKey.size(), password.chars(),
                                                         password.size());
        r = slot < 0 ? slot : 0;
    }
    if (r == -EIO && fileSystemIsFull(m_path))
        return KVImageError(KVImageError::NoSpace);
    return r == 0 ? std::nullopt : KVImageResult(KVImageError::fromErrno(-r));
}

KVImageResult KVLuksImage::unlock(const KVSecureBytes &password, KVSecureBytes &volumeKey) const
{
    if (usedKeyslots().isEmpty())
        return KVImageError(KVImageError::Authentication); // the keys were erased
    size_t size = size_t(crypt_get_volume_key_size(m_cd));
    KVSecureBytes key(size);
    const int r = crypt_volume_key_get(m_cd, CRYPT_ANY_SLOT, reinterpret_cast<char *>(key.data()),
                                       &size, password.chars(), password.size());
    if (r == -EPERM || r == -ENOENT)
        return passwordRefused();
    if (r < 0)
        return KVImageError::fromErrno(-r);
    key.truncate(size);
    volumeKey = std::move(key);
    return std::nullopt;
}

KVImageResult KVLuksImage::changePassword(const KVSecureBytes &oldPassword,
                                          const KVSecureBytes &newPassword,
                                          const KVKeyDerivation &derivation)
{
    int r = derivation.applyTo(m_cd);
    if (r == 0)
        r = crypt_keyslot_change_by_passphrase(m_cd, CRYPT_ANY_SLOT, CRYPT_ANY_SLOT,
                                               oldPassword.chars(), oldPassword.size(),
                                               newPassword.chars(), newPassword.size());
    if (r == -EPERM || r == -ENOENT)
        return passwordRefused();
    if (r < 0)
        return KVImageError::fromErrno(-r);
    return std::nullopt;
}

// No keyslot opened with the password. The library cannot tell a wrong
// password from a keyslot whose key material is damaged (both fail the
// digest); the material itself can: it is random data, and a damaged area
// is not. Only when every keyslot is damaged is the password not to blame.
KVImageError KVLuksImage::passwordRefused() const
{
    const QList<int> slots = usedKeyslots();
    const int fd = open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC);
    bool allDamaged = fd >= 0 && !slots.isEmpty();
    for (int slot : slots) {
        uint64_t offset = 0;
        uint64_t length = 0;
        const int keySize = crypt_keyslot_get_key_size(m_cd, slot);
        const bool damaged = crypt_keyslot_status(m_cd, slot) == CRYPT_SLOT_INVALID || keySize <= 0
            || crypt_keyslot_area(m_cd, slot, &offset, &length) < 0
            || areaIsDamaged(fd, offset, std::min<quint64>(length, quint64(keySize) * keyslotStripes));
        allDamaged = allDamaged && damaged;
    }
    if (fd >= 0)
        close(fd);
    return KVImageError(allDamaged ? KVImageError::Damaged : KVImageError::Authentication);
}

QList<int> KVLuksImage::usedKeyslots() const
{
    QList<int> used;
    const int slots = crypt_keyslot_max(CRYPT_LUKS2);
    for (int slot = 0; slot < slots; ++slot) {
        const crypt_keyslot_info info = crypt_keyslot_status(m_cd, slot);
        if (info == CRYPT_SLOT_ACTIVE || info == CRYPT_SLOT_ACTIVE_LAST || info == CRYPT_SLOT_UNBOUND)
            used.append(slot);
    }
    return used;
}

KVImageResult KVLuksImage::eraseKeys()
{
    for (int slot : usedKeyslots())
        if (const int r = crypt_keyslot_destroy(m_cd, slot); r < 0)
            return KVImageError::fromErrno(-r);
    return std::nullopt;
}

KVImageGeometry KVLuksImage::geometry() const
{
    KVImageGeometry g;
    g.dataOffset = crypt_get_data_offset(m_cd) * 512;
    g.sectorSize = quint32(crypt_get_sector_size(m_cd));
    g.volumeKeySize = crypt_get_volume_key_size(m_cd);
    return g;
}

QString KVLuksImage::uuid() const
{
    return QString::fromLatin1(crypt_get_uuid(m_cd));
}

QString KVLuksImage::volumeName() const
{
    const int tokens = crypt_token_max(CRYPT_LUKS2);
    for (int id = 0; id < tokens; ++id) {
        const char *json = nullptr;
        if (crypt_token_json_get(m_cd, id, &json) < 0 || !json)
            continue;
        if (auto name = volumeNameFromToken(QByteArray(json)))
            return *name;
    }
    return KVVolumeName::fromUtf8(crypt_get_label(m_cd));
}

KVImageResult KVLuksImage::setVolumeName(const QString &name)
{
    if (!m_cd)
        return KVImageError(KVImageError::ImageNotRecognized);
    const QByteArray label = utf8Prefix(name, labelBytes);
    int r = crypt_set_label(m_cd, label.constData(), nullptr);
    // The old name's token goes, then the new one is written: a header
    // holds one name.
    const int tokens = crypt_token_max(CRYPT_LUKS2);
    for (int id = 0; r == 0 && id < tokens; ++id) {
        const char *json = nullptr;
        if (crypt_token_json_get(m_cd, id, &json) >= 0 && json && volumeNameFromToken(QByteArray(json))) {
            const int removed = crypt_token_json_set(m_cd, id, nullptr);
            r = removed < 0 ? removed : 0;
        }
    }
    if (r == 0) {
        const QJsonObject token{{QStringLiteral("type"), volumeNameToken},
                                {QStringLiteral("keyslots"), QJsonArray()},
                                {QStringLiteral("volume_name"), name}};
        const int id = crypt_token_json_set(m_cd, CRYPT_ANY_TOKEN,
                                            QJsonDocument(token).toJson(QJsonDocument::Compact).constData());
        r = id < 0 ? id : 0;
    }
    return r == 0 ? std::nullopt : KVImageResult(KVImageError::fromErrno(-r));
}

std::optional<QString> KVLuksImage::volumeNameFromToken(const QByteArray &json)
{
    const QJsonObject token = QJsonDocument::fromJson(json).object();
    if (token.value(QStringLiteral("type")).toString() != volumeNameToken)
        return std::nullopt;
    return KVVolumeName::sanitized(token.value(QStringLiteral("volume_name")).toString());
}

KVSecureBytes KVLuksImage::newVolumeKey(int size)
{
    KVSecureBytes key{size_t(size)};
    if (RAND_priv_bytes(key.data(), size) != 1)
        return KVSecureBytes();
    return key;
}

} // namespace kvlinux
