#pragma once

#include "KVServiceAvailability.h"

#include <QDBusConnection>
#include <QObject>

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

private:
    void recordAnswer(const QDBusMessage &reply);

    QDBusConnection m_bus;
    KVServiceAvailability *m_availability; // a child
};
