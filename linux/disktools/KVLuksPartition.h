#pragma once

#include "KVImageError.h"
#include "KVKeyDerivation.h"
#include "KVSecureBytes.h"

#include <QString>

#include <functional>

struct crypt_device;

namespace kvlinux {

// The LUKS2 header of an encrypted partition and its in-place conversion,
// done in-process with libcryptsetup's re-encryption. Without device-mapper
// the conversion runs offline: nothing may use the partition meanwhile.
class KVLuksPartition
{
public:
    // Room for the header at the partition's start: the data moves up by
    // half of it, the file system gives up all of it.
    static constexpr quint64 headerRoom = 32 << 20;
    static constexpr quint64 dataOffset = headerRoom / 2;

    // detachedHeader: the file that holds the header while the partition is
    // decrypted (the data move over the header's place on the partition).
    explicit KVLuksPartition(QString node, QString detachedHeader = QString());
    ~KVLuksPartition();
    KVLuksPartition(const KVLuksPartition &) = delete;
    KVLuksPartition &operator=(const KVLuksPartition &) = delete;

    // A cheap look at the first bytes, without libcryptsetup: LUKS version 2.
    static bool hasHeader(const QString &node);

    KVImageResult load();
    QString uuid() const; // upper case, as CoreStorage prints UUIDs
    QString label() const;
    KVImageResult setLabel(const QString &label);

    enum class Conversion { None, Encrypting, Decrypting };
    Conversion conversion() const;

    // Writes a new header before the shrunk file system and marks the
    // partition for encryption; the data itself is converted by resume().
    // scratchHeader: a file for the header while it is being made.
    KVImageResult beginEncryption(const KVSecureBytes &passphrase, quint32 sectorSize,
                                  const QString &label, const KVKeyDerivation &derivation,
                                  const QString &scratchHeader);
    // Checks the passphrase against the keyslots; opens nothing.
    KVImageResult verify(const KVSecureBytes &passphrase) const;
    // Copies the loaded header to headerFile and marks the partition, through
    // that copy, for decryption: the data move down over the header's room.
    // Afterwards this object works on the copy. The data is converted by
    // resume().
    KVImageResult beginDecryption(const KVSecureBytes &passphrase, const QString &headerFile);
    // Converts what is left, recovering first from an interrupted run.
    // progress gets (bytes done, bytes in all); a false answer stops early.
    using Progress = std::function<bool(quint64 done, quint64 total)>;
    KVImageResult resume(const KVSecureBytes &passphrase, const Progress &progress);

private:
    QString m_node;
    QString m_detachedHeader;
    crypt_device *m_cd = nullptr;
};

} // namespace kvlinux
