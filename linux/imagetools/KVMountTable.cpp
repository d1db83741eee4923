#include "KVMountTable.h"

#include <QFile>

namespace {

// mountinfo writes blanks, tabs, newlines and backslashes as \ooo.
QString unescaped(const QByteArray &field)
{
    QByteArray out;
    out.reserve(field.size());
    for (int i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            bool ok = false;
            const int value = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                out += char(value);
                i += 3;
                continue;
            }
        }
        out += field[i];
    }
    return QString::fromUtf8(out);
}

} // namespace

KVMountTable KVMountTable::read()
{
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return parse(file.readAll());
}

// 36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw,errors=continue
KVMountTable KVMountTable::parse(const QByteArray &mountinfo)
{
    KVMountTable table;
    for (const QByteArray &line : mountinfo.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-");
        if (fields.size() < 10 || separator < 6 || separator + 3 >= fields.size())
            continue;
        Mount mount;
        mount.mountPoint = unescaped(fields[4]);
        mount.fileSystemType = unescaped(fields[separator + 1]);
        mount.source = unescaped(fields[separator + 2]);
        table.m_mounts.append(mount);
    }
    return table;
}

// The last entry wins: a later mount over the same directory hides the earlier.
std::optional<KVMountTable::Mount> KVMountTable::at(const QString &mountPoint) const
{
    for (auto it = m_mounts.crbegin(); it != m_mounts.crend(); ++it)
        if (it->mountPoint == mountPoint)
            return *it;
    return std::nullopt;
}
