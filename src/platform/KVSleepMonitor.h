#pragma once

#include "KVServiceAvailability.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QTimer>

class QDBusMessage;
class QDBusServiceWatcher;

// The machine going to sleep, as logind (org.freedesktop.login1 on the system
// bus) announces it with PrepareForSleep.
//
// While started, it holds a delay inhibitor lock, so that logind waits for
// Korvelle before it suspends: at most one lock at a time, taken at start and
// again after each resume. aboutToSleep() asks for the work to be done before
// sleep; allowSleep() then releases the lock. Should nobody call it, the lock
// goes once logind's own delay has passed, when logind would go on anyway.
// A resume before the release keeps the lock for the next sleep. When logind
// leaves the bus the lock goes with it and returns when logind does.
class KVSleepMonitor : public QObject
{
    Q_OBJECT

public:
    explicit KVSleepMonitor(const QDBusConnection &systemBus = QDBusConnection::systemBus(),
                            QObject *parent = nullptr);
    ~KVSleepMonitor() override;

    void start();
    // Asks whether logind is there, without taking a lock.
    void probe();
    // Releases the lock and stops listening.
    void stop();
    bool isStarted() const { return m_started; }

    // Sleep may go on: the lock taken for it is released. Nothing otherwise.
    void allowSleep();
    bool holdsDelayLock() const { return m_lock.isValid(); }
    KVServiceAvailability *availability() const { return m_availability; }

Q_SIGNALS:
    void aboutToSleep();
    void resumed();

private Q_SLOTS:
    void prepareForSleep(bool start);

private:
    void takeLock();
    void releaseLock();
    void readMaximumDelay();
    bool subscribe(bool on);
    void serviceVanished();

    QDBusConnection m_bus;
    KVServiceAvailability *m_availability; // a child
    QDBusServiceWatcher *m_serviceWatcher; // a child
    QDBusUnixFileDescriptor m_lock;
    QTimer m_delayLimit;
    bool m_started = false;
    bool m_lockRequested = false;
    bool m_preparing = false;
    // Answers to calls made before a stop() are not taken.
    quint64 m_generation = 0;
};
