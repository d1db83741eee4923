#include "KVHoverArea.h"

#include "controls/KVColors.h"

#include <QPainter>

KVHoverArea::KVHoverArea(QWidget *parent)
    : QWidget(parent)
{
}

void KVHoverArea::enterEvent(QEnterEvent *event)
{
    QWidget::enterEvent(event);
    Q_EMIT mouseDidEnter();
}

void KVHoverArea::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    Q_EMIT mouseDidExit();
}

void KVHoverArea::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), KVColors::kvDarkGrey());
    // A hairline parts the area from the list above it.
    painter.fillRect(QRect(0, 0, width(), 1), KVColors::kvSelectOutline());
}
