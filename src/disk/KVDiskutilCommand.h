#pragma once

#include "model/KVAppError.h"
#include "tools/KVSecret.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

// One diskutil command on one volume whose printed output alone decides how it
// went: success when the output shows the command's success text, otherwise
// the failure that the command's table gives for what it printed. An exit
// status of 0 without the success text is a failure too.
//
// A command is made on the GUI thread, with the passphrase already turned into
// its secret bytes, and run once on an engine's worker thread.
class KVDiskutilCommand
{
public:
    struct Failure
    {
        QString message;
        KVAppErrorCode code = KVAppErrorCode::ToolMessage;
    };
    // Reads the output: nothing for success, or the failure it shows.
    using Verdict = std::function<std::optional<Failure>(const QString &output)>;

    // Turns an encrypted volume back into a plain one.
    static KVDiskutilCommand revert(const QString &logicalVolumeUUID, std::optional<KVSecret> passphrase);
    static KVDiskutilCommand unlockVolume(const QString &logicalVolumeUUID, std::optional<KVSecret> passphrase);
    static KVDiskutilCommand mount(const QString &logicalVolumeUUID);
    static KVDiskutilCommand eject(const QString &diskIdentifier);
    static KVDiskutilCommand rename(const QString &mountPoint, const QString &newName);
    // `oldAndNew`: the old passphrase, a line feed, the new one.
    static KVDiskutilCommand changeVolumePassphrase(const QString &logicalVolumeUUID, std::optional<KVSecret> oldAndNew);

    const QStringList &arguments() const { return m_arguments; }

    // Runs diskutil on the calling thread; the passphrase is wiped once written.
    KVOptionalError run(const QString &diskutil);

private:
    enum class Output { AsPrinted, Trimmed };

    KVDiskutilCommand(QStringList arguments, std::optional<KVSecret> standardInput, const char *title,
                      const char *abnormalEndText, Output output, Verdict verdict);

    QStringList m_arguments;
    // Shared so that a command can be captured by a queued operation; the one
    // buffer is still wiped after its single write.
    std::shared_ptr<KVSecret> m_standardInput;
    const char *m_title;
    const char *m_abnormalEndText;
    Output m_output;
    Verdict m_verdict;
};
