#pragma once

#include <QString>

namespace kvlinux {

// The folder a volume is mounted on, named after the volume the way macOS
// names folders in /Volumes: "Name", then "Name 1", "Name 2"... when taken.
class KVVolumeFolder
{
public:
    // Creates the folder under root; empty when it cannot.
    static QString create(const QString &root, const QString &volumeName);
    // The name a volume's folder gets: no slashes, never empty or "."/"..".
    static QString folderName(const QString &volumeName);
    // Writes back the file system mounted on the folder (syncfs).
    static void flush(const QString &folder);
};

} // namespace kvlinux
