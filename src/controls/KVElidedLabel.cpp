#include "KVElidedLabel.h"

#include <QFontMetrics>

KVElidedLabel::KVElidedLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void KVElidedLabel::setFullText(const QString &text)
{
    m_fullText = text;
    elide();
}

QSize KVElidedLabel::minimumSizeHint() const
{
    return QSize(fontMetrics().horizontalAdvance(QChar(0x2026)), QLabel::minimumSizeHint().height());
}

void KVElidedLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    elide();
}

void KVElidedLabel::showEvent(QShowEvent *event)
{
    QLabel::showEvent(event);
    elide();
}

void KVElidedLabel::elide()
{
    // Until it is laid out a label has no width of its own to go by.
    const int room = contentsRect().width() - 2 * margin();
    setText(isVisible() && room > 0 ? fontMetrics().elidedText(m_fullText, Qt::ElideMiddle, room) : m_fullText);
}
