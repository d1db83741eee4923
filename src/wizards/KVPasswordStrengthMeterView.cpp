#include "wizards/KVPasswordStrengthMeterView.h"

#include "controls/KVColors.h"

#include <QPainter>

namespace {

constexpr float kGap = 2.666f;

} // namespace

KVPasswordStrengthMeterView::KVPasswordStrengthMeterView(QWidget *parent)
    : QWidget(parent)
    , m_lightColor(KVColors::fromHsb(0.905f, 0.0f, 0.83f))
    , m_darkColor(KVColors::kvDarkGrey())
{
    setAccessibleName(tr("Password strength"));
    setAccessibleDescription(strengthDescription(0));
}

void KVPasswordStrengthMeterView::scorePassword(int score)
{
    m_litSegments = qBound(0, score, kSegmentCount);
    setAccessibleDescription(strengthDescription(m_litSegments));
    update();
}

void KVPasswordStrengthMeterView::setLightColor(const QColor &colour)
{
    m_lightColor = colour;
    update();
}

void KVPasswordStrengthMeterView::setDarkColor(const QColor &colour)
{
    m_darkColor = colour;
    update();
}

std::array<QRectF, KVPasswordStrengthMeterView::kSegmentCount>
KVPasswordStrengthMeterView::segmentRects(QSizeF size)
{
    // Worked in single precision like the artwork: w = (W - 3 gaps) / 4 with
    // the gaps' total written as 7.998, and each segment one w and one gap to
    // the right of the one before.
    const float width = (float(size.width()) - 7.998f) * 0.25f;
    const double height = size.height();
    if (!(width > 0 && height > 0))
        return {};
    std::array<QRectF, kSegmentCount> rects;
    for (int index = 0; index < kSegmentCount; ++index)
        rects[index] = QRectF(double(index * (width + kGap)), 0, double(width), height);
    return rects;
}

QString KVPasswordStrengthMeterView::strengthDescription(int score)
{
    switch (qBound(0, score, kSegmentCount)) {
    case 0:
        return tr("Very weak");
    case 1:
        return tr("Weak");
    case 2:
        return tr("Fair");
    case 3:
        return tr("Good");
    default:
        return tr("Strong");
    }
}

QSize KVPasswordStrengthMeterView::sizeHint() const
{
    return QSize(120, 4);
}

void KVPasswordStrengthMeterView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_segmentsLaidOut) {
        m_segments = segmentRects(size());
        m_segmentsLaidOut = true;
    }
}

void KVPasswordStrengthMeterView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int index = 0; index < kSegmentCount; ++index) {
        if (!m_segments[index].isEmpty())
            painter.fillRect(m_segments[index], index < m_litSegments ? m_darkColor : m_lightColor);
    }
}
