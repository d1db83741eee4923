#pragma once

#include "KVDiskInventory.h"
#include "KVKeyDerivation.h"
#include "KVToolOutput.h"

#include <QString>

#include <optional>

namespace kvlinux {

// What the disk verbs need from the place they run in.
struct KVDiskEnvironment
{
    KVKeyDerivation derivation = KVKeyDerivation::libraryDefault();
    QString imagefs;   // the daemon that serves an opened volume
    QString converter; // the program that converts in the background
};

// "cs convert DISK -stdinpassphrase": encrypts an ext4 partition in place.
// The command checks the partition, makes room for the header, writes it and
// hands the conversion of the data to a background process (diskconvert),
// which survives the command, reports its progress for "cs list" and mounts
// the volume when it is done. Without device-mapper the volume stays
// unmounted while it is converted.
class KVDiskConversion
{
public:
    KVDiskConversion(const KVDiskEnvironment &environment, KVToolOutput &out);

    int convert(const QString &disk, const std::optional<KVSecureBytes> &passphrase);
    // "cs revert UUID -stdinpassphrase": decrypts an encrypted partition in
    // place, offline as well; the volume is closed first and its plain file
    // system mounted again when the background process is done.
    int revert(const KVEncryptedVolume &volume, const std::optional<KVSecureBytes> &passphrase);

    // The background process's work: converts what is left of the partition
    // (a conversion killed half way resumes here) and mounts the result:
    // the encrypted volume, or after a decryption the plain file system,
    // grown back over the room the header had.
    static int runConverter(const QString &device, const QString &imagefs);
    // Starts a converter again for every conversion whose process is gone.
    static void resumeInterrupted(const QList<KVEncryptedVolume> &volumes, const QString &converter);

    static QString keyDescription(const QString &luksUuid);

private:
    // Its standard error goes to the conversion's log.
    static bool startConverter(const QString &state, const QString &luksUuid, const QString &device,
                               const QString &converter);
    bool startConverter(const QString &state, const QString &luksUuid, const QString &device) const;
    int fail(const QString &reason, int code) const;
    int failRevert(const QString &reason, int code = -69845) const;
    // The converter's last word, for the conversion's log.
    static int stopped(const QString &why);
    static int finishDecryption(const KVBlockDevice &partition, const QString &volumeName);

    const KVDiskEnvironment &m_environment;
    KVToolOutput &m_out;
};

} // namespace kvlinux
