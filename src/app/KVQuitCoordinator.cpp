#include "KVQuitCoordinator.h"

#include "platform/KVMainQueue.h"

KVQuitCoordinator::KVQuitCoordinator(QObject *parent)
    : QObject(parent)
{
    m_state->coordinator = this;
}

KVQuitCoordinator::Reply KVQuitCoordinator::applicationShouldTerminate(bool autoUnmountVolumes,
                                                                       const QList<KVVolumeItemPtr> &volumes,
                                                                       const std::function<void()> &unmountVolumes)
{
    if (!autoUnmountVolumes || volumes.isEmpty())
        return Reply::Now;
    if (m_state->quitting)
        return Reply::Later; // already unmounting for a quit
    m_state->count = 0;
    m_state->quantity = volumes.size();
    m_state->quitting = true;
    m_waitingFor.clear();
    for (const KVVolumeItemPtr &volume : volumes)
        m_waitingFor.append(volume->name());
    Q_EMIT waitingForChanged(m_waitingFor);
    unmountVolumes();
    return Reply::Later;
}

KVQuitCoordinator::Report KVQuitCoordinator::reportFor(const QString &volumeName, bool countsForQuit) const
{
    return [state = m_state, volumeName, countsForQuit] {
        if (!state->quitting)
            return false;
        if (countsForQuit) {
            const bool last = ++state->count == state->quantity;
            KVMainQueue::post(state->coordinator, [state, volumeName, last] {
                state->coordinator->reported(volumeName, last);
            });
        }
        return true;
    };
}

void KVQuitCoordinator::reported(const QString &volumeName, bool last)
{
    m_waitingFor.removeOne(volumeName);
    Q_EMIT waitingForChanged(m_waitingFor);
    if (last)
        Q_EMIT terminate();
}
