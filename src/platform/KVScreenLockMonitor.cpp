#include "KVScreenLockMonitor.h"

#include "KVBusCall.h"

#include <QDBusMessage>
#include <QDBusObjectPath>

#include <unistd.h>

namespace {

struct ScreenSaver
{
    QString service;
    QString path;
};

const ScreenSaver ScreenSavers[] = {
    {QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("/org/freedesktop/ScreenSaver")},
    {QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/org/gnome/ScreenSaver")},
};

const QString Login = QStringLiteral("org.freedesktop.login1");
const QString SessionInterface = QStringLiteral("org.freedesktop.login1.Session");

} // namespace

KVScreenLockMonitor::KVScreenLockMonitor(const QDBusConnection &sessionBus, const QDBusConnection &systemBus,
                                         QObject *parent)
    : QObject(parent)
    , m_sessionBus(sessionBus)
    , m_systemBus(systemBus)
    , m_availability(new KVServiceAvailability(QStringLiteral("Unmounting when the screen locks"), this))
{
}

KVScreenLockMonitor::~KVScreenLockMonitor()
{
    stop();
}

void KVScreenLockMonitor::start()
{
    if (m_started)
        return;
    m_started = true;
    m_locked = false;
    subscribeScreenSavers(true);
    subscribeSession(true);
    if (m_availability->state() == KVServiceAvailability::State::Unknown)
        probe();
}

void KVScreenLockMonitor::stop()
{
    if (!m_started)
        return;
    m_started = false;
    subscribeScreenSavers(false);
    subscribeSession(false);
}

void KVScreenLockMonitor::probe()
{
    if (m_sourcesPending > 0)
        return;
    m_sourceFound = false;
    m_missing.clear();
    m_sourcesPending = 2;
    findScreenSavers();
    findSession();
}

void KVScreenLockMonitor::subscribeScreenSavers(bool on)
{
    if (!m_sessionBus.isConnected())
        return;
    const QString name = QStringLiteral("ActiveChanged");
    const char *slot = SLOT(screenSaverActiveChanged(bool));
    for (const ScreenSaver &saver : ScreenSavers) {
        if (on)
            m_sessionBus.connect(saver.service, saver.path, saver.service, name, this, slot);
        else
            m_sessionBus.disconnect(saver.service, saver.path, saver.service, name, this, slot);
    }
}

void KVScreenLockMonitor::subscribeSession(bool on)
{
    if (m_sessionPath.isEmpty())
        return;
    const std::pair<QString, const char *> signalsToSlots[] = {
        {QStringLiteral("Lock"), SLOT(sessionLocked())},
        {QStringLiteral("Unlock"), SLOT(sessionUnlocked())},
    };
    for (const auto &[name, slot] : signalsToSlots) {
        if (on)
            m_systemBus.connect(Login, m_sessionPath, SessionInterface, name, this, slot);
        else
            m_systemBus.disconnect(Login, m_sessionPath, SessionInterface, name, this, slot);
    }
}

// A screen saver is there when one of the names has an owner now.
void KVScreenLockMonitor::findScreenSavers()
{
    if (!m_sessionBus.isConnected()) {
        sourceAnswered(false, QStringLiteral("no session bus"));
        return;
    }
    auto remaining = std::make_shared<int>(int(std::size(ScreenSavers)));
    auto found = std::make_shared<bool>(false);
    for (const ScreenSaver &saver : ScreenSavers) {
        KVBusCall::async(m_sessionBus, KVBusCall::nameHasOwner(saver.service), this,
                         [this, remaining, found](const QDBusMessage &reply) {
                             *found = *found || reply.arguments().value(0).toBool();
                             if (--*remaining == 0)
                                 sourceAnswered(*found, QStringLiteral("no screen saver on the session bus"));
                         });
    }
}

void KVScreenLockMonitor::findSession()
{
    if (!m_systemBus.isConnected()) {
        sourceAnswered(false, QStringLiteral("no system bus"));
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(Login, QStringLiteral("/org/freedesktop/login1"),
                                                       QStringLiteral("org.freedesktop.login1.Manager"),
                                                       QStringLiteral("GetSessionByPID"));
    call << quint32(getpid());
    KVBusCall::async(m_systemBus, call, this, [this](const QDBusMessage &reply) {
        const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
        if (reply.type() == QDBusMessage::ErrorMessage || path.isEmpty()) {
            sourceAnswered(false, QStringLiteral("no logind session (%1)").arg(reply.errorMessage()));
            return;
        }
        if (m_started)
            subscribeSession(false);
        m_sessionPath = path;
        if (m_started)
            subscribeSession(true);
        sourceAnswered(true, QString());
    });
}

void KVScreenLockMonitor::sourceAnswered(bool found, const QString &reason)
{
    m_sourceFound = m_sourceFound || found;
    if (!found)
        m_missing.append(reason);
    if (--m_sourcesPending > 0)
        return;
    if (m_sourceFound)
        m_availability->setAvailable();
    else
        m_availability->setUnavailable(m_missing.join(QStringLiteral("; ")));
}

void KVScreenLockMonitor::screenSaverActiveChanged(bool active)
{
    if (active)
        sessionLocked();
    else
        sessionUnlocked();
}

void KVScreenLockMonitor::sessionLocked()
{
    if (!m_started || m_locked)
        return;
    m_locked = true;
    Q_EMIT screenLocked();
}

void KVScreenLockMonitor::sessionUnlocked()
{
    m_locked = false;
}
