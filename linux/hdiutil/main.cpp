// hdiutil for Linux: the disk-image tool Korvelle runs, answering the command
// lines it sends to hdiutil on macOS with LUKS2 images.

#include "KVHdiutil.h"

#include <QCoreApplication>
#include <QDir>

#include <sys/prctl.h>
#include <sys/resource.h>

using namespace kvlinux;

int main(int argc, char **argv)
{
    // Passwords and volume keys pass through this process: no core dumps,
    // no ptrace by other processes of the user.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);

    QCoreApplication app(argc, argv);
    KVToolEnvironment environment;
#ifdef KV_CHEAP_KEY_DERIVATION
    environment.derivation = KVKeyDerivation::cheapForTests();
#endif
#ifdef KV_IMAGEFS_PATH
    environment.imagefs = QStringLiteral(KV_IMAGEFS_PATH);
#else
    environment.imagefs = QCoreApplication::applicationDirPath() + QStringLiteral("/imagefs");
#endif
    return KVHdiutil(environment).run(app.arguments().mid(1));
}
