#include "KVPopover.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int ArrowLength = 9;
constexpr int ArrowHalfWidth = 10;
constexpr qreal CornerRadius = 7.0;
constexpr int ContentMargin = 12;

} // namespace

KVPopover::KVPopover(Behaviour behaviour, QWidget *parent)
    : QFrame(behaviour == Behaviour::Transient ? parent : parent->window(),
             behaviour == Behaviour::Transient ? Qt::Popup | Qt::FramelessWindowHint : Qt::Widget)
    , m_behaviour(behaviour)
    , m_layout(new QVBoxLayout(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    hide();
    // A note lying over the window follows it as the window changes size.
    if (m_behaviour == Behaviour::Persistent)
        parentWidget()->installEventFilter(this);
}

void KVPopover::setContent(QWidget *content)
{
    m_layout->addWidget(content);
}

void KVPopover::showRelativeTo(QWidget *anchor, Qt::Edge edge)
{
    m_anchor = anchor;
    m_edge = edge;
    const int arrowSide = ContentMargin + ArrowLength;
    m_layout->setContentsMargins(edge == Qt::RightEdge ? arrowSide : ContentMargin,
                                 edge == Qt::BottomEdge ? arrowSide : ContentMargin,
                                 edge == Qt::LeftEdge ? arrowSide : ContentMargin,
                                 edge == Qt::TopEdge ? arrowSide : ContentMargin);
    // Wrapped text needs its height for the width it gets.
    m_layout->activate();
    QSize size = sizeHint();
    if (hasHeightForWidth())
        size.setHeight(std::max(size.height(), heightForWidth(size.width())));
    resize(size);
    place();
    show();
    raise();
}

QPoint KVPopover::anchorPoint() const
{
    const QRect bounds = m_anchor->rect();
    QPoint tip;
    switch (m_edge) {
    case Qt::BottomEdge: tip = QPoint(bounds.center().x(), bounds.bottom()); break;
    case Qt::TopEdge: tip = QPoint(bounds.center().x(), bounds.top()); break;
    case Qt::RightEdge: tip = QPoint(bounds.right(), bounds.center().y()); break;
    case Qt::LeftEdge: tip = QPoint(bounds.left(), bounds.center().y()); break;
    }
    const QPoint global = m_anchor->mapToGlobal(tip);
    return isWindow() ? global : parentWidget()->mapFromGlobal(global);
}

void KVPopover::place()
{
    if (!m_anchor)
        return;
    const QPoint tip = anchorPoint();
    const bool vertical = m_edge == Qt::BottomEdge || m_edge == Qt::TopEdge;
    QPoint topLeft;
    switch (m_edge) {
    case Qt::BottomEdge: topLeft = QPoint(tip.x() - width() / 2, tip.y()); break;
    case Qt::TopEdge: topLeft = QPoint(tip.x() - width() / 2, tip.y() - height()); break;
    case Qt::RightEdge: topLeft = QPoint(tip.x(), tip.y() - height() / 2); break;
    case Qt::LeftEdge: topLeft = QPoint(tip.x() - width(), tip.y() - height() / 2); break;
    }
    // Keep the bubble inside what holds it; the arrow still points at the anchor.
    QRect room = isWindow() ? QRect() : parentWidget()->rect();
    if (isWindow()) {
        if (const QScreen *screen = QGuiApplication::screenAt(tip))
            room = screen->availableGeometry();
    }
    if (room.isValid()) {
        if (vertical)
            topLeft.setX(std::clamp(topLeft.x(), room.left(), std::max(room.left(), room.right() - width())));
        else
            topLeft.setY(std::clamp(topLeft.y(), room.top(), std::max(room.top(), room.bottom() - height())));
    }
    const int centre = vertical ? topLeft.x() + width() / 2 : topLeft.y() + height() / 2;
    const int along = vertical ? tip.x() : tip.y();
    const int limit = (vertical ? width() : height()) / 2 - int(CornerRadius) - ArrowHalfWidth;
    m_arrowOffset = std::clamp(along - centre, -std::max(0, limit), std::max(0, limit));
    move(topLeft);
    update();
}

bool KVPopover::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize && isVisible())
        place();
    return QFrame::eventFilter(watched, event);
}

void KVPopover::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF bubble = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    switch (m_edge) {
    case Qt::BottomEdge: bubble.setTop(bubble.top() + ArrowLength); break;
    case Qt::TopEdge: bubble.setBottom(bubble.bottom() - ArrowLength); break;
    case Qt::RightEdge: bubble.setLeft(bubble.left() + ArrowLength); break;
    case Qt::LeftEdge: bubble.setRight(bubble.right() - ArrowLength); break;
    }
    QPainterPath path;
    path.addRoundedRect(bubble, CornerRadius, CornerRadius);
    const QPointF centre = bubble.center();
    QPolygonF arrow;
    switch (m_edge) {
    case Qt::BottomEdge: {
        const qreal x = centre.x() + m_arrowOffset;
        arrow << QPointF(x - ArrowHalfWidth, bubble.top() + 1) << QPointF(x, 0.5) << QPointF(x + ArrowHalfWidth, bubble.top() + 1);
        break;
    }
    case Qt::TopEdge: {
        const qreal x = centre.x() + m_arrowOffset;
        arrow << QPointF(x - ArrowHalfWidth, bubble.bottom() - 1) << QPointF(x, height() - 0.5)
              << QPointF(x + ArrowHalfWidth, bubble.bottom() - 1);
        break;
    }
    case Qt::RightEdge: {
        const qreal y = centre.y() + m_arrowOffset;
        arrow << QPointF(bubble.left() + 1, y - ArrowHalfWidth) << QPointF(0.5, y) << QPointF(bubble.left() + 1, y + ArrowHalfWidth);
        break;
    }
    case Qt::LeftEdge: {
        const qreal y = centre.y() + m_arrowOffset;
        arrow << QPointF(bubble.right() - 1, y - ArrowHalfWidth) << QPointF(width() - 0.5, y)
              << QPointF(bubble.right() - 1, y + ArrowHalfWidth);
        break;
    }
    }
    QPainterPath arrowPath;
    arrowPath.addPolygon(arrow);
    arrowPath.closeSubpath();
    path = path.united(arrowPath);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1.0));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawPath(path);
}
