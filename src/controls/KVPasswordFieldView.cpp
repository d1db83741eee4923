#include "controls/KVPasswordFieldView.h"

#include "controls/KVPasswordFieldShowTextButton.h"

namespace {

// The eye's size, and the strip at the right edge kept free for it: the
// edited text never runs under the button.
constexpr QSize kButtonSize(16, 10);
constexpr int kButtonStrip = 20;

} // namespace

KVPasswordFieldView::KVPasswordFieldView(QWidget *parent)
    : QLineEdit(parent)
    , m_showTextButton(new KVPasswordFieldShowTextButton(this))
{
    setEchoMode(QLineEdit::Password);
    setTextMargins(0, 0, kButtonStrip, 0);
    connect(m_showTextButton, &QAbstractButton::clicked, this, &KVPasswordFieldView::toggleTextShown);
    connect(this, &QLineEdit::textEdited, this, [this] { Q_EMIT textDidChange(this); });
    describeShowTextButton();
    placeShowTextButton();
}

void KVPasswordFieldView::setShowsText(bool showsText)
{
    if (showsText == m_showsText)
        return;
    m_showsText = showsText;

    const bool wasEditing = hasFocus();
    const int cursor = cursorPosition();
    const int selectionStart = this->selectionStart();
    const int selectionLength = this->selectionLength();

    setEchoMode(showsText ? QLineEdit::Normal : QLineEdit::Password);

    if (wasEditing) {
        // Keep the selection's direction: the caret stays at the end it was.
        if (selectionLength > 0 && cursor == selectionStart)
            setSelection(selectionStart + selectionLength, -selectionLength);
        else if (selectionLength > 0)
            setSelection(selectionStart, selectionLength);
        else
            setCursorPosition(cursor);
    } else if (m_becomesFirstResponderWhenToggled) {
        setFocus(Qt::OtherFocusReason);
    }
    describeShowTextButton();
    Q_EMIT showsTextChanged(m_showsText);
}

void KVPasswordFieldView::toggleTextShown()
{
    setShowsText(!m_showsText);
}

void KVPasswordFieldView::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    placeShowTextButton();
}

void KVPasswordFieldView::placeShowTextButton()
{
    // At the right edge, centred vertically (a 22-pixel field has it 6 pixels
    // from the top).
    m_showTextButton->setGeometry(width() - kButtonStrip, (height() - kButtonSize.height()) / 2,
                                  kButtonSize.width(), kButtonSize.height());
}

void KVPasswordFieldView::describeShowTextButton()
{
    const QString action = m_showsText ? tr("Hide password") : tr("Show password");
    m_showTextButton->setAccessibleName(action);
    m_showTextButton->setToolTip(action);
}
