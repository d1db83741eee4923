#include "KVCreateImageWizardController.h"

#include "ui_CreateImageWizard.h"

#include "controls/KVColors.h"
#include "controls/KVSizeValueTransformer.h"
#include "diskimage/KVDiskImage.h"
#include "model/KVDisplayText.h"
#include "model/KVLocalization.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "settings/KVPreferences.h"
#include "wizards/KVFinishScreen.h"
#include "wizards/KVNewPasswordForm.h"
#include "wizards/KVPhaseProgress.h"
#include "wizards/KVSensitiveString.h"
#include "wizards/KVSlidingSteps.h"
#include "wizards/KVSpringAnimation.h"

#include <QButtonGroup>
#include <QEvent>
#include <QFileInfo>
#include <QLocale>

#include <filesystem>
#include <system_error>

namespace {

constexpr int FailureScreenDelayMs = 800;
const QString MessagePrefix = QStringLiteral("MESSAGE");
const QString PercentPrefix = QStringLiteral("PERCENT:");

KVFinishScreen::Texts successTexts()
{
    return {KVLocalization::tr("Disk Image Creation was Successful"), KVLocalization::tr("Successful"),
            KVLocalization::tr("Your Disk Image is now ready for use. Wasn't that hard, was it? It will be "
                               "automatically mounted for you if you like to.")};
}

// Runs on the engine's queue: unlinking a file on a slow or network folder must not stall the window.
KVOptionalError removeExistingFile(const QString &path)
{
    std::error_code error;
    const std::filesystem::path file(path.toStdString());
    if (!std::filesystem::exists(std::filesystem::symlink_status(file, error)))
        return std::nullopt;
    if (std::filesystem::remove(file, error) && !error)
        return std::nullopt;
    if (!error)
        error = std::make_error_code(std::errc::operation_not_permitted);
    return KVAppError(NSCocoaErrorDomain, error.value(),
                      KVLocalization::tr("The existing file \u201c%1\u201d couldn\u2019t be removed.")
                          .arg(KVDisplayText::inSentence(QFileInfo(path).fileName())),
                      QString::fromStdString(error.message()));
}

} // namespace

KVCreateImageWizardController::KVCreateImageWizardController(QWidget *parent)
    : KVSlidingWizard(parent)
    , m_ui(std::make_unique<Ui::CreateImageWizard>())
{
    m_ui->setupUi(this);
    setUpSteps(m_ui->mainClipView, {m_ui->stepOne, m_ui->stepTwo, m_ui->stepThree, m_ui->stepFour},
               {m_ui->stepOneTitle->text(), m_ui->stepTwoTitle->text(), m_ui->stepThreeTitle->text(),
                tr("Result")},
               m_ui->continueButton, m_ui->goBackButton, m_ui->cancelButton);
    QWidget *viewport = m_ui->mainClipView->viewport();
    QPalette background = viewport->palette();
    background.setColor(QPalette::Window, KVColors::fromHsb(0.906f, 0.0f, 0.975f));
    viewport->setPalette(background);
    viewport->setAutoFillBackground(true);

    auto *encryption = new QButtonGroup(this);
    encryption->addButton(m_ui->aes128Button, 0);
    encryption->addButton(m_ui->aes256Button, 1);
    setUpHelpPanel();

    m_phaseProgress = new KVPhaseProgress(m_ui->creationProgress,
                                          {m_ui->createInitializingText, m_ui->createCreatingText,
                                           m_ui->createFormattingText, m_ui->createFinishingText},
                                          this);
    m_finishScreen = std::make_unique<KVFinishScreen>(m_ui->finishHeading, m_ui->finishSubheading, m_ui->finishDesc,
                                                      m_ui->finishImg);
    connect(m_ui->sizeSlider, &LogarithmicSlider::positionChanged, this,
            &KVCreateImageWizardController::sizeSliderMoved);
    connect(m_ui->newPasswordForm, &KVNewPasswordForm::edited, this, &KVCreateImageWizardController::passwordsEdited);
    reset();
}

KVCreateImageWizardController::~KVCreateImageWizardController() = default;

KVDiskImage *KVCreateImageWizardController::di() const
{
    return m_di;
}

void KVCreateImageWizardController::setDi(KVDiskImage *di)
{
    m_di = di;
}

void KVCreateImageWizardController::setUpHelpPanel()
{
    for (QWidget *row : {m_ui->nameRow, m_ui->sizeRow, m_ui->encryptionRow})
        row->installEventFilter(this);
}

bool KVCreateImageWizardController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Enter)
        mouseDidEnter(watched->property("identifier").toString());
    return KVSlidingWizard::eventFilter(watched, event);
}

void KVCreateImageWizardController::mouseDidEnter(const QString &identifier)
{
    int y = 0;
    if (identifier == u"step1.name")
        y = NameHelpY;
    else if (identifier == u"step1.size")
        y = SizeHelpY;
    else if (identifier == u"step1.encryption")
        y = EncryptionHelpY;
    else
        return;
    QWidget *panel = m_ui->stepOneHelp;
    for (auto *running : panel->findChildren<KVSpringAnimation *>(Qt::FindDirectChildrenOnly))
        running->stop();
    auto *slide = new KVSpringAnimation(panel, "pos", panel);
    slide->setStartValue(panel->pos());
    slide->setEndValue(QPoint(panel->x(), y));
    slide->setSpring({});
    slide->start(QAbstractAnimation::DeleteWhenStopped);
}

void KVCreateImageWizardController::setImagePath(const QUrl &imagePath)
{
    m_ui->imageName->setText(QFileInfo(imagePath.toLocalFile()).completeBaseName());
    m_imagePath = imagePath;
}

void KVCreateImageWizardController::setSizeSliderValue(float bytes)
{
    m_sizeSliderValue = bytes;
    showSizeSliderValue();
}

void KVCreateImageWizardController::showSizeSliderValue()
{
    // The slider's steps are coarser than the value: showing it must not round the value itself.
    m_showingSize = true;
    m_ui->sizeSlider->setPosition(KVSizeValueTransformer::transformedValue(m_sizeSliderValue));
    m_showingSize = false;
    const QString text = QLocale().formattedDataSize(qint64(m_sizeSliderValue), 1, QLocale::DataSizeSIFormat);
    m_ui->sizeText->setText(text);
    m_ui->sizeSlider->setAccessibleDescription(text);
}

void KVCreateImageWizardController::sizeSliderMoved(float position)
{
    if (m_showingSize)
        return;
    setSizeSliderValue(KVSizeValueTransformer::reverseTransformedValue(position));
}

int KVCreateImageWizardController::progressCounter() const
{
    return m_phaseProgress->progressCounter();
}

QString KVCreateImageWizardController::finishImageName() const
{
    return m_finishScreen->imageName();
}

KVNewPasswordForm *KVCreateImageWizardController::newPasswordForm() const
{
    return m_ui->newPasswordForm;
}

std::optional<QString> KVCreateImageWizardController::encryptionForRow(int row)
{
    if (row == 0)
        return QStringLiteral("AES-128");
    if (row == 1)
        return QStringLiteral("AES-256");
    return std::nullopt;
}

std::optional<QString> KVCreateImageWizardController::percentText(const QString &line)
{
    if (!line.startsWith(PercentPrefix))
        return std::nullopt;
    bool number = false;
    const double percent = QStringView(line).mid(PercentPrefix.size()).trimmed().toDouble(&number);
    if (!number || !(percent >= 0.0))
        return std::nullopt;
    return QStringLiteral("%1 %").arg(int(qMin(percent, 100.0)));
}

void KVCreateImageWizardController::reset()
{
    startNewRun(); // answers of an earlier creation no longer reach the steps
    showFirstStep();
    for (auto *running : m_ui->stepOneHelp->findChildren<KVSpringAnimation *>(Qt::FindDirectChildrenOnly))
        running->stop();
    m_ui->stepOneHelp->move(m_ui->stepOneHelp->x(), NameHelpY);
    m_ui->imageName->setText(QString());
    setSizeSliderValue(DefaultSizeSliderValue);
    m_ui->aes128Button->setChecked(true);
    m_phaseProgress->reset();
    m_ui->creationPercentText->clear();
    m_finishScreen->showSuccess(successTexts());
    m_ui->newPasswordForm->reset();
}

void KVCreateImageWizardController::updateButtons()
{
    static constexpr ButtonState Continue[] = {
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Continue"), "continue", true},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Create"), "create", false},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Create"), "continue", false},
        {QT_TRANSLATE_NOOP("KVSlidingWizard", "Finish"), "exit", true},
    };
    const int step = qBound(0, currentStep(), 3);
    applyButtonState(m_ui->continueButton, Continue[step]);
    if (step == 1)
        m_ui->continueButton->setEnabled(m_ui->newPasswordForm->isValid());
    m_ui->goBackButton->setEnabled(step == 1);
    m_ui->cancelButton->setEnabled(step <= 1);
}

void KVCreateImageWizardController::passwordsEdited()
{
    if (currentStep() == 1 && !slidingSteps()->isSliding())
        m_ui->continueButton->setEnabled(m_ui->newPasswordForm->isValid());
}

void KVCreateImageWizardController::performAction(const QString &identifier)
{
    if (identifier == u"create")
        createImage();
}

void KVCreateImageWizardController::createImage()
{
    if (!m_ui->newPasswordForm->isValid())
        return;
    nextStep();
    // From here on the password lives only in this copy, until the engine has its own.
    const QString typed = m_ui->newPasswordForm->password();
    // A copy of its own, not shared with the field, so that wiping it reaches the characters.
    auto password = std::make_shared<KVSensitiveString>(QString(typed.constData(), typed.size()));
    m_ui->newPasswordForm->cleanPasswords();
    if (!m_di) {
        failAfter(KVAppError(KVAppErrorCode::NoPath, KVLocalization::tr("Disk Image creation failed"),
                             KVLocalization::tr("Korvelle cannot reach its disk image tool.")),
                  FailureScreenDelayMs);
        return;
    }
    // The password is wiped with the last copy of the pointer, run or not.
    auto removalDone = inCurrentRun([this, password](const KVOptionalError &removal) {
        if (removal)
            failAfter(*removal, qRound(animationDurationMultiplier() * 1000.0f));
        else
            startEngine(password->value());
        password->wipe();
    });
    m_di->processingQueue().addOperation(
        [removalDone, path = m_imagePath.toLocalFile()] { removalDone(removeExistingFile(path)); });
}

void KVCreateImageWizardController::startEngine(const QString &password)
{
    if (!m_di)
        return;
    const float sizeInM = m_sizeSliderValue / 1'000'000.0f;
    const auto row = m_ui->aes256Button->isChecked() ? 1 : (m_ui->aes128Button->isChecked() ? 0 : -1);
    m_di->createDiskImage(m_imagePath, sizeInM, m_ui->imageName->text(), encryptionForRow(row).value_or(QString()),
                          password, KVPreferences::prefMountDiskImageAfterCreation(),
                          inCurrentRun([this](const std::optional<QString> &line, bool finished,
                                              const KVOptionalError &error) { creationProgress(line, finished, error); }));
}

void KVCreateImageWizardController::creationProgress(const std::optional<QString> &line, bool finished,
                                                     const KVOptionalError &error)
{
    if (!finished) {
        if (!line)
            return;
        if (line->startsWith(MessagePrefix))
            m_phaseProgress->increment();
        else if (const std::optional<QString> percent = percentText(*line))
            m_ui->creationPercentText->setText(*percent);
        return;
    }
    if (error)
        failAfter(*error, FailureScreenDelayMs);
    else
        nextStep();
}

void KVCreateImageWizardController::failAfter(const KVAppError &error, int milliseconds)
{
    prepareFinishScreenWithError(error);
    KVSystemLog::write(QStringLiteral("Error: %1").arg(error.debugDescription()));
    nextStepAfter(milliseconds);
}

void KVCreateImageWizardController::prepareFinishScreenWithError(const KVAppError &error)
{
    m_finishScreen->showFailure(error);
}
