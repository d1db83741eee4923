#include "KVMountSheet.h"

#include "controls/KVPasswordFieldView.h"

#include <QAbstractButton>
#include <QLabel>

KVMountSheet::KVMountSheet(QWidget *parent)
    : QDialog(parent, Qt::Sheet)
{
    setWindowModality(Qt::WindowModal);
}

void KVMountSheet::setParts(KVPasswordFieldView *password, QLabel *errorNotification, QAbstractButton *mountButton,
                            QAbstractButton *cancelButton)
{
    m_password = password;
    m_errorNotification = errorNotification;
    m_mountButton = mountButton;
    m_cancelButton = cancelButton;
    for (QAbstractButton *button : {mountButton, cancelButton}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { Q_EMIT buttonClicked(button->property("identifier").toString()); });
    }
}

QString KVMountSheet::password() const
{
    return m_password->text();
}

void KVMountSheet::cleanPasswords()
{
    m_password->clear();
}

void KVMountSheet::setButtonsEnabled(bool enabled)
{
    m_mountButton->setEnabled(enabled);
    m_cancelButton->setEnabled(enabled);
}

void KVMountSheet::enableButtons()
{
    setButtonsEnabled(true);
}

void KVMountSheet::disableButtons()
{
    setButtonsEnabled(false);
}

void KVMountSheet::showErrorNotification(const QString &reason)
{
    m_errorNotification->setText(reason);
    m_errorNotification->show();
}

void KVMountSheet::hideErrorNotification()
{
    m_errorNotification->hide();
}

void KVMountSheet::focusPassword()
{
    m_password->setFocus(Qt::OtherFocusReason);
}

void KVMountSheet::endSheet(KVSheetReturnCode returnCode)
{
    done(static_cast<int>(returnCode));
}

bool KVMountSheet::showsInSheet(const KVAppError &error)
{
    return error.is(KVAppErrorCode::WrongPassword) || error.is(KVAppErrorCode::InvalidMountPath);
}

void KVMountSheet::reject()
{
    if (m_cancelButton && m_cancelButton->isEnabled())
        m_cancelButton->click();
}
