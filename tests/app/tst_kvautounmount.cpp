// Automatic unmounting and the desktop's notifications, on private buses with
// fake logind, screen saver and notification services that the test drives,
// and hdiutil as a tool double: what each cue unmounts, what it leaves alone,
// which locks are held, and what the desktop is told.
#include "app/KVAutoUnmountController.h"
#include "app/KVDesktopIntegration.h"
#include "app/KVIdleVolumeTracker.h"
#include "app/KVQuitCoordinator.h"
#include "platform/KVFileSystemEventWatcher.h"
#include "platform/KVServiceAvailability.h"
#include "settings/KVPreferences.h"

#include "../disk/KVDiskTestSupport.h"
#include "KVFakeDesktop.h"
#include "KVDesktopBench.h"
#include "KVMountFixture.h"
#include "KVPrivateBus.h"

#include <QProcess>
#include <QSignalSpy>

using namespace KVDesktopBench;
using namespace std::chrono_literals;

namespace {

QStringList bodies(const KVFakeNotifications &service)
{
    QStringList texts;
    for (const KVFakeNotifications::Shown &shown : service.shown())
        texts.append(shown.summary + u'|' + shown.body);
    return texts;
}

} // namespace

class TestKVAutoUnmount : public QObject
{
    Q_OBJECT

public:
    explicit TestKVAutoUnmount(KVPrivateBuses *buses) : m_buses(buses) {}

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }
    void init()
    {
        resetUserDefaults();
        resetDesktopPreferences();
        KVPreferences::setPrefDesktopNotifications(true);
    }

    // Both volumes go before sleep, sleep waits for them, and a second
    // announcement or a screen lock meanwhile unmounts nothing twice.
    void sleepUnmountsEveryVolumeThenReleasesTheLock()
    {
        KVFakeLogind logind(m_buses->system.address());
        KVFakeScreenSaver saver(m_buses->session.address());
        KVFakeNotifications notifications(m_buses->session.address());
        KVPreferences::setPrefUnmountBeforeSleep(true);
        KVPreferences::setPrefUnmountOnScreenLock(true);
        Bench bench;
        bench.desktop->start();
        QTRY_COMPARE(logind.locksHeld(), 1);
        QTRY_COMPARE(logind.calls(QStringLiteral("GetSessionByPID")).size(), 1);

        bench.hold(true);
        logind.prepareForSleep(true);
        QTRY_COMPARE(bench.hdiutil.runCount(), 1); // the first detach waits
        logind.prepareForSleep(true);
        saver.setActive(true);
        QTest::qWait(200);
        QCOMPARE(logind.locksHeld(), 1); // sleep waits for the unmounts
        bench.hold(false);
        QTRY_COMPARE(logind.locksHeld(), 0);
        QCOMPARE(bench.detached(), (QStringList{"/dev/disk1", "/dev/disk2"}));
        QCOMPARE(bench.desktop->autoUnmounts()->unmountsRunning(), 0);
        QTRY_COMPARE(notifications.shown().size(), 1);
        const QString shown = bodies(notifications).constFirst();
        for (const char *part : {"Korvelle unmounted 2 volumes (", "“Volume1”", "“Volume2”",
                                 ") because the computer is going to sleep."})
            QVERIFY2(shown.contains(QString::fromUtf8(part)), qPrintable(shown));

        // Awake again: a new lock for the next sleep, and only one.
        logind.prepareForSleep(false);
        QTRY_COMPARE(logind.locksHeld(), 1);
        QCOMPARE(logind.locksTaken(), 2);
        bench.desktop.reset();
        QCOMPARE(logind.locksHeld(), 0);
    }

    void screenLockFollowsItsPreference_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<QStringList>("detached");
        QTest::newRow("on") << true << QStringList{"/dev/disk1", "/dev/disk2"};
        QTest::newRow("off") << false << QStringList();
    }

    void screenLockFollowsItsPreference()
    {
        QFETCH(bool, enabled);
        QFETCH(QStringList, detached);
        KVFakeScreenSaver saver(m_buses->session.address());
        KVFakeNotifications notifications(m_buses->session.address());
        Bench bench;
        bench.desktop->start();
        KVPreferences::setPrefUnmountOnScreenLock(enabled); // changed while running
        QTRY_VERIFY(!bench.desktop->services().screenLock->isUnavailable()
                    && bench.desktop->services().screenLock->state() != KVServiceAvailability::State::Unknown);
        QTest::qWait(100);
        saver.setActive(true);
        QTRY_COMPARE_WITH_TIMEOUT(bench.detached(), detached, 10000);
        QTest::qWait(200);
        QCOMPARE(bench.detached(), detached);
        QTRY_COMPARE(notifications.shown().size(), enabled ? 1 : 0);
    }

    // A busy volume stays mounted unless the quit's force rule applies; the
    // notification names the process that holds it.
    void busyVolumeIsLeftMountedAndItsUsersNamed_data()
    {
        QTest::addColumn<bool>("force");
        QTest::newRow("not forced") << false;
        QTest::newRow("forced") << true;
    }

    void busyVolumeIsLeftMountedAndItsUsersNamed()
    {
        QFETCH(bool, force);
        QTemporaryDir volumeFolder(QStringLiteral("/dev/shm/korvelle-busy-XXXXXX"));
        if (!volumeFolder.isValid())
            QSKIP("no /dev/shm here");
        QProcess resident;
        resident.setWorkingDirectory(volumeFolder.path());
        resident.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        QVERIFY(resident.waitForStarted());
        KVFakeNotifications notifications(m_buses->session.address());
        KVPreferences::setPrefForceAutoUnmount(force);
        Bench bench({volumeFolder.path()});
        bench.hdiutil.addFile(QStringLiteral("detach-busy"), {});
        bool done = false;
        bench.desktop->autoUnmounts()->unmountAll(KVAutoUnmountController::Reason::ScreenLock, [&done] { done = true; });
        QTRY_VERIFY(done);
        QTRY_COMPARE(notifications.shown().size(), 1);
        const QString shown = bodies(notifications).constFirst();
        QCOMPARE(bench.hdiutil.arguments(1).contains(QStringLiteral("-force")), force);
        if (force) {
            QVERIFY2(shown.startsWith(QStringLiteral("Volume unmounted|")), qPrintable(shown));
        } else {
            QVERIFY2(shown.startsWith(QStringLiteral("“%1” is still mounted|").arg(QFileInfo(volumeFolder.path()).fileName())),
                     qPrintable(shown));
            QVERIFY2(shown.contains(QStringLiteral("sleep (PID %1)").arg(resident.processId())), qPrintable(shown));
        }
        QVERIFY(!openAlert()); // nobody was at the screen to answer one
        resident.kill();
        resident.waitForFinished();
    }

    // A volume with no activity past the limit goes, one with a recent
    // event stays; an idle volume is reported once, not at every check.
    void idleVolumePastItsLimitIsUnmounted()
    {
        auto now = std::chrono::steady_clock::time_point();
        KVIdleVolumeTracker tracker([&now] { return now; });
        Bench bench;
        KVAutoUnmountController controller(bench.commands->unmounts(), {});
        connect(&tracker, &KVIdleVolumeTracker::volumesIdle, &controller,
                [&controller](const QList<KVVolumeItemPtr> &idle) {
                    controller.unmount(idle, KVAutoUnmountController::Reason::Idle);
                });
        tracker.setLimit(30min);
        tracker.setVolumes(bench.volumes);
        auto *watcher = new KVFileSystemEventWatcher(bench.volumes.at(1)->mountPoint());
        bench.volumes.at(1)->setEvents(watcher);

        now += 25min;
        Q_EMIT watcher->eventOccurred(bench.volumes.at(1)->mountPoint());
        tracker.check();
        now += 6min; // 31 minutes for the first, 6 since the event for the second
        tracker.check();
        tracker.check();
        QTRY_COMPARE(bench.detached(), QStringList{"/dev/disk1"});
        QTest::qWait(100);
        QCOMPARE(bench.detached(), QStringList{"/dev/disk1"});

        now += 30min;
        tracker.check();
        QTRY_COMPARE(bench.detached(), (QStringList{"/dev/disk1", "/dev/disk2"}));
        tracker.setLimit(0min);
        now += 24h;
        tracker.check();
        QCOMPARE(bench.hdiutil.runCount(), 2);
    }

    // A volume that a dialog works on, one that converts, and the system's
    // own are not touched.
    void volumesInUseAreLeftAlone()
    {
        Bench bench;
        bench.volumes.at(0)->setConverting(true);
        KVAutoUnmountController controller(bench.commands->unmounts(), {});
        controller.setInUse([&bench](const KVVolumeItemPtr &item) { return item == bench.volumes.at(1); });
        bool done = false;
        controller.unmount(bench.volumes, KVAutoUnmountController::Reason::ScreenLock, [&done] { done = true; });
        QVERIFY(done);
        QTest::qWait(100);
        QCOMPARE(bench.hdiutil.runCount(), 0);
    }

    void conversionThatEndsIsNotifiedOnce()
    {
        KVFakeNotifications notifications(m_buses->session.address());
        Bench bench;
        DiskWithDoubles d;
        d.disk.setUpdateMountedDisksStatusInterval(1h); // polled by hand below
        d.diskutil.setResponse(1, KVToolDouble::readFixture(QStringLiteral("diskutil/cs-list-converting-forward.txt")));
        d.diskutil.setResponse(KVToolDouble::readFixture(QStringLiteral("diskutil/cs-list-complete.txt")));
        bench.desktop->setDisks(&d.disk);
        QVERIFY(d.loadMountedDisks());
        QVERIFY(d.mountedDisk(QStringLiteral("Backup"))->converting());
        d.disk.runUpdateMountedDisksStatus();
        QTRY_COMPARE(notifications.shown().size(), 1);
        d.disk.updateMountedDisksStatus(); // still complete: nothing new to tell
        QVERIFY(d.waitForQueue());
        QTest::qWait(100);
        QCOMPARE(bodies(notifications), QStringList{"Encryption finished|“Backup” is now encrypted."});
    }

    void notificationsFollowTheirPreference()
    {
        KVFakeNotifications notifications(m_buses->session.address());
        KVPreferences::setPrefDesktopNotifications(false);
        Bench bench;
        bool done = false;
        bench.desktop->autoUnmounts()->unmountAll(KVAutoUnmountController::Reason::Sleep, [&done] { done = true; });
        QTRY_VERIFY(done);
        QTest::qWait(100);
        QCOMPARE(notifications.shown().size(), 0);
    }

    void unmountThatFailsAtQuitIsNotified()
    {
        KVFakeNotifications notifications(m_buses->session.address());
        KVPreferences::setPrefAutoUnmountVolumes(true);
        Bench bench({QStringLiteral("/media/someone/Volume1")});
        bench.hdiutil.addFile(QStringLiteral("detach-busy"), {});
        // The application ends as soon as the quit lets it: the notification
        // must have reached the service by then, not be still on its way.
        int shownWhenEnding = -1;
        QObject::connect(&bench.quit, &KVQuitCoordinator::terminate, [&] {
            bench.desktop->whenNotificationsSent([&] { shownWhenEnding = int(notifications.shown().size()); });
        });
        QCOMPARE(bench.quit.applicationShouldTerminate(true, {bench.volumes.at(0)},
                                                       [&bench] { bench.commands->unmountAll(); }),
                 KVQuitCoordinator::Reply::Later);
        QTRY_COMPARE(shownWhenEnding, 1);
        QVERIFY2(notifications.shown().constFirst().summary == QStringLiteral("“Volume1” could not be unmounted"),
                 qPrintable(bodies(notifications).join(u'\n')));
    }

private:
    KVPrivateBuses *m_buses;
};

int main(int argc, char *argv[])
{
    KVPrivateBuses buses; // before the application, which may reach for a bus as it starts
    QApplication app(argc, argv);
    TestKVAutoUnmount test(&buses);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_kvautounmount.moc"
