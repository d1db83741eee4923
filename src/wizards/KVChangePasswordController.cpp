#include "KVChangePasswordController.h"

#include "ui_ChangePassword.h"

#include "app/KVAlert.h"
#include "app/KVSheetReturnCode.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "model/KVLocalization.h"
#include "platform/KVMainQueue.h"
#include "wizards/KVNewPasswordForm.h"

#include <QIcon>

KVChangePasswordController::KVChangePasswordController(QWidget *parent)
    : QDialog(parent, Qt::Sheet)
    , m_ui(std::make_unique<Ui::ChangePassword>())
{
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    for (QAbstractButton *button : {static_cast<QAbstractButton *>(m_ui->changeButton),
                                    static_cast<QAbstractButton *>(m_ui->cancelButton)}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { buttons(button->property("identifier").toString()); });
    }
    // Any edit re-evaluates the change button; the failure line stays until the sheet ends.
    connect(m_ui->newPasswordForm, &KVNewPasswordForm::edited, this, [this] {
        if (m_ui->cancelButton->isEnabled())
            enableButtons();
    });
    setCurrentSelection(nullptr);
    windowDidLoad();
}

KVChangePasswordController::~KVChangePasswordController() = default;

void KVChangePasswordController::setDi(KVDiskImage *di)
{
    m_di = di;
}

void KVChangePasswordController::setDisks(KVDisk *disks)
{
    m_disks = disks;
}

KVNewPasswordForm *KVChangePasswordController::newPasswordForm() const
{
    return m_ui->newPasswordForm;
}

void KVChangePasswordController::windowDidLoad()
{
    m_ui->changeButton->setEnabled(false);
    m_ui->cancelButton->setEnabled(true);
    m_ui->errorNotification->hide();
    m_ui->oldPasswordField->setFocus(Qt::OtherFocusReason);
}

void KVChangePasswordController::reset()
{
    windowDidLoad();
    m_currentSelection.reset();
    m_ui->oldPasswordField->clear();
    m_ui->newPasswordForm->reset();
}

void KVChangePasswordController::setCurrentSelection(const KVVolumeItemPtr &item)
{
    const bool disk = item && item->type() == KVVolumeKind::Disk;
    m_ui->thumbImg->setProperty("imageName", disk ? DiskIconName : DiskImageIconName);
    m_ui->thumbImg->setPixmap(QIcon(disk ? QStringLiteral(":/icons/DiskIcon.svg")
                                         : QStringLiteral(":/icons/SheetDiskImageIcon.svg"))
                                  .pixmap(64, 64));
    m_currentSelection = item;
}

QString KVChangePasswordController::thumbImageName() const
{
    return m_ui->thumbImg->property("imageName").toString();
}

void KVChangePasswordController::enableButtons()
{
    m_ui->cancelButton->setEnabled(true);
    m_ui->changeButton->setEnabled(m_ui->newPasswordForm->isValid());
}

void KVChangePasswordController::disableButtons()
{
    m_ui->cancelButton->setEnabled(false);
    m_ui->changeButton->setEnabled(false);
}

void KVChangePasswordController::buttons(const QString &identifier)
{
    if (identifier == u"change") {
        changePassword();
    } else if (identifier == u"cancel") {
        reset();
        endSheet(int(KVSheetReturnCode::Cancelled));
    } else if (identifier == u"exit") {
        reset();
        endSheet(int(KVSheetReturnCode::Finished));
    }
}

void KVChangePasswordController::reject()
{
    if (m_ui->cancelButton->isEnabled())
        m_ui->cancelButton->click();
}

void KVChangePasswordController::endSheet(int returnCode)
{
    done(returnCode);
}

void KVChangePasswordController::changePassword()
{
    if (!m_ui->newPasswordForm->isValid())
        return; // Return in a field presses "Change" even while it is disabled
    disableButtons();
    const KVVolumeKind type = m_currentSelection ? m_currentSelection->type() : KVVolumeKind::None;
    const QString oldPassword = m_ui->oldPasswordField->text();
    const QString newPassword = m_ui->newPasswordForm->password();
    const QPointer<KVChangePasswordController> self(this);
    auto done = [self](const KVOptionalError &error) {
        KVMainQueue::post(self, [self, error] { self->changeDidEnd(error); });
    };
    if (type == KVVolumeKind::DiskImage && m_di) {
        m_di->changePassword(m_currentSelection, oldPassword, newPassword, done);
    } else if (type == KVVolumeKind::Disk && m_disks) {
        m_disks->changePassword(m_currentSelection, oldPassword, newPassword, done);
    } else {
        KVAlert::showError(parentWidget(),
                           KVAppError(KVAppErrorCode::NotAValidVolume, KVLocalization::tr("Changing password failed"),
                                      KVLocalization::tr("Not a valid volume")));
        endSheet(int(KVSheetReturnCode::Cancelled));
        reset();
    }
}

void KVChangePasswordController::changeDidEnd(const KVOptionalError &error)
{
    if (error && error->is(KVAppErrorCode::WrongPassword)) {
        m_ui->errorNotification->setText(error->localizedFailureReason());
        m_ui->errorNotification->show();
        enableButtons();
        m_ui->oldPasswordField->setFocus(Qt::OtherFocusReason);
        return;
    }
    if (error)
        KVAlert::showError(parentWidget(), *error);
    endSheet(int(error ? KVSheetReturnCode::Cancelled : KVSheetReturnCode::Succeeded));
    reset();
}
