#pragma once

#include <QString>

#include <optional>

// The kind of file system that holds a path, named the way the disk tools name
// it ("hfs" for HFS+ and for ext4, which stands in for it on Linux; whatever
// the kernel calls the others).
namespace KVFileSystemType {

// The type of the file system at `path`, or nothing when it cannot be examined.
std::optional<QString> ofPath(const QString &path);

// The name for a file system that statfs reports with `magic` and the mount
// table lists as `mountType`.
QString name(qint64 magic, const QString &mountType);

} // namespace KVFileSystemType
