#include "KVMountAreaView.h"

#include "controls/KVColors.h"

#include <QPainter>

KVMountAreaView::KVMountAreaView(QWidget *parent)
    : QWidget(parent)
{
}

void KVMountAreaView::setActive(bool active)
{
    if (m_active == active)
        return;
    m_active = active;
    update();
}

void KVMountAreaView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (m_active) {
        painter.setPen(QPen(KVColors::kvWhiteText(), 1.5));
        painter.setBrush(QColor(255, 255, 255, 18));
    } else {
        QPen dashes(KVColors::kvLightGreyText(), 1.2, Qt::CustomDashLine);
        dashes.setDashPattern({4, 3});
        painter.setPen(dashes);
        painter.setBrush(Qt::NoBrush);
    }
    painter.drawRoundedRect(frame, 8, 8);
}
