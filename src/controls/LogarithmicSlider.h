#pragma once

#include <QSlider>

// A size slider on a logarithmic scale. QSlider counts in integers, so the
// slider's integer values are hundredths of a position: the range 600..1200
// of a .ui file is positions 6 to 12, that is 10^6 to 10^12 bytes through
// KVSizeValueTransformer. position() and setPosition() work in positions.
//
// sliderValue() answers with the size at the knob, except at the very ends,
// where it answers with the natural logarithm of the end's position. That
// asymmetry is kept on purpose; the dialogs go through KVSizeValueTransformer
// and never read sliderValue().
class LogarithmicSlider : public QSlider
{
    Q_OBJECT
    Q_PROPERTY(float position READ position WRITE setPosition NOTIFY positionChanged)

public:
    static constexpr int kStepsPerPosition = 100;

    explicit LogarithmicSlider(QWidget *parent = nullptr);
    explicit LogarithmicSlider(Qt::Orientation orientation, QWidget *parent = nullptr);

    float position() const;
    void setPosition(float position);
    void setPositionRange(float minimum, float maximum);

    // ln of the position at either end, kept whenever the range changes.
    float minimumValue() const { return m_minimumValue; }
    float maximumValue() const { return m_maximumValue; }
    float sliderValue() const;

    static float positionForValue(int value);
    static int valueForPosition(float position);

Q_SIGNALS:
    void positionChanged(float position);

protected:
    void sliderChange(SliderChange change) override;

private:
    void keepLogarithmicBounds();

    float m_minimumValue = 0;
    float m_maximumValue = 0;
};
