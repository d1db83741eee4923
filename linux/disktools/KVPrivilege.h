#pragma once

#include "KVToolOutput.h"

#include <QStringList>

namespace kvlinux {

// Disk verbs need root. Run by an ordinary user, a program asks for it
// through pkexec (polkit shows its own dialog) and otherwise says in one line
// why it cannot go on; it never waits for an answer that cannot come.
//
// pkexec looks for the polkit action whose "org.freedesktop.policykit.exec.path"
// annotation names the installed diskutil; the package ships it as
// "org.korvelle.disks.manage" (see polkit-action.md). Without it, pkexec
// falls back to its generic "run a program as another user" action.
class KVPrivilege
{
public:
    // Replaces this process with "pkexec PROGRAM ARGUMENTS" (standard input
    // and output stay, so a passphrase on standard input reaches the new
    // process). Returns the exit status only when that is impossible.
    static int runAsAdministrator(const QString &program, const QStringList &arguments, const KVToolOutput &out);
};

} // namespace kvlinux
