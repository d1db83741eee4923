#include "controls/KVWizardProgressCirclesView.h"

#include "controls/KVColors.h"

#include <QPainter>
#include <QPen>

KVWizardProgressCirclesView::KVWizardProgressCirclesView(QWidget *parent)
    : QWidget(parent)
    , m_defaultFillColor(KVColors::fromHsb(0.906f, 0.0f, 0.793f))
    , m_defaultBorderColor(KVColors::fromHsb(0.906f, 0.0f, 0.435f))
    , m_activatedFillColor(KVColors::fromHsb(0.589f, 0.319f, 0.897f))
    , m_activatedBorderColor(KVColors::fromHsb(0.611f, 0.781f, 0.862f))
{
    setAccessibleName(tr("Wizard progress"));
    updateAccessibleDescription();
}

void KVWizardProgressCirclesView::setIdentifier(const QString &identifier)
{
    m_identifier = identifier;
    const QStringList parts = identifier.split(QLatin1Char('-'));
    const bool wellFormed = parts.size() == 2;
    m_numberOfCircles = wellFormed ? parts[0].trimmed().toInt() : 0;
    m_activatedCircle = wellFormed ? parts[1].trimmed().toInt() : 0;
    updateAccessibleDescription();
    update();
}

void KVWizardProgressCirclesView::setBorderWidth(double width)
{
    m_borderWidth = width > 0 ? width : 0.0;
    update();
}

void KVWizardProgressCirclesView::setDefaultFillColor(const QColor &colour)
{
    m_defaultFillColor = colour;
    update();
}

void KVWizardProgressCirclesView::setDefaultBorderColor(const QColor &colour)
{
    m_defaultBorderColor = colour;
    update();
}

void KVWizardProgressCirclesView::setActivatedFillColor(const QColor &colour)
{
    m_activatedFillColor = colour;
    update();
}

void KVWizardProgressCirclesView::setActivatedBorderColor(const QColor &colour)
{
    m_activatedBorderColor = colour;
    update();
}

QSize KVWizardProgressCirclesView::sizeHint() const
{
    return QSize(60, 12);
}

std::array<QRectF, KVWizardProgressCirclesView::kCircleCount>
KVWizardProgressCirclesView::circleRects(QSizeF size, double borderWidth)
{
    // Diameter and width are whole points, and the middle circle's place is
    // made of two truncated halves, so that the circles sit on the same
    // pixels whatever the fractions of the view's size.
    if (!(size.height() - borderWidth >= 1 && size.width() >= 1))
        return {};
    const int diameter = int(size.height() - borderWidth);
    const int width = int(size.width());
    const double top = borderWidth / 2;
    return {
        QRectF(borderWidth / 2, top, diameter, diameter),
        QRectF(width / 2 - diameter / 2, top, diameter, diameter),
        QRectF((width - diameter) - borderWidth / 2, top, diameter, diameter),
    };
}

void KVWizardProgressCirclesView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto rects = circleRects(size(), m_borderWidth);
    for (int index = 0; index < kCircleCount; ++index) {
        const QRectF &rect = rects[index];
        if (rect.isEmpty())
            continue;
        const bool activated = m_activatedCircle == index + 1;
        painter.setPen(Qt::NoPen);
        painter.setBrush(activated ? m_activatedFillColor : m_defaultFillColor);
        painter.drawEllipse(rect);
        if (m_borderWidth > 0) {
            painter.setPen(QPen(activated ? m_activatedBorderColor : m_defaultBorderColor, m_borderWidth));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(rect);
        }
    }
}

void KVWizardProgressCirclesView::updateAccessibleDescription()
{
    const bool highlighted = m_activatedCircle >= 1 && m_activatedCircle <= kCircleCount;
    setAccessibleDescription(highlighted ? tr("Step %1 of %2").arg(m_activatedCircle).arg(kCircleCount)
                                         : QString());
}
