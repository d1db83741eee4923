#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

#include <functional>

class QObject;

// A D-Bus call that never waits: the answer (or the error that stands for a
// missing service, a refusal or silence past the timeout) comes later to
// `answered` on the GUI thread, unless `context` has gone by then.
namespace KVBusCall {

// Long enough for a service that is started on demand, short enough that a
// bus that hangs does not keep a feature waiting.
inline constexpr int TimeoutMs = 5000;

void async(const QDBusConnection &bus, const QDBusMessage &call, QObject *context,
           std::function<void(const QDBusMessage &reply)> answered);

// The bus's own question whether `name` has an owner now.
QDBusMessage nameHasOwner(const QString &name);

} // namespace KVBusCall
