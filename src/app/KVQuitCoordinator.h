#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>

// A quit that may have to wait for the mounted volumes to unmount.
//
// Once a quit is deferred it stays under way: asking again changes nothing.
// Every unmount started for it reports back, failures included, and once the
// last one has, terminate() follows. Until then waitingFor() names the volumes
// that have not reported, so that the user sees why the quit takes long.
class KVQuitCoordinator : public QObject
{
    Q_OBJECT

public:
    enum class Reply { Now, Later };

    explicit KVQuitCoordinator(QObject *parent = nullptr);

    // Now when nothing is to be unmounted first. Later otherwise; when this
    // call starts the quit, `unmountVolumes` unmounts `volumes`, each with a
    // report made by reportFor().
    Reply applicationShouldTerminate(bool autoUnmountVolumes, const QList<KVVolumeItemPtr> &volumes,
                                     const std::function<void()> &unmountVolumes);
    bool isQuitting() const { return m_state->quitting; }

    // Given to one unmount's completion, called on whatever thread it reports:
    // true when the quit took the report (it is then neither logged nor
    // shown). Only unmounts that `countsForQuit` bring the quit nearer.
    using Report = std::function<bool()>;
    Report reportFor(const QString &volumeName, bool countsForQuit) const;

    const QStringList &waitingFor() const { return m_waitingFor; }

Q_SIGNALS:
    void terminate();
    // The volumes the quit still waits for, by name.
    void waitingForChanged(const QStringList &volumeNames);

private:
    void reported(const QString &volumeName, bool last);

    // Shared with the completions, which may outlive this object.
    struct State
    {
        std::atomic<bool> quitting{false};
        std::atomic<qint64> quantity{0};
        std::atomic<qint64> count{0};
        QPointer<KVQuitCoordinator> coordinator;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
    QStringList m_waitingFor;
};
