#pragma once

#include "KVPreferencesController.h"
#include "model/KVVolumeItem.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

#include <functional>

class KVAutoUnmountController;
class KVDesktopNotifier;
class KVDisk;
class KVIdleVolumeTracker;
class KVMainWindow;
class KVScreenLockMonitor;
class KVServiceAvailability;
class KVSleepMonitor;
class KVTrayIcon;
class KVVolumeCommands;

// The buses the desktop's services are found on; tests give private ones.
struct KVDesktopBuses
{
    QDBusConnection session = QDBusConnection::sessionBus();
    QDBusConnection system = QDBusConnection::systemBus();
};

// What Korvelle does with the desktop around it, each part switched on and
// off with its preference (all off until the user chooses): unmounting before
// sleep, when the screen locks and after idle time; the entry in the panel;
// notifications when a conversion ends, when volumes were unmounted
// automatically and when an unmount at quit failed.
//
// It makes the desktop's services and the policies that use them, follows the
// preferences as they change, and sends the panel's requests to the volume
// commands or on to the shell.
class KVDesktopIntegration : public QObject
{
    Q_OBJECT

public:
    using Buses = KVDesktopBuses;

    KVDesktopIntegration(KVVolumeCommands *commands, Buses buses = {}, QObject *parent = nullptr);
    ~KVDesktopIntegration() override;

    // Asks which services are there and applies the stored preferences.
    void start();
    void setVolumes(const QList<KVVolumeItemPtr> &volumes);
    // Conversions of this engine's volumes are followed.
    void setDisks(KVDisk *disks);

    // The window's close button asks to quit (quitRequested()), or only
    // hides the window while Korvelle is to keep running in the panel.
    void followCloseButton(KVMainWindow *window);
    bool keepsRunningInPanel() const;

    // Calls `then` once the notifications asked for are out (a quit waits
    // for the one that says an unmount failed).
    void whenNotificationsSent(std::function<void()> then);

    // For the preferences window: what this desktop offers.
    KVPreferencesController::DesktopServices services() const;

    KVTrayIcon *trayIcon() const { return m_tray; }
    KVAutoUnmountController *autoUnmounts() const { return m_autoUnmounts; }
    KVIdleVolumeTracker *idleTracker() const { return m_idle; }

Q_SIGNALS:
    void showWindowRequested();
    void quitRequested();

private:
    void applyPreferences();
    void notify(const QString &summary, const QString &body);
    void conversionEnded(const KVVolumeItemPtr &item);
    void connectTray(KVVolumeCommands *commands);

    // All children.
    KVDesktopNotifier *m_notifier;
    KVSleepMonitor *m_sleep;
    KVScreenLockMonitor *m_screenLock;
    KVIdleVolumeTracker *m_idle;
    KVAutoUnmountController *m_autoUnmounts;
    KVTrayIcon *m_tray;
    KVServiceAvailability *m_panelAvailability;
    QPointer<KVDisk> m_disks;
    bool m_started = false;
};
