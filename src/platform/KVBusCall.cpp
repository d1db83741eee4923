#include "KVBusCall.h"

#include <QDBusPendingCallWatcher>
#include <QPointer>

namespace KVBusCall {

void async(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
           std::function<void(const QDBusMessage &reply)> answered)
{
    QDBusConnection connection = bus;
    auto *watcher = new QDBusPendingCallWatcher(connection.asyncCall(call, TimeoutMs), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context,
                     [answered = std::move(answered)](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         answered(finished->reply());
                     });
}

QDBusMessage nameHasOwner(const QString &name)
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage call = QDBusMessage::createMethodCall(bus, QStringLiteral("/"), bus, QStringLiteral("NameHasOwner"));
    call << name;
    return call;
}

} // namespace KVBusCall
