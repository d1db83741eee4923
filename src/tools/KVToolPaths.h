#pragma once

#include <QString>

// Where the disk tools are. Fixed at build time: the system's own tools on
// macOS; on Linux, Korvelle's programs installed beside the application.
struct KVToolPaths
{
    QString hdiutil;
    QString diskutil;
    QString systemProfiler;

    static KVToolPaths defaults();
    // Linux: the programs of an application whose executable is in binDir.
    static KVToolPaths besideApplicationIn(const QString &binDir);
};
