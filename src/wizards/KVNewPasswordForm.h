#pragma once

#include <QWidget>

#include <memory>

class KVPasswordFieldView;
class KVPasswordStrengthEstimator;
class KVPasswordStrengthMeterView;

namespace Ui {
class NewPasswordForm;
}

// The new-password part of the dialogs and wizards that set a password: the
// password (objectName "passwordField"), its confirmation
// ("confirmPasswordField") and the live strength meter
// ("passwordStrengthMeter") under them.
//
// Life cycle of the strength estimator: reset() creates one, every edit of the
// password (not of the confirmation) is estimated and its score shown, and
// cleanPasswords() empties both fields, estimates the empty text once more and
// drops the estimator, so that none exists until the next reset(). Scores that
// arrive after a reset are thrown away.
class KVNewPasswordForm : public QWidget
{
    Q_OBJECT

public:
    explicit KVNewPasswordForm(QWidget *parent = nullptr);
    ~KVNewPasswordForm() override;

    QString password() const;
    // The password is not empty and the confirmation equals it.
    bool isValid() const;

    KVPasswordFieldView *passwordField() const;
    KVPasswordFieldView *confirmPasswordField() const;
    KVPasswordStrengthMeterView *passwordStrengthMeter() const;
    bool hasEstimator() const { return m_estimator != nullptr; }

    // Meter at 0, fields emptied, a new estimator.
    void reset();
    void cleanPasswords();

Q_SIGNALS:
    // After every edit of either field by the user.
    void edited();

private:
    void passwordEdited();

    std::unique_ptr<Ui::NewPasswordForm> m_ui;
    std::unique_ptr<KVPasswordStrengthEstimator> m_estimator;
};
