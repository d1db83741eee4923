#pragma once

#include <QObject>

// Notifications inside the application. "updateFavs" tells the shell that the
// favourites changed: it saves the whole list and rebuilds its menu.
class KVAppNotifications : public QObject
{
    Q_OBJECT

public:
    static KVAppNotifications &instance();

    void postUpdateFavs() { Q_EMIT updateFavs(); }

Q_SIGNALS:
    void updateFavs();
};
