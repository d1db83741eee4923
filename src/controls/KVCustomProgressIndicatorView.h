#pragma once

#include <QColor>
#include <QRectF>
#include <QWidget>

#include <optional>

// The flat, pill-shaped determinate progress bar of the application.
//
// It keeps a height of its own (setHeight()) whatever a layout or a resize
// asks for, and draws background, outline, bar and bar outline itself. The
// value is a double, so NaN and infinities can reach it; they draw sensibly
// (no bar, or a full one) rather than anything undefined.
class KVCustomProgressIndicatorView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double value READ value WRITE setValue NOTIFY valueChanged)
    Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
    Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
    Q_PROPERTY(double customProgressIndicatorHeight READ customProgressIndicatorHeight WRITE setHeight)
    Q_PROPERTY(double outlineWidth READ outlineWidth WRITE setOutlineWidth)
    Q_PROPERTY(QColor outlineColor READ outlineColor WRITE setOutlineColor)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor)
    Q_PROPERTY(QColor progressBarColor READ progressBarColor WRITE setProgressBarColor)
    Q_PROPERTY(QColor progressBarOutlineColor READ progressBarOutlineColor WRITE setProgressBarOutlineColor)

public:
    explicit KVCustomProgressIndicatorView(QWidget *parent = nullptr);

    double value() const { return m_value; }
    void setValue(double value);
    double minimum() const { return m_minimum; }
    void setMinimum(double minimum);
    double maximum() const { return m_maximum; }
    void setMaximum(double maximum);

    // The filled fraction: value / (maximum - minimum), in single precision,
    // and 0 when the value is exactly 0. The value is deliberately not reduced
    // by the minimum first, so minimum 10, maximum 20 and value 15 give 1.5
    // (the bar is then clamped to the width). A NaN or negative fraction is 0.
    float valuePercent() const;

    double customProgressIndicatorHeight() const { return m_height; }
    // Fixes the height: layouts and resizes can change the width only.
    void setHeight(double height);

    double outlineWidth() const { return m_outlineWidth; }
    void setOutlineWidth(double width);

    QColor outlineColor() const { return m_outlineColor; }
    void setOutlineColor(const QColor &colour);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &colour);
    QColor progressBarColor() const { return m_progressBarColor; }
    void setProgressBarColor(const QColor &colour);
    QColor progressBarOutlineColor() const { return m_progressBarOutlineColor; }
    void setProgressBarOutlineColor(const QColor &colour);

    // Everything a frame draws, in widget coordinates. Rectangles that would
    // be empty or negative (a view smaller than its insets) are left out.
    struct Shapes
    {
        double leftInset = 0;
        double rightInset = 0;
        std::optional<QRectF> background;   // corner radius: height / 2
        std::optional<QRectF> outline;      // corner radius: height / 2 - outlineWidth / 2
        QRectF barClip;                     // the filled part; empty when there is no bar
        double barEnd = 0;                  // right end of the bar, within [0, width]
        std::optional<QRectF> barOutline;   // the outline without insets, clipped to barClip
        std::optional<double> barEndLineX;  // closes the bar when its end is on the straight part
    };
    static Shapes shapes(QSizeF size, double outlineWidth, float valuePercent);
    Shapes shapes() const;

    QSize sizeHint() const override;

Q_SIGNALS:
    void valueChanged(double value);

protected:
    void paintEvent(QPaintEvent *event) override;
    // Called after the value, minimum or maximum changed.
    virtual void progressChanged();

private:
    void drawBackground(QPainter &painter, const Shapes &frame) const;
    void drawOutline(QPainter &painter, const Shapes &frame) const;
    void drawProgressBar(QPainter &painter, const Shapes &frame) const;
    void drawProgressBarOutline(QPainter &painter, const Shapes &frame) const;
    void updateProgress();

    double m_value = 0;
    double m_minimum = 0;
    double m_maximum = 100;
    double m_height;
    double m_outlineWidth = 1.0;
    QColor m_outlineColor;
    QColor m_backgroundColor;
    QColor m_progressBarColor;
    QColor m_progressBarOutlineColor;
};
