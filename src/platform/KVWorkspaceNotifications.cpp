#include "KVWorkspaceNotifications.h"

#include "KVMountTableWatcher.h"

#include <QCoreApplication>
#include <QPointer>

KVWorkspaceNotifications *KVWorkspaceNotifications::shared()
{
    // Lives as long as the application object.
    static QPointer<KVWorkspaceNotifications> notifications;
    if (!notifications) {
        notifications = new KVWorkspaceNotifications(QCoreApplication::instance());
        new KVMountTableWatcher(notifications);
    }
    return notifications;
}
