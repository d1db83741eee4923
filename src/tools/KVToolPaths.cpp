#include "KVToolPaths.h"

#include <QCoreApplication>
#include <QDir>

KVToolPaths KVToolPaths::defaults()
{
#ifdef Q_OS_MACOS
    return {QStringLiteral("/usr/bin/hdiutil"), QStringLiteral("/usr/sbin/diskutil"),
            QStringLiteral("/usr/sbin/system_profiler")};
#else
    return besideApplicationIn(QCoreApplication::applicationDirPath());
#endif
}

KVToolPaths KVToolPaths::besideApplicationIn(const QString &binDir)
{
    // bin/korvelle and libexec/korvelle/* sit side by side both in the build
    // tree and once installed.
    const QDir tools(binDir + QStringLiteral("/../libexec/korvelle"));
    return {QDir::cleanPath(tools.filePath(QStringLiteral("hdiutil"))),
            QDir::cleanPath(tools.filePath(QStringLiteral("diskutil"))),
            QDir::cleanPath(tools.filePath(QStringLiteral("system_profiler")))};
}
