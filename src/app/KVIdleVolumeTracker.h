#pragma once

#include "model/KVVolumeItem.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

// Which mounted volumes have gone without file-system activity for longer
// than the limit. A volume's time starts when it joins the list and starts
// again with every event its item reports. An idle volume is reported once;
// it is reported again only after new activity and another idle stretch.
//
// The clock is given so that tests do not have to wait; checks run every
// `checkInterval` while a limit is set.
class KVIdleVolumeTracker : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit KVIdleVolumeTracker(Clock clock = &std::chrono::steady_clock::now,
                                 std::chrono::milliseconds checkInterval = std::chrono::seconds(30),
                                 QObject *parent = nullptr);

    void setVolumes(const QList<KVVolumeItemPtr> &volumes);
    // Zero turns the tracking off.
    void setLimit(std::chrono::minutes limit);
    std::chrono::minutes limit() const { return m_limit; }

public Q_SLOTS:
    void check();

Q_SIGNALS:
    void volumesIdle(const QList<KVVolumeItemPtr> &volumes);

private:
    struct Tracked
    {
        KVVolumeItemPtr item;
        std::chrono::steady_clock::time_point lastActivity;
        bool reported = false;
    };

    void activity(const KVVolumeItem *item);

    Clock m_clock;
    std::chrono::minutes m_limit{0};
    QTimer m_timer;
    QHash<const KVVolumeItem *, Tracked> m_tracked;
};
