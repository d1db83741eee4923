#pragma once

#include <QColor>
#include <QRectF>
#include <QWidget>

#include <array>

// The row of three small circles on a wizard page that tells which step of
// the task the page is. A page configures it entirely in its .ui file through
// the string property "identifier", "<number of steps>-<current step>": "3-2"
// highlights the second circle. The identifier is a property of its own rather
// than the objectName because uic turns object names into C++ member names,
// and "3-2" is not one.
class KVWizardProgressCirclesView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier WRITE setIdentifier)
    Q_PROPERTY(double borderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(QColor defaultFillColor READ defaultFillColor WRITE setDefaultFillColor)
    Q_PROPERTY(QColor defaultBorderColor READ defaultBorderColor WRITE setDefaultBorderColor)
    Q_PROPERTY(QColor activatedFillColor READ activatedFillColor WRITE setActivatedFillColor)
    Q_PROPERTY(QColor activatedBorderColor READ activatedBorderColor WRITE setActivatedBorderColor)

public:
    // Three circles are drawn whatever the identifier says.
    static constexpr int kCircleCount = 3;

    explicit KVWizardProgressCirclesView(QWidget *parent = nullptr);

    QString identifier() const { return m_identifier; }
    // Two numbers joined by one hyphen set numberOfCircles and
    // activatedCircle (a part that is not a number counts as 0); anything
    // else sets both to 0, which highlights no circle.
    void setIdentifier(const QString &identifier);

    // Read from the identifier but not used for drawing.
    int numberOfCircles() const { return m_numberOfCircles; }
    // 1-based; a value outside 1..3 highlights nothing.
    int activatedCircle() const { return m_activatedCircle; }

    double borderWidth() const { return m_borderWidth; }
    void setBorderWidth(double width);

    QColor defaultFillColor() const { return m_defaultFillColor; }
    void setDefaultFillColor(const QColor &colour);
    QColor defaultBorderColor() const { return m_defaultBorderColor; }
    void setDefaultBorderColor(const QColor &colour);
    QColor activatedFillColor() const { return m_activatedFillColor; }
    void setActivatedFillColor(const QColor &colour);
    QColor activatedBorderColor() const { return m_activatedBorderColor; }
    void setActivatedBorderColor(const QColor &colour);

    // The circles' squares, left to right; empty when the view is too low to
    // hold a circle inside its border.
    static std::array<QRectF, kCircleCount> circleRects(QSizeF size, double borderWidth);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void updateAccessibleDescription();

    QString m_identifier;
    int m_numberOfCircles = 0;
    int m_activatedCircle = 0;
    double m_borderWidth = 1.0;
    QColor m_defaultFillColor;
    QColor m_defaultBorderColor;
    QColor m_activatedFillColor;
    QColor m_activatedBorderColor;
};
