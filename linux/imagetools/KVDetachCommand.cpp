#include "KVDetachCommand.h"

namespace kvlinux {

int KVDetachCommand::run(const KVHdiutilArguments &arguments)
{
    if (arguments.operands().size() != 1) {
        m_out.error(QStringLiteral("hdiutil: detach: only a single device name can be specified"));
        return 1;
    }
    const bool force = arguments.has(QStringLiteral("-force"));
    const auto entry = registry() ? attachedImages().find(arguments.operands().first())
                                  : std::nullopt;
    if (!entry) {
        m_out.result(QStringLiteral("detach"), KVImageError::NoSuchFile, {2});
        m_out.error(QStringLiteral("hdiutil: detach failed - No such file or directory"));
        return 1;
    }
    const KVAttachment &record = entry->record;
    const QString disk = record.wholeDisk();

    if (entry->mounted) {
        if (auto error = dataPath().unmount(record, force)) {
            m_out.error(QStringLiteral("hdiutil: couldn't unmount \"%1\" - %2").arg(disk, error->reason()));
            return error->code();
        }
        m_out.line(QStringLiteral("\"%1\" unmounted.").arg(disk));
    }
    if (auto error = dataPath().eject(record, force)) {
        m_out.error(QStringLiteral("hdiutil: couldn't eject \"%1\" - %2").arg(disk, error->reason()));
        return error->code();
    }
    {
        const auto lock = registry()->lock();
        registry()->remove(record);
    }
    m_out.line(QStringLiteral("\"%1\" ejected.").arg(disk));
    return 0;
}

} // namespace kvlinux
