#include "wizards/KVEncryptDiskWizardController.h"

#include "app/KVSheetReturnCode.h"
#include "controls/KVCustomProgressIndicatorView.h"
#include "controls/KVWizardProgressCirclesView.h"
#include "disk/KVDisk.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVNewPasswordForm.h"
#include "wizards/KVPhaseProgress.h"
#include "wizards/KVSlidingSteps.h"

#include "KVScreenshot.h"
#include "KVToolDouble.h"
#include "KVWizardTestSupport.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTableView>

using namespace KVWizardTest;

namespace {

const QByteArray StorageReport = KVToolDouble::readFixture(QStringLiteral("system_profiler/storage-corestorage.xml"));

struct Wizard
{
    Wizard()
        : disks(KVToolPaths{QString(), diskutil.path(), systemProfiler.path()}, &workspace)
        , wizard(new KVEncryptDiskWizardController(&window))
        , finished(wizard, &QDialog::finished)
    {
        systemProfiler.setResponse(StorageReport);
        diskutil.setResponseFromFile(QStringLiteral("diskutil/convert-success.txt"));
        wizard->setDisks(&disks);
        window.show();
    }

    bool open()
    {
        wizard->updateTable();
        wizard->open();
        return QTest::qWaitFor([this] { return wizard->diskTable()->rowCount() == 2; }, 20000);
    }

    QPushButton *button(const char *name) const { return part<QPushButton>(wizard, name); }
    QLabel *label(const char *name) const { return part<QLabel>(wizard, name); }
    bool settledOn(int step) const
    {
        return QTest::qWaitFor([this, step] { return wizard->currentStep() == step && !wizard->slidingSteps()->isSliding(); },
                               10000);
    }

    // The first partition, the passphrase twice, "Encrypt".
    bool encrypt(const QString &passphrase = QStringLiteral("pass phrase"))
    {
        part<QTableView>(wizard, "diskListTableView")->selectRow(0);
        button("continueButton")->click();
        if (!settledOn(1))
            return false;
        type(wizard, "passwordField", passphrase);
        type(wizard, "confirmPasswordField", passphrase);
        if (!button("continueButton")->isEnabled())
            return false;
        button("continueButton")->click();
        return true;
    }

    int endedWith() const { return finished.isEmpty() ? 0 : finished.last().first().toInt(); }

    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVToolDouble systemProfiler{QStringLiteral("system_profiler")};
    KVWorkspaceNotifications workspace;
    KVDisk disks;
    QWidget window;
    KVEncryptDiskWizardController *wizard;
    QSignalSpy finished;
};

QByteArray lines(const QStringList &lines)
{
    return lines.join(u'\n').toUtf8() + '\n';
}

} // namespace

class TestKVEncryptDiskWizard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        KVUserDefaults::standard().setObject(0.01, KVAnimationDurationMultiplierKey);
    }
    void cleanup() { closeAlerts(); }

    void outletsAndPartitionTable()
    {
        Wizard w;
        for (const char *name : {"wizardWindow", "mainClipView", "stepOne", "stepTwo", "stepThree", "stepFour",
                                 "diskListTableView", "diskListOutlineBox", "passwordField", "confirmPasswordField",
                                 "passwordStrengthMeter", "creationProgress", "createStartingText",
                                 "createResizingText", "createCreatingText", "createFinishingText", "finishHeading",
                                 "finishSubheading", "finishDesc", "finishImg", "continueButton", "goBackButton",
                                 "cancelButton", "progressUpdateDisks"})
            QVERIFY2(w.wizard->objectName() == QLatin1String(name) || w.wizard->findChild<QWidget *>(QLatin1String(name)), name);
        const QStringList circles{"3-1", "3-2", "3-3", "3-3"};
        const char *steps[] = {"stepOne", "stepTwo", "stepThree", "stepFour"};
        for (int step = 0; step < 4; ++step)
            QCOMPARE(part(w.wizard, steps[step])->findChild<KVWizardProgressCirclesView *>()->identifier(), circles[step]);

        QVERIFY(w.open());
        QStringList identifiers;
        for (int column = 0; column < 3; ++column)
            identifiers << w.wizard->diskTable()->headerData(column, Qt::Horizontal, Qt::UserRole).toString();
        QCOMPARE(identifiers, (QStringList{"diskID", "size", "diskName"}));
        QCOMPARE(w.wizard->diskTable()->index(0, 0).data().toString(), QStringLiteral("disk4"));
        QCOMPARE(w.wizard->diskTable()->index(0, 2).data().toString(), QStringLiteral("Archive"));
        QVERIFY(w.wizard->diskTable()->index(0, 1).data().toString().contains(QRegularExpression(QStringLiteral("^\\d+\\.\\d\\d [kMGT]B$"))));
        QVERIFY(!part(w.wizard, "progressUpdateDisks")->isVisible());
        // Nothing chosen, nothing to continue with.
        QVERIFY(!w.button("continueButton")->isEnabled());
        part<QTableView>(w.wizard, "diskListTableView")->selectRow(1);
        QVERIFY(w.button("continueButton")->isEnabled());
        kvSaveScreenshot(w.wizard, QStringLiteral("encrypt-1-partition"));
    }

    void conversionGetsThePartitionAndPassphrase()
    {
        Wizard w;
        QVERIFY(w.open());
        const QString passphrase = QString::fromUtf8("p\u00e4ss \U0001F510 phrase");
        QVERIFY(w.encrypt(passphrase));
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "passwordField")));
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "confirmPasswordField")));
        QVERIFY(!w.wizard->newPasswordForm()->hasEstimator());
        QVERIFY(w.settledOn(3));
        QCOMPARE(w.diskutil.arguments(), (QStringList{"cs", "convert", "disk4", "-stdinpassphrase"}));
        QCOMPARE(w.diskutil.standardInput(), passphrase.toUtf8());
        QCOMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedSuccessful"));
        QCOMPARE(w.label("finishHeading")->text(), QStringLiteral("Preparing Disk for Encryption was Successful"));
        QCOMPARE(w.label("finishDesc")->text(),
                 QString::fromUtf8("The Disk is now prepared for encrypting. The actual encrypting will be happening in "
                                   "the background. You can follow the progress in the \u201cMounted\u201d list."));
        QCOMPARE(w.button("continueButton")->text(), QStringLiteral("Finish"));
        kvSaveScreenshot(w.wizard, QStringLiteral("encrypt-4-success"));
    }

    void stageLinesFillTheBar_data()
    {
        QTest::addColumn<QStringList>("output");
        QTest::addColumn<int>("counter");
        QTest::addColumn<int>("reached");
        const QStringList success = QString::fromUtf8(KVToolDouble::readFixture(QStringLiteral("diskutil/convert-success.txt")))
                                        .split(u'\n', Qt::SkipEmptyParts);
        QTest::newRow("the tool's four stages") << success << 4 << 4;
        QTest::newRow("started only") << QStringList{"Started CoreStorage operation", "Finished CoreStorage operation"} << 1 << 1;
        QTest::newRow("a stage repeated") << QStringList{"Started", "Started", "Resizing", "Creating Core Storage", "Encryption in progress"} << 5 << 4;
        QTest::newRow("not at the start") << QStringList{"Not Started", "  Resizing", "Core Storage disk: disk3"} << 0 << 0;
    }

    void stageLinesFillTheBar()
    {
        QFETCH(QStringList, output);
        QFETCH(int, counter);
        QFETCH(int, reached);
        Wizard w;
        w.diskutil.setResponse(lines(output));
        QVERIFY(w.open());
        QVERIFY(w.encrypt());
        QVERIFY(w.settledOn(3));
        QCOMPARE(w.wizard->progressCounter(), counter);
        QCOMPARE(part<KVCustomProgressIndicatorView>(w.wizard, "creationProgress")->value(), double(counter));
        for (int stage = 0; stage < 4; ++stage)
            QCOMPARE(w.wizard->phaseProgress()->isReached(stage), stage < reached);
    }

    void mismatchedConfirmationKeepsEncryptDisabled_data()
    {
        QTest::addColumn<QString>("passphrase");
        QTest::addColumn<QString>("confirmation");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("strong, mismatched") << "correct horse battery staple 1987!" << "correct horse battery staple 1987?" << false;
        QTest::newRow("weak, confirmed") << "a" << "a" << true;
        QTest::newRow("empty") << "" << "" << false;
    }

    void mismatchedConfirmationKeepsEncryptDisabled()
    {
        QFETCH(QString, passphrase);
        QFETCH(QString, confirmation);
        QFETCH(bool, enabled);
        Wizard w;
        QVERIFY(w.open());
        part<QTableView>(w.wizard, "diskListTableView")->selectRow(0);
        w.button("continueButton")->click();
        QVERIFY(w.settledOn(1));
        QCOMPARE(w.button("continueButton")->text(), QStringLiteral("Encrypt"));
        QCOMPARE(w.button("continueButton")->property("identifier").toString(), QStringLiteral("create"));
        type(w.wizard, "passwordField", passphrase);
        type(w.wizard, "confirmPasswordField", confirmation);
        QCOMPARE(w.button("continueButton")->isEnabled(), enabled);
        kvSaveScreenshot(w.wizard, QStringLiteral("encrypt-2-passphrase"));
    }

    void runningPreparationCannotBeCancelled()
    {
        Wizard w;
        w.diskutil.setScript("printf 'Started CoreStorage operation\\nResizing disk\\n'; while [ ! -f \"$d/go\" ]; do sleep 0.02; done\n");
        QVERIFY(w.open());
        QVERIFY(w.encrypt());
        QVERIFY(w.settledOn(2));
        QTRY_COMPARE(w.wizard->progressCounter(), 2);
        QVERIFY(!w.button("cancelButton")->isEnabled());
        QVERIFY(!w.button("goBackButton")->isEnabled());
        QVERIFY(!w.button("continueButton")->isEnabled());
        QTest::keyClick(w.wizard, Qt::Key_Escape);
        w.wizard->reject();
        QCOMPARE(w.finished.size(), 0);
        kvSaveScreenshot(w.wizard, QStringLiteral("encrypt-3-progress"));
        w.diskutil.addFile(QStringLiteral("go"), QByteArray());
        QVERIFY(w.settledOn(3));
    }

    void failureShowsTheSameTextTwice()
    {
        Wizard w;
        w.diskutil.setResponse(QByteArray("Started CoreStorage operation on disk4 Archive\n"
                                          "Error: -69756: The target disk is too small for this operation\n"), 1);
        QVERIFY(w.open());
        QVERIFY(w.encrypt());
        QTRY_COMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedFailure"));
        QElapsedTimer sinceFailure;
        sinceFailure.start();
        QVERIFY(w.settledOn(3));
        QVERIFY2(sinceFailure.elapsed() >= 700, qPrintable(QString::number(sinceFailure.elapsed())));
        QVERIFY(!w.label("finishHeading")->text().isEmpty());
        QCOMPARE(w.label("finishSubheading")->text(), w.label("finishHeading")->text());
        QVERIFY(!w.label("finishDesc")->text().isEmpty());
        kvSaveScreenshot(w.wizard, QStringLiteral("encrypt-4-failure"));
    }

    void finishRefreshesTheMountedDisks()
    {
        Wizard w;
        QVERIFY(w.open());
        QVERIFY(w.encrypt());
        QVERIFY(w.settledOn(3));
        const int reportsBefore = w.systemProfiler.runCount();
        w.button("continueButton")->click();
        QCOMPARE(w.endedWith(), int(KVSheetReturnCode::Finished));
        QTRY_COMPARE(w.systemProfiler.runCount(), reportsBefore + 1);
        QTRY_COMPARE(w.disks.mountedDisks().size(), 2);
        QVERIFY(w.disks.disksToEncrypt().isEmpty());
        QCOMPARE(w.wizard->currentStep(), 0);
        QCOMPARE(w.wizard->progressCounter(), 0);
        QCOMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedSuccessful"));
    }

    void failedRefreshAfterFinishIsAnAlert()
    {
        Wizard w;
        QVERIFY(w.open());
        QVERIFY(w.encrypt());
        QVERIFY(w.settledOn(3));
        w.systemProfiler.setResponse("not a property list", 3);
        w.button("continueButton")->click();
        QTRY_COMPARE(openAlerts(), 1);
    }

    void listThatFailsToLoadIsAnAlert()
    {
        Wizard w;
        w.systemProfiler.setResponse("not a property list", 3);
        w.wizard->updateTable();
        w.wizard->open();
        QTRY_COMPARE_WITH_TIMEOUT(w.finished.size(), 1, 20000);
        QCOMPARE(w.endedWith(), int(KVSheetReturnCode::Cancelled));
        QCOMPARE(openAlerts(), 1);
    }

    void cancelForgetsTheListAndThePassphrase_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("partition") << 0;
        QTest::newRow("passphrase") << 1;
    }

    void cancelForgetsTheListAndThePassphrase()
    {
        QFETCH(int, step);
        Wizard w;
        QVERIFY(w.open());
        part<QTableView>(w.wizard, "diskListTableView")->selectRow(0);
        if (step == 1) {
            w.button("continueButton")->click();
            QVERIFY(w.settledOn(1));
            type(w.wizard, "passwordField", QStringLiteral("typed"));
            type(w.wizard, "confirmPasswordField", QStringLiteral("typed"));
        }
        w.button("cancelButton")->click();
        QCOMPARE(w.endedWith(), int(KVSheetReturnCode::Cancelled));
        QCOMPARE(w.diskutil.runCount(), 0);
        QVERIFY(w.disks.disksToEncrypt().isEmpty());
        QCOMPARE(w.wizard->diskTable()->rowCount(), 0);
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "passwordField")));
        QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "confirmPasswordField")));
        QCOMPARE(w.wizard->currentStep(), 0);
        QVERIFY(!w.button("continueButton")->isEnabled());
    }
};

QTEST_MAIN(TestKVEncryptDiskWizard)
#include "tst_kvencryptdiskwizard.moc"
