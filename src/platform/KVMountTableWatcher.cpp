#include "KVMountTableWatcher.h"

#include "KVSystemLog.h"
#include "KVWorkspaceNotifications.h"

#include <QUrl>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

QString lastPathComponent(const QString &path)
{
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

} // namespace

KVMountTableWatcher::KVMountTableWatcher(KVWorkspaceNotifications *notifications)
    : QObject(notifications)
    , m_notifications(notifications)
{
    m_mountInfo = open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    m_stop = eventfd(0, EFD_CLOEXEC);
    // Read here, before anything can change unseen: what is mounted already is
    // not news.
    std::optional<KVMountTable> table = m_mountInfo >= 0 ? KVMountTable::read(m_mountInfo) : std::nullopt;
    if (!table || m_stop < 0) {
        KVSystemLog::write(QStringLiteral("Error: the mount table cannot be watched (%1)")
                               .arg(QString::fromLocal8Bit(std::strerror(errno))));
        return;
    }
    m_thread = std::thread(&KVMountTableWatcher::watch, this, std::move(*table));
}

KVMountTableWatcher::~KVMountTableWatcher()
{
    if (m_thread.joinable()) {
        const uint64_t one = 1;
        while (write(m_stop, &one, sizeof one) < 0 && errno == EINTR) {
        }
        m_thread.join();
    }
    if (m_mountInfo >= 0)
        close(m_mountInfo);
    if (m_stop >= 0)
        close(m_stop);
}

void KVMountTableWatcher::watch(KVMountTable table)
{
    for (;;) {
        pollfd fds[] = {{m_mountInfo, POLLPRI, 0}, {m_stop, POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (fds[1].revents != 0 || (fds[0].revents & POLLNVAL))
            return;
        if (!(fds[0].revents & (POLLPRI | POLLERR)))
            continue;
        std::optional<KVMountTable> current = KVMountTable::read(m_mountInfo);
        if (!current)
            continue;
        const QList<KVMountChange> changes = current->changesSince(table);
        table = std::move(*current);
        // Dropped, should the watcher be gone by the time the GUI thread gets there.
        if (!changes.isEmpty())
            QMetaObject::invokeMethod(this, [this, changes] { announce(changes); }, Qt::QueuedConnection);
    }
}

void KVMountTableWatcher::announce(const QList<KVMountChange> &changes)
{
    for (const KVMountChange &change : changes) {
        switch (change.kind) {
        case KVMountChange::Mounted:
            Q_EMIT m_notifications->didMount({{NSDevicePath, change.mountPoint}});
            break;
        case KVMountChange::Unmounted:
            Q_EMIT m_notifications->didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(change.mountPoint)}});
            break;
        case KVMountChange::Moved:
            Q_EMIT m_notifications->didRenameVolume(
                {{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(change.oldMountPoint)},
                 {NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(change.mountPoint)},
                 {NSWorkspaceVolumeLocalizedNameKey, lastPathComponent(change.mountPoint)}});
            break;
        }
    }
}
