#pragma once

#include "controls/KVCustomProgressIndicatorView.h"

#include <QPointer>

// The used-space bar of the resize dialog. Two labels (the used and the free
// space, say) appear while the pointer is over the bar, centred on the bar's
// end. They are widgets of the dialog placed outside any layout, because this
// view moves them horizontally itself; it leaves their vertical place alone.
class KVSpaceIndicatorView : public KVCustomProgressIndicatorView
{
    Q_OBJECT

public:
    explicit KVSpaceIndicatorView(QWidget *parent = nullptr);

    // Takes over the two labels, hidden until the pointer enters the bar.
    void setTextFields(QWidget *textField1, QWidget *textField2);
    QWidget *textField1() const { return m_textField1; }
    QWidget *textField2() const { return m_textField2; }

protected:
    void progressChanged() override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void placeTextFields();
    void setTextFieldsVisible(bool visible);

    QPointer<QWidget> m_textField1;
    QPointer<QWidget> m_textField2;
};
