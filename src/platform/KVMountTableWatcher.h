#pragma once

#include "KVMountTable.h"

#include <QObject>

#include <thread>

class KVWorkspaceNotifications;

// Turns changes of the mount table into the workspace's notifications: a new
// mount is "did mount" (its path), a mount that went away "did unmount" (its
// URL), and a mount moved elsewhere (mount --move) "did rename" (old URL, new
// URL, and the name of the folder it now sits in).
//
// The kernel flags every change of /proc/self/mountinfo as urgent data
// (POLLPRI); a thread of the watcher's own waits for that and reads the table
// again, so no file is read on the GUI thread but the first. The notifications
// are emitted on the GUI thread. Create on the GUI thread.
class KVMountTableWatcher : public QObject
{
    Q_OBJECT

public:
    // Feeds `notifications`, as its child.
    explicit KVMountTableWatcher(KVWorkspaceNotifications *notifications);
    ~KVMountTableWatcher() override;

private:
    void watch(KVMountTable table);
    void announce(const QList<KVMountChange> &changes);

    KVWorkspaceNotifications *m_notifications;
    int m_mountInfo = -1;
    int m_stop = -1; // an eventfd that ends the thread
    std::thread m_thread;
};
