#pragma once

#include "KVSheetReturnCode.h"
#include "model/KVAppError.h"

#include <QDialog>

class KVPasswordFieldView;
class QAbstractButton;
class QLabel;

// What the two mount sheets share: a password field, a failure text shown in
// the sheet, and the Mount and Cancel buttons. A sheet is window-modal on the
// main window and ends with one of the sheet return codes (KVAppDelegate::Sheet...).
//
// The buttons carry identifiers ("mount", "cancel", "exit") in the sheets'
// interface files; a click is reported with the identifier. Escape and the
// window's close button act as Cancel, and only when Cancel can be pressed:
// nothing ends a sheet while its mount runs.
class KVMountSheet : public QDialog
{
    Q_OBJECT

public:
    explicit KVMountSheet(QWidget *parent = nullptr);

    // The parts, made by the sheet's interface file.
    void setParts(KVPasswordFieldView *password, QLabel *errorNotification, QAbstractButton *mountButton,
                  QAbstractButton *cancelButton);

    QString password() const;
    void cleanPasswords();
    void enableButtons();
    void disableButtons();
    void showErrorNotification(const QString &reason);
    void hideErrorNotification();
    void focusPassword();
    void endSheet(KVSheetReturnCode returnCode);

    // A wrong password or an invalid mount path is said in the sheet, so that
    // the user can correct it; everything else ends the sheet with an alert.
    static bool showsInSheet(const KVAppError &error);

public Q_SLOTS:
    void reject() override;

Q_SIGNALS:
    void buttonClicked(const QString &identifier);

private:
    void setButtonsEnabled(bool enabled);

    KVPasswordFieldView *m_password = nullptr;
    QLabel *m_errorNotification = nullptr;
    QAbstractButton *m_mountButton = nullptr;
    QAbstractButton *m_cancelButton = nullptr;
};
