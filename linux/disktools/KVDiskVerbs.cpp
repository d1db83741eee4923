#include "KVDiskVerbs.h"

#include "KVCoreStorageListing.h"
#include "KVExt4.h"
#include "KVExternalCommand.h"
#include "KVKeyringSecret.h"
#include "KVLuksImage.h"
#include "tools/KVPropertyList.h"
#include "KVVolumeAccess.h"

#include <QFileInfo>

#include <algorithm>
#include <unistd.h>

namespace kvlinux {

namespace {

constexpr size_t maxPassphraseBytes = 64 * 1024;
const QString passphraseSwitch = QStringLiteral("-stdinpassphrase");
const QString notAVolume = QStringLiteral("Error: -69742: The given UUID is not a CoreStorage Logical Volume UUID");
const QString notLocked = QStringLiteral("Error: -69748: The target Core Storage volume is not locked");

bool isCoreStorage(const QString &verb)
{
    return verb == QLatin1String("cs") || verb == QLatin1String("coreStorage") || verb == QLatin1String("corestorage");
}

} // namespace

KVDiskVerbs::KVDiskVerbs(KVDiskEnvironment environment, KVToolOutput &out)
    : m_environment(std::move(environment)), m_out(out)
{
}

QList<KVEncryptedVolume> KVDiskVerbs::volumes(int *unreadable) const
{
    // Every run of the programs picks up conversions that lost their process.
    QList<KVEncryptedVolume> found = m_inventory.encryptedVolumes(unreadable);
    KVDiskConversion::resumeInterrupted(found, m_environment.converter);
    return found;
}

bool KVDiskVerbs::needsRoot(const QStringList &arguments)
{
    const QString verb = arguments.value(0);
    if (isCoreStorage(verb)) {
        const QString action = arguments.value(1);
        return action != QLatin1String("list") && action != QLatin1String("info");
    }
    return verb == QLatin1String("mount") || verb == QLatin1String("eject");
}

bool KVDiskVerbs::handles(const QStringList &arguments) const
{
    QStringList rest = arguments;
    rest.removeAll(QStringLiteral("-plist"));
    const QString verb = rest.value(0);
    if (isCoreStorage(verb) || verb == QLatin1String("mount") || verb == QLatin1String("eject"))
        return true;
    if (verb == QLatin1String("info") && rest.size() == 2)
        return m_inventory.findEncrypted(rest.at(1)).has_value();
    if (verb == QLatin1String("rename") && rest.size() == 3) {
        const auto volume = m_inventory.findEncrypted(rest.at(1));
        return volume && volume->isMounted();
    }
    return false;
}

int KVDiskVerbs::run(const QStringList &arguments)
{
    QStringList rest = arguments;
    const bool plist = rest.removeAll(QStringLiteral("-plist")) > 0;
    const QString verb = rest.value(0);
    if (isCoreStorage(verb))
        return coreStorage(rest.mid(1), plist);
    if (verb == QLatin1String("info") && rest.size() == 2)
        return info(rest.at(1), plist);
    if (verb == QLatin1String("mount") && rest.size() == 2)
        return mount(rest.at(1));
    if (verb == QLatin1String("eject") && rest.size() == 2)
        return eject(rest.at(1));
    if (verb == QLatin1String("rename") && rest.size() == 3)
        return rename(rest.at(1), rest.at(2));
    m_out.error(QStringLiteral("Usage:  diskutil <verb> <options>"));
    return 1;
}

int KVDiskVerbs::coreStorage(const QStringList &arguments, bool plist)
{
    QStringList rest = arguments;
    const bool withPassphrase = rest.removeAll(passphraseSwitch) > 0;
    const QString action = rest.value(0);
    const QString operand = rest.value(1);
    if (action == QLatin1String("list") && rest.size() == 1)
        return list(plist);
    if (action == QLatin1String("info") && rest.size() == 2)
        return csInfo(operand);
    if (action == QLatin1String("convert") && rest.size() == 2)
        return KVDiskConversion(m_environment, m_out).convert(operand, readPassphrase(withPassphrase));
    if (action == QLatin1String("revert") && rest.size() == 2)
        return revert(operand, withPassphrase);
    if (action == QLatin1String("unlockVolume") && rest.size() == 2)
        return unlock(operand, withPassphrase);
    if (action == QLatin1String("changeVolumePassphrase") && rest.size() == 2)
        return changePassphrase(operand, withPassphrase);
    m_out.error(QStringLiteral("Usage:  diskutil coreStorage <verb> <options>\n"
                               "where <verb> is one of: list info convert revert unlockVolume changeVolumePassphrase"));
    return 1;
}

std::optional<KVSecureBytes> KVDiskVerbs::readPassphrase(bool withPassphrase) const
{
    if (!withPassphrase)
        return std::nullopt;
    KVSecureBytes passphrase;
    if (!KVSecureBytes::readAll(STDIN_FILENO, maxPassphraseBytes, passphrase))
        return std::nullopt;
    return passphrase;
}

int KVDiskVerbs::list(bool plist)
{
    int unreadable = 0;
    const QList<KVEncryptedVolume> found = volumes(&unreadable);
    if (plist) {
        m_out.data(KVPropertyList::encodeXml(KVCoreStorageListing::plist(found)));
        return 0;
    }
    for (const QString &line : KVCoreStorageListing::text(found))
        m_out.line(line);
    // Said once, to a person: the property list stays what it is.
    if (unreadable > 0)
        m_out.line((unreadable == 1 ? QStringLiteral("1 partition could not be read")
                                    : QStringLiteral("%1 partitions could not be read").arg(unreadable))
                   + QStringLiteral(" without administrator rights; encrypted volumes on them are not listed"));
    return 0;
}

int KVDiskVerbs::csInfo(const QString &uuid)
{
    for (const KVEncryptedVolume &volume : volumes()) {
        const QString asked = uuid.toUpper();
        if (asked == volume.groupUuid() || asked == volume.familyUuid() || asked == volume.physicalVolumeUuid()
            || asked == volume.logicalVolumeUuid()) {
            m_out.data(KVPropertyList::encodeXml(KVCoreStorageListing::info(volume, uuid)));
            return 0;
        }
    }
    m_out.error(uuid + QStringLiteral(" is not a CoreStorage disk"));
    return 1;
}

int KVDiskVerbs::info(const QString &identifier, bool plist)
{
    const auto volume = m_inventory.findEncrypted(identifier);
    if (!volume) {
        m_out.error(QStringLiteral("Could not find disk: ") + identifier);
        return 1;
    }
    const QVariantMap info = KVCoreStorageListing::diskInfo(*volume, identifier);
    if (plist) {
        m_out.data(KVPropertyList::encodeXml(info));
        return 0;
    }
    for (auto it = info.cbegin(); it != info.cend(); ++it)
        m_out.line(QStringLiteral("   %1 %2").arg(it.key() + QLatin1Char(':'), -34).arg(it.value().toString()));
    return 0;
}

int KVDiskVerbs::unlock(const QString &uuid, bool withPassphrase)
{
    const auto volume = m_inventory.findEncrypted(uuid);
    if (!volume) {
        m_out.error(notAVolume);
        return 1;
    }
    auto passphrase = readPassphrase(withPassphrase);
    if (!passphrase)
        passphrase.emplace();
    m_out.line(QStringLiteral("Started CoreStorage operation"));
    if (volume->isConverting()) {
        // A conversion that lost its passphrase (a reboot) goes on with this one.
        KVLuksPartition header(volume->partition.node(), volume->detachedHeader);
        if (header.load() || header.verify(*passphrase)) {
            m_out.error(QStringLiteral("Error: -69749: Unable to unlock the Core Storage volume"));
            return 1;
        }
        KVKeyringSecret(KVDiskConversion::keyDescription(volume->luksUuid)).store(*passphrase);
        KVDiskConversion::resumeInterrupted({*volume}, m_environment.converter);
        m_out.error(notLocked);
        return 1;
    }
    if (!volume->isLocked()) {
        m_out.error(notLocked);
        return 1;
    }
    KVAttachment record;
    if (auto error = KVVolumeAccess(m_environment.imagefs)
                         .open(*volume, *passphrase, KVVolumeAccess::defaultMountRoot(), record)) {
        if (error->code() == KVImageError::Authentication)
            m_out.error(QStringLiteral("Error: -69749: Unable to unlock the Core Storage volume"));
        else
            m_out.error(QStringLiteral("Error: -69842: Couldn't mount disk (%1)").arg(error->reason()));
        return 1;
    }
    const QString disk = QFileInfo(record.loopDevice).fileName();
    m_out.line(QStringLiteral("Logical Volume successfully unlocked"));
    m_out.line(QStringLiteral("Logical Volume successfully attached as ") + disk);
    m_out.line(QStringLiteral("Logical Volume successfully mounted as ") + record.mountPoint);
    m_out.line(QStringLiteral("Core Storage disk: ") + disk);
    m_out.line(QStringLiteral("Finished CoreStorage operation"));
    return 0;
}

int KVDiskVerbs::revert(const QString &uuid, bool withPassphrase)
{
    const auto volume = m_inventory.findEncrypted(uuid);
    if (!volume) {
        m_out.error(QStringLiteral("Unable to find disk for ") + uuid);
        return 1;
    }
    return KVDiskConversion(m_environment, m_out).revert(*volume, readPassphrase(withPassphrase));
}

int KVDiskVerbs::changePassphrase(const QString &uuid, bool withPassphrase)
{
    const auto volume = m_inventory.findEncrypted(uuid);
    if (!volume) {
        m_out.error(notAVolume);
        return 1;
    }
    auto both = readPassphrase(withPassphrase);
    if (!both)
        both.emplace();
    // "old\nnew": the old passphrase ends at the first line feed.
    const std::string_view text = both->view();
    const size_t split = text.find('\n');
    const KVSecureBytes oldPassphrase(text.data(), split == std::string_view::npos ? text.size() : split);
    const KVSecureBytes newPassphrase = split == std::string_view::npos
        ? KVSecureBytes()
        : KVSecureBytes(text.data() + split + 1, text.size() - split - 1);
    both.reset();
    m_out.line(QStringLiteral("Started CoreStorage operation"));
    if (volume->isConverting()) {
        m_out.error(QStringLiteral("Error: -69845: The volume is being converted; change its passphrase when the conversion has finished"));
        return 1;
    }
    if (newPassphrase.isEmpty()) {
        m_out.error(QStringLiteral("Error: -69845: The new passphrase must not be empty"));
        return 1;
    }
    KVLuksImage header(volume->partition.node());
    KVImageResult error = header.load();
    if (!error)
        error = header.changePassword(oldPassphrase, newPassphrase, m_environment.derivation);
    if (error) {
        m_out.error(error->code() == KVImageError::Authentication
                        ? QStringLiteral("Error: -69749: Unable to change the Core Storage passphrase")
                        : QStringLiteral("Error: -69845: ") + error->reason());
        return 1;
    }
    m_out.line(QStringLiteral("Finished CoreStorage operation"));
    return 0;
}

int KVDiskVerbs::mount(const QString &uuid)
{
    const auto volume = m_inventory.findEncrypted(uuid);
    if (!volume) {
        m_out.error(QStringLiteral("Unable to find disk for ") + uuid);
        return 1;
    }
    if (!volume->isMounted()) {
        m_out.error(QStringLiteral("Error mounting disk: the volume %1 is locked; unlock it with its passphrase").arg(volume->name));
        return 1;
    }
    m_out.line(QStringLiteral("Volume %1 on %2 mounted").arg(volume->name, volume->logicalDisk()));
    return 0;
}

int KVDiskVerbs::eject(const QString &device)
{
    const auto volume = m_inventory.findEncrypted(device);
    if (!volume) {
        m_out.error(QStringLiteral("Unable to find disk for ") + device);
        return 1;
    }
    if (volume->isConverting()) {
        m_out.error(QStringLiteral("Unmount of %1 failed: the volume is being converted").arg(device));
        return 1;
    }
    if (auto error = KVVolumeAccess(m_environment.imagefs).close(*volume)) {
        m_out.error(QStringLiteral("Unmount of %1 failed: at least one volume could not be unmounted (%2)")
                        .arg(device, error->reason()));
        return 1;
    }
    m_out.line(QStringLiteral("Disk %1 ejected").arg(device));
    return 0;
}

int KVDiskVerbs::rename(const QString &mountPoint, const QString &name)
{
    const auto volume = m_inventory.findEncrypted(mountPoint);
    if (!volume || !volume->isMounted()) {
        m_out.error(QStringLiteral("Could not find disk for ") + mountPoint);
        return 1;
    }
    const bool valid = !name.trimmed().isEmpty() && !name.contains(QLatin1Char('/'))
        && std::none_of(name.cbegin(), name.cend(), [](QChar c) { return c.category() == QChar::Other_Control; });
    if (!valid) {
        m_out.error(QStringLiteral("%1 does not appear to be a valid volume name for its file system").arg(name));
        return 1;
    }
    const auto result = KVExternalCommand::run(QStringLiteral("e2label"),
                                               {volume->unlocked->record.loopDevice, KVExt4::labelFor(name)});
    KVLuksPartition header(volume->partition.node());
    const bool labelled = !header.load() && !header.setLabel(name);
    if (result.exitCode != 0 || !labelled) {
        m_out.error(QStringLiteral("Failed to rename volume on %1").arg(volume->logicalDisk()));
        return 1;
    }
    m_out.line(QStringLiteral("Volume on %1 renamed to %2").arg(volume->logicalDisk(), name));
    return 0;
}

} // namespace kvlinux
