#pragma once

#include "KVServiceAvailability.h"

#include <QDBusConnection>
#include <QObject>

class QDBusMessage;

// The screen being locked. Three sources say so: the screen saver's
// ActiveChanged(true) (org.freedesktop.ScreenSaver, and GNOME's own
// org.gnome.ScreenSaver) on the session bus, and logind's Lock signal for this
// process's session on the system bus. screenLocked() comes once per lock, so a
// lock that several sources announce counts once; it comes again only after
// the screen was unlocked.
//
// Available as soon as one source is; unavailable when none is found.
class KVScreenLockMonitor : public QObject
{
    Q_OBJECT

public:
    explicit KVScreenLockMonitor(const QDBusConnection &sessionBus = QDBusConnection::sessionBus(),
                                 const QDBusConnection &systemBus = QDBusConnection::systemBus(),
                                 QObject *parent = nullptr);
    ~KVScreenLockMonitor() override;

    // Listens from now on; finds the sources first when not done yet.
    void start();
    void stop();
    // Finds which sources there are, without listening.
    void probe();
    bool isStarted() const { return m_started; }
    KVServiceAvailability *availability() const { return m_availability; }

Q_SIGNALS:
    void screenLocked();

private Q_SLOTS:
    void screenSaverActiveChanged(bool active);
    void sessionLocked();
    void sessionUnlocked();

private:
    void findScreenSavers();
    void findSession();
    void sourceAnswered(bool found, const QString &reason);
    void subscribeSession(bool on);
    void subscribeScreenSavers(bool on);

    QDBusConnection m_sessionBus;
    QDBusConnection m_systemBus;
    KVServiceAvailability *m_availability; // a child
    QString m_sessionPath;
    bool m_started = false;
    bool m_locked = false;
    int m_sourcesPending = 0;
    bool m_sourceFound = false;
    QStringList m_missing;
};
