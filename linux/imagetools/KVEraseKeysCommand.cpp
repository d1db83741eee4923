#include "KVEraseKeysCommand.h"

#include "KVLuksImage.h"

#include <QFileInfo>

namespace kvlinux {

int KVEraseKeysCommand::run(const KVHdiutilArguments &arguments)
{
    KVImageResult error;
    if (arguments.operands().size() != 1) {
        error = KVImageError(KVImageError::InvalidArgument);
    } else {
        KVLuksImage image(QFileInfo(arguments.operands().first()).absoluteFilePath());
        error = image.load();
        if (!error)
            error = image.eraseKeys();
    }
    if (!error)
        return 0;
    m_out.result(QStringLiteral("erasekeys"), error->code(), {2});
    m_out.error(QStringLiteral("hdiutil: erasekeys failed - ") + error->reason());
    return 1;
}

} // namespace kvlinux
