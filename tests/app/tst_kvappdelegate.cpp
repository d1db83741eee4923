#include "app/KVAppDelegate.h"
#include "settings/KVPreferences.h"
#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"
#include "app/KVMainWindow.h"
#include "settings/KVPreferenceKeys.h"
#include "app/KVPreferencesController.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVPropertyList.h"

#include "KVMountFixture.h"
#include "KVToolDouble.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QMenu>
#include <QMessageBox>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

using namespace KVMountFixture;

namespace {


// The system volume, encrypted, as the storage report lists it.
QByteArray storageReportWithEncryptedSystemVolume()
{
    const QVariantMap volume{
        {QStringLiteral("_name"), QStringLiteral("Macintosh HD")},
        {QStringLiteral("bsd_name"), QStringLiteral("disk1")},
        {QStringLiteral("file_system"), QStringLiteral("Journaled HFS+")},
        {QStringLiteral("mount_point"), QStringLiteral("/")},
        {QStringLiteral("size_in_bytes"), qint64(500000000000)},
        {QStringLiteral("free_space_in_bytes"), qint64(100000000000)},
        {QStringLiteral("volume_uuid"), QStringLiteral("SYSTEM-UUID")},
        {QStringLiteral("writable"), QStringLiteral("yes")},
        {QStringLiteral("com.apple.corestorage.lv"),
         QVariantMap{{QStringLiteral("com.apple.corestorage.lv.encrypted"), QStringLiteral("yes")},
                     {QStringLiteral("com.apple.corestorage.lv.uuid"), QStringLiteral("LV-SYSTEM")}}},
    };
    return KVPropertyList::encodeXml(QVariantList{QVariantMap{{QStringLiteral("_items"), QVariantList{volume}}}});
}

class Fixture
{
public:
    Fixture(int images, bool systemVolume = false)
        : hdiutil(QStringLiteral("hdiutil"))
        , diskutil(QStringLiteral("diskutil"))
        , systemProfiler(QStringLiteral("system_profiler"))
    {
        QVariantList entries;
        for (int i = 0; i < images; ++i) {
            const QString mountPoint = QStringLiteral("/media/Volume%1").arg(i + 4);
            entries.append(imageEntry(i + 4, mountPoint));
            diskutil.addFile(QStringLiteral("Volume%1.plist").arg(i + 4),
                             KVPropertyList::encodeXml(diskutilInfo(i + 4, mountPoint)));
        }
        hdiutil.addFile(QStringLiteral("info.plist"), KVPropertyList::encodeXml(QVariantMap{{QStringLiteral("images"), entries}}));
        hdiutil.setScript(KVToolDouble::readFixture(QStringLiteral("hdiutil/double-info-and-detach.sh")));
        diskutil.setScript(DiskutilScript);
        systemProfiler.setResponse(systemVolume ? storageReportWithEncryptedSystemVolume()
                                                : KVPropertyList::encodeXml(QVariantList{QVariantMap{{QStringLiteral("_items"), QVariantList()}}}));
        recentFile = recentDir.filePath(QStringLiteral("recently-used.xbel"));
        delegate = std::make_unique<KVAppDelegate>(KVAppDelegate::Services{
            KVToolPaths{hdiutil.path(), diskutil.path(), systemProfiler.path()}, &workspace, KVRecentDocuments(recentFile)});
    }

    // Whatever the engines still have queued runs before the doubles go away.
    ~Fixture()
    {
        if (!delegate->di())
            return;
        const auto drained = std::make_shared<std::atomic<int>>(0);
        delegate->di()->processingQueue().addOperation([drained] { ++*drained; });
        delegate->disks()->mainDiskProcessingQueue().addOperation([drained] { ++*drained; });
        if (!QTest::qWaitFor([&drained] { return drained->load() == 2; }, 10000))
            qWarning("the engines are still busy");
    }

    // The hdiutil runs that detached something, by device.
    QStringList detachRuns() const
    {
        QStringList runs;
        for (int run = 1; run <= hdiutil.runCount(); ++run) {
            const QStringList arguments = hdiutil.arguments(run);
            if (arguments.first() == u"detach")
                runs.append(arguments.join(u' '));
        }
        return runs;
    }

    KVToolDouble hdiutil;
    KVToolDouble diskutil;
    KVToolDouble systemProfiler;
    KVWorkspaceNotifications workspace;
    QTemporaryDir recentDir;
    QString recentFile;
    std::unique_ptr<KVAppDelegate> delegate;
};

} // namespace

class TestKVAppDelegate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }

    void init() { resetUserDefaults(); }

    void cleanup() { closeAlerts(); }

    void firstStartShowsHomeAndWork()
    {
        Fixture fixture(0);
        fixture.delegate->applicationDidFinishLaunching();
        QCOMPARE(fixture.delegate->favourites().size(), 2);
        QCOMPARE(fixture.delegate->favourites().at(0)->name(), QStringLiteral("Home"));
        QCOMPARE(fixture.delegate->favourites().at(1)->name(), QStringLiteral("Work"));
        QVERIFY(!KVUserDefaults::standard().object(KVMountDiskImageAfterCreationKey).isNull());
        QVERIFY(KVPreferences::prefMountDiskImageAfterCreation());
        QVERIFY(!KVPreferences::prefSaveOpenRecent());
    }

    void folderNumberingAndPersistence()
    {
        Fixture fixture(0);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        delegate.addFavouriteFolder();
        QCOMPARE(delegate.favourites().last()->name(), QStringLiteral("Untitled 3"));
        delegate.deleteFavourite(delegate.favourites().first());
        delegate.addFavouriteFolder();
        QCOMPARE(delegate.favourites().last()->name(), QStringLiteral("Untitled 3"));

        const auto saved = KVFavouritesArchive::unarchiveList(KVUserDefaults::standard().dataForKey(KVFavouritesKey));
        QVERIFY(saved);
        QStringList names;
        for (const KVFavouriteFolderPtr &folder : *saved)
            names.append(folder->name());
        QCOMPARE(names, (QStringList{"Work", "Untitled 3", "Untitled 3"}));
        QCOMPARE(delegate.mainWindow()->addToFavouritesMenu()->actions().size(), 3);

        // A later start reads them back.
        Fixture restarted(0);
        restarted.delegate->applicationDidFinishLaunching();
        QCOMPARE(restarted.delegate->favourites().size(), 3);
    }

    void addingAndDeletingFavourites()
    {
        QTemporaryDir dir;
        Fixture fixture(1);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 1);
        const KVFavouriteFolderPtr home = delegate.favourites().first();

        // Nothing selected, then a disk: the command does nothing.
        delegate.addToFavourites(home);
        QVERIFY(home->content().isEmpty());
        delegate.setCurrentSelection(diskVolume(QStringLiteral("Backup"), QStringLiteral("/media/Backup"), 1000, 500));
        delegate.addToFavourites(home);
        QVERIFY(home->content().isEmpty());
        QVERIFY(!openAlert());

        // The image's file must exist to be bookmarked: an image whose file is gone
        // gives an alert and adds nothing.
        delegate.setCurrentSelection(delegate.unifiedVolumes().first());
        delegate.addToFavourites(home);
        QVERIFY(home->content().isEmpty());
        QTRY_VERIFY(openAlert());
        closeAlerts();
    }

    void unreadableFavouritesAreKeptAside()
    {
        KVUserDefaults::standard().setObject(QByteArray("bplist00 damaged"), KVFavouritesKey);
        Fixture fixture(0);
        fixture.delegate->applicationDidFinishLaunching();
        QCOMPARE(fixture.delegate->favourites().size(), 2);
        QCOMPARE(fixture.delegate->favourites().first()->name(), QStringLiteral("Home"));
        QCOMPARE(KVUserDefaults::standard().dataForKey(KVUnreadableFavouritesKey), QByteArray("bplist00 damaged"));
    }

    void openFileTakesOnlySparseImages()
    {
        Fixture fixture(0);
        fixture.delegate->applicationDidFinishLaunching();
        QSignalSpy sheets(fixture.delegate.get(), &KVAppDelegate::mountDiskImageSheetRequested);
        QVERIFY(!fixture.delegate->openFile(QStringLiteral("/home/someone/image.dmg")));
        QVERIFY(!fixture.delegate->openFile(QStringLiteral("/home/someone/image.sparsebundle")));
        QVERIFY(!fixture.delegate->openFile(QStringLiteral("/home/someone/image.SPARSEIMAGE")));
        QCOMPARE(sheets.count(), 0);
        QVERIFY(fixture.delegate->openFile(QStringLiteral("/home/someone/my image.sparseimage")));
        QCOMPARE(sheets.count(), 1);
        QCOMPARE(sheets.first().first().toString(), QStringLiteral("/home/someone/my image.sparseimage"));
    }

    void reopenBringsTheWindowBack()
    {
        Fixture fixture(0);
        fixture.delegate->applicationDidFinishLaunching();
        QVERIFY(!fixture.delegate->mainWindow()->isVisible());
        QVERIFY(fixture.delegate->applicationShouldHandleReopen(false));
        QVERIFY(fixture.delegate->mainWindow()->isVisible());
        QVERIFY(!fixture.delegate->applicationShouldHandleReopen(true));
    }

    void quitWithoutAutoUnmountOrVolumes()
    {
        Fixture fixture(2);
        fixture.delegate->applicationDidFinishLaunching();
        QTRY_COMPARE(fixture.delegate->unifiedVolumes().size(), 2);
        QCOMPARE(fixture.delegate->applicationShouldTerminate(), KVAppDelegate::TerminateReply::Now);

        KVPreferences::setPrefAutoUnmountVolumes(true);
        Fixture empty(0);
        empty.delegate->applicationDidFinishLaunching();
        QCOMPARE(empty.delegate->applicationShouldTerminate(), KVAppDelegate::TerminateReply::Now);
    }

    void quitWaitsForEveryUnmountFailuresIncluded()
    {
        KVPreferences::setPrefAutoUnmountVolumes(true);
        Fixture fixture(3);
        fixture.hdiutil.addFile(QStringLiteral("busy-disk5"), QByteArray());
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 3);
        QSignalSpy terminated(&delegate, &KVAppDelegate::terminate);

        QCOMPARE(delegate.applicationShouldTerminate(), KVAppDelegate::TerminateReply::Later);
        QVERIFY(delegate.appShouldTerminate());
        QTRY_COMPARE(terminated.count(), 1);
        QCOMPARE(fixture.detachRuns(),
                 (QStringList{"detach -verbose /dev/disk4", "detach -verbose /dev/disk5", "detach -verbose /dev/disk6"}));
        // The failed unmount during the quit was neither shown nor kept back.
        QVERIFY(!openAlert());
    }

    // The application's own wiring: Qt closes every window before it quits,
    // so the window must not veto that close once the quit may go ahead.
    void aQuitWithABusyVolumeEndsTheApplication()
    {
        KVPreferences::setPrefAutoUnmountVolumes(true);
        Fixture fixture(2);
        fixture.hdiutil.addFile(QStringLiteral("busy-disk5"), QByteArray());
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 2);
        KVMainWindow *window = delegate.mainWindow();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QObject::connect(&delegate, &KVAppDelegate::terminate, qApp, &QCoreApplication::quit);

        QStringList shownWhileWaiting;
        QTimer::singleShot(0, window, [&] {
            QVERIFY(!window->close()); // the close button asks to quit; the quit waits
            shownWhileWaiting.append(window->statusBar()->currentMessage());
            QVERIFY(!window->close()); // asking again while it waits starts nothing new
        });
        QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(1); });
        QCOMPARE(QCoreApplication::exec(), 0);

        QCOMPARE(fixture.detachRuns(), (QStringList{"detach -verbose /dev/disk4", "detach -verbose /dev/disk5"}));
        QCOMPARE(shownWhileWaiting.size(), 1);
        QVERIFY2(shownWhileWaiting.first().contains(u"Volume4") && shownWhileWaiting.first().contains(u"Volume5"),
                 qPrintable(shownWhileWaiting.first()));
        QVERIFY(!window->isVisible());
        QVERIFY(!openAlert());
    }

    void aSystemVolumeKeepsTheQuitWaiting()
    {
        KVPreferences::setPrefAutoUnmountVolumes(true);
        Fixture fixture(2, true);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 3);
        QVERIFY(delegate.unifiedVolumes().last()->isSystemPartition());
        QSignalSpy terminated(&delegate, &KVAppDelegate::terminate);
        QCOMPARE(delegate.applicationShouldTerminate(), KVAppDelegate::TerminateReply::Later);
        QTRY_COMPARE(fixture.detachRuns().size(), 2);
        QTest::qWait(200);
        QCOMPARE(terminated.count(), 0);
    }

    void forceFlag_data()
    {
        QTest::addColumn<bool>("quitting");
        QTest::addColumn<bool>("forceAutoUnmount");
        QTest::addColumn<bool>("forceUnmount");
        QTest::addColumn<bool>("forced");
        QTest::newRow("quit, force at quit") << true << true << false << true;
        QTest::newRow("quit, no force at quit") << true << false << true << false;
        QTest::newRow("user, force") << false << false << true << true;
        QTest::newRow("user, no force") << false << true << false << false;
    }

    void forceFlag()
    {
        QFETCH(bool, quitting);
        QFETCH(bool, forceAutoUnmount);
        QFETCH(bool, forceUnmount);
        QFETCH(bool, forced);
        KVPreferences::setPrefAutoUnmountVolumes(quitting);
        KVPreferences::setPrefForceAutoUnmount(forceAutoUnmount);
        KVPreferences::setPrefForceUnmount(forceUnmount);
        Fixture fixture(1);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 1);
        if (quitting)
            delegate.applicationShouldTerminate();
        else
            delegate.unmountVolume(delegate.unifiedVolumes().first());
        QTRY_COMPARE(fixture.detachRuns().size(), 1);
        QCOMPARE(fixture.detachRuns().first(),
                 forced ? QStringLiteral("detach -verbose -force /dev/disk4") : QStringLiteral("detach -verbose /dev/disk4"));
    }

    void userUnmountFailuresAreShownUnlessTheToolEndedAbnormally()
    {
        Fixture fixture(2);
        fixture.hdiutil.addFile(QStringLiteral("busy-disk4"), QByteArray());
        fixture.hdiutil.addFile(QStringLiteral("abnormal-disk5"), QByteArray());
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 2);

        delegate.unmountVolume(delegate.unifiedVolumes().at(1));
        QTRY_COMPARE(fixture.detachRuns().size(), 1);
        QTest::qWait(100);
        QVERIFY(!openAlert());

        delegate.unmountVolume(delegate.unifiedVolumes().at(0));
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->informativeText(), QStringLiteral("Resource busy, Volume may still be used."));
    }

    void selectionSurvivesARebuildByEquality()
    {
        Fixture fixture(2);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 2);
        const KVVolumeItemPtr selected = delegate.unifiedVolumes().at(1);
        delegate.setCurrentSelection(selected);

        // The same volumes in another order: a new list of new, equal items.
        fixture.hdiutil.addFile(QStringLiteral("info.plist"), KVPropertyList::encodeXml(QVariantMap{
            {QStringLiteral("images"), QVariantList{imageEntry(5, QStringLiteral("/media/Volume5")),
                                                   imageEntry(4, QStringLiteral("/media/Volume4"))}}}));
        delegate.reloadMountedList();
        QTRY_COMPARE(delegate.unifiedVolumes().first()->uuid(), QStringLiteral("UUID-5"));
        QVERIFY(delegate.unifiedVolumes().first() != selected);
        QCOMPARE(delegate.currentSelection(), selected); // the old object stays

        // The selected image goes away: the selection is cleared.
        QVariantMap userInfo{{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/media/Volume5/"))}};
        Q_EMIT fixture.workspace.didUnmount(userInfo);
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 1);
        QVERIFY(!delegate.currentSelection());
    }

    void createdImagesGoToTheRecentDocumentsWhenWanted()
    {
        Fixture fixture(0);
        KVAppDelegate &delegate = *fixture.delegate;
        delegate.applicationDidFinishLaunching();
        const QString image = QStringLiteral("/home/someone/New Secrets.sparseimage");
        auto recorded = [&fixture] {
            QFile file(fixture.recentFile);
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("New%20Secrets.sparseimage");
        };

        delegate.createImageWizardDidEnd(KVSheetReturnCode::Finished, image);
        QVERIFY(!recorded()); // the preference is off
        KVPreferences::setPrefSaveOpenRecent(true);
        KVPreferences::setPrefMountDiskImageAfterCreation(false);
        delegate.createImageWizardDidEnd(KVSheetReturnCode::Finished, image);
        QVERIFY(!recorded()); // not mounted after creation
        KVPreferences::setPrefMountDiskImageAfterCreation(true);
        delegate.createImageWizardDidEnd(KVSheetReturnCode::Cancelled, image);
        QVERIFY(!recorded());
        delegate.createImageWizardDidEnd(KVSheetReturnCode::Finished, image);
        QVERIFY(recorded());
    }

    void preferencesWindowWritesEachClick()
    {
        Fixture fixture(0);
        fixture.delegate->applicationDidFinishLaunching();
        fixture.delegate->showPreferences();
        auto *window = fixture.delegate->mainWindow()->findChild<KVPreferencesController *>();
        QVERIFY(window);
        auto *afterCreation = window->findChild<QCheckBox *>(QStringLiteral("mountDiskImageAfterCreationCheckbox"));
        auto *saveRecent = window->findChild<QCheckBox *>(QStringLiteral("saveOpenRecentCheckbox"));
        QVERIFY(afterCreation->isChecked());
        QVERIFY(!saveRecent->isChecked());
        afterCreation->click();
        QVERIFY(!KVPreferences::prefMountDiskImageAfterCreation());
        saveRecent->click();
        QVERIFY(KVPreferences::prefSaveOpenRecent());
        KVPreferences::setPrefMountDiskImageAfterCreation(true);
    }
};

QTEST_MAIN(TestKVAppDelegate)
#include "tst_kvappdelegate.moc"
