#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QObject>
#include <QPointer>

#include <functional>

class KVDiskImage;
class KVQuitCoordinator;
class QWidget;

// Every unmount the user asks for, and those of a quit. Images and disks
// alike are unmounted through the image engine.
//
// The force flag follows the preferences: "KVForceUnmount" for the user's
// unmounts, "KVForceAutoUnmount" (with "KVAutoUnmountVolumes") for those of a
// quit. During a quit failures are neither logged nor shown. Otherwise a
// failure is logged and shown, except an engine that ended abnormally, which
// is only logged. A volume that is busy gets an alert that names the
// processes holding files on it and offers to unmount it by force.
class KVUnmountController : public QObject
{
    Q_OBJECT

public:
    KVUnmountController(KVQuitCoordinator *quit, QWidget *window, QObject *parent = nullptr);

    void setDi(KVDiskImage *di) { m_di = di; }

    // Images and disks that are not the system's; anything else is ignored
    // and reports nothing, not even to a quit.
    void unmountVolume(const KVVolumeItemPtr &item);
    void unmountAll(const QList<KVVolumeItemPtr> &volumes);

    // For a command that goes on once the volume is gone (erase key,
    // compact): without force. `unmounted` follows on the GUI thread; a
    // failure is shown instead (a busy volume with its processes, no forced
    // unmount: the command is over) after `failed` has run.
    void unmountForCommand(const KVVolumeItemPtr &item, std::function<void()> unmounted,
                           std::function<void(const KVAppError &error)> failed = {});

    // An unmount the user did not ask for at that moment (before sleep, at a
    // screen lock, after idle time): forced by the quit's rule
    // ("KVForceAutoUnmount"), never shown. `done` follows on the GUI thread
    // with the failure, if any, and for a busy volume the processes holding it.
    using AutomaticDone = std::function<void(const KVOptionalError &error, const QString &processes)>;
    void unmountAutomatically(const KVVolumeItemPtr &item, AutomaticDone done);

    bool forceUnmount() const;

Q_SIGNALS:
    // An unmount of a quit failed: the quit goes on without it.
    void quitUnmountFailed(const QString &volumeName, const KVAppError &error);

private:
    void unmount(const KVVolumeItemPtr &item, bool force);
    // On the engine's thread: a busy volume's failure carries the processes
    // that hold it to the GUI thread.
    static std::function<void(const KVOptionalError &)>
    onGuiThread(QPointer<KVUnmountController> self, const QString &mountPoint,
                std::function<void(const KVOptionalError &error, const QString &processes)> report);
    void showFailure(const KVVolumeItemPtr &item, const KVAppError &error, const QString &processes,
                     bool offerForce);

    QPointer<KVDiskImage> m_di;
    KVQuitCoordinator *m_quit;
    QPointer<QWidget> m_window;
};
