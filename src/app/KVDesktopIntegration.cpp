#include "KVDesktopIntegration.h"

#include "KVAutoUnmountController.h"
#include "KVIdleVolumeTracker.h"
#include "KVMainWindow.h"
#include "KVTrayIcon.h"
#include "KVUnmountController.h"
#include "diskimage/KVDiskImage.h"
#include "KVVolumeCommands.h"
#include "disk/KVDisk.h"
#include "model/KVDisplayText.h"
#include "platform/KVDesktopNotifier.h"
#include "platform/KVScreenLockMonitor.h"
#include "platform/KVSleepMonitor.h"
#include "platform/KVUserDefaults.h"
#include "settings/KVPreferences.h"

#include <QApplication>
#include <QDesktopServices>
#include <QUrl>

KVDesktopIntegration::KVDesktopIntegration(KVVolumeCommands *commands, Buses buses, QObject *parent)
    : QObject(parent)
    , m_notifier(new KVDesktopNotifier(buses.session, this))
    , m_sleep(new KVSleepMonitor(buses.system, this))
    , m_screenLock(new KVScreenLockMonitor(buses.session, buses.system, this))
    , m_idle(new KVIdleVolumeTracker(&std::chrono::steady_clock::now, std::chrono::seconds(30), this))
    , m_autoUnmounts(new KVAutoUnmountController(
          commands->unmounts(), [this](const QString &summary, const QString &body) { notify(summary, body); }, this))
    , m_tray(new KVTrayIcon(this))
    , m_panelAvailability(new KVServiceAvailability(QStringLiteral("The panel entry"), this))
{
    // While a dialog works on the selected volume (its sheet is modal), that
    // volume is not unmounted behind its back.
    m_autoUnmounts->setInUse([commands = QPointer(commands)](const KVVolumeItemPtr &item) {
        return commands && QApplication::activeModalWidget() && commands->currentSelection() == item;
    });
    connect(m_sleep, &KVSleepMonitor::aboutToSleep, this, [this] {
        m_autoUnmounts->unmountAll(KVAutoUnmountController::Reason::Sleep,
                                   [sleep = QPointer(m_sleep)] { if (sleep) sleep->allowSleep(); });
    });
    connect(m_screenLock, &KVScreenLockMonitor::screenLocked, this,
            [this] { m_autoUnmounts->unmountAll(KVAutoUnmountController::Reason::ScreenLock); });
    connect(m_idle, &KVIdleVolumeTracker::volumesIdle, this, [this](const QList<KVVolumeItemPtr> &volumes) {
        m_autoUnmounts->unmount(volumes, KVAutoUnmountController::Reason::Idle);
    });
    connect(commands->unmounts(), &KVUnmountController::quitUnmountFailed, this,
            [this](const QString &name, const KVAppError &error) {
                notify(tr("“%1” could not be unmounted").arg(KVDisplayText::inSentence(name)),
                       tr("Korvelle quit and left it mounted: %1").arg(error.localizedDescription()));
            });
    connectTray(commands);
    connect(&KVUserDefaults::standard(), &KVUserDefaults::changed, this, [this] {
        if (m_started)
            applyPreferences();
    });
}

KVDesktopIntegration::~KVDesktopIntegration() = default;

void KVDesktopIntegration::start()
{
    m_started = true;
    if (KVTrayIcon::panelAvailable())
        m_panelAvailability->setAvailable();
    else
        m_panelAvailability->setUnavailable(QStringLiteral("the desktop has no panel that takes it"));
    m_notifier->probe();
    m_sleep->probe();
    m_screenLock->probe();
    applyPreferences();
}

void KVDesktopIntegration::applyPreferences()
{
    const auto follow = [](auto *monitor, bool on) {
        if (on)
            monitor->start();
        else
            monitor->stop();
    };
    follow(m_sleep, KVPreferences::prefUnmountBeforeSleep());
    follow(m_screenLock, KVPreferences::prefUnmountOnScreenLock());
    m_idle->setLimit(std::chrono::minutes(KVPreferences::prefUnmountWhenIdle() ? KVPreferences::prefIdleMinutes() : 0));
    m_tray->setShown(KVPreferences::prefShowInPanel() && !m_panelAvailability->isUnavailable());
}

void KVDesktopIntegration::setVolumes(const QList<KVVolumeItemPtr> &volumes)
{
    m_autoUnmounts->setVolumes(volumes);
    m_idle->setVolumes(volumes);
    m_tray->setVolumes(volumes);
}

void KVDesktopIntegration::setDisks(KVDisk *disks)
{
    if (m_disks)
        disconnect(m_disks, nullptr, this, nullptr);
    m_disks = disks;
    if (m_disks)
        connect(m_disks, &KVDisk::conversionEnded, this, &KVDesktopIntegration::conversionEnded);
}

void KVDesktopIntegration::followCloseButton(KVMainWindow *window)
{
    connect(window, &KVMainWindow::closeButtonClicked, this, [this, window] {
        if (keepsRunningInPanel())
            window->hide();
        else
            Q_EMIT quitRequested();
    });
}

bool KVDesktopIntegration::keepsRunningInPanel() const
{
    return KVPreferences::prefKeepRunningInPanel() && m_tray->isShown();
}

KVPreferencesController::DesktopServices KVDesktopIntegration::services() const
{
    return {m_sleep->availability(), m_screenLock->availability(), m_panelAvailability, m_notifier->availability()};
}

void KVDesktopIntegration::whenNotificationsSent(std::function<void()> then)
{
    m_notifier->whenSent(std::move(then));
}

void KVDesktopIntegration::notify(const QString &summary, const QString &body)
{
    if (KVPreferences::prefDesktopNotifications())
        m_notifier->notify(summary, body);
}

// The poll reads "Complete" once a conversion went through, and "NoConversion"
// for a volume that was turned back into a plain one.
void KVDesktopIntegration::conversionEnded(const KVVolumeItemPtr &item)
{
    const QString &status = item->statusVisible();
    const bool forward = item->conversionDirectionForward();
    if (status == u"Complete" || status == u"NoConversion")
        notify(forward ? tr("Encryption finished") : tr("Decryption finished"),
               forward ? tr("“%1” is now encrypted.").arg(KVDisplayText::inSentence(item->name()))
                       : tr("“%1” is no longer encrypted.").arg(KVDisplayText::inSentence(item->name())));
    else
        notify(forward ? tr("Encryption stopped") : tr("Decryption stopped"),
               tr("The conversion of “%1” ended with the status “%2”.").arg(KVDisplayText::inSentence(item->name()), KVDisplayText::inSentence(status)));
}

void KVDesktopIntegration::connectTray(KVVolumeCommands *commands)
{
    connect(m_tray, &KVTrayIcon::unmountRequested, commands, &KVVolumeCommands::unmountVolume);
    connect(m_tray, &KVTrayIcon::unmountAllRequested, commands, &KVVolumeCommands::unmountAll);
    connect(m_tray, &KVTrayIcon::openRequested, this, [](const KVVolumeItemPtr &item) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(item->mountPoint()));
    });
    connect(m_tray, &KVTrayIcon::showWindowRequested, this, &KVDesktopIntegration::showWindowRequested);
    connect(m_tray, &KVTrayIcon::quitRequested, this, &KVDesktopIntegration::quitRequested);
}
