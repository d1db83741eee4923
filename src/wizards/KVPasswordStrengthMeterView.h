#pragma once

#include <QColor>
#include <QRectF>
#include <QWidget>

#include <array>

// The small bar of four equal segments under a new-password field. It shows a
// password's score (0 to 4) as that many dark segments from the left. It knows
// nothing of passwords: its owner scores them (KVPasswordStrengthEstimator)
// and hands it the score.
//
// The segments are laid out once, for the size the meter has when it is first
// shown (a .ui file's widget has its final geometry by then), and are not laid
// out again when it is resized.
class KVPasswordStrengthMeterView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QColor lightColor READ lightColor WRITE setLightColor)
    Q_PROPERTY(QColor darkColor READ darkColor WRITE setDarkColor)

public:
    static constexpr int kSegmentCount = 4;

    explicit KVPasswordStrengthMeterView(QWidget *parent = nullptr);

    // Lights the first `score` segments; 0 or less lights none, 4 or more
    // lights all four.
    void scorePassword(int score);
    int litSegments() const { return m_litSegments; }

    QColor lightColor() const { return m_lightColor; }
    void setLightColor(const QColor &colour);
    QColor darkColor() const { return m_darkColor; }
    void setDarkColor(const QColor &colour);

    // Four segments across the width with three gaps of 2.666 between them;
    // empty when the width leaves no room for them.
    static std::array<QRectF, kSegmentCount> segmentRects(QSizeF size);
    const std::array<QRectF, kSegmentCount> &segments() const { return m_segments; }

    // The score in words, as assistive technologies announce it.
    static QString strengthDescription(int score);

    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    std::array<QRectF, kSegmentCount> m_segments;
    bool m_segmentsLaidOut = false;
    int m_litSegments = 0;
    QColor m_lightColor;
    QColor m_darkColor;
};
