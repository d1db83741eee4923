#include "wizards/KVPasswordStrengthEstimator.h"
#include "wizards/KVPasswordStrengthMeterView.h"

#include <QImage>
#include <QTest>

namespace {

// 108 points wide: segments of 25.0005 at 0, 27.6665, 55.333 and 82.9995.
constexpr int kWidth = 108;
constexpr int kHeight = 4;
constexpr int kSegmentCentres[] = {12, 40, 68, 95};
constexpr int kGapColumns[] = {26, 53, 81};

QImage paintedImage(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

} // namespace

class TestKVPasswordStrengthMeterView : public QObject
{
    Q_OBJECT

private:
    static bool showMeter(KVPasswordStrengthMeterView &meter)
    {
        meter.resize(kWidth, kHeight);
        meter.show();
        return QTest::qWaitForWindowExposed(&meter);
    }

private Q_SLOTS:
    void laysOutFourSegmentsWithThreeGaps()
    {
        const auto rects = KVPasswordStrengthMeterView::segmentRects(QSizeF(kWidth, kHeight));
        const double width = (108.0f - 7.998f) * 0.25f;
        const double lefts[] = {0, width + 2.666, 2 * width + 5.332, 3 * width + 7.998};
        for (int index = 0; index < 4; ++index) {
            QVERIFY(qAbs(rects[index].left() - lefts[index]) < 1e-4);
            QCOMPARE(rects[index].width(), width);
            QCOMPARE(rects[index].top(), 0.0);
            QCOMPARE(rects[index].height(), double(kHeight));
        }
        QVERIFY(qAbs(rects[3].right() - kWidth) < 1e-4);
    }

    void tooNarrowAMeterDrawsNothing()
    {
        for (const QSizeF size : {QSizeF(7.998, 4), QSizeF(3, 4), QSizeF(108, 0), QSizeF(-5, 4)}) {
            for (const QRectF &rect : KVPasswordStrengthMeterView::segmentRects(size))
                QVERIFY(rect.isEmpty());
        }
    }

    void lightsTheScoresSegments_data()
    {
        QTest::addColumn<int>("score");
        QTest::addColumn<int>("lit");
        QTest::newRow("-1") << -1 << 0;
        QTest::newRow("0") << 0 << 0;
        QTest::newRow("2") << 2 << 2;
        QTest::newRow("4") << 4 << 4;
        QTest::newRow("7") << 7 << 4;
    }

    void lightsTheScoresSegments()
    {
        QFETCH(int, score);
        QFETCH(int, lit);
        KVPasswordStrengthMeterView meter;
        QVERIFY(showMeter(meter));
        meter.scorePassword(score);
        QCOMPARE(meter.litSegments(), lit);

        const QImage image = paintedImage(meter);
        for (int index = 0; index < 4; ++index) {
            const QColor expected = index < lit ? meter.darkColor() : meter.lightColor();
            QCOMPARE(image.pixel(kSegmentCentres[index], 2), expected.rgba());
        }
        for (int x : kGapColumns)
            QCOMPARE(qAlpha(image.pixel(x, 2)), 0);
    }

    void theEmptyPasswordLightsNothing()
    {
        KVPasswordStrengthMeterView meter;
        QVERIFY(showMeter(meter));
        meter.scorePassword(4);
        meter.scorePassword(KVPasswordStrengthEstimator::scoreForPassword(QString()));
        QCOMPARE(meter.litSegments(), 0);
        const QImage image = paintedImage(meter);
        for (int x : kSegmentCentres)
            QCOMPARE(image.pixel(x, 2), meter.lightColor().rgba());
    }

    void keepsItsFirstLayoutWhenResized()
    {
        KVPasswordStrengthMeterView meter;
        QVERIFY(showMeter(meter));
        const auto segments = meter.segments();
        QCOMPARE(segments, KVPasswordStrengthMeterView::segmentRects(QSizeF(kWidth, kHeight)));
        meter.resize(300, 10);
        QTRY_COMPARE(meter.width(), 300);
        QCOMPARE(meter.segments(), segments);
    }

    void saysItsStrengthInWords()
    {
        KVPasswordStrengthMeterView meter;
        QCOMPARE(meter.accessibleName(), QStringLiteral("Password strength"));
        QCOMPARE(meter.accessibleDescription(), QStringLiteral("Very weak"));
        meter.scorePassword(3);
        QCOMPARE(meter.accessibleDescription(), QStringLiteral("Good"));
        meter.scorePassword(9);
        QCOMPARE(meter.accessibleDescription(), QStringLiteral("Strong"));
    }
};

QTEST_MAIN(TestKVPasswordStrengthMeterView)
#include "tst_kvpasswordstrengthmeterview.moc"
