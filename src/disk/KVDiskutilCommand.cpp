#include "KVDiskutilCommand.h"

#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"

namespace {

using Failure = KVDiskutilCommand::Failure;
using Verdict = KVDiskutilCommand::Verdict;

const QString StandardInputPassphrase = QStringLiteral("-stdinpassphrase");
const QString FinishedText = QStringLiteral("Finished CoreStorage operation");

std::optional<Failure> failure(const QString &message, KVAppErrorCode code)
{
    return Failure{message, code};
}

// Text diskutil printed that no table row knows: shown as it stands.
std::optional<Failure> toolText(const QString &output)
{
    return Failure{kvLocalized(output), KVAppErrorCode::ToolMessage};
}

// The CoreStorage verbs report "Finished CoreStorage operation" when they
// succeed. The passphrase change keeps the unlock's "not locked" row although
// the volume it re-keys is normally unlocked.
Verdict coreStorageVerdict(QString wrongPassphraseText)
{
    return [wrongPassphraseText](const QString &output) -> std::optional<Failure> {
        if (output.contains(FinishedText))
            return std::nullopt;
        if (output.contains(wrongPassphraseText))
            return failure(KVLocalization::tr("Wrong Password"), KVAppErrorCode::WrongPassword);
        if (output.contains(u"is not a CoreStorage Logical Volume UUID"))
            return failure(KVLocalization::tr("Disk doesn't exist"), KVAppErrorCode::DiskNotFound);
        if (output.contains(u"The target Core Storage volume is not locked"))
            return failure(KVLocalization::tr("The Disk is not locked"), KVAppErrorCode::VolumeNotLocked);
        return toolText(output);
    };
}

// mount and eject print one line, "Volume NAME on DISK mounted" or
// "Disk /dev/DISK ejected".
Verdict announcedVerdict(QString first, QString last)
{
    return [first, last](const QString &output) -> std::optional<Failure> {
        if (output.startsWith(first) && output.endsWith(last))
            return std::nullopt;
        if (output.contains(u"Unable to find disk"))
            return failure(KVLocalization::tr("Disk doesn't exist"), KVAppErrorCode::DiskNotFound);
        return toolText(output);
    };
}

QStringList withPassphraseSwitch(QStringList arguments, const std::optional<KVSecret> &passphrase)
{
    if (passphrase)
        arguments.append(StandardInputPassphrase);
    return arguments;
}

} // namespace

KVDiskutilCommand::KVDiskutilCommand(QStringList arguments, std::optional<KVSecret> standardInput, const char *title,
                                     const char *abnormalEndText, Output output, Verdict verdict)
    : m_arguments(std::move(arguments))
    , m_standardInput(standardInput ? std::make_shared<KVSecret>(std::move(*standardInput)) : nullptr)
    , m_title(title)
    , m_abnormalEndText(abnormalEndText)
    , m_output(output)
    , m_verdict(std::move(verdict))
{
}

KVDiskutilCommand KVDiskutilCommand::revert(const QString &logicalVolumeUUID, std::optional<KVSecret> passphrase)
{
    QStringList arguments =
        withPassphraseSwitch({QStringLiteral("cs"), QStringLiteral("revert"), logicalVolumeUUID}, passphrase);
    return KVDiskutilCommand(std::move(arguments), std::move(passphrase),
                             QT_TRANSLATE_NOOP("Korvelle", "Decrypting failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil ended abnormally."), Output::AsPrinted,
                             [](const QString &output) -> std::optional<Failure> {
                                 if (output.contains(FinishedText))
                                     return std::nullopt;
                                 if (output.contains(u"Unable to unlock the Core Storage volume")
                                     || output.contains(u"no passphrase specified"))
                                     return failure(KVLocalization::tr("Wrong Password"),
                                                    KVAppErrorCode::WrongPassword);
                                 if (output.contains(u"Unable to find disk"))
                                     return failure(KVLocalization::tr("Disk doesn't exist"),
                                                    KVAppErrorCode::DiskNotFound);
                                 return toolText(output);
                             });
}

KVDiskutilCommand KVDiskutilCommand::unlockVolume(const QString &logicalVolumeUUID, std::optional<KVSecret> passphrase)
{
    QStringList arguments =
        withPassphraseSwitch({QStringLiteral("cs"), QStringLiteral("unlockVolume"), logicalVolumeUUID}, passphrase);
    return KVDiskutilCommand(std::move(arguments), std::move(passphrase),
                             QT_TRANSLATE_NOOP("Korvelle", "Unlocking Disk failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil cs ended abnormally."), Output::AsPrinted,
                             coreStorageVerdict(QStringLiteral("-69749")));
}

KVDiskutilCommand KVDiskutilCommand::mount(const QString &logicalVolumeUUID)
{
    return KVDiskutilCommand({QStringLiteral("mount"), logicalVolumeUUID}, std::nullopt,
                             QT_TRANSLATE_NOOP("Korvelle", "Mounting Disk failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil mount ended abnormally."), Output::Trimmed,
                             announcedVerdict(QStringLiteral("Volume"), QStringLiteral("mounted")));
}

// eject and rename report an abnormal end in the words of mount.
KVDiskutilCommand KVDiskutilCommand::eject(const QString &diskIdentifier)
{
    return KVDiskutilCommand({QStringLiteral("eject"), QStringLiteral("/dev/") + diskIdentifier}, std::nullopt,
                             QT_TRANSLATE_NOOP("Korvelle", "Unmounting (eject) Disk failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil mount ended abnormally."), Output::Trimmed,
                             announcedVerdict(QStringLiteral("Disk"), QStringLiteral("ejected")));
}

KVDiskutilCommand KVDiskutilCommand::rename(const QString &mountPoint, const QString &newName)
{
    return KVDiskutilCommand({QStringLiteral("rename"), mountPoint, newName}, std::nullopt,
                             QT_TRANSLATE_NOOP("Korvelle", "Renaming Volume failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil mount ended abnormally."), Output::AsPrinted,
                             [](const QString &output) -> std::optional<Failure> {
                                 if (output.startsWith(u"Volume on") && output.contains(u"renamed to"))
                                     return std::nullopt;
                                 if (output.contains(u"Could not find disk for"))
                                     return failure(KVLocalization::tr("Disk doesn't exist"),
                                                    KVAppErrorCode::DiskNotFound);
                                 if (output.contains(u"does not appear to be a valid volume name for its file system"))
                                     return failure(KVLocalization::tr("This is not a valid volume name"),
                                                    KVAppErrorCode::InvalidVolumeName);
                                 return toolText(output);
                             });
}

KVDiskutilCommand KVDiskutilCommand::changeVolumePassphrase(const QString &logicalVolumeUUID,
                                                          std::optional<KVSecret> oldAndNew)
{
    QStringList arguments = withPassphraseSwitch(
        {QStringLiteral("cs"), QStringLiteral("changeVolumePassphrase"), logicalVolumeUUID}, oldAndNew);
    return KVDiskutilCommand(std::move(arguments), std::move(oldAndNew),
                             QT_TRANSLATE_NOOP("Korvelle", "Changing password failed"),
                             QT_TRANSLATE_NOOP("Korvelle", "diskutil ended abnormally."), Output::AsPrinted,
                             coreStorageVerdict(QStringLiteral("Unable to change the Core Storage passphrase")));
}

KVOptionalError KVDiskutilCommand::run(const QString &diskutil)
{
    KVToolRun run(diskutil, m_arguments, kvLocalized(m_title), kvLocalized(m_abnormalEndText));
    if (m_standardInput) {
        run.setStandardInput(std::move(*m_standardInput));
        m_standardInput.reset();
    }
    return run.runWholeOutput([&](const QByteArray &bytes) {
        QString output = QString::fromUtf8(bytes);
        if (m_output == Output::Trimmed)
            output = output.trimmed();
        if (std::optional<Failure> failure = m_verdict(output))
            run.fail(failure->message, failure->code);
    });
}
