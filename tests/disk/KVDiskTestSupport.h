#pragma once

#include "disk/KVDisk.h"
#include "disk/KVDiskDelegate.h"
#include "platform/KVMainQueue.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVValue.h"

#include "KVToolDouble.h"

#include <QTest>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>

// What an operation handed its block: how often, with what, on which thread.
class BlockRecord
{
public:
    KVDisk::ErrorBlock errorBlock()
    {
        return [this](const KVOptionalError &error) { record(error); };
    }

    KVDisk::ProgressBlock progressBlock()
    {
        return [this](const std::optional<QString> &line, bool finished, const KVOptionalError &error) {
            {
                std::lock_guard lock(m_mutex);
                m_lines.append(line);
                m_finishedFlags.append(finished);
                if (!finished && error)
                    m_errorBeforeEnd = true;
                m_threads.append(QThread::currentThread());
            }
            if (finished)
                record(error);
        };
    }

    // Waits for the final call, then for what the engine posted to the GUI thread before it.
    [[nodiscard]] bool wait()
    {
        if (!QTest::qWaitFor([this] { return m_calls.load() > 0; }, 30000))
            return false;
        return drainMainQueue();
    }

    static bool drainMainQueue()
    {
        auto drained = std::make_shared<bool>(false);
        KVMainQueue::post([drained] { *drained = true; });
        return QTest::qWaitFor([drained] { return *drained; }, 30000);
    }

    int calls() const { return m_calls.load(); }
    KVOptionalError error() const
    {
        std::lock_guard lock(m_mutex);
        return m_error;
    }
    QThread *thread() const
    {
        std::lock_guard lock(m_mutex);
        return m_thread;
    }
    bool calledOffTheGuiThread() const { return thread() && thread() != QCoreApplication::instance()->thread(); }

    // Progress blocks: every line handed on, then the nullopt of the last call.
    QList<std::optional<QString>> lines() const
    {
        std::lock_guard lock(m_mutex);
        return m_lines;
    }
    QList<bool> finishedFlags() const
    {
        std::lock_guard lock(m_mutex);
        return m_finishedFlags;
    }
    bool errorBeforeEnd() const { return m_errorBeforeEnd; }
    bool allOnOneWorkerThread() const
    {
        std::lock_guard lock(m_mutex);
        return !m_threads.isEmpty() && m_threads.count(m_threads.first()) == m_threads.size()
            && m_threads.first() != QCoreApplication::instance()->thread();
    }

private:
    void record(const KVOptionalError &error)
    {
        {
            std::lock_guard lock(m_mutex);
            m_error = error;
            m_thread = QThread::currentThread();
        }
        ++m_calls;
    }

    mutable std::mutex m_mutex;
    std::atomic<int> m_calls{0};
    KVOptionalError m_error;
    QThread *m_thread = nullptr;
    QList<std::optional<QString>> m_lines;
    QList<bool> m_finishedFlags;
    QList<QThread *> m_threads;
    bool m_errorBeforeEnd = false;
};

class RecordingDelegate : public KVDiskDelegate
{
public:
    void mountedDisksDidChange(KVDisk *disks, const QList<KVVolumeItemPtr> &volumes) override
    {
        changes.append(volumes);
        engines.append(disks);
        allOnGuiThread = allOnGuiThread && KVMainQueue::isMainThread();
    }
    void mountedDisksUpdateDidFail(KVDisk *, const KVAppError &error) override
    {
        failures.append(error);
        allOnGuiThread = allOnGuiThread && KVMainQueue::isMainThread();
    }

    QList<QList<KVVolumeItemPtr>> changes;
    QList<KVDisk *> engines;
    QList<KVAppError> failures;
    bool allOnGuiThread = true;
};

// An engine whose tools are doubles and whose notifications the test sends.
struct DiskWithDoubles
{
    DiskWithDoubles()
    {
        disk.setDelegate(&delegate);
    }

    // Waits until every operation queued so far has run and what they posted
    // to the GUI thread has been done.
    [[nodiscard]] bool waitForQueue()
    {
        auto reached = std::make_shared<std::atomic<bool>>(false);
        disk.mainDiskProcessingQueue().addOperation([reached] { *reached = true; });
        return QTest::qWaitFor([reached] { return reached->load(); }, 30000) && BlockRecord::drainMainQueue();
    }

    // Fills mountedDisks from a storage report (and lets the poll that follows a change run).
    [[nodiscard]] bool loadMountedDisks(const QString &report = QStringLiteral("system_profiler/storage-corestorage.xml"))
    {
        systemProfiler.setResponseFromFile(report);
        BlockRecord done;
        disk.updateMountedDisks(done.errorBlock());
        return done.wait() && !done.error() && waitForQueue();
    }

    KVVolumeItemPtr mountedDisk(const QString &name) const
    {
        for (const KVVolumeItemPtr &item : disk.mountedDisks()) {
            if (item->name() == name)
                return item;
        }
        return nullptr;
    }

    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVToolDouble systemProfiler{QStringLiteral("system_profiler")};
    KVWorkspaceNotifications workspace;
    RecordingDelegate delegate;
    KVDisk disk{KVToolPaths{QString(), diskutil.path(), systemProfiler.path()}, &workspace};
};

inline QStringList names(const QList<KVVolumeItemPtr> &items)
{
    QStringList names;
    for (const KVVolumeItemPtr &item : items)
        names.append(item->name());
    return names;
}
