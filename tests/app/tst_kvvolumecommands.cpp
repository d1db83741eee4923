// The commands on the selected volume, with the engines on tool doubles: the
// question each one asks, the tool runs behind it and what a failure shows.
#include "app/KVBusyVolumeAlert.h"
#include "app/KVCommandAlert.h"
#include "app/KVFavouritesController.h"
#include "app/KVMainWindow.h"
#include "app/KVQuitCoordinator.h"
#include "app/KVUnmountController.h"
#include "app/KVVolumeCommands.h"
#include "controls/KVPasswordFieldView.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVFileManager.h"
#include "wizards/KVChangePasswordController.h"
#include "wizards/KVResizeController.h"

#include "KVMountFixture.h"
#include "KVScreenshot.h"

#include <QFileInfo>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>

using namespace KVMountFixture;

namespace {

// hdiutil: "detach" refuses while detach-busy exists (unless forced),
// "compact" refuses the password "wrong", everything else succeeds.
constexpr char CommandsHdiutilScript[] = R"sh(case "$1" in
info) cat "$d/info.plist"; exit 0;;
detach)
  case " $* " in *" -force "*) ;; *) if [ -f "$d/detach-busy" ]; then cat "$d/detach-busy.txt"; exit 16; fi;; esac
  for last in "$@"; do :; done; printf '"%s" unmounted.\n"%s" ejected.\n' "$last" "$last"; exit 0;;
compact)
  if [ "$(cat "$d/stdin.$n")" = "wrong" ]; then cat "$d/compact-wrong-password.txt"; exit 1; fi
  cat "$d/compact-success.txt"; exit 0;;
attach) cat "$d/attach-success.txt"; exit 0;;
resize) cat "$d/resize-limits.plist"; exit 0;;
erasekeys) exit 0;;
esac
)sh";

constexpr char CommandsDiskutilScript[] = R"sh(case "$1" in
info) cat "$d/$(basename "$3").plist"; exit 0;;
cs) [ "$2" = revert ] && cat "$d/revert-success.txt"; [ "$2" = list ] && cat "$d/cs-list.txt"; exit 0;;
rename) cat "$d/rename-success.txt"; exit 0;;
esac
)sh";

class RecordingFileManager : public KVFileManager
{
public:
    explicit RecordingFileManager(QStringList *shown) : m_shown(shown) {}
    void showItem(const QString &path) override { m_shown->append(path); }

private:
    QStringList *m_shown;
};

KVVolumeItemPtr encryptedDisk(const QString &mountPoint)
{
    return KVVolumeItem::create(
        {{QStringLiteral("sysProfilerInfo"),
          QVariantMap{{QStringLiteral("_name"), QStringLiteral("Backup")},
                      {QStringLiteral("bsd_name"), QStringLiteral("disk3")},
                      {QStringLiteral("mount_point"), mountPoint},
                      {QStringLiteral("volume_uuid"), QStringLiteral("UUID-Backup")},
                      {QStringLiteral("writable"), QStringLiteral("yes")},
                      {QStringLiteral("com.apple.corestorage.lv"),
                       QVariantMap{{QStringLiteral("com.apple.corestorage.lv.uuid"), QStringLiteral("LV-UUID")}}}}}},
        nullptr);
}

// The commands with both engines on doubles and a window to hang sheets on.
struct Bench
{
    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    QWidget window;
    KVQuitCoordinator quit;
    KVFavouritesController favourites;
    std::unique_ptr<KVDiskImage> di;
    std::unique_ptr<KVDisk> disks;
    std::unique_ptr<KVVolumeCommands> commands;
    QStringList revealed;

    Bench()
    {
        hdiutil.setScript(CommandsHdiutilScript);
        diskutil.setScript(CommandsDiskutilScript);
        hdiutil.addFile(QStringLiteral("info.plist"), KVToolDouble::readFixture(QStringLiteral("hdiutil/info-nothing-attached.plist")));
        for (const char *fixture : {"attach-success.txt", "compact-success.txt", "compact-wrong-password.txt",
                                    "detach-busy.txt", "resize-limits.plist"})
            hdiutil.addFile(QString::fromLatin1(fixture),
                            KVToolDouble::readFixture(QStringLiteral("hdiutil/") + QString::fromLatin1(fixture)));
        for (const char *fixture : {"revert-success.txt", "rename-success.txt"})
            diskutil.addFile(QString::fromLatin1(fixture),
                             KVToolDouble::readFixture(QStringLiteral("diskutil/") + QString::fromLatin1(fixture)));
        diskutil.addFile(QStringLiteral("cs-list.txt"), KVToolDouble::readFixture(QStringLiteral("diskutil/cs-list-no-groups.txt")));
        const KVToolPaths tools{hdiutil.path(), diskutil.path(), QString()};
        di = std::make_unique<KVDiskImage>(tools, &workspace);
        disks = std::make_unique<KVDisk>(tools, nullptr);
        commands = std::make_unique<KVVolumeCommands>(&window, &quit, &favourites);
        commands->setDi(di.get());
        commands->setDisks(disks.get());
        commands->setFileManager(std::make_unique<RecordingFileManager>(&revealed));
        window.resize(800, 500);
        window.show();
    }

    ~Bench()
    {
        closeAlerts();
        const auto drained = std::make_shared<std::atomic<bool>>(false);
        di->processingQueue().addOperation([drained] { *drained = true; });
        // A destructor cannot fail the test; a queue that never drains shows as the next test's failure.
        if (!QTest::qWaitFor([&drained] { return drained->load(); }, 10000))
            qWarning("the image engine's queue did not drain");
    }

    // An attached image as the engine makes it: hdiutil's entry, and
    // diskutil asked about its mount point.
    KVVolumeItemPtr image(int disk, const QString &mountPoint, bool readOnly = false)
    {
        QVariantMap info = diskutilInfo(disk, mountPoint);
        info[QStringLiteral("Writable")] = !readOnly;
        diskutil.addFile(QFileInfo(mountPoint).fileName() + QStringLiteral(".plist"), KVPropertyList::encodeXml(info));
        const KVVolumeItemPtr item =
            KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), imageEntry(disk, mountPoint)}}, nullptr,
                                 KVToolPaths{hdiutil.path(), diskutil.path(), QString()});
        diskutil.addFile(QStringLiteral("count"), "0\n"); // that run is not the command's
        return item;
    }

    void select(const KVVolumeItemPtr &item) { commands->setVolumes(item ? QList{item} : QList<KVVolumeItemPtr>(), item); }

    QStringList runs(const KVToolDouble &tool) const
    {
        QStringList commandLines;
        for (int run = 1; run <= tool.runCount(); ++run)
            commandLines.append(tool.arguments(run).join(u' '));
        return commandLines;
    }
    QStringList hdiutilRuns() const { return runs(hdiutil).filter(QRegularExpression(QStringLiteral("^(?!info)"))); }
};

KVCommandAlert *commandAlert()
{
    return qobject_cast<KVCommandAlert *>(openAlert());
}

void answer(KVCommandAlert *alert, const QString &password = QString())
{
    if (alert->passwordField())
        QTest::keyClicks(alert->passwordField(), password);
    alert->confirmButton()->click();
}

} // namespace

class TestKVVolumeCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }
    void init() { resetUserDefaults(); }
    void cleanup() { closeAlerts(); }

    void alertOfEachCommand_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("disk");
        QTest::addColumn<QString>("alertName");
        QTest::addColumn<int>("style");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("informative");
        QTest::addColumn<QString>("confirm");
        QTest::addColumn<bool>("asksPassword");

        QTest::newRow("erase key") << "eraseKey" << false << "eraseKeyAlert" << int(QMessageBox::Critical)
                                   << "This will render all the data in this Disk Image inaccessible."
                                   << "Are you sure you want to continue?" << "Erase" << false;
        QTest::newRow("resize") << "resize" << false << "resizeAlert" << int(QMessageBox::Warning)
                                << "Enter the password"
                                << "Please enter the password for the Disk Image to continue the resize process."
                                << "Continue" << true;
        QTest::newRow("compact") << "compact" << false << "compactAlert" << int(QMessageBox::Information)
                                 << "Enter the password"
                                 << "This will shrink the Disk Image file on your drive to the smallest possible size."
                                 << "Compact" << true;
        QTest::newRow("decrypt") << "decrypt" << true << "decryptAlert" << int(QMessageBox::Warning)
                                 << "This will decrypt the data on this Disk."
                                 << "The data will be accessible without a password. Are you sure you want to continue?"
                                 << "Decrypt" << true;
        // Commands of the other kind, and identifiers that name none, ask nothing.
        QTest::newRow("erase key of a disk") << "eraseKey" << true << "" << 0 << "" << "" << "" << false;
        QTest::newRow("compact of a disk") << "compact" << true << "" << 0 << "" << "" << "" << false;
        QTest::newRow("decrypt of an image") << "decrypt" << false << "" << 0 << "" << "" << "" << false;
        QTest::newRow("unknown") << "format" << false << "" << 0 << "" << "" << "" << false;
    }

    void alertOfEachCommand()
    {
        QFETCH(QString, identifier);
        QFETCH(bool, disk);
        QFETCH(QString, alertName);
        Bench bench;
        bench.select(disk ? encryptedDisk(QStringLiteral("/media/Backup")) : bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->perform(identifier);
        KVCommandAlert *alert = commandAlert();
        if (alertName.isEmpty()) {
            QVERIFY(!openAlert());
            return;
        }
        QVERIFY(alert);
        QCOMPARE(alert->objectName(), alertName);
        QFETCH(int, style);
        QFETCH(QString, message);
        QFETCH(QString, informative);
        QFETCH(QString, confirm);
        QCOMPARE(int(alert->icon()), style);
        QCOMPARE(alert->text(), message);
        QCOMPARE(alert->informativeText(), informative);
        QCOMPARE(alert->confirmButton()->text(), confirm);
        QCOMPARE(alert->cancelButton()->text(), QStringLiteral("Cancel"));
        QCOMPARE(alert->defaultButton(), alert->confirmButton());
        QCOMPARE(alert->windowModality(), Qt::WindowModal);
        QCOMPARE(alert->parentWidget(), &bench.window);
        QFETCH(bool, asksPassword);
        QCOMPARE(alert->passwordField() != nullptr, asksPassword);
        if (asksPassword) {
            QCOMPARE(alert->passwordField()->width(), 295);
            QCOMPARE(alert->passwordField()->placeholderText(), QStringLiteral("Password"));
            QCOMPARE(alert->passwordField()->echoMode(), QLineEdit::Password);
        }
        // A second request while the question is open asks nothing more.
        bench.commands->perform(identifier);
        int open = 0;
        for (QWidget *widget : QApplication::topLevelWidgets())
            open += qobject_cast<KVCommandAlert *>(widget) && widget->isVisible();
        QCOMPARE(open, 1);
        if (identifier == u"eraseKey")
            kvSaveScreenshot(alert, QStringLiteral("erase-key-alert"));
        if (identifier == u"compact") {
            QTest::keyClicks(alert->passwordField(), QStringLiteral("secret"));
            kvSaveScreenshot(alert, QStringLiteral("compact-password-alert"));
        }
    }

    void nothingSelectedOrSystemVolumeRunsNothing()
    {
        Bench bench;
        bench.select(nullptr);
        for (const char *identifier : {"changePW", "eraseKey", "resize", "compact", "decrypt"})
            bench.commands->perform(QString::fromLatin1(identifier));
        bench.commands->renameVolume(QStringLiteral("New"));
        bench.commands->revealInFinder();
        bench.commands->unmountCurrentVolume();
        QVERIFY(!openAlert());
        QVERIFY(!bench.commands->changePasswordController());

        bench.select(encryptedDisk(QStringLiteral("/")));
        bench.commands->perform(QStringLiteral("changePW"));
        bench.commands->perform(QStringLiteral("decrypt"));
        QVERIFY(!openAlert());
        QVERIFY(!bench.commands->changePasswordController());
        QCOMPARE(bench.runs(bench.diskutil), QStringList());
    }

    void changePasswordOpensTheDialogOnTheSelection()
    {
        Bench bench;
        const KVVolumeItemPtr volume = bench.image(4, QStringLiteral("/media/someone/Photos"));
        bench.select(volume);
        bench.commands->perform(QStringLiteral("changePW"));
        KVChangePasswordController *dialog = bench.commands->changePasswordController();
        QVERIFY(dialog);
        QTRY_VERIFY(dialog->isVisible());
        QCOMPARE(dialog->currentSelection(), volume);
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        dialog->buttons(QStringLiteral("cancel"));
        // Made once, used again.
        bench.commands->changePassword();
        QCOMPARE(bench.commands->changePasswordController(), dialog);
    }

    void eraseKeyDetachesThenErasesTheCopiedPath()
    {
        Bench bench;
        const KVVolumeItemPtr volume = bench.image(4, QStringLiteral("/media/someone/Photos"));
        bench.select(volume);
        bench.commands->eraseKeys();
        answer(commandAlert());
        QTRY_COMPARE(bench.hdiutilRuns().size(), 2);
        QCOMPARE(bench.hdiutilRuns(), (QStringList{QStringLiteral("detach -verbose /dev/disk4"),
                                                   QStringLiteral("erasekeys /home/someone/4.sparseimage")}));
        QVERIFY(!openAlert());
    }

    void eraseKeyStopsWhenTheVolumeIsBusy()
    {
        Bench bench;
        bench.hdiutil.addFile(QStringLiteral("detach-busy"), {});
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->eraseKeys();
        answer(commandAlert());
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->objectName(), QStringLiteral("busyVolumeAlert"));
        // The command is over: no forced unmount offered, no key erased.
        QVERIFY(!openAlert()->findChild<QPushButton *>(QStringLiteral("forceUnmountButton")));
        QCOMPARE(bench.hdiutilRuns(), QStringList{QStringLiteral("detach -verbose /dev/disk4")});
    }

    void cancelledOrVanishedQuestionRunsNothing_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("vanishes");
        for (const char *identifier : {"compact", "resize", "eraseKey"}) {
            QTest::addRow("%s cancelled", identifier) << QString::fromLatin1(identifier) << false;
            QTest::addRow("%s, volume unmounted elsewhere", identifier) << QString::fromLatin1(identifier) << true;
        }
    }

    void cancelledOrVanishedQuestionRunsNothing()
    {
        QFETCH(QString, identifier);
        QFETCH(bool, vanishes);
        Bench bench;
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->perform(identifier);
        QPointer<KVCommandAlert> alert = commandAlert();
        QVERIFY(alert);
        QPointer<KVPasswordFieldView> field = alert->passwordField();
        if (field)
            QTest::keyClicks(field, QStringLiteral("hunter2"));
        if (vanishes)
            bench.select(nullptr);
        else
            alert->cancelButton()->click();
        QVERIFY(!alert || !alert->isVisible());
        QVERIFY(!field || field->text().isEmpty());
        QTRY_VERIFY(!alert);
        QCOMPARE(bench.hdiutilRuns(), QStringList());
        // The next question can be asked.
        if (vanishes)
            bench.select(bench.image(5, QStringLiteral("/media/someone/Other")));
        bench.commands->perform(identifier);
        QVERIFY(commandAlert());
    }

    void compactWithAWrongPasswordLeavesTheImageDetached()
    {
        Bench bench;
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->compact();
        answer(commandAlert(), QStringLiteral("wrong"));
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->objectName(), QStringLiteral("errorAlert"));
        QTest::qWait(200); // nothing else may follow
        QCOMPARE(bench.hdiutilRuns(), (QStringList{QStringLiteral("detach -verbose /dev/disk4"),
                                                   QStringLiteral("compact -stdinpass -batteryallowed -verbose /home/someone/4.sparseimage")}));
        int alerts = 0;
        for (QWidget *widget : QApplication::topLevelWidgets())
            alerts += qobject_cast<QMessageBox *>(widget) && widget->isVisible();
        QCOMPARE(alerts, 1);
    }

    void compactAttachesAgainAsBefore_data()
    {
        QTest::addColumn<bool>("readOnly");
        QTest::newRow("read-only") << true;
        QTest::newRow("writable") << false;
    }

    void compactAttachesAgainAsBefore()
    {
        QFETCH(bool, readOnly);
        Bench bench;
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos"), readOnly));
        bench.commands->compact();
        answer(commandAlert(), QStringLiteral("correct horse"));
        QTRY_COMPARE(bench.hdiutilRuns().size(), 3);
        const int attach = bench.runs(bench.hdiutil).indexOf(QRegularExpression(QStringLiteral("attach .*"))) + 1;
        const QStringList arguments = bench.hdiutil.arguments(attach);
        QCOMPARE(arguments.contains(QStringLiteral("-readonly")), readOnly);
        QCOMPARE(arguments.value(arguments.indexOf(QStringLiteral("-mountroot")) + 1), QStringLiteral("/media/someone"));
        QVERIFY(arguments.contains(QStringLiteral("/home/someone/4.sparseimage")));
        QVERIFY(!arguments.join(u' ').contains(QStringLiteral("correct horse")));
        // The same password went to compact and attach, on standard input
        // only (the double records it while it runs).
        QTRY_VERIFY(bench.hdiutil.standardInput(attach).startsWith("correct horse"));
        const int compact = bench.runs(bench.hdiutil).indexOf(QRegularExpression(QStringLiteral("compact .*"))) + 1;
        QVERIFY(bench.hdiutil.standardInput(compact).startsWith("correct horse"));
        QTest::qWait(100);
        QVERIFY(!openAlert());
    }

    void resizeReadsTheLimitsThenOpensTheDialog()
    {
        Bench bench;
        const KVVolumeItemPtr volume = bench.image(4, QStringLiteral("/media/someone/Photos"));
        bench.select(volume);
        bench.commands->resize();
        answer(commandAlert(), QStringLiteral("correct horse"));
        QTRY_VERIFY(bench.commands->resizeController() && bench.commands->resizeController()->isVisible());
        KVResizeController *dialog = bench.commands->resizeController();
        QCOMPARE(dialog->currentSelection(), volume);
        QVERIFY(dialog->hasVolumePassword());
        QVERIFY(!dialog->dictFromLimits().isEmpty());
        QCOMPARE(bench.hdiutilRuns(), QStringList{QStringLiteral("resize -limits -stdinpass -plist /home/someone/4.sparseimage")});
        QCOMPARE(bench.hdiutil.standardInput(bench.hdiutil.runCount()), QByteArray("correct horse"));
        dialog->buttons(QStringLiteral("cancel"));
        QVERIFY(!dialog->hasVolumePassword());
    }

    void decryptRevertsThenPollsTheStatus()
    {
        Bench bench;
        bench.select(encryptedDisk(QStringLiteral("/media/Backup")));
        bench.commands->decrypt();
        answer(commandAlert(), QStringLiteral("letmein"));
        QTRY_COMPARE(bench.runs(bench.diskutil).size(), 2);
        QCOMPARE(bench.runs(bench.diskutil),
                 (QStringList{QStringLiteral("cs revert LV-UUID -stdinpassphrase"), QStringLiteral("cs list")}));
        QCOMPARE(bench.diskutil.standardInput(1), QByteArray("letmein"));
        QVERIFY(!openAlert());
    }

    void renameAsksTheDiskEngineOnlyForANewName_data()
    {
        QTest::addColumn<QString>("newName");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("new name") << "Holiday Photos"
                                  << QStringList{QStringLiteral("rename /media/someone/Photos Holiday Photos")};
        QTest::newRow("same name") << "Photos" << QStringList();
        QTest::newRow("empty") << "" << QStringList();
        QTest::newRow("blanks only") << "   " << QStringList();
    }

    void renameAsksTheDiskEngineOnlyForANewName()
    {
        QFETCH(QString, newName);
        QFETCH(QStringList, expected);
        Bench bench;
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->renameVolume(newName);
        if (!expected.isEmpty())
            QTRY_COMPARE(bench.diskutil.runCount(), 1);
        else
            QTest::qWait(100);
        QCOMPARE(bench.runs(bench.diskutil), expected);
        if (!expected.isEmpty())
            QCOMPARE(bench.diskutil.arguments(1).value(2), newName);
        QVERIFY(!openAlert());
    }

    void refusedRenameIsShown()
    {
        Bench bench;
        bench.diskutil.setScript("echo 'a/b does not appear to be a valid volume name for its file system'; exit 1\n");
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->renameVolume(QStringLiteral("a/b"));
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->text(), QStringLiteral("Renaming Volume failed"));
    }

    void revealShowsTheMountPoint()
    {
        Bench bench;
        bench.select(bench.image(4, QStringLiteral("/media/someone/Photos")));
        bench.commands->revealInFinder();
        QCOMPARE(bench.revealed, QStringList{QStringLiteral("/media/someone/Photos")});
    }

    // Without a file manager on the bus the folder itself is opened.
    void revealFallsBackToOpeningTheFolder()
    {
        if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("a session bus is there: a file manager might answer and open a window");
        QTemporaryDir dir;
        QStringList opened;
        KVFreedesktopFileManager fileManager([&opened](const QString &folder) { opened.append(folder); });
        fileManager.showItem(dir.path());
        QTRY_COMPARE(opened, QStringList{dir.path()});
        fileManager.showItem(dir.filePath(QStringLiteral("inside.txt")));
        QTRY_COMPARE(opened.size(), 2);
        QCOMPARE(opened.last(), dir.path());
    }

    // A volume that a process sits in: the alert names the process and
    // unmounts by force when asked.
    void busyUnmountNamesTheProcessesAndOffersForce()
    {
        QTemporaryDir volumeFolder(QStringLiteral("/dev/shm/korvelle-busy-XXXXXX"));
        if (!volumeFolder.isValid())
            QSKIP("no /dev/shm here");
        QProcess resident;
        resident.setWorkingDirectory(volumeFolder.path());
        resident.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        QVERIFY(resident.waitForStarted());

        Bench bench;
        bench.hdiutil.addFile(QStringLiteral("detach-busy"), {});
        const KVVolumeItemPtr volume = bench.image(4, volumeFolder.path());
        bench.select(volume);
        bench.commands->unmountCurrentVolume();
        QTRY_VERIFY(openAlert());
        QMessageBox *alert = openAlert();
        QCOMPARE(alert->objectName(), QStringLiteral("busyVolumeAlert"));
        QCOMPARE(alert->text(), QStringLiteral("Unmount failed"));
        QVERIFY2(alert->detailedText().contains(QStringLiteral("sleep (PID %1)").arg(resident.processId())),
                 qPrintable(alert->detailedText()));
        kvSaveScreenshot(alert, QStringLiteral("busy-unmount-alert"));
        auto *force = alert->findChild<QPushButton *>(QStringLiteral("forceUnmountButton"));
        QVERIFY(force);
        force->click();
        QTRY_COMPARE(bench.hdiutilRuns().size(), 2);
        QVERIFY(bench.hdiutil.arguments(bench.hdiutil.runCount()).contains(QStringLiteral("-force")));
        resident.kill();
        resident.waitForFinished();
    }

    // Through the application: the pane's button asks the question, and the
    // question goes when its volume is detached elsewhere.
    void paneButtonAsksAndAVanishedVolumeClosesTheQuestion()
    {
        Controller controller;
        controller.setAttachedImages({4});
        controller.delegate->applicationDidFinishLaunching();
        KVMainWindow *window = controller.delegate->mainWindow();
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QTRY_COMPARE(controller.delegate->unifiedVolumes().size(), 1);
        controller.delegate->setCurrentSelection(controller.delegate->unifiedVolumes().first());
        auto *eraseKey = window->findChild<QPushButton *>(QStringLiteral("amButton1"));
        QVERIFY(eraseKey);
        QCOMPARE(eraseKey->text(), QStringLiteral("Erase Key"));
        eraseKey->click();
        QPointer<KVCommandAlert> alert = commandAlert();
        QVERIFY(alert);
        QCOMPARE(alert->objectName(), QStringLiteral("eraseKeyAlert"));
        QCOMPARE(alert->parentWidget(), window);

        controller.setAttachedImages({});
        controller.delegate->reloadMountedList();
        QTRY_VERIFY(controller.delegate->unifiedVolumes().isEmpty());
        QTRY_VERIFY(!alert);
        QVERIFY(controller.runs(QStringLiteral("detach")).isEmpty());
        QVERIFY(controller.runs(QStringLiteral("erasekeys")).isEmpty());
    }

    void unmountAllUnmountsEveryListedVolume()
    {
        Bench bench;
        const QList<KVVolumeItemPtr> volumes{bench.image(4, QStringLiteral("/media/someone/A")),
                                             bench.image(5, QStringLiteral("/media/someone/B")),
                                             encryptedDisk(QStringLiteral("/"))};
        bench.commands->setVolumes(volumes, nullptr);
        bench.commands->unmountAll();
        QTRY_COMPARE(bench.hdiutilRuns().size(), 2);
        QCOMPARE(bench.hdiutilRuns(),
                 (QStringList{QStringLiteral("detach -verbose /dev/disk4"), QStringLiteral("detach -verbose /dev/disk5")}));
    }
};

QTEST_MAIN(TestKVVolumeCommands)
#include "tst_kvvolumecommands.moc"
