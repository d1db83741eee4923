#include "KVDesktopNotifier.h"

#include "KVBusCall.h"

#include <QDBusMessage>
#include <QTimer>
#include <QVariantMap>

#include <utility>

namespace {

const QString Service = QStringLiteral("org.freedesktop.Notifications");
const QString Path = QStringLiteral("/org/freedesktop/Notifications");
const QString DesktopEntry = QStringLiteral("org.korvelle.Korvelle");
// The service answers a notification at once; one that is slower must not
// hold up a quit.
constexpr int SendLimitMs = 1000;

QDBusMessage callOf(const QString &method)
{
    return QDBusMessage::createMethodCall(Service, Path, Service, method);
}

} // namespace

KVDesktopNotifier::KVDesktopNotifier(const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_availability(new KVServiceAvailability(QStringLiteral("Desktop notifications"), this))
{
}

void KVDesktopNotifier::probe()
{
    if (!m_bus.isConnected()) {
        m_availability->setUnavailable(QStringLiteral("no session bus"));
        return;
    }
    KVBusCall::async(m_bus, callOf(QStringLiteral("GetServerInformation")), this,
                     [this](const QDBusMessage &reply) { recordAnswer(reply); });
}

void KVDesktopNotifier::notify(const QString &summary, const QString &body)
{
    if (m_availability->isUnavailable() || !m_bus.isConnected())
        return;
    QDBusMessage call = callOf(QStringLiteral("Notify"));
    call << QStringLiteral("Korvelle") << 0u << DesktopEntry << summary << body << QStringList()
         << QVariantMap{{QStringLiteral("desktop-entry"), DesktopEntry}} << -1;
    ++m_unanswered;
    KVBusCall::async(m_bus, call, this, [this](const QDBusMessage &reply) {
        recordAnswer(reply);
        if (--m_unanswered == 0)
            sent();
    });
}

void KVDesktopNotifier::whenSent(std::function<void()> then)
{
    if (m_unanswered == 0) {
        then();
        return;
    }
    m_whenSent.push_back(std::move(then));
    QTimer::singleShot(SendLimitMs, this, &KVDesktopNotifier::sent);
}

void KVDesktopNotifier::sent()
{
    for (const std::function<void()> &then : std::exchange(m_whenSent, {}))
        then();
}

void KVDesktopNotifier::recordAnswer(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage)
        m_availability->setUnavailable(reply.errorMessage());
    else
        m_availability->setAvailable();
}
