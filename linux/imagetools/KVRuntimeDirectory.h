#pragma once

#include <QString>

#include <optional>

namespace kvlinux {

// The per-user directory where the programs keep what is attached now:
// $XDG_RUNTIME_DIR/korvelle, or where there is none, /run/korvelle for root
// and /tmp/korvelle-UID for others. It must belong to the user and be closed
// to everybody else; a directory that fails this check is not used.
class KVRuntimeDirectory
{
public:
    static std::optional<QString> locate();

private:
    static bool ensurePrivateDirectory(const QString &path);
};

} // namespace kvlinux
