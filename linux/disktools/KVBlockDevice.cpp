#include "KVBlockDevice.h"

#include "platform/KVMountTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace kvlinux {

namespace {

const QString sysBlock = QStringLiteral("/sys/class/block/");

QByteArray readSysfs(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

// The bus from the device's place in the sysfs tree.
QString protocolOf(const QString &disk, bool *internal)
{
    const QString devicePath = QFileInfo(sysBlock + disk).canonicalFilePath();
    *internal = true;
    if (disk.startsWith(QLatin1String("loop")))
        return QStringLiteral("Loop");
    if (devicePath.contains(QLatin1String("/usb"))) {
        *internal = false;
        return QStringLiteral("USB");
    }
    if (disk.startsWith(QLatin1String("nvme")))
        return QStringLiteral("PCI-Express");
    if (devicePath.contains(QLatin1String("/ata")))
        return QStringLiteral("SATA");
    if (disk.startsWith(QLatin1String("vd")))
        return QStringLiteral("Virtual Interface");
    return QStringLiteral("SCSI");
}

// The devices a mount of the running system sits on.
const QStringList systemMountPoints = {QStringLiteral("/"), QStringLiteral("/boot"),
                                       QStringLiteral("/boot/efi"), QStringLiteral("/usr"),
                                       QStringLiteral("/var")};

} // namespace

std::optional<KVBlockDevice> KVBlockDevice::fromSysfs(const QString &name)
{
    const QString base = sysBlock + name;
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || !QFile::exists(base + QStringLiteral("/partition")))
        return std::nullopt;
    const QList<QByteArray> numbers = readSysfs(base + QStringLiteral("/dev")).split(':');
    if (numbers.size() != 2)
        return std::nullopt;
    KVBlockDevice device;
    device.name = name;
    device.number = makedev(numbers[0].toUInt(), numbers[1].toUInt());
    device.size = readSysfs(base + QStringLiteral("/size")).toLongLong() * 512;
    device.parentDisk = QFileInfo(QFileInfo(base).canonicalFilePath()).dir().dirName();
    device.protocol = protocolOf(device.parentDisk, &device.internal);
    return device;
}

QList<KVBlockDevice> KVBlockDevice::partitions()
{
    QList<KVBlockDevice> found;
    for (const QString &name : QDir(sysBlock).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name))
        if (auto device = fromSysfs(name))
            found.append(*device);
    return found;
}

std::optional<KVBlockDevice> KVBlockDevice::find(const QString &identifier)
{
    QString name = identifier;
    if (name.startsWith(QLatin1String("/dev/")))
        name = name.mid(5);
    return fromSysfs(name);
}

std::optional<KVBlockDevice> KVBlockDevice::withNumber(dev_t number)
{
    const QByteArray link = QByteArrayLiteral("/sys/dev/block/") + QByteArray::number(major(number)) + ':'
        + QByteArray::number(minor(number));
    return fromSysfs(QFileInfo(QString::fromLatin1(link)).canonicalFilePath().section(QLatin1Char('/'), -1));
}

dev_t KVBlockDevice::numberOf(const QString &path)
{
    struct stat st;
    if (stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISBLK(st.st_mode))
        return 0;
    return st.st_rdev;
}

bool KVBlockDevice::isSystemDisk(const QString &disk)
{
    const KVMountTable mounts = KVMountTable::current();
    for (const QString &mountPoint : systemMountPoints) {
        struct stat st;
        if (stat(QFile::encodeName(mountPoint).constData(), &st) != 0)
            continue;
        // A file system on a partition names it by st_dev; one on a whole
        // disk (or a mapper) is checked by its source.
        if (const auto partition = withNumber(st.st_dev); partition && partition->parentDisk == disk)
            return true;
        if (const auto mount = mounts.at(mountPoint); mount && mount->source == QStringLiteral("/dev/") + disk)
            return true;
    }
    return false;
}

} // namespace kvlinux
