// The desktop's services on private buses, with fake logind, screen saver and
// notification services that the test drives: what each monitor hears, which
// locks it holds, and what happens where a service is missing or leaves.
#include "platform/KVDesktopNotifier.h"
#include "platform/KVScreenLockMonitor.h"
#include "platform/KVSleepMonitor.h"

#include "KVFakeDesktop.h"
#include "KVPrivateBus.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

class TestKVDesktopServices : public QObject
{
    Q_OBJECT

public:
    explicit TestKVDesktopServices(KVPrivateBuses *buses) : m_buses(buses) {}

private Q_SLOTS:
    void notificationCarriesSummaryAndBody()
    {
        KVFakeNotifications service(m_buses->session.address());
        KVDesktopNotifier notifier;
        notifier.probe();
        QTRY_COMPARE(notifier.availability()->state(), KVServiceAvailability::State::Available);
        notifier.notify(QStringLiteral("Conversion finished"), QStringLiteral("“Backup” is encrypted."));
        QTRY_COMPARE(service.shown().size(), 1);
        QCOMPARE(service.shown().constFirst().summary, QStringLiteral("Conversion finished"));
        QCOMPARE(service.shown().constFirst().body, QStringLiteral("“Backup” is encrypted."));
        QCOMPARE(service.calls(QStringLiteral("Notify")).constFirst().arguments().value(0).toString(),
                 QStringLiteral("Korvelle"));
    }

    // Without a service every feature says so once and then stays quiet.
    void missingServicesDisableTheirFeature()
    {
        KVDesktopNotifier notifier;
        KVSleepMonitor sleep;
        KVScreenLockMonitor screen;
        QSignalSpy notifierChanged(notifier.availability(), &KVServiceAvailability::changed);
        notifier.probe();
        sleep.start();
        screen.start();
        QTRY_VERIFY(notifier.availability()->isUnavailable());
        QTRY_VERIFY(sleep.availability()->isUnavailable());
        QTRY_VERIFY(screen.availability()->isUnavailable());
        QVERIFY(!sleep.holdsDelayLock());
        notifier.notify(QStringLiteral("dropped"), QString());
        QTest::qWait(100);
        QCOMPARE(notifierChanged.size(), 1);
    }

    // Sleep, a repeated announcement, release and resume: at most one lock
    // is ever held, and every lock taken is closed in the end.
    void sleepHoldsOneDelayLockUntilAllowed()
    {
        KVFakeLogind logind(m_buses->system.address());
        auto monitor = std::make_unique<KVSleepMonitor>();
        QSignalSpy aboutToSleep(monitor.get(), &KVSleepMonitor::aboutToSleep);
        QSignalSpy resumed(monitor.get(), &KVSleepMonitor::resumed);
        monitor->start();
        QTRY_VERIFY(monitor->holdsDelayLock());
        QCOMPARE(logind.locksHeld(), 1);
        QCOMPARE(logind.calls(QStringLiteral("Inhibit")).constFirst().arguments().value(3).toString(),
                 QStringLiteral("delay"));

        logind.prepareForSleep(true);
        logind.prepareForSleep(true);
        QTRY_COMPARE(aboutToSleep.size(), 1);
        QTest::qWait(100);
        QCOMPARE(aboutToSleep.size(), 1);
        QCOMPARE(logind.locksHeld(), 1); // held while the work runs
        monitor->allowSleep();
        QTRY_COMPARE(logind.locksHeld(), 0);

        logind.prepareForSleep(false);
        QTRY_COMPARE(resumed.size(), 1);
        QTRY_COMPARE(logind.locksHeld(), 1);
        QCOMPARE(logind.locksTaken(), 2);

        // Resumed before the work was done: the lock stays for the next sleep.
        logind.prepareForSleep(true);
        QTRY_COMPARE(aboutToSleep.size(), 2);
        logind.prepareForSleep(false);
        QTRY_COMPARE(resumed.size(), 2);
        monitor->allowSleep();
        QTest::qWait(100);
        QCOMPARE(logind.locksTaken(), 2);
        QCOMPARE(logind.locksHeld(), 1);

        monitor->stop();
        QCOMPARE(logind.locksHeld(), 0);
        monitor.reset();
        QCOMPARE(logind.locksHeld(), 0);
    }

    void sleepLockGoesWithLogind()
    {
        auto logind = std::make_unique<KVFakeLogind>(m_buses->system.address());
        KVSleepMonitor monitor;
        monitor.start();
        QTRY_VERIFY(monitor.holdsDelayLock());
        logind->leaveBus();
        QTRY_VERIFY(!monitor.holdsDelayLock());
        QCOMPARE(logind->locksHeld(), 0);
    }

    void screenLockCountsOncePerLock()
    {
        KVFakeLogind logind(m_buses->system.address());
        KVFakeScreenSaver saver(m_buses->session.address());
        KVScreenLockMonitor monitor;
        QSignalSpy locked(&monitor, &KVScreenLockMonitor::screenLocked);
        monitor.start();
        QTRY_COMPARE(monitor.availability()->state(), KVServiceAvailability::State::Available);
        // Wait until the session's Lock is listened to as well.
        QTRY_COMPARE(logind.calls(QStringLiteral("GetSessionByPID")).size(), 1);
        QTest::qWait(100);

        saver.setActive(true);
        QTRY_COMPARE(locked.size(), 1);
        logind.lockSession(); // the same lock, told twice
        QTest::qWait(100);
        QCOMPARE(locked.size(), 1);

        saver.setActive(false);
        QTest::qWait(100); // the unlock and the next lock come over different buses
        logind.lockSession();
        QTRY_COMPARE(locked.size(), 2);

        monitor.stop();
        saver.setActive(false);
        saver.setActive(true);
        QTest::qWait(100);
        QCOMPARE(locked.size(), 2);
    }

private:
    KVPrivateBuses *m_buses;
};

int main(int argc, char *argv[])
{
    KVPrivateBuses buses; // before the application, which may reach for a bus as it starts
    QCoreApplication app(argc, argv);
    TestKVDesktopServices test(&buses);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_kvdesktopservices.moc"
