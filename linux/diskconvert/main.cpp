// diskconvert: converts one partition in place in the background, started by
// "diskutil cs convert" (and again by any run of the disk programs when a
// conversion has lost its process), and mounts the volume when it is done.
//
// diskconvert /dev/PARTITION

#include "KVDiskConversion.h"

#include <QCoreApplication>

#include <sys/prctl.h>
#include <sys/resource.h>

using namespace kvlinux;

int main(int argc, char **argv)
{
    // The passphrase and the volume keys are in this process's memory.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);

    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments().mid(1);
    if (arguments.size() != 1)
        return 2;
    return KVDiskConversion::runConverter(arguments.first(),
                                          QCoreApplication::applicationDirPath() + QStringLiteral("/imagefs"));
}
