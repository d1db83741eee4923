#include "controls/KVCustomProgressIndicatorView.h"

#include "controls/KVAccessibleProgressIndicator.h"
#include "controls/KVColors.h"

#include <QAccessible>
#include <QPainter>
#include <QPen>

#include <cmath>

namespace {

// Both ends of the background and outline move in by this much while they sit
// under a bar, so that their antialiased edges never show around the bar's. It
// is a single-precision constant widened to double, as the artwork measured it.
constexpr float kEndInset = 0.8f;

constexpr double kDefaultHeight = 20.0;

std::optional<QRectF> drawable(const QRectF &rect)
{
    if (rect.width() > 0 && rect.height() > 0)
        return rect;
    return std::nullopt;
}

} // namespace

KVCustomProgressIndicatorView::KVCustomProgressIndicatorView(QWidget *parent)
    : QWidget(parent)
    , m_height(kDefaultHeight)
    , m_outlineColor(KVColors::fromHsb(0.906f, 0.0f, 0.723f))
    , m_backgroundColor(KVColors::fromHsb(0.905f, 0.0f, 0.83f))
    , m_progressBarColor(KVColors::kvDarkGrey())
    , m_progressBarOutlineColor(KVColors::kvDarkGrey())
{
    KVAccessibleProgressIndicator::installFactory();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(qRound(m_height));
}

void KVCustomProgressIndicatorView::setValue(double value)
{
    // Written so that NaN == NaN counts as unchanged.
    if (value == m_value || (std::isnan(value) && std::isnan(m_value)))
        return;
    m_value = value;
    updateProgress();
    Q_EMIT valueChanged(m_value);
}

void KVCustomProgressIndicatorView::setMinimum(double minimum)
{
    m_minimum = minimum;
    updateProgress();
}

void KVCustomProgressIndicatorView::setMaximum(double maximum)
{
    m_maximum = maximum;
    updateProgress();
}

void KVCustomProgressIndicatorView::updateProgress()
{
    update();
    progressChanged();
    if (QAccessible::isActive()) {
        QAccessibleValueChangeEvent event(this, m_value);
        QAccessible::updateAccessibility(&event);
    }
}

void KVCustomProgressIndicatorView::progressChanged()
{
}

float KVCustomProgressIndicatorView::valuePercent() const
{
    if (m_value == 0)
        return 0.0f;
    const float percent = float(m_value) / float(m_maximum - m_minimum);
    return percent > 0 ? percent : 0.0f;
}

void KVCustomProgressIndicatorView::setHeight(double height)
{
    if (!(height >= 0))
        return;
    m_height = height;
    setFixedHeight(qRound(height));
    updateGeometry();
}

void KVCustomProgressIndicatorView::setOutlineWidth(double width)
{
    m_outlineWidth = width > 0 ? width : 0.0;
    update();
}

void KVCustomProgressIndicatorView::setOutlineColor(const QColor &colour)
{
    m_outlineColor = colour;
    update();
}

void KVCustomProgressIndicatorView::setBackgroundColor(const QColor &colour)
{
    m_backgroundColor = colour;
    update();
}

void KVCustomProgressIndicatorView::setProgressBarColor(const QColor &colour)
{
    m_progressBarColor = colour;
    update();
}

void KVCustomProgressIndicatorView::setProgressBarOutlineColor(const QColor &colour)
{
    m_progressBarOutlineColor = colour;
    update();
}

QSize KVCustomProgressIndicatorView::sizeHint() const
{
    return QSize(200, qRound(m_height));
}

KVCustomProgressIndicatorView::Shapes
KVCustomProgressIndicatorView::shapes(QSizeF size, double outlineWidth, float valuePercent)
{
    Shapes result;
    const double width = size.width();
    const double height = size.height();
    if (!(width > 0 && height > 0))
        return result;
    if (!(valuePercent > 0))
        valuePercent = 0.0f;

    const double left = valuePercent != 0 ? double(kEndInset) : 0.0;
    const double right = valuePercent == 1.0f ? double(kEndInset) : 0.0;
    const double halfLine = outlineWidth / 2;
    result.leftInset = left;
    result.rightInset = right;
    result.background = drawable(QRectF(left, 0, width - left - right, height));
    if (outlineWidth > 0) {
        result.outline = drawable(QRectF(halfLine + left, halfLine,
                                         width - outlineWidth - left - right, height - outlineWidth));
    }
    if (valuePercent == 0)
        return result;

    // An infinite fraction fails the comparison as well as a large one, so
    // the bar never gets wider than the view.
    const double barWidth = double(valuePercent) * width;
    const double shownWidth = barWidth < width ? barWidth : width;
    result.barClip = QRectF(0, 0, shownWidth, height);
    result.barEnd = std::min(double(float(shownWidth)), width);
    if (outlineWidth > 0) {
        result.barOutline = drawable(QRectF(halfLine, halfLine, width - outlineWidth, height - outlineWidth));
        // Where the bar ends on the straight middle part of the pill, the
        // clipped outline is open on the right: a vertical line closes it.
        if (height < barWidth && barWidth < width - height)
            result.barEndLineX = barWidth - halfLine;
    }
    return result;
}

KVCustomProgressIndicatorView::Shapes KVCustomProgressIndicatorView::shapes() const
{
    return shapes(size(), m_outlineWidth, valuePercent());
}

void KVCustomProgressIndicatorView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Shapes frame = shapes();
    drawBackground(painter, frame);
    drawOutline(painter, frame);
    if (frame.barClip.width() > 0) {
        drawProgressBar(painter, frame);
        drawProgressBarOutline(painter, frame);
    }
}

void KVCustomProgressIndicatorView::drawBackground(QPainter &painter, const Shapes &frame) const
{
    if (!frame.background)
        return;
    const double radius = height() / 2.0;
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_backgroundColor);
    painter.drawRoundedRect(*frame.background, radius, radius);
    painter.restore();
}

void KVCustomProgressIndicatorView::drawOutline(QPainter &painter, const Shapes &frame) const
{
    if (!frame.outline)
        return;
    const double radius = height() / 2.0 - m_outlineWidth / 2;
    painter.save();
    painter.setPen(QPen(m_outlineColor, m_outlineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(*frame.outline, radius, radius);
    painter.restore();
}

void KVCustomProgressIndicatorView::drawProgressBar(QPainter &painter, const Shapes &frame) const
{
    const double radius = height() / 2.0;
    painter.save();
    painter.setClipRect(frame.barClip);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_progressBarColor);
    painter.drawRoundedRect(QRectF(0, 0, frame.barEnd, height()), radius, radius);
    painter.restore();
}

void KVCustomProgressIndicatorView::drawProgressBarOutline(QPainter &painter, const Shapes &frame) const
{
    if (!frame.barOutline)
        return;
    const double radius = height() / 2.0 - m_outlineWidth / 2;
    painter.save();
    painter.setClipRect(frame.barClip);
    painter.setPen(QPen(m_progressBarOutlineColor, m_outlineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(*frame.barOutline, radius, radius);
    if (frame.barEndLineX)
        painter.drawLine(QPointF(*frame.barEndLineX, 0), QPointF(*frame.barEndLineX, frame.barClip.height()));
    painter.restore();
}
