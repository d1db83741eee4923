#pragma once

#include <QMessageBox>

class KVPasswordFieldView;
class QPushButton;

// The question a command asks before it acts on a volume: a message, an
// explanation beneath it, the command's button first and "Cancel" second,
// and for commands that need the volume's password a password field under
// the texts (295 x 22, placeholder "Password").
//
// The alert is modal to its window but does not block the event loop, and it
// deletes itself when it closes. The password field is emptied whenever the
// alert ends: the caller takes the password in confirmed() and holds it only
// as long as its work needs it.
class KVCommandAlert : public QMessageBox
{
    Q_OBJECT

public:
    struct Text
    {
        QMessageBox::Icon style = QMessageBox::Warning;
        QString message;
        QString informativeText;
        QString confirmTitle;
        bool asksPassword = false;
    };

    KVCommandAlert(const Text &text, QWidget *parent);

    QPushButton *confirmButton() const { return m_confirm; }
    QPushButton *cancelButton() const { return m_cancel; }
    // Null when the alert asks no password.
    KVPasswordFieldView *passwordField() const { return m_passwordField; }

    // Shows the alert as a sheet of its window.
    void begin();

Q_SIGNALS:
    // The command's button was chosen: read the password now, if any.
    void confirmed();

private:
    void addPasswordField();

    QPushButton *m_confirm;
    QPushButton *m_cancel;
    KVPasswordFieldView *m_passwordField = nullptr;
};
