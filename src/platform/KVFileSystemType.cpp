#include "KVFileSystemType.h"

#include <QFile>
#include <QStorageInfo>

#include <sys/vfs.h>

namespace {

// Linux's HFS+ driver reports the volume signature: "H+" for HFS+, "HX" for
// its case-sensitive variant.
constexpr qint64 HfsPlusMagic = 0x482b;
constexpr qint64 HfsxMagic = 0x4858;
// On Linux the disk tools present ext4 as "Journaled HFS+" (the encrypted
// volumes they make hold ext4), so it is asked for by the same name.
constexpr qint64 Ext4Magic = 0xEF53;

} // namespace

namespace KVFileSystemType {

std::optional<QString> ofPath(const QString &path)
{
    if (path.isEmpty())
        return std::nullopt;
    struct statfs info{};
    if (::statfs(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return name(qint64(info.f_type), QString::fromLatin1(QStorageInfo(path).fileSystemType()));
}

QString name(qint64 magic, const QString &mountType)
{
    if (magic == HfsPlusMagic || magic == HfsxMagic || mountType == u"hfsplus"
        || (magic == Ext4Magic && mountType == u"ext4"))
        return QStringLiteral("hfs");
    return mountType;
}

} // namespace KVFileSystemType
