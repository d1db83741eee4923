#include "platform/KVOperationQueue.h"

#include <QTest>

#include <atomic>
#include <mutex>
#include <thread>

class TestKVOperationQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsOneAtATimeInOrder()
    {
        std::mutex mutex;
        std::vector<int> order;
        std::atomic<int> running{0};
        std::atomic<bool> overlapped{false};
        {
            KVOperationQueue queue;
            for (int i = 0; i < 200; ++i) {
                queue.addOperation([&, i] {
                    if (running.fetch_add(1) != 0)
                        overlapped = true;
                    std::this_thread::yield();
                    {
                        std::lock_guard lock(mutex);
                        order.push_back(i);
                    }
                    running.fetch_sub(1);
                });
            }
            QTRY_VERIFY([&] { std::lock_guard lock(mutex); return order.size() == 200; }());
        }
        QVERIFY(!overlapped);
        for (int i = 0; i < 200; ++i)
            QCOMPARE(order[size_t(i)], i);
    }

    void destructionDropsWhatHasNotStarted()
    {
        std::atomic<bool> started{false};
        std::atomic<bool> release{false};
        std::atomic<int> ran{0};
        {
            KVOperationQueue queue;
            queue.addOperation([&] {
                started = true;
                while (!release)
                    std::this_thread::yield();
                ++ran;
            });
            queue.addOperation([&] { ++ran; });
            QTRY_VERIFY(started.load());
        }
        release = true; // the running operation finishes on its own
        QTRY_COMPARE(ran.load(), 1);
        QTest::qWait(50);
        QCOMPARE(ran.load(), 1);
    }
};

QTEST_GUILESS_MAIN(TestKVOperationQueue)
#include "tst_kvoperationqueue.moc"
