#include "KVSpringAnimation.h"

#include <QPoint>
#include <QtMath>

namespace {

constexpr double SecondsPerValue = 0.001;
// The spring rests once it is this close to its end, and this slow.
constexpr double RestDisplacement = 0.0005;
constexpr double RestVelocity = 0.005;
// However slow the spring, the panel does not move for longer than this.
constexpr int MaximumValues = 10000;

} // namespace

KVSpringAnimation::KVSpringAnimation(QObject *target, const QByteArray &propertyName, QObject *parent)
    : QPropertyAnimation(target, propertyName, parent)
{
}

QVector<double> KVSpringAnimation::displacements(Spring spring)
{
    if (!(spring.damping > 0.0)) {
        qWarning("[%s] LOGIC ERROR. `damping` should be > 0.0f to avoid an infinite spring calculation",
                 staticMetaObject.className());
        spring.damping = 1.0;
    }
    if (!(spring.mass > 0.0) || !(spring.stiffness > 0.0))
        return {1.0, 0.0};
    // Integrated step by step (semi-implicit Euler), which stays stable at this resolution
    // for any damping, under- or over-damped alike.
    QVector<double> values{1.0};
    double displacement = 1.0;
    double velocity = 0.0;
    while (values.size() < MaximumValues) {
        const double acceleration = (-spring.stiffness * displacement - spring.damping * velocity) / spring.mass;
        velocity += acceleration * SecondsPerValue;
        displacement += velocity * SecondsPerValue;
        if (qAbs(displacement) < RestDisplacement && qAbs(velocity) < RestVelocity)
            break;
        values.append(displacement);
    }
    values.append(0.0);
    return values;
}

void KVSpringAnimation::setSpring(Spring spring)
{
    const QPoint from = startValue().toPoint();
    const QPoint to = endValue().toPoint();
    const QVector<double> values = displacements(spring);
    const int last = int(values.size()) - 1;
    setDuration(qMax(1, qRound(values.size() * SecondsPerValue * 1000.0)));
    KeyValues frames;
    frames.reserve(values.size());
    for (int index = 0; index <= last; ++index) {
        const double travelled = 1.0 - values[index];
        const QPointF point = QPointF(from) + (QPointF(to) - QPointF(from)) * travelled;
        frames.append({last > 0 ? double(index) / last : 1.0, point.toPoint()});
    }
    setKeyValues(frames);
}
