#include "KVPreferences.h"

#include "KVPreferenceKeys.h"
#include "platform/KVUserDefaults.h"

#include <algorithm>

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

namespace KVPreferences {

bool prefAutoUnmountVolumes() { return stored(KVAutoUnmountVolumesKey); }
void setPrefAutoUnmountVolumes(bool value) { store(value, KVAutoUnmountVolumesKey); }
bool prefForceAutoUnmount() { return stored(KVForceAutoUnmountKey); }
void setPrefForceAutoUnmount(bool value) { store(value, KVForceAutoUnmountKey); }
bool prefForceUnmount() { return stored(KVForceUnmountKey); }
void setPrefForceUnmount(bool value) { store(value, KVForceUnmountKey); }
bool prefMountDiskImageAfterCreation() { return stored(KVMountDiskImageAfterCreationKey); }
void setPrefMountDiskImageAfterCreation(bool value) { store(value, KVMountDiskImageAfterCreationKey); }
bool prefOpenFinderAfterMount() { return stored(KVOpenFinderAfterMountKey); }
void setPrefOpenFinderAfterMount(bool value) { store(value, KVOpenFinderAfterMountKey); }
bool prefSaveOpenRecent() { return stored(KVSaveOpenRecentKey); }
void setPrefSaveOpenRecent(bool value) { store(value, KVSaveOpenRecentKey); }

bool prefUnmountBeforeSleep() { return stored(KVUnmountBeforeSleepKey); }
void setPrefUnmountBeforeSleep(bool value) { store(value, KVUnmountBeforeSleepKey); }
bool prefUnmountOnScreenLock() { return stored(KVUnmountOnScreenLockKey); }
void setPrefUnmountOnScreenLock(bool value) { store(value, KVUnmountOnScreenLockKey); }
bool prefUnmountWhenIdle() { return stored(KVUnmountWhenIdleKey); }
void setPrefUnmountWhenIdle(bool value) { store(value, KVUnmountWhenIdleKey); }
int prefIdleMinutes()
{
    // Nothing usable stored: the default, never a surprise of a minute.
    const int stored = KVUserDefaults::standard().object(KVIdleMinutesKey).toInt();
    return stored > 0 ? stored : DefaultIdleMinutes;
}
void setPrefIdleMinutes(int minutes) { KVUserDefaults::standard().setObject(std::max(1, minutes), KVIdleMinutesKey); }
bool prefShowInPanel() { return stored(KVShowInPanelKey); }
void setPrefShowInPanel(bool value) { store(value, KVShowInPanelKey); }
bool prefKeepRunningInPanel() { return prefShowInPanel() && stored(KVKeepRunningInPanelKey); }
void setPrefKeepRunningInPanel(bool value) { store(value, KVKeepRunningInPanelKey); }
bool prefDesktopNotifications() { return stored(KVDesktopNotificationsKey); }
void setPrefDesktopNotifications(bool value) { store(value, KVDesktopNotificationsKey); }

} // namespace KVPreferences
