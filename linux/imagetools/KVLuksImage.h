#pragma once

#include "KVImageError.h"
#include "KVKeyDerivation.h"

#include <QList>
#include <QString>

struct crypt_device;

namespace kvlinux {

class KVSecureBytes;

// Where the payload of an image lies and how it is encrypted.
struct KVImageGeometry
{
    quint64 dataOffset = 0; // bytes from the start of the file
    quint32 sectorSize = 0; // encryption sector, bytes
    int volumeKeySize = 0;  // bytes: 32 for AES-128-XTS, 64 for AES-256-XTS
};

// The LUKS2 header of an image file, worked on in-process with libcryptsetup:
// this needs neither root nor device-mapper. The image is the header followed
// by the payload; the payload segment spans the rest of the file, so the file
// size alone decides the payload size.
class KVLuksImage
{
public:
    explicit KVLuksImage(QString path);
    ~KVLuksImage();
    KVLuksImage(const KVLuksImage &) = delete;
    KVLuksImage &operator=(const KVLuksImage &) = delete;

    const QString &path() const { return m_path; }

    // Reads the header of an existing image.
    KVImageResult load();

    struct Format
    {
        int volumeKeySize = 64;
        quint64 dataOffset = 16 << 20;
        quint32 sectorSize = 4096;
        QString volumeName;
    };
    // Writes a new header with the given volume key and one keyslot for the
    // password. The file must exist and already have its full size.
    KVImageResult format(const Format &format, const KVSecureBytes &volumeKey,
                         const KVSecureBytes &password, const KVKeyDerivation &derivation);

    // Derives the volume key from the password (Authentication when no
    // keyslot opens with it, also when all keys were erased; Damaged when
    // the key material of every keyslot is damaged).
    KVImageResult unlock(const KVSecureBytes &password, KVSecureBytes &volumeKey) const;
    // Replaces the keyslot that opens with oldPassword; the volume key stays.
    KVImageResult changePassword(const KVSecureBytes &oldPassword, const KVSecureBytes &newPassword,
                                 const KVKeyDerivation &derivation);
    // Destroys every keyslot: afterwards no password opens the image.
    KVImageResult eraseKeys();

    KVImageGeometry geometry() const;
    QString uuid() const;
    // The full volume name: kept in a token of our own, because the header
    // label (and ext4's) is too short for it.
    QString volumeName() const;
    // Gives the volume a new name: the header label (cut to what it holds)
    // and the full name in our token.
    KVImageResult setVolumeName(const QString &name);
    // The name in one of the header's tokens (JSON text), when it is our
    // volume-name token.
    static std::optional<QString> volumeNameFromToken(const QByteArray &json);

    static KVSecureBytes newVolumeKey(int size);

private:
    KVImageError passwordRefused() const;
    KVImageResult openDevice();
    QList<int> usedKeyslots() const;

    QString m_path;
    crypt_device *m_cd = nullptr;
};

} // namespace kvlinux
