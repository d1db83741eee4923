#include "KVEncryptDiskWizardController.h"

#include "ui_EncryptDiskWizard.h"

#include "app/KVAlert.h"
#include "controls/KVColors.h"
#include "disk/KVDisk.h"
#include "model/KVDisplayText.h"
#include "model/KVLocalization.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVFinishScreen.h"
#include "wizards/KVNewPasswordForm.h"
#include "wizards/KVPhaseProgress.h"
#include "wizards/KVSensitiveString.h"
#include "wizards/KVSlidingSteps.h"


namespace {

constexpr int FailureScreenDelayMs = 800;

KVFinishScreen::Texts successTexts()
{
    return {KVLocalization::tr("Preparing Disk for Encryption was Successful"), KVLocalization::tr("Successful"),
            KVLocalization::tr("The Disk is now prepared for encrypting. The actual encrypting will be happening "
                               "in the background. You can follow the progress in the \u201cMounted\u201d list.")};
}

} // namespace

KVEncryptDiskWizardController::KVEncryptDiskWizardController(QWidget *parent)
    : KVDiskListWizard({&KVDisk::updateDisksToEncrypt, &KVDisk::disksToEncrypt, &KVDisk::clearDisksToEncrypt}, parent)
    , m_ui(std::make_unique<Ui::EncryptDiskWizard>())
{
    m_ui->setupUi(this);
    setUpSteps(m_ui->mainClipView, {m_ui->stepOne, m_ui->stepTwo, m_ui->stepThree, m_ui->stepFour},
               {m_ui->stepOneTitle->text(), m_ui->stepTwoTitle->text(), m_ui->stepThreeTitle->text(), tr("Result")},
               m_ui->continueButton, m_ui->goBackButton, m_ui->cancelButton);
    QWidget *viewport = m_ui->mainClipView->viewport();
    QPalette background = viewport->palette();
    background.setColor(QPalette::Window, KVColors::fromHsb(0.906f, 0.0f, 0.975f));
    viewport->setPalette(background);
    viewport->setAutoFillBackground(true);

    setUpDiskTable(m_ui->diskListTableView,
                   {{QStringLiteral("diskID"), tr("Disk")},
                    {QStringLiteral("size"), tr("Size")},
                    {QStringLiteral("diskName"), tr("Name")}},
                   [](const KVVolumeItem &item, const QString &column) {
                       if (column == u"diskID")
                           return item.diskIdentifier();
                       if (column == u"size")
                           return KVDiskTable::createSizeInfoFromVolumeItem(item);
                       return KVDisplayText::singleLine(item.name());
                   },
                   m_ui->progressUpdateDisks);
    m_ui->diskListTableView->setColumnWidth(0, 110);
    m_ui->diskListTableView->setColumnWidth(1, 110);
    m_phaseProgress = new KVPhaseProgress(m_ui->creationProgress,
                                          {m_ui->createStartingText, m_ui->createResizingText,
                                           m_ui->createCreatingText, m_ui->createFinishingText},
                                          this);
    m_finishScreen = std::make_unique<KVFinishScreen>(m_ui->finishHeading, m_ui->finishSubheading, m_ui->finishDesc,
                                                      m_ui->finishImg);
    connect(m_ui->newPasswordForm, &KVNewPasswordForm::edited, this, &KVEncryptDiskWizardController::passwordsEdited);
    reset();
}

KVEncryptDiskWizardController::~KVEncryptDiskWizardController() = default;

KVNewPasswordForm *KVEncryptDiskWizardController::newPasswordForm() const
{
    return m_ui->newPasswordForm;
}

int KVEncryptDiskWizardController::progressCounter() const
{
    return m_phaseProgress->progressCounter();
}

QString KVEncryptDiskWizardController::finishImageName() const
{
    return m_finishScreen->imageName();
}

bool KVEncryptDiskWizardController::isStageLine(const QString &line)
{
    for (const char *stage : {"Started", "Resizing", "Creating Core Storage", "Encryption in progress"}) {
        if (line.startsWith(QLatin1String(stage)))
            return true;
    }
    return false;
}

void KVEncryptDiskWizardController::updateButtons()
{
    static constexpr ButtonState Continue[] = {
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Continue"), "continue", false},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Encrypt"), "create", false},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Encrypt"), "create", false},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Finish"), "exit", true},
    };
    const int step = qBound(0, currentStep(), 3);
    applyButtonState(m_ui->continueButton, Continue[step]);
    if (step == 0)
        m_ui->continueButton->setEnabled(diskTable() && diskTable()->selectedRow() >= 0);
    else if (step == 1)
        m_ui->continueButton->setEnabled(m_ui->newPasswordForm->isValid());
    m_ui->goBackButton->setEnabled(step == 1);
    m_ui->cancelButton->setEnabled(step <= 1);
}

void KVEncryptDiskWizardController::passwordsEdited()
{
    if (currentStep() == 1 && !slidingSteps()->isSliding())
        m_ui->continueButton->setEnabled(m_ui->newPasswordForm->isValid());
}

void KVEncryptDiskWizardController::performAction(const QString &identifier)
{
    if (identifier == u"create")
        encrypt();
}

void KVEncryptDiskWizardController::encrypt()
{
    const KVVolumeItemPtr item = diskTable()->selectedItem();
    if (!m_ui->newPasswordForm->isValid() || !item)
        return;
    nextStep();
    const QString typed = m_ui->newPasswordForm->password();
    // A copy of its own, not shared with the field, so that wiping it reaches the characters.
    KVSensitiveString passphrase(QString(typed.constData(), typed.size()));
    m_ui->newPasswordForm->cleanPasswords();
    if (!disks()) {
        encryptionProgress(std::nullopt, true,
                           KVAppError(KVAppErrorCode::DiskNotFound, KVLocalization::tr("Encrypting failed"),
                                      tr("Korvelle cannot reach its disk tools.")));
        return;
    }
    disks()->encryptDisk(item->diskIdentifier(), passphrase.value(),
                         inCurrentRun([this](const std::optional<QString> &line, bool finished,
                                             const KVOptionalError &error) { encryptionProgress(line, finished, error); }));
    passphrase.wipe();
}

void KVEncryptDiskWizardController::encryptionProgress(const std::optional<QString> &line, bool finished,
                                                      const KVOptionalError &error)
{
    if (!finished) {
        if (line && isStageLine(*line))
            m_phaseProgress->increment();
        return;
    }
    if (!error) {
        nextStep();
        return;
    }
    prepareFinishScreenWithError(*error);
    KVSystemLog::write(QStringLiteral("Error: %1").arg(error->debugDescription()));
    nextStepAfter(FailureScreenDelayMs);
}

void KVEncryptDiskWizardController::finish()
{
    reset();
    endSheet(KVSheetReturnCode::Finished);
    if (!disks())
        return;
    // The conversion goes on in the background; the refreshed list shows it under "Mounted".
    const QPointer<QWidget> window = parentWidget();
    disks()->updateMountedDisks([window](const KVOptionalError &error) {
        if (error)
            KVMainQueue::post(window, [window, error] { KVAlert::showError(window, *error); });
    });
}

void KVEncryptDiskWizardController::prepareFinishScreenWithError(const KVAppError &error)
{
    m_finishScreen->showFailure(error);
}

void KVEncryptDiskWizardController::reset()
{
    resetDiskList();
    showFirstStep();
    m_phaseProgress->reset();
    m_ui->continueButton->setEnabled(false);
    m_finishScreen->showSuccess(successTexts());
    m_ui->newPasswordForm->reset();
}
