// The application against Korvelle's own Linux tools, with real encrypted
// images: what a person sees when an image is created and mounted.
#include "app/KVAppDelegate.h"
#include "settings/KVPreferences.h"
#include "app/KVMainWindow.h"
#include "app/KVMountedCellView.h"
#include "settings/KVPreferenceKeys.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"

#include "KVLinuxSession.h"
#include "KVScreenshot.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <atomic>
#include <memory>

using Session = KVLinuxSession;

class TestKVLinuxImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString unavailable = KVLinuxSession::prepareTestCase(); !unavailable.isEmpty())
            QSKIP(qPrintable(unavailable));
    }

    void createdImageShowsUnderMounted()
    {
        Session session;
        QVERIFY(session.start());
        kvlinux::KVImageToolHarness &harness = session.harness;
        KVAppDelegate &delegate = *session.delegate;

        const QString image = harness.path(QStringLiteral("Tax Returns.sparseimage"));
        std::atomic<bool> created{false};
        KVOptionalError createError;
        QStringList progress;
        delegate.di()->createDiskImage(QUrl::fromLocalFile(image), 64.0f, QStringLiteral("Tax Returns"),
                                       QStringLiteral("AES-256"), QStringLiteral("correct horse"), false,
                                       [&](const std::optional<QString> &line, bool finished, const KVOptionalError &error) {
                                           if (line)
                                               progress.append(*line);
                                           if (finished) {
                                               createError = error;
                                               created = true;
                                           }
                                       });
        QTRY_VERIFY_WITH_TIMEOUT(created.load(), 60000);
        QVERIFY2(!createError, qPrintable(createError ? createError->debugDescription() : QString()));
        QVERIFY(progress.filter(QStringLiteral("PERCENT:")).size() > 0);

        const KVOptionalError attachError = session.mount(image);
        QVERIFY2(!attachError, qPrintable(attachError ? attachError->debugDescription() : QString()));

        // The mount notification brings the volume into the list.
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 1, 30000);
        const KVVolumeItemPtr volume = delegate.unifiedVolumes().first();
        QCOMPARE(volume->name(), QStringLiteral("Tax Returns"));
        QCOMPARE(volume->type(), KVVolumeKind::DiskImage);
        QCOMPARE(volume->location(), image);
        const QString sizeLine = KVMountedCellView::createSizeInfoFromVolumeItem(*volume);
        QVERIFY2(QRegularExpression(QStringLiteral("^\\d+ \\w+ of \\d+ \\w+ used$")).match(sizeLine).hasMatch(),
                 qPrintable(sizeLine));
        kvSaveScreenshot(delegate.mainWindow(), QStringLiteral("main-window-real-image"));

        // Unmounted through the application, it leaves the list again.
        delegate.unmountVolume(volume);
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 0, 30000);
        // The list changes when the volume is unmounted; the daemon and the
        // loop device go a moment later.
        QTRY_COMPARE_WITH_TIMEOUT(harness.leftovers(), QStringList(), 20000);
    }

    // With "KVForceUnmount" on, a volume that a process sits in leaves the
    // list, and the system agrees: the image is free and mounts again at once.
    void forcedUnmountOfABusyVolumeEndsTheAttachment()
    {
        Session session;
        QVERIFY(session.start());
        KVAppDelegate &delegate = *session.delegate;
        const auto created = session.harness.create(QStringLiteral("Busy"), "correct horse", QStringLiteral("Busy"));
        QVERIFY2(created.exitCode == 0, qPrintable(created.output));
        const QString image = session.harness.path(QStringLiteral("Busy.sparseimage"));
        QVERIFY(!session.mount(image));
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 1, 30000);

        QProcess resident;
        resident.setWorkingDirectory(session.harness.onlyMountPoint());
        resident.start(QStringLiteral("sleep"), {QStringLiteral("600")});
        QVERIFY(resident.waitForStarted());

        const bool forced = KVPreferences::prefForceUnmount();
        KVPreferences::setPrefForceUnmount(true);
        delegate.unmountVolume(delegate.unifiedVolumes().first());
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 0, 30000);
        KVPreferences::setPrefForceUnmount(forced);
        // The row goes with the mount; the detach ends a moment later.
        QTRY_VERIFY_WITH_TIMEOUT(!session.harness.info().contains(QStringLiteral("images")), 30000);

        const KVOptionalError again = session.mount(image);
        QVERIFY2(!again, qPrintable(again ? again->debugDescription() : QString()));
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 1, 30000);
        delegate.unmountVolume(delegate.unifiedVolumes().first());
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 0, 30000);

        resident.kill();
        resident.waitForFinished();
        QTRY_COMPARE_WITH_TIMEOUT(session.harness.leftovers(), QStringList(), 20000);
    }

    // "KVAutoUnmountVolumes" on, both force preferences off, and a process
    // sits in the volume: the quit says which volume it waits for, counts the
    // failed unmount and ends the application, leaving the volume mounted.
    void quitWithABusyVolumeEndsTheApplication()
    {
        Session session;
        QVERIFY(session.start());
        KVAppDelegate &delegate = *session.delegate;
        const auto created = session.harness.create(QStringLiteral("Resident"), "correct horse", QStringLiteral("Resident"));
        QVERIFY2(created.exitCode == 0, qPrintable(created.output));
        QVERIFY(!session.mount(session.harness.path(QStringLiteral("Resident.sparseimage"))));
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 1, 30000);

        QProcess resident;
        resident.setWorkingDirectory(session.harness.onlyMountPoint());
        resident.start(QStringLiteral("sleep"), {QStringLiteral("600")});
        QVERIFY(resident.waitForStarted());

        const bool autoUnmount = KVPreferences::prefAutoUnmountVolumes();
        const bool force = KVPreferences::prefForceUnmount();
        const bool forceAtQuit = KVPreferences::prefForceAutoUnmount();
        KVPreferences::setPrefAutoUnmountVolumes(true);
        KVPreferences::setPrefForceUnmount(false);
        KVPreferences::setPrefForceAutoUnmount(false);

        // As the application wires it: the quit closes every window first.
        KVMainWindow *window = delegate.mainWindow();
        QObject::connect(&delegate, &KVAppDelegate::terminate, qApp, &QCoreApplication::quit);
        QString shownWhileWaiting;
        QTimer::singleShot(0, window, [&] {
            window->close(); // the close button: Ctrl+Q asks the same
            shownWhileWaiting = window->statusBar()->currentMessage();
        });
        QTimer::singleShot(60000, qApp, [] { QCoreApplication::exit(1); });
        const int status = QCoreApplication::exec();

        KVPreferences::setPrefAutoUnmountVolumes(autoUnmount);
        KVPreferences::setPrefForceUnmount(force);
        KVPreferences::setPrefForceAutoUnmount(forceAtQuit);
        QCOMPARE(status, 0);
        QVERIFY2(shownWhileWaiting.contains(u"Resident"), qPrintable(shownWhileWaiting));
        QVERIFY(session.harness.info().contains(QStringLiteral("images")));

        resident.kill();
        resident.waitForFinished();
        const auto detached = session.harness.detach(session.harness.onlyMountPoint());
        QVERIFY2(detached.exitCode == 0, qPrintable(detached.output));
        QTRY_COMPARE_WITH_TIMEOUT(session.harness.leftovers(), QStringList(), 20000);
    }
};

QTEST_MAIN(TestKVLinuxImages)
#include "tst_kvlinuximages.moc"
