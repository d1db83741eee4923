#pragma once

// The user's preferences, read from the settings store on every call (nothing
// is cached, so a change made anywhere counts at once). The preferences window
// shows and sets them; everything else only reads them.
namespace KVPreferences {

bool prefAutoUnmountVolumes();
void setPrefAutoUnmountVolumes(bool value);
bool prefForceAutoUnmount();
void setPrefForceAutoUnmount(bool value);
bool prefForceUnmount();
void setPrefForceUnmount(bool value);
bool prefMountDiskImageAfterCreation();
void setPrefMountDiskImageAfterCreation(bool value);
bool prefOpenFinderAfterMount();
void setPrefOpenFinderAfterMount(bool value);
bool prefSaveOpenRecent();
void setPrefSaveOpenRecent(bool value);

} // namespace KVPreferences
