#pragma once

#include <QPropertyAnimation>

// Moves a property of type QPoint the way a damped spring would: a keyframe
// animation with one value per millisecond, from the start value to the end
// value, lasting as many milliseconds as the spring needs to come to rest.
//
// A damping that is not greater than 0 would never let the spring rest: it is
// logged as a logic error and replaced by 1.0.
class KVSpringAnimation : public QPropertyAnimation
{
    Q_OBJECT

public:
    struct Spring
    {
        double stiffness = 445.0;
        double damping = 68.0;
        double mass = 4.0;
    };

    KVSpringAnimation(QObject *target, const QByteArray &propertyName, QObject *parent = nullptr);

    // Computes the keyframes; call after the start and end values are set.
    void setSpring(Spring spring);

    // The spring's displacement from its rest position, one value per
    // millisecond, starting at 1 and ending at rest (0).
    static QVector<double> displacements(Spring spring);
};
