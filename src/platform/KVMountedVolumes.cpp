#include "KVMountedVolumes.h"

#include <QFile>

namespace {

bool isOctalDigit(char c)
{
    return c >= '0' && c <= '7';
}

// The mount table writes blanks, tabs, newlines and backslashes in paths as a
// backslash and three octal digits.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray path;
    path.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctalDigit(field[i + 1])
            && isOctalDigit(field[i + 2]) && isOctalDigit(field[i + 3])) {
            path.append(char((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0')));
            i += 3;
        } else {
            path.append(field[i]);
        }
    }
    return path;
}

} // namespace

namespace KVMountedVolumes {

QStringList paths()
{
    QFile mountInfo(QStringLiteral("/proc/self/mountinfo"));
    if (!mountInfo.open(QIODevice::ReadOnly))
        return {};
    return parseMountInfo(mountInfo.readAll());
}

QStringList parseMountInfo(const QByteArray &text)
{
    // "36 35 98:0 /root /mount/point options ... - type source options":
    // the mount point is the fifth field.
    constexpr int MountPointField = 4;
    QStringList paths;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() > MountPointField && !fields.at(MountPointField).isEmpty())
            paths.append(QFile::decodeName(unescaped(fields.at(MountPointField))));
    }
    return paths;
}

} // namespace KVMountedVolumes
