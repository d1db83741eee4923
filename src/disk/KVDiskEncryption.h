#pragma once

#include "model/KVAppError.h"
#include "tools/KVSecret.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

// Starts the conversion of a partition into an encrypted CoreStorage volume
// (`diskutil cs convert`) and hands on what diskutil prints, line by line, so
// that the caller can show the stages. The conversion itself then goes on in
// the background.
class KVDiskEncryption
{
public:
    // Called with every line (finished false, no error), then once with no
    // line, finished true and the error or nothing.
    using ProgressBlock = std::function<void(const std::optional<QString> &line, bool finished, const KVOptionalError &error)>;

    // `disk` is the partition's identifier, passed as it stands. Without a
    // passphrase diskutil asks for none on its standard input.
    KVDiskEncryption(QString disk, std::optional<KVSecret> passphrase);

    const QStringList &arguments() const { return m_arguments; }

    // Runs diskutil on the calling thread; the passphrase is wiped once written.
    void run(const QString &diskutil, const ProgressBlock &block);

private:
    QStringList m_arguments;
    // Shared so that the encryption can be captured by a queued operation.
    std::shared_ptr<KVSecret> m_passphrase;
};
