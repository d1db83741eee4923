#include "KVMountDiskController.h"

#include "ui_MountDisk.h"

#include "app/KVAlert.h"
#include "disk/KVDisk.h"
#include "model/KVDisplayText.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVSlidingSteps.h"

#include <QPushButton>

KVMountDiskController::KVMountDiskController(QWidget *parent)
    : KVDiskListWizard({&KVDisk::updateDisksToMount, &KVDisk::disksToMount, &KVDisk::clearDisksToMount}, parent)
    , m_ui(std::make_unique<Ui::MountDisk>())
{
    m_ui->setupUi(this);
    setUpSteps(m_ui->mainClipView, {m_ui->stepOne, m_ui->stepTwo},
               {m_ui->stepOneTitle->text(), m_ui->stepTwoTitle->text()}, m_ui->continueButton, m_ui->goBackButton,
               m_ui->cancelButton);
    setUpDiskTable(m_ui->diskListTableView,
                   {{QStringLiteral("diskName"), tr("Name")},
                    {QStringLiteral("size"), tr("Size")},
                    {QStringLiteral("status"), tr("Status")}},
                   [](const KVVolumeItem &item, const QString &column) {
                       if (column == u"diskName")
                           return KVDisplayText::singleLine(item.name());
                       if (column == u"size")
                           return KVDiskTable::createSizeInfoFromVolumeItem(item);
                       return statusText(item);
                   },
                   m_ui->progressUpdateDisks);
    m_ui->diskListTableView->setColumnWidth(0, 240);
    m_ui->diskListTableView->setColumnWidth(1, 100);
    reset();
}

KVMountDiskController::~KVMountDiskController() = default;

QString KVMountDiskController::statusText(const KVVolumeItem &item)
{
    return item.locked() ? tr("Locked") : tr("Unlocked");
}

void KVMountDiskController::updateButtons()
{
    // Only the steps' own rows: the sliding mechanics may ask while a slide ends.
    static constexpr ButtonState NothingChosen{QT_TRANSLATE_NOOP("KVSlidingWizard", "Continue"), "continue", false};
    static constexpr ButtonState Unlock{QT_TRANSLATE_NOOP("KVSlidingWizard", "Continue"), "continue", true};
    static constexpr ButtonState Mount{QT_TRANSLATE_NOOP("KVSlidingWizard", "Mount"), "mount", true};
    const KVVolumeItemPtr item = diskTable() ? diskTable()->selectedItem() : nullptr;
    if (currentStep() == 0) {
        applyButtonState(m_ui->continueButton, !item ? NothingChosen : item->locked() ? Unlock : Mount);
        m_ui->goBackButton->setEnabled(false);
    } else {
        applyButtonState(m_ui->continueButton, Mount);
        m_ui->goBackButton->setEnabled(true);
    }
}

void KVMountDiskController::disableButtons()
{
    m_ui->continueButton->setEnabled(false);
    m_ui->cancelButton->setEnabled(false);
    m_ui->goBackButton->setEnabled(false);
}

void KVMountDiskController::enableButtons()
{
    m_ui->continueButton->setEnabled(true);
    m_ui->cancelButton->setEnabled(true);
    m_ui->goBackButton->setEnabled(true);
}

void KVMountDiskController::performAction(const QString &identifier)
{
    if (identifier == u"mount")
        mount();
}

void KVMountDiskController::mount()
{
    const KVVolumeItemPtr item = diskTable()->selectedItem();
    if (!item || !disks())
        return;
    disableButtons();
    m_ui->mountDiskErrorNotification->hide();
    if (!item->locked()) {
        mountVolume(item);
        return;
    }
    // The field keeps the passphrase until the unlock is judged: a wrong one stays for correcting.
    disks()->unlockVolume(item, m_ui->passwordField->text(),
                          inCurrentRun([this, item](const KVOptionalError &error) { unlockDidEnd(item, error); }));
}

void KVMountDiskController::unlockDidEnd(const KVVolumeItemPtr &item, const KVOptionalError &error)
{
    if (!error) {
        mountVolume(item);
        return;
    }
    if (error->is(KVAppErrorCode::WrongPassword)) {
        m_ui->mountDiskErrorNotification->setText(error->localizedFailureReason());
        m_ui->mountDiskErrorNotification->show();
        enableButtons();
        m_ui->passwordField->setFocus(Qt::OtherFocusReason);
        m_ui->passwordField->selectAll();
        return;
    }
    KVAlert::showError(parentWidget(), *error);
    endSheet(KVSheetReturnCode::Cancelled);
    reset();
}

void KVMountDiskController::mountVolume(const KVVolumeItemPtr &item)
{
    disks()->mountDisk(item, inCurrentRun([this](const KVOptionalError &error) { mountDidEnd(error); }));
}

void KVMountDiskController::mountDidEnd(const KVOptionalError &error)
{
    if (error)
        KVAlert::showError(parentWidget(), *error);
    endSheet(error ? KVSheetReturnCode::Cancelled : KVSheetReturnCode::Succeeded);
    reset();
}

void KVMountDiskController::cleanPasswords()
{
    // setText() rather than clear(): clearing is an edit that undo would take back.
    m_ui->passwordField->setText(QString());
}

void KVMountDiskController::reset()
{
    resetDiskList();
    m_ui->mountDiskErrorNotification->hide();
    showFirstStep();
    updateButtons();
    m_ui->cancelButton->setEnabled(true);
    m_ui->continueButton->setEnabled(false);
    cleanPasswords();
}
