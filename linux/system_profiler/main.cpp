// system_profiler for Linux: "system_profiler SPStorageDataType -xml", the
// storage report Korvelle reads on macOS to find volumes it may encrypt and
// the encrypted volumes that are open.

#include "KVDiskConversion.h"
#include "tools/KVPropertyList.h"
#include "KVStorageReport.h"

#include <QCoreApplication>

using namespace kvlinux;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QStringList arguments = app.arguments().mid(1);
    KVToolOutput out;
    const bool xml = arguments.removeAll(QStringLiteral("-xml")) > 0;
    if (arguments != QStringList{QStringLiteral("SPStorageDataType")} || !xml) {
        out.error(QStringLiteral("Usage: system_profiler SPStorageDataType -xml"));
        return 1;
    }
    const KVDiskInventory inventory;
    KVDiskConversion::resumeInterrupted(inventory.encryptedVolumes(),
                                        QCoreApplication::applicationDirPath() + QStringLiteral("/diskconvert"));
    out.data(KVPropertyList::encodeXml(KVStorageReport::build(inventory)));
    return 0;
}
