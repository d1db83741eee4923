#include "controls/KVSizeValueTransformer.h"
#include "controls/LogarithmicSlider.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

class TestLogarithmicSlider : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void transformerMovesOnABaseTenScale_data()
    {
        QTest::addColumn<float>("bytes");
        QTest::addColumn<float>("position");
        QTest::newRow("1 MB") << 1e6f << 6.0f;
        QTest::newRow("1 GB") << 1e9f << 9.0f;
        QTest::newRow("1 TB") << 1e12f << 12.0f;
        QTest::newRow("1 byte") << 1.0f << 0.0f;
    }

    void transformerMovesOnABaseTenScale()
    {
        QFETCH(float, bytes);
        QFETCH(float, position);
        QCOMPARE(KVSizeValueTransformer::transformedValue(bytes), position);
        QCOMPARE(KVSizeValueTransformer::reverseTransformedValue(position), bytes);
    }

    void positionsAreHundredthsOfTheSlidersValue()
    {
        LogarithmicSlider slider;
        slider.setPositionRange(6, 12);
        QCOMPARE(slider.minimum(), 600);
        QCOMPARE(slider.maximum(), 1200);

        QSignalSpy moved(&slider, &LogarithmicSlider::positionChanged);
        slider.setPosition(KVSizeValueTransformer::transformedValue(5e8f));
        QCOMPARE(slider.value(), 870); // log10(5e8) = 8.69897
        QCOMPARE(moved.size(), 1);
        QCOMPARE(moved.at(0).at(0).toFloat(), 8.7f);
    }

    void endsReportNaturalLogarithmsAndTheMiddlePowersOfTen()
    {
        LogarithmicSlider slider;
        // As a .ui file sets it up.
        slider.setMinimum(600);
        slider.setMaximum(1200);
        QCOMPARE(slider.minimumValue(), std::log(6.0f));
        QCOMPARE(slider.maximumValue(), std::log(12.0f));

        slider.setValue(1200);
        QCOMPARE(slider.sliderValue(), std::log(12.0f));
        slider.setValue(600);
        QCOMPARE(slider.sliderValue(), std::log(6.0f));
        slider.setValue(900);
        QCOMPARE(slider.sliderValue(), 1e9f);
        slider.setValue(1199);
        QCOMPARE(slider.sliderValue(), std::pow(10.0f, 11.99f));
    }

    void unusablePositionsGoToTheNearestEnd_data()
    {
        QTest::addColumn<float>("position");
        QTest::addColumn<int>("value");
        QTest::newRow("NaN") << std::numeric_limits<float>::quiet_NaN() << 600;
        QTest::newRow("minus infinity") << -std::numeric_limits<float>::infinity() << 600;
        QTest::newRow("infinity") << std::numeric_limits<float>::infinity() << 1200;
        QTest::newRow("beyond an int") << 1e30f << 1200;
        QTest::newRow("below the range") << 2.0f << 600;
    }

    void unusablePositionsGoToTheNearestEnd()
    {
        QFETCH(float, position);
        QFETCH(int, value);
        LogarithmicSlider slider;
        slider.setPositionRange(6, 12);
        slider.setValue(900);
        slider.setPosition(position);
        QCOMPARE(slider.value(), value);
    }
};

QTEST_MAIN(TestLogarithmicSlider)
#include "tst_logarithmicslider.moc"
