#include "KVIdleVolumeTracker.h"

KVIdleVolumeTracker::KVIdleVolumeTracker(Clock clock, std::chrono::milliseconds checkInterval, QObject *parent)
    : QObject(parent)
    , m_clock(std::move(clock))
{
    m_timer.setInterval(checkInterval);
    // Whether an idle volume goes now or a few seconds later makes no difference.
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &KVIdleVolumeTracker::check);
}

void KVIdleVolumeTracker::setVolumes(const QList<KVVolumeItemPtr> &volumes)
{
    QHash<const KVVolumeItem *, Tracked> tracked;
    for (const KVVolumeItemPtr &item : volumes) {
        if (const auto known = m_tracked.constFind(item.get()); known != m_tracked.constEnd()) {
            tracked.insert(item.get(), *known);
            continue;
        }
        tracked.insert(item.get(), {item, m_clock()});
        connect(item.get(), &KVVolumeItem::fileSystemActivity, this,
                [this, raw = item.get()] { activity(raw); });
    }
    for (auto gone = m_tracked.cbegin(); gone != m_tracked.cend(); ++gone) {
        if (!tracked.contains(gone.key()))
            disconnect(gone->item.get(), nullptr, this, nullptr);
    }
    m_tracked = std::move(tracked);
}

void KVIdleVolumeTracker::setLimit(std::chrono::minutes limit)
{
    m_limit = limit;
    if (m_limit.count() > 0)
        m_timer.start();
    else
        m_timer.stop();
}

void KVIdleVolumeTracker::activity(const KVVolumeItem *item)
{
    const auto tracked = m_tracked.find(item);
    if (tracked == m_tracked.end())
        return;
    tracked->lastActivity = m_clock();
    tracked->reported = false;
}

void KVIdleVolumeTracker::check()
{
    if (m_limit.count() <= 0)
        return;
    const auto now = m_clock();
    QList<KVVolumeItemPtr> idle;
    for (Tracked &tracked : m_tracked) {
        if (tracked.reported || now - tracked.lastActivity < m_limit)
            continue;
        tracked.reported = true;
        idle.append(tracked.item);
    }
    if (!idle.isEmpty())
        Q_EMIT volumesIdle(idle);
}
