// diskutil for Linux: "info [-plist]" for the volumes of attached images, and
// the disk verbs for encrypted partitions ("cs ...", "mount", "eject",
// "rename", "info"), as Korvelle asks for them on macOS.

#include "KVDiskVerbs.h"
#include "KVDiskutil.h"
#include "KVPrivilege.h"

#include <QCoreApplication>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace kvlinux;

int main(int argc, char **argv)
{
    // Passphrases pass through this process: no core dumps, no ptrace.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);

    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    const QString libexec = QCoreApplication::applicationDirPath();
    KVDiskEnvironment environment;
#ifdef KV_CHEAP_KEY_DERIVATION
    environment.derivation = KVKeyDerivation::cheapForTests();
#endif
#ifdef KV_LIBEXEC_DIR
    environment.imagefs = QStringLiteral(KV_LIBEXEC_DIR "/imagefs");
    environment.converter = QStringLiteral(KV_LIBEXEC_DIR "/diskconvert");
#else
    environment.imagefs = libexec + QStringLiteral("/imagefs");
    environment.converter = libexec + QStringLiteral("/diskconvert");
#endif
    KVToolOutput out;
    if (KVDiskVerbs::needsRoot(arguments) && geteuid() != 0)
        return KVPrivilege::runAsAdministrator(QCoreApplication::applicationFilePath(), arguments, out);
    KVDiskVerbs disks(environment, out);
    if (disks.handles(arguments))
        return disks.run(arguments);
    return KVDiskutil().run(arguments);
}
