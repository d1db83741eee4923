#include "KVMountTable.h"

#include <QFile>
#include <QHash>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool isOctalDigit(char c)
{
    return c >= '0' && c <= '7';
}

QString decodePath(QByteArrayView field)
{
    QByteArray bytes;
    bytes.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const bool escaped = field[i] == '\\' && i + 3 < field.size() && isOctalDigit(field[i + 1])
                          && isOctalDigit(field[i + 2]) && isOctalDigit(field[i + 3]);
        if (escaped) {
            bytes.append(char(((field[i + 1] - '0') << 6) | ((field[i + 2] - '0') << 3) | (field[i + 3] - '0')));
            i += 3;
        } else {
            bytes.append(field[i]);
        }
    }
    return QFile::decodeName(bytes);
}

} // namespace

KVMountTable KVMountTable::parse(QByteArrayView mountinfo)
{
    KVMountTable table;
    for (const QByteArray &line : mountinfo.toByteArray().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        bool isNumber = false;
        const int id = fields[0].toInt(&isNumber);
        if (!isNumber)
            continue;
        KVMount mount{id, fields[2], decodePath(fields[4]), {}, {}};
        // Optional fields come between the mount options and " - ".
        const qsizetype separator = fields.indexOf("-", 6);
        if (separator > 0 && separator + 2 < fields.size()) {
            mount.fileSystemType = decodePath(fields[separator + 1]);
            mount.source = decodePath(fields[separator + 2]);
        }
        table.m_mounts.append(mount);
    }
    return table;
}

std::optional<KVMountTable> KVMountTable::read(int fd)
{
    if (lseek(fd, 0, SEEK_SET) < 0)
        return std::nullopt;
    QByteArray contents;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            break;
        contents.append(buffer, n);
    }
    return parse(contents);
}

KVMountTable KVMountTable::current()
{
    const int fd = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {};
    std::optional<KVMountTable> table = read(fd);
    close(fd);
    return table.value_or(KVMountTable());
}

std::optional<KVMount> KVMountTable::at(const QString &mountPoint) const
{
    for (auto it = m_mounts.crbegin(); it != m_mounts.crend(); ++it)
        if (it->mountPoint == mountPoint)
            return *it;
    return std::nullopt;
}

QList<KVMountChange> KVMountTable::changesSince(const KVMountTable &before) const
{
    const auto sameMount = [](const KVMount &a, const KVMount &b) { return a.id == b.id && a.device == b.device; };
    QHash<int, KVMount> now;
    for (const KVMount &mount : m_mounts)
        now.insert(mount.id, mount);
    QHash<int, KVMount> then;
    for (const KVMount &mount : before.m_mounts)
        then.insert(mount.id, mount);

    QList<KVMountChange> changes;
    for (const KVMount &old : before.m_mounts) {
        const auto current = now.constFind(old.id);
        if (current == now.cend() || !sameMount(*current, old))
            changes.append({KVMountChange::Unmounted, old.mountPoint, {}});
    }
    for (const KVMount &mount : m_mounts) {
        const auto old = then.constFind(mount.id);
        if (old == then.cend() || !sameMount(*old, mount))
            changes.append({KVMountChange::Mounted, mount.mountPoint, {}});
        else if (old->mountPoint != mount.mountPoint)
            changes.append({KVMountChange::Moved, mount.mountPoint, old->mountPoint});
    }
    return changes;
}
