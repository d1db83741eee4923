// diskutil for Linux: "diskutil info -plist" for the volumes of attached
// images, as Korvelle asks for them on macOS.

#include "KVDiskutil.h"

#include <QCoreApplication>

using namespace kvlinux;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    return KVDiskutil().run(app.arguments().mid(1));
}
