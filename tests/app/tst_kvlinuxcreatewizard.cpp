// The create-image wizard against Korvelle's own Linux tools: a person makes
// an encrypted image through the wizard's widgets and finds it mounted.
#include "app/KVAppDelegate.h"
#include "app/KVMainWindow.h"
#include "app/KVTaskLauncher.h"
#include "controls/LogarithmicSlider.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"
#include "settings/KVPreferences.h"
#include "wizards/KVCreateImageWizardController.h"
#include "wizards/KVSlidingSteps.h"

#include "../wizards/KVWizardTestSupport.h"
#include "KVImageToolHarness.h"
#include "KVLinuxSession.h"
#include "KVScreenshot.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QTest>

#include <memory>

using namespace KVWizardTest;

namespace {

// The application on the real tools, with the task launcher that opens the wizard.
struct Session : KVLinuxSession
{
    std::unique_ptr<KVTaskLauncher> launcher;
    QList<KVSheetReturnCode> ends;

    bool start()
    {
        if (!KVLinuxSession::start())
            return false;
        launcher = std::make_unique<KVTaskLauncher>(delegate->mainWindow(), delegate->di(), delegate->disks(),
                                                    [this](KVSheetReturnCode code, const QString &) { ends.append(code); });
        return true;
    }
};

QString luksDump(const QString &file)
{
    QProcess dump;
    dump.start(QStringLiteral("cryptsetup"), {QStringLiteral("luksDump"), file});
    if (!dump.waitForFinished(30000) || dump.exitStatus() != QProcess::NormalExit || dump.exitCode() != 0)
        return QString();
    return QString::fromUtf8(dump.readAllStandardOutput());
}

} // namespace

class TestKVLinuxCreateWizard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString unavailable = KVLinuxSession::prepareTestCase(); !unavailable.isEmpty())
            QSKIP(qPrintable(unavailable));
    }

    void wizardCreatesAndMountsAnAes256Image()
    {
        Session session;
        QVERIFY(session.start());
        KVUserDefaults::standard().setObject(0.05, KVAnimationDurationMultiplierKey);
        KVPreferences::setPrefMountDiskImageAfterCreation(true);
        const QString image = session.harness.path(QStringLiteral("Quarterly.sparseimage"));
        session.launcher->createDiskImageAt(image);
        KVCreateImageWizardController *wizard = session.launcher->createImageWizard();
        QVERIFY(wizard);
        QVERIFY(QTest::qWaitForWindowExposed(wizard));
        const auto settledOn = [wizard](int step, int timeout) {
            return QTest::qWaitFor([=] { return wizard->currentStep() == step && !wizard->slidingSteps()->isSliding(); },
                                   timeout);
        };

        // Name, size (about 40 MB on the slider) and AES-256, as a person sets them.
        QCOMPARE(part<QLineEdit>(wizard, "imageName")->text(), QStringLiteral("Quarterly"));
        type(wizard, "imageName", QStringLiteral("Tax Returns 2026"));
        part<LogarithmicSlider>(wizard, "sizeSlider")->setPosition(7.6f);
        const float chosenBytes = wizard->sizeSliderValue();
        QVERIFY2(chosenBytes > 39e6f && chosenBytes < 40e6f, qPrintable(QString::number(chosenBytes)));
        part<QRadioButton>(wizard, "aes256Button")->click();
        part<QPushButton>(wizard, "continueButton")->click();
        QVERIFY(settledOn(1, 10000));
        const QString password = QString::fromUtf8("gr\u00fcn \U0001F511 horse");
        type(wizard, "passwordField", password);
        type(wizard, "confirmPasswordField", password);
        part<QPushButton>(wizard, "continueButton")->click();
        QVERIFY(settledOn(2, 10000));
        QTRY_VERIFY_WITH_TIMEOUT(wizard->progressCounter() >= 1, 60000);
        kvSaveScreenshot(wizard, QStringLiteral("create-real-progress"));
        QVERIFY(settledOn(3, 120000));
        kvSaveScreenshot(wizard, QStringLiteral("create-real-finished"));
        QVERIFY2(wizard->finishImageName() == QStringLiteral("FinishedSuccessful"),
                 qPrintable(part<QLabel>(wizard, "finishDesc")->text()));
        QCOMPARE(wizard->progressCounter(), 4);

        // Mounted after creation, it shows under "Mounted" with the chosen name.
        QTRY_COMPARE_WITH_TIMEOUT(session.delegate->unifiedVolumes().size(), 1, 30000);
        const KVVolumeItemPtr volume = session.delegate->unifiedVolumes().first();
        QCOMPARE(volume->name(), QStringLiteral("Tax Returns 2026"));
        QCOMPARE(volume->location(), image);
        kvSaveScreenshot(session.delegate->mainWindow(), QStringLiteral("create-real-main-window"));

        part<QPushButton>(wizard, "continueButton")->click();
        QCOMPARE(session.ends, QList<KVSheetReturnCode>{KVSheetReturnCode::Finished});

        // A LUKS container that cryptsetup reads, with a 256-bit AES key (512 bits in XTS).
        const QString dump = luksDump(image);
        QVERIFY2(dump.contains(QStringLiteral("aes")), qPrintable(dump));
        QVERIFY2(dump.contains(QStringLiteral("512 bits")), qPrintable(dump));

        session.delegate->unmountVolume(volume);
        QTRY_COMPARE_WITH_TIMEOUT(session.delegate->unifiedVolumes().size(), 0, 30000);
        QTRY_COMPARE_WITH_TIMEOUT(session.harness.leftovers(), QStringList(), 20000);
    }
};

QTEST_MAIN(TestKVLinuxCreateWizard)
#include "tst_kvlinuxcreatewizard.moc"
