#pragma once

#include <QString>

// Keys of the user defaults.
inline const QString KVAnimationDurationMultiplierKey = QStringLiteral("animationDurationMultiplier");
inline const QString KVShowWelcomeHelpKey = QStringLiteral("showWelcomeHelp");
inline const QString KVAutoUnmountVolumesKey = QStringLiteral("KVAutoUnmountVolumes");
inline const QString KVForceAutoUnmountKey = QStringLiteral("KVForceAutoUnmount");
inline const QString KVForceUnmountKey = QStringLiteral("KVForceUnmount");
inline const QString KVMountDiskImageAfterCreationKey = QStringLiteral("KVMountDiskImageAfterCreation");
inline const QString KVOpenFinderAfterMountKey = QStringLiteral("KVOpenFinderAfterMount");
inline const QString KVSaveOpenRecentKey = QStringLiteral("KVSaveOpenRecent");
// The desktop: automatic unmounting, the panel entry and notifications.
inline const QString KVUnmountBeforeSleepKey = QStringLiteral("KVUnmountBeforeSleep");
inline const QString KVUnmountOnScreenLockKey = QStringLiteral("KVUnmountOnScreenLock");
inline const QString KVUnmountWhenIdleKey = QStringLiteral("KVUnmountWhenIdle");
inline const QString KVIdleMinutesKey = QStringLiteral("KVIdleMinutes");
inline const QString KVShowInPanelKey = QStringLiteral("KVShowInPanel");
inline const QString KVKeepRunningInPanelKey = QStringLiteral("KVKeepRunningInPanel");
inline const QString KVDesktopNotificationsKey = QStringLiteral("KVDesktopNotifications");
inline const QString KVFavouritesKey = QStringLiteral("favourites");
// Where favourites that could not be read are kept, so that nothing of the
// user's is lost when a newer or damaged archive is found.
inline const QString KVUnreadableFavouritesKey = QStringLiteral("favouritesUnreadable");
