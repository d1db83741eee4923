#pragma once

#include <QLineEdit>

class KVPasswordFieldShowTextButton;

// The password entry of the wizards and dialogs: a line edit that hides its
// text behind bullets, with an eye button at its right edge that shows it in
// plain text and back. Switching keeps the text, the caret and the selection,
// and keeps or takes the keyboard focus.
//
// Every keystroke is reported through textDidChange(), which carries the field
// rather than a copy of the text: the owner reads the live text from it (to
// estimate the password's strength while it is typed, say).
class KVPasswordFieldView : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(bool showsText READ showsText WRITE setShowsText NOTIFY showsTextChanged)
    Q_PROPERTY(bool becomesFirstResponderWhenToggled READ becomesFirstResponderWhenToggled
                   WRITE setBecomesFirstResponderWhenToggled)

public:
    explicit KVPasswordFieldView(QWidget *parent = nullptr);

    // True while the password is shown in plain text; starts false.
    bool showsText() const { return m_showsText; }
    void setShowsText(bool showsText);
    void toggleTextShown();

    // Whether a toggle while another widget has the focus moves the focus
    // here; starts true. A real click on the eye focuses the field in any
    // case, as Qt gives a click to the nearest focusable ancestor; this
    // governs toggles that come from elsewhere (a menu, a shortcut).
    bool becomesFirstResponderWhenToggled() const { return m_becomesFirstResponderWhenToggled; }
    void setBecomesFirstResponderWhenToggled(bool becomes) { m_becomesFirstResponderWhenToggled = becomes; }

    KVPasswordFieldShowTextButton *showTextButton() const { return m_showTextButton; }

Q_SIGNALS:
    // After every edit by the user (not after setText()).
    void textDidChange(KVPasswordFieldView *field);
    void showsTextChanged(bool showsText);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void placeShowTextButton();
    void describeShowTextButton();

    KVPasswordFieldShowTextButton *m_showTextButton;
    bool m_showsText = false;
    bool m_becomesFirstResponderWhenToggled = true;
};
