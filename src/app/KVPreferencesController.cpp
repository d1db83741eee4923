#include "KVPreferencesController.h"

#include "KVFavouritesController.h"
#include "favourites/KVFavouritesArchive.h"
#include "settings/KVPreferenceKeys.h"
#include "settings/KVPreferences.h"
#include "ui_Preferences.h"

KVPreferencesController::KVPreferencesController(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::Preferences>())
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
    };
    for (const auto &[checkbox, setter] : actions)
        connect(checkbox, &QCheckBox::clicked, this, [setter = setter](bool checked) { setter(checked); });
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
        {KVFavouritesKey, KVFavouritesArchive::archive(KVFavouritesController::defaultFavourites())},
    };
}
