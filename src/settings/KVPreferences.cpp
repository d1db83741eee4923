#include "KVPreferences.h"

#include "KVPreferenceKeys.h"
#include "platform/KVUserDefaults.h"

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

} // namespace KVPreferences
