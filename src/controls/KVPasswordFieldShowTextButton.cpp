#include "controls/KVPasswordFieldShowTextButton.h"

#include <QPainter>

KVPasswordFieldShowTextButton::KVPasswordFieldShowTextButton(QWidget *parent)
    : QAbstractButton(parent)
    , m_artwork(QStringLiteral(":/icons/RevealPassword.svg"))
{
    setFocusPolicy(Qt::NoFocus);
    // The field shows an I-beam, which a child inherits unless told otherwise.
    setCursor(Qt::ArrowCursor);
    m_artwork.setAspectRatioMode(Qt::KeepAspectRatio);
}

QSize KVPasswordFieldShowTextButton::sizeHint() const
{
    return QSize(16, 10);
}

void KVPasswordFieldShowTextButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!isEnabled())
        painter.setOpacity(0.4);
    m_artwork.render(&painter, rect());
}
