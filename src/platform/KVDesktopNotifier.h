#pragma once

#include "KVServiceAvailability.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <vector>

class QDBusMessage;

// Notifications on the desktop, through the freedesktop notification service
// (org.freedesktop.Notifications) on the session bus. Nothing waits for the
// service: where it does not answer, notifications are off from then on and
// the ones asked for are dropped.
class KVDesktopNotifier : public QObject
{
    Q_OBJECT

public:
    explicit KVDesktopNotifier(const QDBusConnection &bus = QDBusConnection::sessionBus(), QObject *parent = nullptr);

    // Asks whether a service is there; availability() knows once it answered.
    void probe();
    KVServiceAvailability *availability() const { return m_availability; }

    void notify(const QString &summary, const QString &body);

    // Calls `then` once every notification asked for so far has been taken
    // or refused by the service, or after a second at most: a quit that ends
    // at once would drop the last notification still on its way out.
    void whenSent(std::function<void()> then);

private:
    void recordAnswer(const QDBusMessage &reply);
    void sent();

    QDBusConnection m_bus;
    int m_unanswered = 0;
    std::vector<std::function<void()>> m_whenSent;
    KVServiceAvailability *m_availability; // a child
};
