#include "KVLuksPartition.h"

#include "KVSecureBytes.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <libcryptsetup.h>

namespace kvlinux {

namespace {

void quietLog(int, const char *, void *)
{
}

int reportProgress(uint64_t size, uint64_t offset, void *context)
{
    const auto &progress = *static_cast<const KVLuksPartition::Progress *>(context);
    return progress && !progress(offset, size) ? 1 : 0;
}

KVImageError failure(int r)
{
    if (r == -EPERM || r == -ENOENT)
        return KVImageError(KVImageError::Authentication);
    return KVImageError::fromErrno(-r);
}

} // namespace

KVLuksPartition::KVLuksPartition(QString node, QString detachedHeader)
    : m_node(std::move(node)), m_detachedHeader(std::move(detachedHeader))
{
}

KVLuksPartition::~KVLuksPartition()
{
    crypt_free(m_cd);
}

bool KVLuksPartition::hasHeader(const QString &node)
{
    QFile device(node);
    if (!device.open(QIODevice::ReadOnly))
        return false;
    const QByteArray start = device.read(8);
    return start.size() == 8 && start.startsWith(QByteArrayLiteral("LUKS\xba\xbe")) && start[6] == 0
        && start[7] == 2;
}

KVImageResult KVLuksPartition::load()
{
    crypt_free(m_cd);
    m_cd = nullptr;
    const QByteArray node = QFile::encodeName(m_node);
    const int r = m_detachedHeader.isEmpty()
        ? crypt_init(&m_cd, node.constData())
        : crypt_init_data_device(&m_cd, QFile::encodeName(m_detachedHeader).constData(), node.constData());
    if (r < 0) {
        m_cd = nullptr;
        return KVImageError::fromErrno(-r);
    }
    crypt_set_log_callback(m_cd, quietLog, nullptr);
    if (crypt_load(m_cd, CRYPT_LUKS2, nullptr) < 0)
        return KVImageError(KVImageError::ImageNotRecognized);
    return std::nullopt;
}

QString KVLuksPartition::uuid() const
{
    return QString::fromLatin1(crypt_get_uuid(m_cd)).toUpper();
}

QString KVLuksPartition::label() const
{
    return QString::fromUtf8(crypt_get_label(m_cd));
}

KVImageResult KVLuksPartition::setLabel(const QString &label)
{
    // LUKS2 labels hold 48 bytes with the terminator; cut at a character.
    QByteArray bytes = label.toUtf8();
    qsizetype end = std::min<qsizetype>(bytes.size(), 47);
    while (end > 0 && end < bytes.size() && (uchar(bytes[end]) & 0xC0) == 0x80)
        --end;
    bytes.truncate(end);
    if (const int r = crypt_set_label(m_cd, bytes.constData(), nullptr); r < 0)
        return KVImageError::fromErrno(-r);
    return std::nullopt;
}

KVLuksPartition::Conversion KVLuksPartition::conversion() const
{
    crypt_params_reencrypt params{};
    const crypt_reencrypt_info info = crypt_reencrypt_status(m_cd, &params);
    if (info != CRYPT_REENCRYPT_CLEAN && info != CRYPT_REENCRYPT_CRASH)
        return Conversion::None;
    return params.mode == CRYPT_REENCRYPT_DECRYPT ? Conversion::Decrypting : Conversion::Encrypting;
}

// As cryptsetup does for "reencrypt --encrypt --reduce-device-size": the
// data moves up by dataOffset, its first dataOffset bytes are parked in the
// room the file system gave up at the end, and the conversion runs backwards
// from there, every step journalled in the header.
KVImageResult KVLuksPartition::beginEncryption(const KVSecureBytes &passphrase, quint32 sectorSize,
                                               const QString &label, const KVKeyDerivation &derivation,
                                               const QString &scratchHeader)
{
    crypt_free(m_cd);
    m_cd = nullptr;
    // The header is made in a file first: written straight to the partition
    // it would land on the file system's first blocks before they have moved.
    {
        // Its keyslot is as good as the partition's own: for root's eyes only.
        QFile header(scratchHeader);
        if (!header.open(QIODevice::WriteOnly | QIODevice::Truncate, QFile::ReadOwner | QFile::WriteOwner)
            || !header.resize(qint64(dataOffset)))
            return KVImageError::fromErrno(EIO);
    }
    const QByteArray headerPath = QFile::encodeName(scratchHeader);
    const QByteArray devicePath = QFile::encodeName(m_node);
    int r = crypt_init_data_device(&m_cd, headerPath.constData(), devicePath.constData());
    if (r < 0) {
        m_cd = nullptr;
        QFile::remove(scratchHeader);
        return KVImageError::fromErrno(-r);
    }
    crypt_set_log_callback(m_cd, quietLog, nullptr);
    const QByteArray labelBytes = label.toUtf8().left(16);
    crypt_params_luks2 luks2{};
    luks2.sector_size = sectorSize;
    luks2.label = labelBytes.isEmpty() ? nullptr : labelBytes.constData();

    r = crypt_set_data_offset(m_cd, dataOffset / 512);
    if (r == 0)
        r = derivation.applyTo(m_cd);
    if (r == 0)
        r = crypt_format(m_cd, CRYPT_LUKS2, "aes", "xts-plain64", nullptr, nullptr, 64, &luks2);
    int keyslot = r;
    if (r == 0)
        keyslot = r = crypt_keyslot_add_by_volume_key(m_cd, CRYPT_ANY_SLOT, nullptr, 0, passphrase.chars(),
                                                      passphrase.size());
    if (r >= 0) {
        crypt_params_reencrypt params{};
        params.mode = CRYPT_REENCRYPT_ENCRYPT;
        params.direction = CRYPT_REENCRYPT_BACKWARD;
        params.resilience = "datashift";
        params.hash = "sha256";
        params.data_shift = dataOffset / 512;
        params.luks2 = &luks2;
        params.flags = CRYPT_REENCRYPT_INITIALIZE_ONLY | CRYPT_REENCRYPT_MOVE_FIRST_SEGMENT;
        r = crypt_reencrypt_init_by_passphrase(m_cd, nullptr, passphrase.chars(), passphrase.size(),
                                               CRYPT_ANY_SLOT, keyslot, "aes", "xts-plain64", &params);
    }
    crypt_free(m_cd);
    m_cd = nullptr;
    // The first blocks are parked at the end now: the header may take their place.
    if (r >= 0) {
        r = crypt_init(&m_cd, devicePath.constData());
        if (r == 0) {
            crypt_set_log_callback(m_cd, quietLog, nullptr);
            r = crypt_header_restore(m_cd, CRYPT_LUKS2, headerPath.constData());
        }
        crypt_free(m_cd);
        m_cd = nullptr;
    }
    QFile::remove(scratchHeader);
    if (r < 0)
        return failure(r);
    return load();
}

KVImageResult KVLuksPartition::verify(const KVSecureBytes &passphrase) const
{
    // Without a name, activation only tries the keyslots.
    const int r = crypt_activate_by_passphrase(m_cd, nullptr, CRYPT_ANY_SLOT, passphrase.chars(), passphrase.size(), 0);
    return r < 0 ? std::optional(failure(r)) : std::nullopt;
}

// As cryptsetup does for "reencrypt --decrypt --header FILE": the header
// goes to a file of its own first, since the first step of the conversion
// overwrites its place with the start of the data, which moves down by the
// data offset and is decrypted front to back, every step checksummed.
KVImageResult KVLuksPartition::beginDecryption(const KVSecureBytes &passphrase, const QString &headerFile)
{
    if (auto error = verify(passphrase))
        return error;
    const quint64 dataShift = crypt_get_data_offset(m_cd);
    QFile::remove(headerFile);
    if (const int r = crypt_header_backup(m_cd, CRYPT_LUKS2, QFile::encodeName(headerFile).constData()); r < 0)
        return KVImageError::fromErrno(-r);
    m_detachedHeader = headerFile;
    if (auto error = load()) {
        QFile::remove(headerFile);
        return error;
    }
    crypt_params_reencrypt params{};
    params.mode = CRYPT_REENCRYPT_DECRYPT;
    params.direction = CRYPT_REENCRYPT_FORWARD;
    params.resilience = "datashift-checksum";
    params.hash = "sha256";
    params.data_shift = dataShift;
    params.flags = CRYPT_REENCRYPT_INITIALIZE_ONLY | CRYPT_REENCRYPT_MOVE_FIRST_SEGMENT;
    const int r = crypt_reencrypt_init_by_passphrase(m_cd, nullptr, passphrase.chars(), passphrase.size(),
                                                     CRYPT_ANY_SLOT, CRYPT_ANY_SLOT, nullptr, nullptr, &params);
    if (r < 0) {
        // Nothing has moved yet: the header on the partition is still whole.
        QFile::remove(headerFile);
        return failure(r);
    }
    return load();
}

KVImageResult KVLuksPartition::resume(const KVSecureBytes &passphrase, const Progress &progress)
{
    // A run that was killed or lost its power left a step half done: the
    // header's journal of it (the data shift's copy) puts it right first.
    crypt_params_reencrypt status{};
    if (crypt_reencrypt_status(m_cd, &status) == CRYPT_REENCRYPT_CRASH) {
        crypt_params_reencrypt recovery{};
        recovery.flags = CRYPT_REENCRYPT_RECOVERY;
        const int r = crypt_reencrypt_init_by_passphrase(m_cd, nullptr, passphrase.chars(), passphrase.size(),
                                                         CRYPT_ANY_SLOT, CRYPT_ANY_SLOT, nullptr, nullptr,
                                                         &recovery);
        if (r < 0)
            return failure(r);
        if (auto error = load())
            return error;
    }
    crypt_params_reencrypt params{};
    params.flags = CRYPT_REENCRYPT_RESUME_ONLY;
    int r = crypt_reencrypt_init_by_passphrase(m_cd, nullptr, passphrase.chars(), passphrase.size(),
                                               CRYPT_ANY_SLOT, CRYPT_ANY_SLOT, nullptr, nullptr, &params);
    if (r >= 0)
        r = crypt_reencrypt_run(m_cd, reportProgress, const_cast<Progress *>(&progress));
    return r < 0 ? std::optional(failure(r)) : std::nullopt;
}

} // namespace kvlinux
