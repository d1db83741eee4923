#pragma once

#include "KVDiskConversion.h"
#include "KVDiskInventory.h"
#include "KVToolOutput.h"

#include <QStringList>

#include <optional>

namespace kvlinux {

// diskutil's disk verbs for encrypted partitions: "cs list", "cs info",
// "cs convert", "cs unlockVolume", "cs changeVolumePassphrase", "mount",
// "eject", "rename" and "info" of a partition or logical volume. Texts are
// diskutil's, so that the application reads them as it does on macOS.
class KVDiskVerbs
{
public:
    KVDiskVerbs(KVDiskEnvironment environment, KVToolOutput &out);

    // Whether the command line is one of these verbs (for "info" and
    // "rename": whether it names one of our volumes).
    bool handles(const QStringList &arguments) const;
    // Returns the exit status.
    int run(const QStringList &arguments);

    // Verbs that change disks need root.
    static bool needsRoot(const QStringList &arguments);

private:
    int coreStorage(const QStringList &arguments, bool plist);
    int list(bool plist);
    int csInfo(const QString &uuid);
    int info(const QString &identifier, bool plist);
    int revert(const QString &uuid, bool withPassphrase);
    int unlock(const QString &uuid, bool withPassphrase);
    int changePassphrase(const QString &uuid, bool withPassphrase);
    int mount(const QString &uuid);
    int eject(const QString &device);
    int rename(const QString &mountPoint, const QString &name);

    std::optional<KVSecureBytes> readPassphrase(bool withPassphrase) const;
    QList<KVEncryptedVolume> volumes(int *unreadable = nullptr) const;

    KVDiskEnvironment m_environment;
    KVToolOutput &m_out;
    KVDiskInventory m_inventory;
};

} // namespace kvlinux
