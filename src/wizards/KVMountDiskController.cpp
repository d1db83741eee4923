#include "KVMountDiskController.h"

#include "ui_MountDisk.h"

#include "app/KVAlert.h"
#include "disk/KVDisk.h"
#include "platform/KVMainQueue.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVSlidingSteps.h"

#include <QPushButton>

KVMountDiskController::KVMountDiskController(QWidget *parent)
    : KVSlidingWizard(parent)
    , m_ui(std::make_unique<Ui::MountDisk>())
{
    m_ui->setupUi(this);
    setUpSteps(m_ui->mainClipView, {m_ui->stepOne, m_ui->stepTwo},
               {m_ui->stepOneTitle->text(), m_ui->stepTwoTitle->text()}, m_ui->continueButton, m_ui->goBackButton,
               m_ui->cancelButton);
    m_table = new KVDiskTable(m_ui->diskListTableView,
                              {{QStringLiteral("diskName"), tr("Name")},
                               {QStringLiteral("size"), tr("Size")},
                               {QStringLiteral("status"), tr("Status")}},
                              [](const KVVolumeItem &item, const QString &column) {
                                  if (column == u"diskName")
                                      return item.name();
                                  if (column == u"size")
                                      return KVDiskTable::createSizeInfoFromVolumeItem(item);
                                  return statusText(item);
                              });
    m_ui->diskListTableView->setColumnWidth(0, 240);
    m_ui->diskListTableView->setColumnWidth(1, 100);
    connect(m_table, &KVDiskTable::selectionDidChange, this, &KVMountDiskController::updateButtons);
    m_ui->progressUpdateDisks->hide();
    reset();
}

KVMountDiskController::~KVMountDiskController() = default;

KVDisk *KVMountDiskController::disks() const
{
    return m_disks;
}

void KVMountDiskController::setDisks(KVDisk *disks)
{
    m_disks = disks;
}

QString KVMountDiskController::statusText(const KVVolumeItem &item)
{
    return item.locked() ? QStringLiteral("Locked") : QStringLiteral("Unlocked");
}

void KVMountDiskController::updateTable()
{
    m_ui->progressUpdateDisks->show();
    if (!m_disks) {
        tableDidLoad(KVAppError(KVAppErrorCode::DiskNotFound, tr("The disks cannot be listed"),
                                tr("Korvelle cannot reach its disk tool.")));
        return;
    }
    const QPointer<KVMountDiskController> self(this);
    const int run = m_run;
    m_disks->updateDisksToMount([self, run](const KVOptionalError &error) {
        KVMainQueue::post(self, [self, run, error] {
            if (run == self->m_run)
                self->tableDidLoad(error);
        });
    });
}

void KVMountDiskController::tableDidLoad(const KVOptionalError &error)
{
    if (error) {
        KVAlert::showError(parentWidget(), *error);
        reset();
        endSheet(KVSheetReturnCode::Cancelled);
        return;
    }
    m_ui->progressUpdateDisks->hide();
    reloadTable();
}

void KVMountDiskController::reloadTable()
{
    m_table->reloadData(m_disks ? m_disks->disksToMount() : QList<KVVolumeItemPtr>());
}

void KVMountDiskController::updateButtons()
{
    // Only the steps' own rows: the sliding mechanics may ask while a slide ends.
    const KVVolumeItemPtr item = m_table ? m_table->selectedItem() : nullptr;
    if (currentStep() == 0) {
        if (!item)
            applyButtonState(m_ui->continueButton, {"Continue", "continue", false});
        else if (item->locked())
            applyButtonState(m_ui->continueButton, {"Continue", "continue", true});
        else
            applyButtonState(m_ui->continueButton, {"Mount", "mount", true});
        m_ui->goBackButton->setEnabled(false);
    } else {
        applyButtonState(m_ui->continueButton, {"Mount", "mount", true});
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

void KVMountDiskController::wizardButtons(const QString &identifier)
{
    if (identifier == u"continue") {
        nextStep();
    } else if (identifier == u"mount") {
        mount();
    } else if (identifier == u"goBack") {
        previousStep();
    } else if (identifier == u"cancel") {
        reset();
        endSheet(KVSheetReturnCode::Cancelled);
    } else if (identifier == u"exit") {
        reset();
        endSheet(KVSheetReturnCode::Finished);
    }
}

void KVMountDiskController::mount()
{
    const KVVolumeItemPtr item = m_table->selectedItem();
    if (!item || !m_disks)
        return;
    disableButtons();
    m_ui->mountDiskErrorNotification->hide();
    if (!item->locked()) {
        mountVolume(item);
        return;
    }
    const QPointer<KVMountDiskController> self(this);
    const int run = m_run;
    // The field keeps the passphrase until the unlock is judged: a wrong one stays for correcting.
    m_disks->unlockVolume(item, m_ui->passwordField->text(), [self, run, item](const KVOptionalError &error) {
        KVMainQueue::post(self, [self, run, item, error] {
            if (run == self->m_run)
                self->unlockDidEnd(item, error);
        });
    });
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
    const QPointer<KVMountDiskController> self(this);
    const int run = m_run;
    m_disks->mountDisk(item, [self, run](const KVOptionalError &error) {
        KVMainQueue::post(self, [self, run, error] {
            if (run == self->m_run)
                self->mountDidEnd(error);
        });
    });
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
    ++m_run;
    if (m_disks)
        m_disks->clearDisksToMount();
    reloadTable();
    m_ui->mountDiskErrorNotification->hide();
    showFirstStep();
    updateButtons();
    m_ui->cancelButton->setEnabled(true);
    m_table->deselectAll();
    m_ui->continueButton->setEnabled(false);
    m_ui->progressUpdateDisks->hide();
    cleanPasswords();
}
