#include "KVChpassCommand.h"

#include "KVLuksImage.h"
#include "KVSecureBytes.h"

#include <QFileInfo>

#include <cstring>

namespace kvlinux {

int KVChpassCommand::run(const KVHdiutilArguments &arguments)
{
    KVImageResult error = arguments.operands().size() == 1
        ? changePassword(QFileInfo(arguments.operands().first()).absoluteFilePath())
        : KVImageResult(KVImageError(KVImageError::InvalidArgument));
    if (!error)
        return 0;
    m_out.result(QStringLiteral("chpass"), error->code(), {80, 2});
    m_out.error(QStringLiteral("hdiutil: chpass failed - ") + error->reason());
    return 1;
}

KVImageResult KVChpassCommand::changePassword(const QString &imagePath)
{
    KVLuksImage image(imagePath);
    if (auto error = image.load())
        return error;
    const auto input = readPassword();
    const void *separator = input ? std::memchr(input->data(), 0, input->size()) : nullptr;
    if (!separator)
        return KVImageError(KVImageError::Authentication);
    const size_t oldSize = size_t(static_cast<const uint8_t *>(separator) - input->data());
    const KVSecureBytes oldPassword(input->chars(), oldSize);
    const KVSecureBytes newPassword(input->chars() + oldSize + 1, input->size() - oldSize - 1);
    return image.changePassword(oldPassword, newPassword, m_environment.derivation);
}

} // namespace kvlinux
