#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <memory>

class KVUnmountController;

// Unmounts volumes when the desktop gives the cue (the machine goes to sleep,
// the screen locks, a volume has been idle), through the unmount controller's
// automatic unmount, which forces by the quit's rule.
//
// A volume is unmounted at most once at a time: a cue that names a volume
// already being unmounted waits for that unmount instead of starting another.
// Volumes that a running task works on (one converting, or one the shell
// reports in use) are left alone, as are the system's own.
//
// When a cue's unmounts have all reported, one notification says how many
// went and why; a volume that stays mounted because it is busy gets one of its
// own naming the processes that hold it, as does any other failure.
class KVAutoUnmountController : public QObject
{
    Q_OBJECT

public:
    enum class Reason { Sleep, ScreenLock, Idle };
    using Notify = std::function<void(const QString &summary, const QString &body)>;

    KVAutoUnmountController(KVUnmountController *unmounts, Notify notify, QObject *parent = nullptr);
    ~KVAutoUnmountController() override;

    void setVolumes(const QList<KVVolumeItemPtr> &volumes) { m_volumes = volumes; }
    void setInUse(std::function<bool(const KVVolumeItemPtr &item)> inUse) { m_inUse = std::move(inUse); }

    // `done` runs on the GUI thread once every volume of this cue has
    // reported, those that an earlier cue was already unmounting included.
    void unmount(const QList<KVVolumeItemPtr> &volumes, Reason reason, std::function<void()> done = {});
    void unmountAll(Reason reason, std::function<void()> done = {}) { unmount(m_volumes, reason, std::move(done)); }

    int unmountsRunning() const { return int(m_running.size()); }

private:
    struct Cue;
    struct Running
    {
        std::shared_ptr<Cue> startedBy;
        QList<std::shared_ptr<Cue>> waiting;
    };

    bool mayUnmount(const KVVolumeItemPtr &item) const;
    void unmounted(const QString &mountPoint, const QString &name, const KVOptionalError &error,
                   const QString &processes);
    void release(const std::shared_ptr<Cue> &cue);
    void report(const Cue &cue);
    static QString because(Reason reason);

    KVUnmountController *m_unmounts;
    Notify m_notify;
    std::function<bool(const KVVolumeItemPtr &item)> m_inUse;
    QList<KVVolumeItemPtr> m_volumes;
    QHash<QString, Running> m_running; // by mount point
};
