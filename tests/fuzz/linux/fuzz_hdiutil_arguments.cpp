// The Linux hdiutil's command line: arguments (separated by NUL bytes in the
// input) through the parser and every function that reads its values.

#include "KVExt4.h"
#include "KVHdiutilArguments.h"
#include "KVSizeArgument.h"
#include "KVVolumeFolder.h"
#include "KVVolumeName.h"

#include <QStringList>

#include <cstddef>
#include <cstdint>

using namespace kvlinux;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    QStringList arguments;
    for (const QByteArray &argument : input.split('\0'))
        arguments.append(QString::fromUtf8(argument));
    const KVHdiutilArguments parsed = KVHdiutilArguments::parse(arguments);
    (void)KVSizeArgument::parse(parsed.value(QStringLiteral("-size")));
    const QString name = KVVolumeName::sanitized(parsed.value(QStringLiteral("-volname")));
    if (name.contains(QChar(0)) || name.size() > KVVolumeName::maxLength)
        __builtin_trap();
    (void)KVVolumeFolder::folderName(name);
    (void)KVExt4::labelFor(name);
    for (const QString &operand : parsed.operands())
        (void)KVVolumeName::sanitized(operand);
    return 0;
}
