#pragma once

#include <QString>

#include <optional>

// Facts about the file system that holds a path.
namespace KVFileSystemInfo {

// Bytes available to the user, or nothing when the path cannot be examined.
std::optional<qint64> freeSpace(const QString &path);

} // namespace KVFileSystemInfo
