#include "wizards/KVMountDiskController.h"

#include "app/KVSheetReturnCode.h"
#include "disk/KVDisk.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVDiskTableHeaderCell.h"
#include "wizards/KVSlidingSteps.h"

#include "KVScreenshot.h"
#include "KVToolDouble.h"
#include "KVWizardTestSupport.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTableView>

using namespace KVWizardTest;

namespace {

// diskutil: the listing of cs-list.plist (runs 1 to 9: BLACK unlocked, then a
// locked volume on disk2s2), then unlock and mount by their arguments. The
// passphrase "right" unlocks; unlock-reply.txt and mount-reply.txt, when
// present, replace the tool's answers (with status 1).
constexpr char DiskutilScript[] = R"sh(
if [ "$2" = "unlockVolume" ]; then
  if [ -f "$d/unlock-reply.txt" ]; then cat "$d/unlock-reply.txt"; exit 1; fi
  if [ "$(cat "$d/stdin.$n")" = "right" ]; then cat "$d/unlock-success.txt"; exit 0; fi
  printf 'Started CoreStorage operation\nError: -69749: Unable to unlock Core Storage volume\n'; exit 1
fi
if [ "$1" = "mount" ]; then
  if [ -f "$d/mount-reply.txt" ]; then cat "$d/mount-reply.txt"; exit 1; fi
  cat "$d/mount-success.txt"; exit 0
fi
)sh";

const QStringList Listing{
    "cs-list.plist", "cs-info-family-unlocked.plist", "cs-info-family-locked.plist",
    "cs-info-family-unencrypted.plist", "cs-info-family-mounted.plist", "cs-info-physical-volume.plist",
    "info-unlocked-volume-not-mounted.plist", "info-mounted-volume.plist", "info-locked-physical-volume.plist",
};
constexpr int ListingRuns = 9;

struct Sheet
{
    Sheet()
        : disks(KVToolPaths{QString(), diskutil.path(), QString()}, &workspace)
        , sheet(new KVMountDiskController(&window))
        , finished(sheet, &QDialog::finished)
    {
        for (int run = 1; run <= Listing.size(); ++run)
            diskutil.setResponse(run, KVToolDouble::readFixture(QStringLiteral("diskutil/") + Listing.at(run - 1)));
        for (const char *name : {"unlock-success.txt", "mount-success.txt"})
            diskutil.addFile(QString::fromLatin1(name), KVToolDouble::readFixture(QStringLiteral("diskutil/") + QLatin1String(name)));
        diskutil.setScript(DiskutilScript);
        sheet->setDisks(&disks);
        window.show();
    }

    // The shell's order: the list is asked for, then the sheet shows.
    bool open()
    {
        sheet->updateTable();
        sheet->open();
        return QTest::qWaitFor([this] { return table()->rowCount() == 2; }, 20000);
    }

    KVDiskTable *table() const { return sheet->diskTable(); }
    void select(int row) { part<QTableView>(sheet, "diskListTableView")->selectRow(row); }
    QPushButton *button(const char *name) const { return part<QPushButton>(sheet, name); }
    QLabel *errorLine() const { return part<QLabel>(sheet, "mountDiskErrorNotification"); }
    bool settledOn(int step) const
    {
        return QTest::qWaitFor([this, step] { return sheet->currentStep() == step && !sheet->slidingSteps()->isSliding(); },
                               10000);
    }
    QStringList runAfterListing(int number) const { return diskutil.arguments(ListingRuns + number); }
    int endedWith() const { return finished.isEmpty() ? 0 : finished.last().first().toInt(); }

    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    KVDisk disks;
    QWidget window;
    KVMountDiskController *sheet;
    QSignalSpy finished;
};

} // namespace

class TestKVMountDiskController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        KVUserDefaults::standard().setObject(0.01, KVAnimationDurationMultiplierKey);
    }
    void cleanup() { closeAlerts(); }

    void outletsAndTable()
    {
        Sheet s;
        for (const char *name : {"wizardWindow", "mainClipView", "stepOne", "stepTwo", "diskListTableView",
                                 "diskListScrollView", "diskListOutlineBox", "passwordField",
                                 "mountDiskErrorNotification", "continueButton", "goBackButton", "cancelButton",
                                 "progressUpdateDisks"})
            QVERIFY2(s.sheet->objectName() == QLatin1String(name) || s.sheet->findChild<QWidget *>(QLatin1String(name)), name);
        auto *view = part<QTableView>(s.sheet, "diskListTableView");
        auto *header = qobject_cast<KVDiskTableHeaderCell *>(view->horizontalHeader());
        QVERIFY(header);
        QCOMPARE(header->height(), 26);
        QVERIFY(header->titleFont().bold());
        QCOMPARE(header->titleFont().pointSizeF(), 11.0);
        QStringList identifiers;
        for (int column = 0; column < s.table()->columnCount(); ++column)
            identifiers << s.table()->headerData(column, Qt::Horizontal, Qt::UserRole).toString();
        QCOMPARE(identifiers, (QStringList{"diskName", "size", "status"}));
    }

    void listShowsTheCandidatesWhileTheSpinnerTurns()
    {
        Sheet s;
        s.diskutil.setScript(QByteArray("[ \"$n\" = 1 ] && while [ ! -f \"$d/go\" ]; do sleep 0.02; done\n") + DiskutilScript);
        s.sheet->updateTable();
        s.sheet->open();
        QTRY_VERIFY(s.diskutil.runCount() >= 1);
        QVERIFY(part(s.sheet, "progressUpdateDisks")->isVisible());
        QCOMPARE(s.table()->rowCount(), 0);
        s.diskutil.addFile(QStringLiteral("go"), QByteArray());
        QTRY_COMPARE_WITH_TIMEOUT(s.table()->rowCount(), 2, 20000);
        QVERIFY(!part(s.sheet, "progressUpdateDisks")->isVisible());
        const auto cell = [&](int row, int column) { return s.table()->index(row, column).data().toString(); };
        QCOMPARE(cell(0, 0), QStringLiteral("BLACK"));
        QCOMPARE(cell(0, 1), QStringLiteral("2.00 TB"));
        QCOMPARE(cell(0, 2), QStringLiteral("Unlocked"));
        QCOMPARE(cell(1, 2), QStringLiteral("Locked"));
        s.select(1);
        kvSaveScreenshot(s.sheet, QStringLiteral("mount-1-list"));
    }

    void continueOrMountByLockState_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("nothing selected") << -1 << "Continue" << "continue" << false;
        QTest::newRow("unlocked") << 0 << "Mount" << "mount" << true;
        QTest::newRow("locked") << 1 << "Continue" << "continue" << true;
    }

    void continueOrMountByLockState()
    {
        QFETCH(int, row);
        QFETCH(QString, title);
        QFETCH(QString, identifier);
        QFETCH(bool, enabled);
        Sheet s;
        QVERIFY(s.open());
        if (row >= 0)
            s.select(row);
        QCOMPARE(s.button("continueButton")->text(), title);
        QCOMPARE(s.button("continueButton")->property("identifier").toString(), identifier);
        QCOMPARE(s.button("continueButton")->isEnabled(), enabled);
        QVERIFY(!s.button("goBackButton")->isEnabled());
        QVERIFY(s.button("cancelButton")->isEnabled());
    }

    void unlockedVolumeMountsWithoutAskingForAPassphrase()
    {
        Sheet s;
        QVERIFY(s.open());
        s.select(0);
        s.button("continueButton")->click();
        QTRY_COMPARE(s.finished.size(), 1);
        QCOMPARE(s.endedWith(), int(KVSheetReturnCode::Succeeded));
        QCOMPARE(s.diskutil.runCount(), ListingRuns + 1);
        QCOMPARE(s.runAfterListing(1), (QStringList{"mount", "1D1AEEDF-2794-4459-9D1A-D7E328B726BF"}));
        QCOMPARE(s.sheet->currentStep(), 0);
        QVERIFY(s.disks.disksToMount().isEmpty());
    }

    void wrongThenRightPassphrase()
    {
        Sheet s;
        QVERIFY(s.open());
        s.select(1);
        s.button("continueButton")->click();
        QVERIFY(s.settledOn(1));
        QCOMPARE(s.button("continueButton")->text(), QStringLiteral("Mount"));
        QVERIFY(s.button("goBackButton")->isEnabled());
        type(s.sheet, "passwordField", QStringLiteral("wrong"));
        s.button("continueButton")->click();
        QTRY_VERIFY(s.errorLine()->isVisible());
        QCOMPARE(s.errorLine()->text(), QStringLiteral("Wrong Password"));
        QCOMPARE(part<KVPasswordFieldView>(s.sheet, "passwordField")->text(), QStringLiteral("wrong"));
        QVERIFY(s.button("continueButton")->isEnabled());
        QVERIFY(s.button("cancelButton")->isEnabled());
        QCOMPARE(s.finished.size(), 0);
        QCOMPARE(openAlerts(), 0);
        kvSaveScreenshot(s.sheet, QStringLiteral("mount-2-wrong-passphrase"));

        type(s.sheet, "passwordField", QStringLiteral("right"));
        s.button("continueButton")->click();
        QTRY_COMPARE(s.finished.size(), 1);
        QCOMPARE(s.endedWith(), int(KVSheetReturnCode::Succeeded));
        QCOMPARE(s.runAfterListing(1), (QStringList{"cs", "unlockVolume", "FA33A826-C98E-425A-BCF1-9A68A926D36E", "-stdinpassphrase"}));
        QCOMPARE(s.diskutil.standardInput(ListingRuns + 1), QByteArray("wrong"));
        QCOMPARE(s.diskutil.standardInput(ListingRuns + 2), QByteArray("right"));
        QCOMPARE(s.runAfterListing(3).first(), QStringLiteral("mount"));
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(s.sheet, "passwordField")));
        QVERIFY(!s.errorLine()->isVisible());
        QCOMPARE(s.sheet->currentStep(), 0);
    }

    void otherFailuresAreAlertsThatEndTheSheet_data()
    {
        QTest::addColumn<QString>("replyFile");
        QTest::addColumn<QByteArray>("reply");
        QTest::newRow("unlock: disk gone") << "unlock-reply.txt" << QByteArray("Error: FA33A826 is not a CoreStorage Logical Volume UUID\n");
        QTest::newRow("mount: disk gone") << "mount-reply.txt" << QByteArray("Unable to find disk for disk2s2\n");
        QTest::newRow("mount: refused") << "mount-reply.txt" << QByteArray("Volume on disk6 failed to mount\n");
    }

    void otherFailuresAreAlertsThatEndTheSheet()
    {
        QFETCH(QString, replyFile);
        QFETCH(QByteArray, reply);
        Sheet s;
        s.diskutil.addFile(replyFile, reply);
        QVERIFY(s.open());
        s.select(1);
        s.button("continueButton")->click();
        QVERIFY(s.settledOn(1));
        type(s.sheet, "passwordField", QStringLiteral("right"));
        s.button("continueButton")->click();
        QTRY_COMPARE(s.finished.size(), 1);
        QCOMPARE(s.endedWith(), int(KVSheetReturnCode::Cancelled));
        QCOMPARE(openAlerts(), 1);
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(s.sheet, "passwordField")));
        QVERIFY(s.disks.disksToMount().isEmpty());
    }

    void listThatFailsToLoadIsAnAlert()
    {
        Sheet s;
        s.diskutil.setResponse(1, QByteArray("not a property list"), 1);
        s.sheet->updateTable();
        s.sheet->open();
        QTRY_COMPARE_WITH_TIMEOUT(s.finished.size(), 1, 20000);
        QCOMPARE(s.endedWith(), int(KVSheetReturnCode::Cancelled));
        QCOMPARE(openAlerts(), 1);
        QCOMPARE(s.table()->rowCount(), 0);
    }

    void cancelEmptiesTheEnginesList()
    {
        Sheet s;
        QVERIFY(s.open());
        QCOMPARE(s.disks.disksToMount().size(), 2);
        s.select(1);
        s.button("continueButton")->click();
        QVERIFY(s.settledOn(1));
        type(s.sheet, "passwordField", QStringLiteral("typed"));
        QTest::keyClick(s.sheet, Qt::Key_Escape);
        QCOMPARE(s.finished.size(), 1);
        QCOMPARE(s.endedWith(), int(KVSheetReturnCode::Cancelled));
        QVERIFY(s.disks.disksToMount().isEmpty());
        QCOMPARE(s.table()->rowCount(), 0);
        QCOMPARE(s.sheet->currentStep(), 0);
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(s.sheet, "passwordField")));
        QVERIFY(!s.button("continueButton")->isEnabled());
    }
};

QTEST_MAIN(TestKVMountDiskController)
#include "tst_kvmountdiskcontroller.moc"
