#include "controls/KVSpaceIndicatorView.h"

KVSpaceIndicatorView::KVSpaceIndicatorView(QWidget *parent)
    : KVCustomProgressIndicatorView(parent)
{
}

void KVSpaceIndicatorView::setTextFields(QWidget *textField1, QWidget *textField2)
{
    m_textField1 = textField1;
    m_textField2 = textField2;
    setTextFieldsVisible(underMouse());
    placeTextFields();
}

void KVSpaceIndicatorView::progressChanged()
{
    placeTextFields();
}

void KVSpaceIndicatorView::resizeEvent(QResizeEvent *event)
{
    KVCustomProgressIndicatorView::resizeEvent(event);
    placeTextFields();
}

void KVSpaceIndicatorView::moveEvent(QMoveEvent *event)
{
    KVCustomProgressIndicatorView::moveEvent(event);
    placeTextFields();
}

void KVSpaceIndicatorView::enterEvent(QEnterEvent *event)
{
    KVCustomProgressIndicatorView::enterEvent(event);
    setTextFieldsVisible(true);
}

void KVSpaceIndicatorView::leaveEvent(QEvent *event)
{
    KVCustomProgressIndicatorView::leaveEvent(event);
    setTextFieldsVisible(false);
}

void KVSpaceIndicatorView::placeTextFields()
{
    const QPoint barEnd(qRound(shapes().barEnd), 0);
    for (QWidget *field : {m_textField1.data(), m_textField2.data()}) {
        if (!field || !field->parentWidget())
            continue;
        const int centre = field->parentWidget()->mapFromGlobal(mapToGlobal(barEnd)).x();
        field->move(centre - field->width() / 2, field->y());
    }
}

void KVSpaceIndicatorView::setTextFieldsVisible(bool visible)
{
    for (QWidget *field : {m_textField1.data(), m_textField2.data()}) {
        if (field)
            field->setVisible(visible);
    }
}
