#include "KVSleepMonitor.h"

#include "KVBusCall.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace {

const QString Service = QStringLiteral("org.freedesktop.login1");
const QString ManagerPath = QStringLiteral("/org/freedesktop/login1");
const QString ManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
// logind's own default for InhibitDelayMaxSec, until it tells its setting.
constexpr int DefaultDelayMs = 5000;

} // namespace

KVSleepMonitor::KVSleepMonitor(const QDBusConnection &systemBus, QObject *parent)
    : QObject(parent)
    , m_bus(systemBus)
    , m_availability(new KVServiceAvailability(QStringLiteral("Unmounting before sleep"), this))
    , m_serviceWatcher(new QDBusServiceWatcher(Service, systemBus, QDBusServiceWatcher::WatchForOwnerChange, this))
{
    m_delayLimit.setSingleShot(true);
    m_delayLimit.setInterval(DefaultDelayMs);
    connect(&m_delayLimit, &QTimer::timeout, this, &KVSleepMonitor::allowSleep);
    connect(m_serviceWatcher, &QDBusServiceWatcher::serviceUnregistered, this, &KVSleepMonitor::serviceVanished);
    connect(m_serviceWatcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        if (m_started)
            takeLock();
    });
}

KVSleepMonitor::~KVSleepMonitor()
{
    stop();
}

void KVSleepMonitor::start()
{
    if (m_started)
        return;
    if (!m_bus.isConnected()) {
        m_availability->setUnavailable(QStringLiteral("no system bus"));
        return;
    }
    m_started = subscribe(true);
    if (!m_started) {
        m_availability->setUnavailable(m_bus.lastError().message());
        return;
    }
    readMaximumDelay();
    takeLock();
}

void KVSleepMonitor::probe()
{
    if (!m_bus.isConnected()) {
        m_availability->setUnavailable(QStringLiteral("no system bus"));
        return;
    }
    KVBusCall::async(m_bus, KVBusCall::nameHasOwner(Service), this, [this](const QDBusMessage &reply) {
        if (reply.arguments().value(0).toBool())
            m_availability->setAvailable();
        else
            m_availability->setUnavailable(QStringLiteral("logind is not on the system bus"));
    });
}

void KVSleepMonitor::stop()
{
    if (!m_started)
        return;
    subscribe(false);
    m_started = false;
    m_preparing = false;
    ++m_generation;
    m_lockRequested = false;
    m_delayLimit.stop();
    releaseLock();
}

bool KVSleepMonitor::subscribe(bool on)
{
    const QString name = QStringLiteral("PrepareForSleep");
    const char *slot = SLOT(prepareForSleep(bool));
    return on ? m_bus.connect(Service, ManagerPath, ManagerInterface, name, this, slot)
              : m_bus.disconnect(Service, ManagerPath, ManagerInterface, name, this, slot);
}

void KVSleepMonitor::prepareForSleep(bool start)
{
    if (!m_started)
        return;
    if (start) {
        // A second announcement of the same sleep changes nothing.
        if (m_preparing)
            return;
        m_preparing = true;
        m_delayLimit.start();
        Q_EMIT aboutToSleep();
        return;
    }
    m_preparing = false;
    m_delayLimit.stop();
    Q_EMIT resumed();
    takeLock();
}

void KVSleepMonitor::allowSleep()
{
    if (!m_preparing)
        return;
    m_delayLimit.stop();
    releaseLock();
}

void KVSleepMonitor::takeLock()
{
    if (m_lock.isValid() || m_lockRequested)
        return;
    m_lockRequested = true;
    QDBusMessage call = QDBusMessage::createMethodCall(Service, ManagerPath, ManagerInterface, QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep") << QStringLiteral("Korvelle")
         << QStringLiteral("Unmounting encrypted volumes before sleep") << QStringLiteral("delay");
    KVBusCall::async(m_bus, call, this, [this, generation = m_generation](const QDBusMessage &reply) {
        if (generation != m_generation)
            return; // stopped since: the lock closes with the reply
        m_lockRequested = false;
        if (reply.type() == QDBusMessage::ErrorMessage || reply.arguments().isEmpty()) {
            m_availability->setUnavailable(reply.errorMessage());
            return;
        }
        // Taken for a sleep that is already under way: it would only hold logind up.
        if (m_preparing)
            return;
        m_lock = reply.arguments().constFirst().value<QDBusUnixFileDescriptor>();
        if (m_lock.isValid())
            m_availability->setAvailable();
        else
            m_availability->setUnavailable(QStringLiteral("logind gave no inhibitor lock"));
    });
}

void KVSleepMonitor::releaseLock()
{
    // The lock is the file descriptor: closing the last copy releases it.
    m_lock = QDBusUnixFileDescriptor();
}

void KVSleepMonitor::readMaximumDelay()
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, ManagerPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                       QStringLiteral("Get"));
    call << ManagerInterface << QStringLiteral("InhibitDelayMaxUSec");
    KVBusCall::async(m_bus, call, this, [this](const QDBusMessage &reply) {
        if (reply.type() == QDBusMessage::ErrorMessage || reply.arguments().isEmpty())
            return;
        const qulonglong microseconds = reply.arguments().constFirst().value<QDBusVariant>().variant().toULongLong();
        if (microseconds > 0)
            m_delayLimit.setInterval(int(std::min<qulonglong>(microseconds / 1000, 60000)));
    });
}

void KVSleepMonitor::serviceVanished()
{
    // A lock on a logind that is gone holds nothing back; a sleep it announced
    // will not be followed by a resume from it.
    m_preparing = false;
    m_delayLimit.stop();
    releaseLock();
}
