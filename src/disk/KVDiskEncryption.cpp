#include "KVDiskEncryption.h"

#include "model/KVLocalization.h"
#include "tools/KVToolRun.h"

KVDiskEncryption::KVDiskEncryption(QString disk, std::optional<KVSecret> passphrase)
    : m_arguments{QStringLiteral("cs"), QStringLiteral("convert"), std::move(disk)}
{
    if (passphrase) {
        m_arguments.append(QStringLiteral("-stdinpassphrase"));
        m_passphrase = std::make_shared<KVSecret>(std::move(*passphrase));
    }
}

void KVDiskEncryption::run(const QString &diskutil, const ProgressBlock &block)
{
    KVToolRun run(diskutil, m_arguments, KVLocalization::tr("Encrypting Disk failed"),
                  KVLocalization::tr("diskutil cs ended abnormally."));
    if (m_passphrase) {
        run.setStandardInput(std::move(*m_passphrase));
        m_passphrase.reset();
    }
    // diskutil may print an error's number on a line after the error itself:
    // the number is looked for in everything that arrived with the line.
    const KVOptionalError error = run.runLineStream([&](const QString &line, QStringView chunkFromLine) {
        if (line.contains(u"Could not find disk"))
            run.fail(KVLocalization::tr("Could not find disk"), KVAppErrorCode::DiskNotFound);
        if (line.contains(u"Error converting")) {
            if (chunkFromLine.contains(u"(-69756)"))
                run.fail(KVLocalization::tr("The given file system is not supported on Core Storage"),
                         KVAppErrorCode::FileSystemNotSupported);
            else if (chunkFromLine.contains(u"(-69753)"))
                run.fail(KVLocalization::tr("The target disk is already in use by Core Storage"),
                         KVAppErrorCode::DiskInUseByCoreStorage);
            else
                run.fail(kvLocalized(chunkFromLine.toString()), KVAppErrorCode::ToolMessage);
        }
        block(line, false, std::nullopt);
    });
    block(std::nullopt, true, error);
}
