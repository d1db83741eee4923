#include "KVPreferencesController.h"

#include "KVFavouritesController.h"
#include "favourites/KVFavouritesArchive.h"
#include "settings/KVPreferenceKeys.h"
#include "platform/KVServiceAvailability.h"
#include "platform/KVUserDefaults.h"
#include "settings/KVPreferences.h"
#include "ui_Preferences.h"

#include <tuple>

KVPreferencesController::KVPreferencesController(QWidget *parent, DesktopServices services)
    : QWidget(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::Preferences>())
    , m_services(services)
{
    m_ui->setupUi(this);
    setObjectName(QStringLiteral("preferencesWindow"));
    reloadFromPreferences();

    const std::pair<QCheckBox *, void (*)(bool)> actions[] = {
        {m_ui->autoUnmountVolumesCheckbox, &KVPreferences::setPrefAutoUnmountVolumes},
        {m_ui->forceAutoUnmountCheckbox, &KVPreferences::setPrefForceAutoUnmount},
        {m_ui->forceUnmountCheckbox, &KVPreferences::setPrefForceUnmount},
        {m_ui->mountDiskImageAfterCreationCheckbox, &KVPreferences::setPrefMountDiskImageAfterCreation},
        {m_ui->openFinderAfterMountCheckbox, &KVPreferences::setPrefOpenFinderAfterMount},
        {m_ui->saveOpenRecentCheckbox, &KVPreferences::setPrefSaveOpenRecent},
        {m_ui->unmountBeforeSleepCheckbox, &KVPreferences::setPrefUnmountBeforeSleep},
        {m_ui->unmountOnScreenLockCheckbox, &KVPreferences::setPrefUnmountOnScreenLock},
        {m_ui->unmountWhenIdleCheckbox, &KVPreferences::setPrefUnmountWhenIdle},
        {m_ui->showInPanelCheckbox, &KVPreferences::setPrefShowInPanel},
        {m_ui->keepRunningInPanelCheckbox, &KVPreferences::setPrefKeepRunningInPanel},
        {m_ui->desktopNotificationsCheckbox, &KVPreferences::setPrefDesktopNotifications},
    };
    for (const auto &[checkbox, setter] : actions)
        connect(checkbox, &QCheckBox::clicked, this, [setter = setter](bool checked) { setter(checked); });
    connectDesktopGroup();
}

void KVPreferencesController::connectDesktopGroup()
{
    connect(m_ui->idleMinutesSpinBox, &QSpinBox::valueChanged, this, &KVPreferences::setPrefIdleMinutes);
    // Staying in the panel needs the entry in the panel.
    connect(m_ui->showInPanelCheckbox, &QCheckBox::toggled, this, &KVPreferencesController::showServiceAvailability);
    for (KVServiceAvailability *service :
         {m_services.sleep, m_services.screenLock, m_services.panel, m_services.notifications}) {
        if (service)
            connect(service, &KVServiceAvailability::changed, this, &KVPreferencesController::showServiceAvailability);
    }
    showServiceAvailability();
}

void KVPreferencesController::showServiceAvailability()
{
    const std::tuple<KVServiceAvailability *, QCheckBox *, QString> features[] = {
        {m_services.sleep, m_ui->unmountBeforeSleepCheckbox,
         tr("Unmounting before sleep needs logind, which this system does not offer.")},
        {m_services.screenLock, m_ui->unmountOnScreenLockCheckbox,
         tr("Unmounting when the screen locks needs a screen saver or a logind session; neither answers.")},
        {m_services.panel, m_ui->showInPanelCheckbox, tr("This desktop has no panel that shows Korvelle's entry.")},
        {m_services.notifications, m_ui->desktopNotificationsCheckbox, tr("This desktop shows no notifications.")},
    };
    QStringList missing;
    for (const auto &[service, checkbox, text] : features) {
        const bool absent = service && service->isUnavailable();
        checkbox->setEnabled(!absent);
        if (absent)
            missing.append(text);
    }
    m_ui->keepRunningInPanelCheckbox->setEnabled(m_ui->showInPanelCheckbox->isEnabled()
                                                 && m_ui->showInPanelCheckbox->isChecked());
    m_ui->desktopServicesNote->setText(missing.join(u'\n'));
    m_ui->desktopServicesNote->setVisible(!missing.isEmpty());
    // The note may come while the window is open: it grows to show it whole.
    resize(size().expandedTo(sizeHint()));
}

KVPreferencesController::~KVPreferencesController() = default;

void KVPreferencesController::showWindow()
{
    show();
    raise();
    activateWindow();
}

void KVPreferencesController::reloadFromPreferences()
{
    m_ui->autoUnmountVolumesCheckbox->setChecked(KVPreferences::prefAutoUnmountVolumes());
    m_ui->forceAutoUnmountCheckbox->setChecked(KVPreferences::prefForceAutoUnmount());
    m_ui->forceUnmountCheckbox->setChecked(KVPreferences::prefForceUnmount());
    m_ui->mountDiskImageAfterCreationCheckbox->setChecked(KVPreferences::prefMountDiskImageAfterCreation());
    m_ui->openFinderAfterMountCheckbox->setChecked(KVPreferences::prefOpenFinderAfterMount());
    m_ui->saveOpenRecentCheckbox->setChecked(KVPreferences::prefSaveOpenRecent());
    m_ui->unmountBeforeSleepCheckbox->setChecked(KVPreferences::prefUnmountBeforeSleep());
    m_ui->unmountOnScreenLockCheckbox->setChecked(KVPreferences::prefUnmountOnScreenLock());
    m_ui->unmountWhenIdleCheckbox->setChecked(KVPreferences::prefUnmountWhenIdle());
    m_ui->idleMinutesSpinBox->setValue(KVPreferences::prefIdleMinutes());
    m_ui->showInPanelCheckbox->setChecked(KVPreferences::prefShowInPanel());
    m_ui->keepRunningInPanelCheckbox->setChecked(KVUserDefaults::standard().boolForKey(KVKeepRunningInPanelKey));
    m_ui->desktopNotificationsCheckbox->setChecked(KVPreferences::prefDesktopNotifications());
}

QVariantMap KVPreferencesController::registeredDefaults()
{
    return {
        {KVAnimationDurationMultiplierKey, 1.0},
        {KVShowWelcomeHelpKey, true},
        {KVAutoUnmountVolumesKey, false},
        {KVForceAutoUnmountKey, false},
        {KVForceUnmountKey, false},
        {KVMountDiskImageAfterCreationKey, true},
        {KVOpenFinderAfterMountKey, false},
        {KVSaveOpenRecentKey, false},
        {KVUnmountBeforeSleepKey, false},
        {KVUnmountOnScreenLockKey, false},
        {KVUnmountWhenIdleKey, false},
        {KVIdleMinutesKey, KVPreferences::DefaultIdleMinutes},
        {KVShowInPanelKey, false},
        {KVKeepRunningInPanelKey, false},
        {KVDesktopNotificationsKey, false},
        {KVFavouritesKey, KVFavouritesArchive::archive(KVFavouritesController::defaultFavourites())},
    };
}
