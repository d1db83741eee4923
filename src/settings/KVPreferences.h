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

bool prefUnmountBeforeSleep();
void setPrefUnmountBeforeSleep(bool value);
bool prefUnmountOnScreenLock();
void setPrefUnmountOnScreenLock(bool value);
bool prefUnmountWhenIdle();
void setPrefUnmountWhenIdle(bool value);
// Minutes without activity before a volume is unmounted; at least 1.
inline constexpr int DefaultIdleMinutes = 30;
int prefIdleMinutes();
void setPrefIdleMinutes(int minutes);
bool prefShowInPanel();
void setPrefShowInPanel(bool value);
// Closing the window leaves Korvelle in the panel; only with prefShowInPanel().
bool prefKeepRunningInPanel();
void setPrefKeepRunningInPanel(bool value);
bool prefDesktopNotifications();
void setPrefDesktopNotifications(bool value);

} // namespace KVPreferences
