#include "KVCommandAlert.h"

#include "controls/KVPasswordFieldView.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QPushButton>

namespace {

constexpr QSize PasswordFieldSize(295, 22);

} // namespace

KVCommandAlert::KVCommandAlert(const Text &text, QWidget *parent)
    : QMessageBox(text.style, text.message, text.message, QMessageBox::NoButton, parent)
{
    setInformativeText(text.informativeText);
    m_confirm = addButton(text.confirmTitle, QMessageBox::AcceptRole);
    m_cancel = addButton(tr("Cancel"), QMessageBox::RejectRole);
    setDefaultButton(m_confirm);
    setEscapeButton(m_cancel);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    if (text.asksPassword)
        addPasswordField();
    connect(this, &QMessageBox::buttonClicked, this, [this](QAbstractButton *button) {
        if (button == m_confirm)
            Q_EMIT confirmed();
    });
    // Every end, whichever way it comes (a button, Escape, the window closed).
    connect(this, &QDialog::finished, this, [this] {
        if (m_passwordField)
            m_passwordField->clear();
    });
}

void KVCommandAlert::addPasswordField()
{
    m_passwordField = new KVPasswordFieldView(this);
    m_passwordField->setObjectName(QStringLiteral("alertPasswordField"));
    m_passwordField->setPlaceholderText(tr("Password"));
    m_passwordField->setFixedSize(PasswordFieldSize.width(),
                                  std::max(PasswordFieldSize.height(), m_passwordField->sizeHint().height()));
    // The message box lays out icon, texts and buttons itself; the field goes
    // between the texts and the buttons, in the texts' column.
    auto *grid = qobject_cast<QGridLayout *>(layout());
    auto *buttons = findChild<QDialogButtonBox *>();
    const int textColumn = grid ? grid->columnCount() - 1 : 0;
    if (!grid || !buttons || grid->indexOf(buttons) < 0) {
        layout()->addWidget(m_passwordField);
        return;
    }
    int row = 0, column = 0, rowSpan = 0, columnSpan = 0;
    grid->getItemPosition(grid->indexOf(buttons), &row, &column, &rowSpan, &columnSpan);
    grid->removeWidget(buttons);
    grid->addWidget(m_passwordField, row, textColumn, 1, 1, Qt::AlignLeft);
    grid->addWidget(buttons, row + 1, 0, 1, grid->columnCount());
}

void KVCommandAlert::begin()
{
    open();
    if (m_passwordField)
        m_passwordField->setFocus();
}
