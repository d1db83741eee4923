#include "KVNewPasswordForm.h"

#include "ui_NewPasswordForm.h"

#include "wizards/KVPasswordStrengthEstimator.h"

KVNewPasswordForm::KVNewPasswordForm(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::NewPasswordForm>())
{
    m_ui->setupUi(this);
    connect(m_ui->passwordField, &KVPasswordFieldView::textDidChange, this, &KVNewPasswordForm::passwordEdited);
    connect(m_ui->confirmPasswordField, &KVPasswordFieldView::textDidChange, this, &KVNewPasswordForm::edited);
    reset();
}

KVNewPasswordForm::~KVNewPasswordForm() = default;

QString KVNewPasswordForm::password() const
{
    return m_ui->passwordField->text();
}

bool KVNewPasswordForm::isValid() const
{
    return !m_ui->passwordField->text().isEmpty()
        && m_ui->passwordField->text() == m_ui->confirmPasswordField->text();
}

KVPasswordFieldView *KVNewPasswordForm::passwordField() const
{
    return m_ui->passwordField;
}

KVPasswordFieldView *KVNewPasswordForm::confirmPasswordField() const
{
    return m_ui->confirmPasswordField;
}

KVPasswordStrengthMeterView *KVNewPasswordForm::passwordStrengthMeter() const
{
    return m_ui->passwordStrengthMeter;
}

void KVNewPasswordForm::reset()
{
    m_ui->passwordStrengthMeter->scorePassword(0);
    cleanPasswords();
    m_estimator = std::make_unique<KVPasswordStrengthEstimator>();
    connect(m_estimator.get(), &KVPasswordStrengthEstimator::scoreEstimated, m_ui->passwordStrengthMeter,
            &KVPasswordStrengthMeterView::scorePassword);
}

void KVNewPasswordForm::cleanPasswords()
{
    // setText() rather than clear(): clearing is an edit that the field's undo would take back,
    // password and all.
    m_ui->passwordField->setText(QString());
    m_ui->confirmPasswordField->setText(QString());
    if (m_estimator) {
        // The empty text's estimate is never shown: the estimator goes with it.
        m_estimator->estimate(QString());
        m_estimator->cancel();
        m_estimator.reset();
    }
}

void KVNewPasswordForm::passwordEdited()
{
    if (m_estimator)
        m_estimator->estimate(m_ui->passwordField->text());
    Q_EMIT edited();
}
