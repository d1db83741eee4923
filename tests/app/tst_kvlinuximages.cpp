// The application against Korvelle's own Linux tools, with real encrypted
// images: what a person sees when an image is created and mounted.
#include "app/KVAppDelegate.h"
#include "app/KVMainWindow.h"
#include "app/KVMountedCellView.h"
#include "app/KVPreferenceKeys.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"

#include "KVImageToolHarness.h"
#include "KVScreenshot.h"

#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>
#include <QUrl>

#include <atomic>

class TestKVLinuxImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString unavailable = kvlinux::KVImageToolHarness::kernelPathUnavailable();
        if (!unavailable.isEmpty())
            QSKIP(qPrintable(QStringLiteral("real images cannot be mounted here: ") + unavailable));
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
        KVUserDefaults::standard().removeObject(KVFavouritesKey);
    }

    void createdImageShowsUnderMounted()
    {
        kvlinux::KVImageToolHarness harness;
        QVERIFY(harness.isValid());
        // The tools keep what is attached in the runtime directory they are given.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(harness.runtimeDirectory()));
        QTemporaryDir recent;
        KVAppDelegate delegate(KVAppDelegate::Services{
            KVToolPaths{QStringLiteral(KV_TEST_HDIUTIL), QStringLiteral(KV_TEST_DISKUTIL), QString()},
            KVWorkspaceNotifications::shared(), KVRecentDocuments(recent.filePath(QStringLiteral("recent.xbel")))});
        delegate.applicationDidFinishLaunching();
        delegate.mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(delegate.mainWindow()));

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

        std::atomic<bool> attached{false};
        KVOptionalError attachError;
        delegate.di()->mountDiskImage(image, QStringLiteral("correct horse"), false, QUrl::fromLocalFile(harness.mountRoot()),
                                      false, [&](const KVOptionalError &error) {
                                          attachError = error;
                                          attached = true;
                                      });
        QTRY_VERIFY_WITH_TIMEOUT(attached.load(), 60000);
        QVERIFY2(!attachError, qPrintable(attachError ? attachError->debugDescription() : QString()));

        // The mount notification brings the volume into the list.
        QTRY_COMPARE_WITH_TIMEOUT(delegate.unifiedVolumes().size(), 1, 30000);
        const KVVolumeItemPtr volume = delegate.unifiedVolumes().first();
        QCOMPARE(volume->name(), QStringLiteral("Tax Returns"));
        QCOMPARE(volume->type(), KVVolumeItem::DiskImageType);
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
};

QTEST_MAIN(TestKVLinuxImages)
#include "tst_kvlinuximages.moc"
