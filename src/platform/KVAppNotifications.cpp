#include "KVAppNotifications.h"

KVAppNotifications &KVAppNotifications::instance()
{
    static KVAppNotifications notifications;
    return notifications;
}
