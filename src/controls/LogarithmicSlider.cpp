#include "controls/LogarithmicSlider.h"

#include <cmath>
#include <limits>

LogarithmicSlider::LogarithmicSlider(QWidget *parent)
    : LogarithmicSlider(Qt::Horizontal, parent)
{
}

LogarithmicSlider::LogarithmicSlider(Qt::Orientation orientation, QWidget *parent)
    : QSlider(orientation, parent)
{
    connect(this, &QAbstractSlider::valueChanged, this,
            [this](int value) { Q_EMIT positionChanged(positionForValue(value)); });
    keepLogarithmicBounds();
}

float LogarithmicSlider::positionForValue(int value)
{
    return float(value) / kStepsPerPosition;
}

int LogarithmicSlider::valueForPosition(float position)
{
    // NaN and positions beyond what an int holds go to the nearest end.
    const float steps = std::round(position * kStepsPerPosition);
    if (!(steps > float(std::numeric_limits<int>::min())))
        return std::numeric_limits<int>::min();
    if (!(steps < float(std::numeric_limits<int>::max())))
        return std::numeric_limits<int>::max();
    return int(steps);
}

float LogarithmicSlider::position() const
{
    return positionForValue(value());
}

void LogarithmicSlider::setPosition(float position)
{
    setValue(valueForPosition(position));
}

void LogarithmicSlider::setPositionRange(float minimum, float maximum)
{
    setRange(valueForPosition(minimum), valueForPosition(maximum));
}

float LogarithmicSlider::sliderValue() const
{
    if (value() == maximum())
        return m_maximumValue;
    if (value() == minimum())
        return m_minimumValue;
    return std::pow(10.0f, position());
}

void LogarithmicSlider::sliderChange(SliderChange change)
{
    QSlider::sliderChange(change);
    if (change == SliderRangeChange)
        keepLogarithmicBounds();
}

void LogarithmicSlider::keepLogarithmicBounds()
{
    m_minimumValue = std::log(positionForValue(minimum()));
    m_maximumValue = std::log(positionForValue(maximum()));
}
