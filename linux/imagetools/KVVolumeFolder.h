#pragma once

#include <QString>

#include <functional>

namespace kvlinux {

// The folder a volume is mounted on, named after the volume the way macOS
// names folders in /Volumes: "Name", then "Name 1", "Name 2"... when taken.
class KVVolumeFolder
{
public:
    // Creates the folder under root; empty when it cannot. claim(candidate)
    // runs before each attempt to make a folder, so that the caller records
    // it before it exists: a run killed in between leaves a record of a
    // folder that is not there (or not ours, and then in use or not empty,
    // which removal refuses), never a folder that no record names.
    static QString create(const QString &root, const QString &volumeName,
                          const std::function<void(const QString &candidate)> &claim);
    // The name a volume's folder gets: no slashes, never empty or "."/"..".
    static QString folderName(const QString &volumeName);
    // Writes back the file system mounted on the folder (syncfs).
    static void flush(const QString &folder);
};

} // namespace kvlinux
