#include "KVPreferencesController.h"

#include "KVPreferenceKeys.h"
#include "platform/KVUserDefaults.h"
#include "ui_Preferences.h"

namespace {

bool stored(const QString &key)
{
    return KVUserDefaults::standard().boolForKey(key);
}

void store(bool value, const QString &key)
{
    KVUserDefaults::standard().setBool(value, key);
}

} // namespace

KVPreferencesController::KVPreferencesController(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_ui(std::make_unique<Ui::Preferences>())
{
    m_ui->setupUi(this);
    setObjectName(QStringLiteral("preferencesWindow"));
    reloadFromPreferences();

    const std::pair<QCheckBox *, void (*)(bool)> actions[] = {
        {m_ui->autoUnmountVolumesCheckbox, &setPrefAutoUnmountVolumes},
        {m_ui->forceAutoUnmountCheckbox, &setPrefForceAutoUnmount},
        {m_ui->forceUnmountCheckbox, &setPrefForceUnmount},
        {m_ui->mountDiskImageAfterCreationCheckbox, &setPrefMountDiskImageAfterCreation},
        {m_ui->openFinderAfterMountCheckbox, &setPrefOpenFinderAfterMount},
        {m_ui->saveOpenRecentCheckbox, &setPrefSaveOpenRecent},
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
    m_ui->autoUnmountVolumesCheckbox->setChecked(prefAutoUnmountVolumes());
    m_ui->forceAutoUnmountCheckbox->setChecked(prefForceAutoUnmount());
    m_ui->forceUnmountCheckbox->setChecked(prefForceUnmount());
    m_ui->mountDiskImageAfterCreationCheckbox->setChecked(prefMountDiskImageAfterCreation());
    m_ui->openFinderAfterMountCheckbox->setChecked(prefOpenFinderAfterMount());
    m_ui->saveOpenRecentCheckbox->setChecked(prefSaveOpenRecent());
}

bool KVPreferencesController::prefAutoUnmountVolumes() { return stored(KVAutoUnmountVolumesKey); }
void KVPreferencesController::setPrefAutoUnmountVolumes(bool value) { store(value, KVAutoUnmountVolumesKey); }
bool KVPreferencesController::prefForceAutoUnmount() { return stored(KVForceAutoUnmountKey); }
void KVPreferencesController::setPrefForceAutoUnmount(bool value) { store(value, KVForceAutoUnmountKey); }
bool KVPreferencesController::prefForceUnmount() { return stored(KVForceUnmountKey); }
void KVPreferencesController::setPrefForceUnmount(bool value) { store(value, KVForceUnmountKey); }
bool KVPreferencesController::prefMountDiskImageAfterCreation() { return stored(KVMountDiskImageAfterCreationKey); }
void KVPreferencesController::setPrefMountDiskImageAfterCreation(bool value) { store(value, KVMountDiskImageAfterCreationKey); }
bool KVPreferencesController::prefOpenFinderAfterMount() { return stored(KVOpenFinderAfterMountKey); }
void KVPreferencesController::setPrefOpenFinderAfterMount(bool value) { store(value, KVOpenFinderAfterMountKey); }
bool KVPreferencesController::prefSaveOpenRecent() { return stored(KVSaveOpenRecentKey); }
void KVPreferencesController::setPrefSaveOpenRecent(bool value) { store(value, KVSaveOpenRecentKey); }
