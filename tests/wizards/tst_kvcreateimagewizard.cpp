#include "wizards/KVCreateImageWizardController.h"

#include "app/KVSheetReturnCode.h"
#include "controls/KVCustomProgressIndicatorView.h"
#include "controls/KVWizardProgressCirclesView.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"
#include "settings/KVPreferences.h"
#include "wizards/KVNewPasswordForm.h"
#include "wizards/KVPasswordStrengthMeterView.h"
#include "wizards/KVPhaseProgress.h"
#include "wizards/KVSlidingSteps.h"
#include "wizards/KVSpringAnimation.h"

#include "KVScreenshot.h"
#include "KVToolDouble.h"
#include "KVWizardTestSupport.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace KVWizardTest;

namespace {

const QStringList CreateHead{"create", "-verbose", "-stdinpass", "-puppetstrings", "-fs", "Journaled HFS+", "-type", "SPARSE"};

// The wizard on a double of hdiutil, as a sheet of a window.
struct Wizard
{
    Wizard()
        : di(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace)
        , wizard(new KVCreateImageWizardController(&window))
        , finished(wizard, &QDialog::finished)
    {
        hdiutil.setResponseFromFile(QStringLiteral("hdiutil/create-success.txt"));
        wizard->setDi(&di);
        window.show();
    }

    QString imageFile(const QString &name) const { return folder.filePath(name + QStringLiteral(".sparseimage")); }

    void open(const QString &name = QStringLiteral("Secret Stuff"))
    {
        wizard->setImagePath(QUrl::fromLocalFile(imageFile(name)));
        wizard->open();
    }

    QPushButton *button(const char *name) const { return part<QPushButton>(wizard, name); }
    QLabel *label(const char *name) const { return part<QLabel>(wizard, name); }

    bool settledOn(int step) const
    {
        return QTest::qWaitFor([this, step] {
            return wizard->currentStep() == step && !wizard->slidingSteps()->isSliding();
        }, 10000);
    }

    // Step one as it is, then the password twice and "Create".
    bool create(const QString &password = QStringLiteral("pw"))
    {
        button("continueButton")->click();
        if (!settledOn(1))
            return false;
        type(wizard, "passwordField", password);
        type(wizard, "confirmPasswordField", password);
        if (!button("continueButton")->isEnabled())
            return false;
        button("continueButton")->click();
        return true;
    }

    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    KVDiskImage di;
    QTemporaryDir folder;
    QWidget window;
    KVCreateImageWizardController *wizard;
    QSignalSpy finished;
};

QByteArray lines(const QStringList &lines)
{
    return lines.join(u'\n').toUtf8() + '\n';
}

} // namespace

class TestKVCreateImageWizard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        KVUserDefaults::standard().setObject(0.01, KVAnimationDurationMultiplierKey);
    }
    void init() { KVPreferences::setPrefMountDiskImageAfterCreation(false); }

    void outletsAndStepCircles();
    void volumeNameDefaultsToTheFileName_data();
    void volumeNameDefaultsToTheFileName();
    void createRunsHdiutilWithTheChosenValues_data();
    void createRunsHdiutilWithTheChosenValues();
    void messageLinesCountAndBlackenPhases_data();
    void messageLinesCountAndBlackenPhases();
    void percentLinesShowAsText_data();
    void percentLinesShowAsText();
    void createNeedsMatchingPasswords_data();
    void createNeedsMatchingPasswords();
    void failureShowsTheErrorAfterADelay();
    void existingFileIsRemovedFirst();
    void fileThatCannotBeRemovedFailsWithoutTheTool();
    void cancelReturnsAndForgetsEverything_data();
    void cancelReturnsAndForgetsEverything();
    void finishReturnsFinishedAndStartsAfresh();
    void passwordLeavesNoTraceInTheFields();
    void keyboardContinuesAndCancels();
    void helpPanelFollowsTheHoverAreas_data();
    void helpPanelFollowsTheHoverAreas();
    void springComesToRest_data();
    void springComesToRest();
};

void TestKVCreateImageWizard::outletsAndStepCircles()
{
    Wizard w;
    w.open();
    for (const char *name : {"wizardWindow", "mainClipView", "stepOne", "stepTwo", "stepThree", "stepFour",
                             "stepOneHelpClipView", "stepOneHelp", "imageName", "encryptionRadioButton",
                             "passwordField", "confirmPasswordField", "passwordStrengthMeter", "creationProgress",
                             "creationProgressText", "createInitializingText", "createCreatingText",
                             "createFormattingText", "createFinishingText", "finishHeading", "finishSubheading",
                             "finishDesc", "finishImg", "continueButton", "goBackButton", "cancelButton"})
        QVERIFY2(w.wizard->objectName() == QLatin1String(name) || w.wizard->findChild<QWidget *>(QLatin1String(name)),
                 name);
    QCOMPARE(w.button("cancelButton")->property("identifier").toString(), QStringLiteral("cancel"));
    QCOMPARE(w.button("goBackButton")->property("identifier").toString(), QStringLiteral("goBack"));
    QCOMPARE(part<KVCustomProgressIndicatorView>(w.wizard, "creationProgress")->maximum(), 4.0);
    const QStringList circles{"3-1", "3-2", "3-3", "3-3"};
    const char *steps[] = {"stepOne", "stepTwo", "stepThree", "stepFour"};
    for (int step = 0; step < 4; ++step) {
        const auto found = part(w.wizard, steps[step])->findChildren<KVWizardProgressCirclesView *>();
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first()->identifier(), circles[step]);
    }
    kvSaveScreenshot(w.wizard, QStringLiteral("create-1-name"));
}

void TestKVCreateImageWizard::volumeNameDefaultsToTheFileName_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "/home/someone/Secret Stuff.sparseimage" << "Secret Stuff";
    QTest::newRow("dots inside") << "/home/someone/taxes.2026.sparseimage" << "taxes.2026";
    QTest::newRow("no extension") << "/tmp/a.b/plain" << "plain";
    QTest::newRow("unicode") << QString::fromUtf8("/tmp/Tageb\u00fccher \U0001F512.sparseimage") << QString::fromUtf8("Tageb\u00fccher \U0001F512");
}

void TestKVCreateImageWizard::volumeNameDefaultsToTheFileName()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    Wizard w;
    w.wizard->setImagePath(QUrl::fromLocalFile(file));
    QCOMPARE(part<QLineEdit>(w.wizard, "imageName")->text(), name);
    QCOMPARE(w.wizard->imagePath(), QUrl::fromLocalFile(file));
}

void TestKVCreateImageWizard::createRunsHdiutilWithTheChosenValues_data()
{
    QTest::addColumn<float>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("aes256");
    QTest::addColumn<bool>("mountAfterCreation");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QStringList>("tail");
    QTest::newRow("defaults") << -1.0f << QString() << false << false << "pw"
                              << QStringList{"-size", "100m", "-volname", "Secret Stuff", "-encryption", "AES-128"};
    QTest::newRow("1.5 MB") << 1'500'000.0f << QString() << false << false << "pw"
                            << QStringList{"-size", "1.5m", "-volname", "Secret Stuff", "-encryption", "AES-128"};
    QTest::newRow("AES-256, mounted, renamed")
        << 2'000'000'000.0f << "Tageb\u00fccher" << true << true << QString::fromUtf8("p\u00e4ss w\u00f6rd \U0001F511")
        << QStringList{"-size", "2000m", "-volname", "Tageb\u00fccher", "-encryption", "AES-256", "-attach"};
}

void TestKVCreateImageWizard::createRunsHdiutilWithTheChosenValues()
{
    QFETCH(float, bytes);
    QFETCH(QString, name);
    QFETCH(bool, aes256);
    QFETCH(bool, mountAfterCreation);
    QFETCH(QString, password);
    QFETCH(QStringList, tail);
    KVPreferences::setPrefMountDiskImageAfterCreation(mountAfterCreation);
    Wizard w;
    w.open();
    QCOMPARE(w.wizard->sizeSliderValue(), 100'000'000.0f);
    if (bytes > 0)
        w.wizard->setSizeSliderValue(bytes);
    if (!name.isEmpty())
        type(w.wizard, "imageName", name);
    if (aes256)
        part<QRadioButton>(w.wizard, "aes256Button")->click();
    QVERIFY(w.create(password));
    QVERIFY(w.settledOn(3));
    QCOMPARE(w.hdiutil.runCount(), 1);
    QCOMPARE(w.hdiutil.arguments(), CreateHead + tail + QStringList{w.folder.filePath(QStringLiteral("Secret Stuff"))});
    QCOMPARE(w.hdiutil.standardInput(), password.toUtf8());
    QCOMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedSuccessful"));
    QCOMPARE(w.label("finishHeading")->text(), QStringLiteral("Disk Image Creation was Successful"));
    QCOMPARE(w.label("finishSubheading")->text(), QStringLiteral("Successful"));
    QCOMPARE(w.button("continueButton")->text(), QStringLiteral("Finish"));
    QCOMPARE(w.button("continueButton")->property("identifier").toString(), QStringLiteral("exit"));
    QVERIFY(w.button("continueButton")->isEnabled());
    QVERIFY(!w.button("cancelButton")->isEnabled());
    QVERIFY(!w.button("goBackButton")->isEnabled());
    kvSaveScreenshot(w.wizard, QStringLiteral("create-4-success"));
}

void TestKVCreateImageWizard::messageLinesCountAndBlackenPhases_data()
{
    QTest::addColumn<QStringList>("output");
    QTest::addColumn<int>("counter");
    QTest::addColumn<int>("reached");
    QTest::newRow("too short") << QStringList{"MESSAG"} << 0 << 0;
    QTest::newRow("exactly MESSAGE") << QStringList{"MESSAGE"} << 1 << 1;
    QTest::newRow("continued") << QStringList{"MESSAGE:Initializing\u2026", "Initializing\u2026", "PERCENT:-1.000000"} << 1 << 1;
    QTest::newRow("not at the start") << QStringList{" MESSAGE", "message", "A MESSAGE"} << 0 << 0;
    QTest::newRow("four phases") << QStringList{"MESSAGE:a", "MESSAGE:b", "MESSAGE:c", "MESSAGE:d"} << 4 << 4;
    QTest::newRow("beyond the labels") << QStringList{"MESSAGE", "MESSAGE", "MESSAGE", "MESSAGE", "MESSAGE", "MESSAGE"} << 6 << 4;
}

void TestKVCreateImageWizard::messageLinesCountAndBlackenPhases()
{
    QFETCH(QStringList, output);
    QFETCH(int, counter);
    QFETCH(int, reached);
    Wizard w;
    w.hdiutil.setResponse(lines(output));
    w.open();
    QVERIFY(w.create());
    QVERIFY(w.settledOn(3));
    QCOMPARE(w.wizard->progressCounter(), counter);
    QCOMPARE(part<KVCustomProgressIndicatorView>(w.wizard, "creationProgress")->value(), double(counter));
    for (int phase = 0; phase < 4; ++phase)
        QCOMPARE(w.wizard->phaseProgress()->isReached(phase), phase < reached);
}

void TestKVCreateImageWizard::percentLinesShowAsText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("text");
    QTest::newRow("fraction") << "PERCENT:42.187500" << "42 %";
    QTest::newRow("done") << "PERCENT:100.000000" << "100 %";
    QTest::newRow("indeterminate") << "PERCENT:-1.000000" << QString();
    QTest::newRow("garbage") << "PERCENT:lots" << QString();
    QTest::newRow("other line") << "Formatting\u2026" << QString();
}

void TestKVCreateImageWizard::percentLinesShowAsText()
{
    QFETCH(QString, line);
    QFETCH(QString, text);
    QCOMPARE(KVCreateImageWizardController::percentText(line).value_or(QString()), text);

    // Mid-way through a creation that holds on after "Formatting", the phase and the figure show.
    Wizard w;
    w.hdiutil.setResponse(lines({"MESSAGE:Initializing", "MESSAGE:Creating", "MESSAGE:Formatting", line}));
    w.hdiutil.setScript("cat \"$d/out.default\"; while [ ! -f \"$d/go\" ]; do sleep 0.02; done; exit 0\n");
    w.open();
    QVERIFY(w.create());
    QTRY_COMPARE(w.wizard->progressCounter(), 3);
    QTRY_COMPARE(w.label("creationPercentText")->text(), text);
    QVERIFY(!w.button("cancelButton")->isEnabled());
    QVERIFY(!w.button("continueButton")->isEnabled());
    if (line == u"PERCENT:42.187500")
        kvSaveScreenshot(w.wizard, QStringLiteral("create-3-progress"));
    w.hdiutil.addFile(QStringLiteral("go"), QByteArray());
    QVERIFY(w.settledOn(3));
}

void TestKVCreateImageWizard::createNeedsMatchingPasswords_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("confirmation");
    QTest::addColumn<bool>("confirmationFirst");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("both empty, confirmation typed first") << "" << "" << true << false;
    QTest::newRow("confirmation only") << "" << "x" << true << false;
    QTest::newRow("one character") << "a" << "a" << false << true;
    QTest::newRow("differs") << "secret" << "secreT" << false << false;
    QTest::newRow("unicode") << QString::fromUtf8("\u00e9t\u00e9 \U0001F511") << QString::fromUtf8("\u00e9t\u00e9 \U0001F511") << false << true;
    QTest::newRow("confirmed first") << "abc" << "abc" << true << true;
}

void TestKVCreateImageWizard::createNeedsMatchingPasswords()
{
    QFETCH(QString, password);
    QFETCH(QString, confirmation);
    QFETCH(bool, confirmationFirst);
    QFETCH(bool, enabled);
    Wizard w;
    w.open();
    w.button("continueButton")->click();
    QVERIFY(w.settledOn(1));
    QCOMPARE(w.button("continueButton")->text(), QStringLiteral("Create"));
    QCOMPARE(w.button("continueButton")->property("identifier").toString(), QStringLiteral("create"));
    QVERIFY(!w.button("continueButton")->isEnabled());
    QVERIFY(w.button("goBackButton")->isEnabled());
    if (confirmationFirst) {
        type(w.wizard, "confirmPasswordField", confirmation);
        type(w.wizard, "passwordField", password);
    } else {
        type(w.wizard, "passwordField", password);
        type(w.wizard, "confirmPasswordField", confirmation);
    }
    QCOMPARE(w.button("continueButton")->isEnabled(), enabled);
    kvSaveScreenshot(w.wizard, QStringLiteral("create-2-password"));
}

void TestKVCreateImageWizard::failureShowsTheErrorAfterADelay()
{
    Wizard w;
    w.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/create-not-permitted.txt"), 1);
    w.open();
    QVERIFY(w.create());
    QTRY_COMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedFailure"));
    QElapsedTimer sinceFailure;
    sinceFailure.start();
    QCOMPARE(w.wizard->currentStep(), 2);
    QVERIFY(w.settledOn(3));
    QVERIFY2(sinceFailure.elapsed() >= 700, qPrintable(QString::number(sinceFailure.elapsed())));
    QCOMPARE(w.label("finishHeading")->text(), QStringLiteral("Disk Image creation failed"));
    QCOMPARE(w.label("finishSubheading")->text(), w.label("finishHeading")->text());
    QCOMPARE(w.label("finishDesc")->text(), QStringLiteral("hdiutil: create failed - Operation not permitted"));
    QCOMPARE(w.button("continueButton")->property("identifier").toString(), QStringLiteral("exit"));
    kvSaveScreenshot(w.wizard, QStringLiteral("create-4-failure"));
    w.button("continueButton")->click();
    QCOMPARE(w.finished.size(), 1);
    QCOMPARE(w.finished.first().first().toInt(), int(KVSheetReturnCode::Finished));
}

void TestKVCreateImageWizard::existingFileIsRemovedFirst()
{
    Wizard w;
    QFile old(w.imageFile(QStringLiteral("Secret Stuff")));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.close();
    // The double says whether the old file was still there when it ran.
    w.hdiutil.setScript("for last in \"$@\"; do :; done; [ -e \"$last.sparseimage\" ] && touch \"$d/old-file-seen\"\n");
    w.open();
    QVERIFY(w.create());
    QVERIFY(w.settledOn(3));
    QCOMPARE(w.hdiutil.runCount(), 1);
    QVERIFY(!QFile::exists(w.hdiutil.directory() + QStringLiteral("/old-file-seen")));
    QVERIFY(!QFile::exists(w.imageFile(QStringLiteral("Secret Stuff"))));
    QCOMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedSuccessful"));
}

void TestKVCreateImageWizard::fileThatCannotBeRemovedFailsWithoutTheTool()
{
    Wizard w;
    // A folder with something in it cannot be removed as a file, by root neither.
    const QString path = w.imageFile(QStringLiteral("Secret Stuff"));
    QVERIFY(QDir().mkpath(path + QStringLiteral("/inside")));
    w.open();
    QVERIFY(w.create());
    QVERIFY(w.settledOn(3));
    QCOMPARE(w.hdiutil.runCount(), 0);
    QCOMPARE(w.wizard->finishImageName(), QStringLiteral("FinishedFailure"));
    QVERIFY(w.label("finishHeading")->text().contains(QStringLiteral("Secret Stuff.sparseimage")));
    QVERIFY(!w.label("finishDesc")->text().isEmpty());
    QVERIFY(QFileInfo(path).isDir());
}

void TestKVCreateImageWizard::cancelReturnsAndForgetsEverything_data()
{
    QTest::addColumn<int>("step");
    QTest::newRow("name step") << 0;
    QTest::newRow("password step") << 1;
}

void TestKVCreateImageWizard::cancelReturnsAndForgetsEverything()
{
    QFETCH(int, step);
    Wizard w;
    w.open();
    w.wizard->setSizeSliderValue(5e9f);
    part<QRadioButton>(w.wizard, "aes256Button")->click();
    if (step == 1) {
        w.button("continueButton")->click();
        QVERIFY(w.settledOn(1));
        type(w.wizard, "passwordField", QStringLiteral("typed secret"));
        type(w.wizard, "confirmPasswordField", QStringLiteral("typed secret"));
    }
    w.button("cancelButton")->click();
    QCOMPARE(w.finished.size(), 1);
    QCOMPARE(w.finished.first().first().toInt(), int(KVSheetReturnCode::Cancelled));
    QCOMPARE(w.hdiutil.runCount(), 0);
    QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "passwordField")));
    QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "confirmPasswordField")));

    // Reopened for another file: step one, its name, 100 MB, AES-128, an empty meter.
    w.open(QStringLiteral("Other"));
    QCOMPARE(w.wizard->currentStep(), 0);
    QVERIFY(!part(w.wizard, "stepOne")->isHidden());
    QVERIFY(part(w.wizard, "stepTwo")->isHidden());
    QCOMPARE(part<QLineEdit>(w.wizard, "imageName")->text(), QStringLiteral("Other"));
    QCOMPARE(w.wizard->sizeSliderValue(), 100'000'000.0f);
    QVERIFY(part<QRadioButton>(w.wizard, "aes128Button")->isChecked());
    QCOMPARE(part<KVPasswordStrengthMeterView>(w.wizard, "passwordStrengthMeter")->litSegments(), 0);
    QVERIFY(w.wizard->newPasswordForm()->hasEstimator());
    QCOMPARE(w.button("continueButton")->text(), QStringLiteral("Continue"));
    QVERIFY(w.button("continueButton")->isEnabled());
}

void TestKVCreateImageWizard::finishReturnsFinishedAndStartsAfresh()
{
    Wizard w;
    w.open();
    QVERIFY(w.create());
    QVERIFY(w.settledOn(3));
    w.button("continueButton")->click();
    QCOMPARE(w.finished.size(), 1);
    QCOMPARE(w.finished.first().first().toInt(), int(KVSheetReturnCode::Finished));
    QCOMPARE(w.wizard->currentStep(), 0);
    QCOMPARE(w.wizard->progressCounter(), 0);
    for (int phase = 0; phase < 4; ++phase)
        QVERIFY(!w.wizard->phaseProgress()->isReached(phase));
    QCOMPARE(part<QLineEdit>(w.wizard, "imageName")->text(), QString());
    QCOMPARE(w.label("creationPercentText")->text(), QString());
}

void TestKVCreateImageWizard::passwordLeavesNoTraceInTheFields()
{
    Wizard w;
    // The tool holds on, so that the fields are seen while the engine still has the password.
    w.hdiutil.setScript("while [ ! -f \"$d/go\" ]; do sleep 0.02; done\n");
    w.open();
    w.button("continueButton")->click();
    QVERIFY(w.settledOn(1));
    auto *password = part<KVPasswordFieldView>(w.wizard, "passwordField");
    password->setShowsText(true); // shown as plain text, where undo is on
    type(w.wizard, "passwordField", QStringLiteral("hunter2"));
    type(w.wizard, "confirmPasswordField", QStringLiteral("hunter2"));
    w.button("continueButton")->click();
    QVERIFY(holdsNoPassword(password));
    QVERIFY(holdsNoPassword(part<KVPasswordFieldView>(w.wizard, "confirmPasswordField")));
    password->undo();
    QCOMPARE(password->text(), QString());
    QVERIFY(!w.wizard->newPasswordForm()->hasEstimator());
    QTRY_COMPARE(w.hdiutil.runCount(), 1);
    w.hdiutil.addFile(QStringLiteral("go"), QByteArray());
    QVERIFY(w.settledOn(3));
    QCOMPARE(w.hdiutil.standardInput(), QByteArray("hunter2"));
}

void TestKVCreateImageWizard::keyboardContinuesAndCancels()
{
    Wizard w;
    w.hdiutil.setScript("while [ ! -f \"$d/go\" ]; do sleep 0.02; done\n");
    w.open();
    QTest::keyClick(w.wizard, Qt::Key_Return);
    QVERIFY(w.settledOn(1));
    QTest::keyClick(w.wizard, Qt::Key_Return); // "Create" is disabled: nothing happens
    QCOMPARE(w.wizard->currentStep(), 1);
    type(w.wizard, "passwordField", QStringLiteral("pw"));
    type(w.wizard, "confirmPasswordField", QStringLiteral("pw"));
    QTest::keyClick(part(w.wizard, "confirmPasswordField"), Qt::Key_Return);
    QVERIFY(w.settledOn(2));
    QTest::keyClick(w.wizard, Qt::Key_Escape); // a running creation cannot be left
    QCOMPARE(w.finished.size(), 0);
    QVERIFY(w.wizard->isVisible());
    QCOMPARE(w.wizard->accessibleDescription(), QStringLiteral("Creating your Disk Image"));
    w.hdiutil.addFile(QStringLiteral("go"), QByteArray());
    QVERIFY(w.settledOn(3));
    QTest::keyClick(w.wizard, Qt::Key_Escape);
    QCOMPARE(w.finished.size(), 0);
    QTest::keyClick(w.wizard, Qt::Key_Return);
    QCOMPARE(w.finished.size(), 1);
    QCOMPARE(w.finished.first().first().toInt(), int(KVSheetReturnCode::Finished));

    w.open();
    QTest::keyClick(w.wizard, Qt::Key_Escape);
    QCOMPARE(w.finished.size(), 2);
    QCOMPARE(w.finished.last().first().toInt(), int(KVSheetReturnCode::Cancelled));
}

void TestKVCreateImageWizard::helpPanelFollowsTheHoverAreas_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<int>("y");
    QTest::newRow("name") << "step1.name" << -392;
    QTest::newRow("size") << "step1.size" << -196;
    QTest::newRow("encryption") << "step1.encryption" << 0;
    QTest::newRow("unknown") << "step1.other" << -392;
}

void TestKVCreateImageWizard::helpPanelFollowsTheHoverAreas()
{
    QFETCH(QString, identifier);
    QFETCH(int, y);
    Wizard w;
    w.open();
    QWidget *help = part(w.wizard, "stepOneHelp");
    QCOMPARE(help->y(), -392);
    // The pointer enters the row that carries the identifier, when there is one.
    QWidget *row = nullptr;
    for (QWidget *candidate : part(w.wizard, "stepOne")->findChildren<QWidget *>()) {
        if (candidate->property("identifier").toString() == identifier)
            row = candidate;
    }
    if (row) {
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(row, &enter);
    } else {
        w.wizard->mouseDidEnter(identifier);
    }
    // The spring swings past its end before it rests there.
    QTRY_VERIFY_WITH_TIMEOUT(help->findChildren<KVSpringAnimation *>().isEmpty(), 5000);
    QCOMPARE(help->y(), y);
}

void TestKVCreateImageWizard::springComesToRest_data()
{
    QTest::addColumn<double>("damping");
    QTest::addColumn<bool>("logicError");
    QTest::newRow("the help panel's spring") << 68.0 << false;
    QTest::newRow("no damping") << 0.0 << true;
    QTest::newRow("negative damping") << -3.0 << true;
}

void TestKVCreateImageWizard::springComesToRest()
{
    QFETCH(double, damping);
    QFETCH(bool, logicError);
    if (logicError)
        QTest::ignoreMessage(QtWarningMsg, "[KVSpringAnimation] LOGIC ERROR. `damping` should be > 0.0f to avoid an "
                                           "infinite spring calculation");
    const KVSpringAnimation::Spring spring{445.0, damping, 4.0};
    const QVector<double> values = KVSpringAnimation::displacements(spring);
    QCOMPARE(values.first(), 1.0);
    QCOMPARE(values.last(), 0.0);
    QVERIFY(values.size() > 100);
    QVERIFY(values.size() <= 10001); // a weak spring is cut short after ten seconds

    // The keyframes run from the start to the end, one per millisecond.
    QWidget panel;
    KVSpringAnimation animation(&panel, "pos");
    if (logicError)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("LOGIC ERROR")));
    animation.setStartValue(QPoint(0, -392));
    animation.setEndValue(QPoint(0, 0));
    animation.setSpring(spring);
    QCOMPARE(animation.duration(), int(values.size()));
    QCOMPARE(animation.keyValueAt(0.0).toPoint(), QPoint(0, -392));
    QCOMPARE(animation.keyValueAt(1.0).toPoint(), QPoint(0, 0));
}

QTEST_MAIN(TestKVCreateImageWizard)
#include "tst_kvcreateimagewizard.moc"
