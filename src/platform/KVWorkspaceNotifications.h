#pragma once

#include <QObject>
#include <QVariantMap>

// Keys of the notifications' user info.
inline const QString NSDevicePath = QStringLiteral("NSDevicePath");                    // QString: where a volume was mounted
inline const QString NSWorkspaceVolumeURLKey = QStringLiteral("NSWorkspaceVolumeURLKey");       // QUrl: the volume (new place after a rename)
inline const QString NSWorkspaceVolumeOldURLKey = QStringLiteral("NSWorkspaceVolumeOldURLKey"); // QUrl: where a renamed volume was
inline const QString NSWorkspaceVolumeLocalizedNameKey = QStringLiteral("NSWorkspaceVolumeLocalizedNameKey"); // QString: its name

// The workspace's news about volumes: mounted, unmounted, renamed (moved).
// Signals are emitted on the GUI thread. Each engine listens itself; the shell
// does not. The system's notifications come from shared(); tests make their own
// instance and emit on it.
class KVWorkspaceNotifications : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // The notifications of this system, watched from first use on.
    static KVWorkspaceNotifications *shared();

Q_SIGNALS:
    void didMount(const QVariantMap &userInfo);
    void didUnmount(const QVariantMap &userInfo);
    void didRenameVolume(const QVariantMap &userInfo);
};
