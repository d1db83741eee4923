#include "controls/KVWizardProgressCirclesView.h"

#include <QImage>
#include <QTest>

namespace {

QImage paintedImage(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

// The centres of the three circles of a 100 x 12 view with border 1.
constexpr int kCentreY = 6;
constexpr int kCentresX[] = {6, 50, 94};

} // namespace

class TestKVWizardProgressCirclesView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheIdentifier_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("numberOfCircles");
        QTest::addColumn<int>("activatedCircle");
        QTest::newRow("second of three") << QStringLiteral("3-2") << 3 << 2;
        QTest::newRow("fourth of four") << QStringLiteral("4-4") << 4 << 4;
        QTest::newRow("no hyphen") << QStringLiteral("3") << 0 << 0;
        QTest::newRow("two hyphens") << QStringLiteral("3-2-1") << 0 << 0;
        QTest::newRow("empty") << QString() << 0 << 0;
        QTest::newRow("not numbers") << QStringLiteral("a-b") << 0 << 0;
        QTest::newRow("missing first") << QStringLiteral("-2") << 0 << 2;
    }

    void readsTheIdentifier()
    {
        QFETCH(QString, identifier);
        QFETCH(int, numberOfCircles);
        QFETCH(int, activatedCircle);
        KVWizardProgressCirclesView view;
        // As uic sets it on a promoted widget.
        QVERIFY(view.setProperty("identifier", identifier));
        QCOMPARE(view.numberOfCircles(), numberOfCircles);
        QCOMPARE(view.activatedCircle(), activatedCircle);
    }

    void placesThreeCirclesOnWholePixels()
    {
        const auto rects = KVWizardProgressCirclesView::circleRects(QSizeF(100, 12), 1.0);
        QCOMPARE(rects[0], QRectF(0.5, 0.5, 11, 11));
        QCOMPARE(rects[1], QRectF(45, 0.5, 11, 11));
        QCOMPARE(rects[2], QRectF(88.5, 0.5, 11, 11));
        // Fractions of the view's size do not move them.
        QCOMPARE(KVWizardProgressCirclesView::circleRects(QSizeF(100.9, 12.7), 1.0), rects);
    }

    void highlightsTheActivatedCircle_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<int>("highlighted"); // 0-based, -1 for none
        QTest::newRow("first") << QStringLiteral("3-1") << 0;
        QTest::newRow("second") << QStringLiteral("3-2") << 1;
        QTest::newRow("third") << QStringLiteral("3-3") << 2;
        QTest::newRow("fourth of four: no fourth circle") << QStringLiteral("4-4") << -1;
        QTest::newRow("malformed") << QStringLiteral("3-2-1") << -1;
    }

    void highlightsTheActivatedCircle()
    {
        QFETCH(QString, identifier);
        QFETCH(int, highlighted);
        KVWizardProgressCirclesView view;
        view.setIdentifier(identifier);
        view.resize(100, 12);
        const QImage image = paintedImage(view);
        for (int index = 0; index < 3; ++index) {
            const QColor fill = index == highlighted ? view.activatedFillColor() : view.defaultFillColor();
            QCOMPARE(image.pixel(kCentresX[index], kCentreY), fill.rgba());
        }
    }

    void drawsCirclesOfDiameterElevenAtTheirPlaces()
    {
        KVWizardProgressCirclesView view;
        view.setIdentifier(QStringLiteral("3-2"));
        view.resize(100, 12);
        const QImage image = paintedImage(view);
        // Each circle with its border spans [x - 0.5, x + 11.5]: the columns
        // just outside stay empty and the outermost ones inside are covered.
        const struct { int emptyBefore, firstCovered, lastCovered, emptyAfter; } spans[] = {
            {-1, 0, 11, 12},
            {43, 44, 56, 57},
            {87, 88, 99, 100},
        };
        for (const auto &span : spans) {
            if (span.emptyBefore >= 0)
                QCOMPARE(qAlpha(image.pixel(span.emptyBefore, kCentreY)), 0);
            if (span.emptyAfter < 100)
                QCOMPARE(qAlpha(image.pixel(span.emptyAfter, kCentreY)), 0);
            QVERIFY(qAlpha(image.pixel(span.firstCovered, kCentreY)) > 0);
            QVERIFY(qAlpha(image.pixel(span.lastCovered, kCentreY)) > 0);
        }
        // The outer circles sit on whole pixels, so their border fills the
        // outermost columns almost entirely.
        for (int x : {0, 11, 88, 99}) {
            const QColor pixel = QColor::fromRgba(image.pixel(x, kCentreY));
            QVERIFY2(qAbs(pixel.red() - view.defaultBorderColor().red()) <= 8 && pixel.alpha() >= 224,
                     qPrintable(QStringLiteral("x %1: %2").arg(x).arg(pixel.name(QColor::HexArgb))));
        }
        QCOMPARE(qAlpha(image.pixel(25, kCentreY)), 0);
        QCOMPARE(qAlpha(image.pixel(75, kCentreY)), 0);
    }

    void tooLowAViewDrawsNothing()
    {
        QVERIFY(KVWizardProgressCirclesView::circleRects(QSizeF(100, 1), 1.0)[0].isEmpty());
        QVERIFY(KVWizardProgressCirclesView::circleRects(QSizeF(100, 12), 20.0)[2].isEmpty());
        QVERIFY(KVWizardProgressCirclesView::circleRects(QSizeF(0, 12), 1.0)[1].isEmpty());

        KVWizardProgressCirclesView view;
        view.setBorderWidth(4);
        view.resize(100, 3);
        const QImage image = paintedImage(view);
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y)
                QCOMPARE(qAlpha(image.pixel(x, y)), 0);
        }
    }

    void tellsAssistiveTechnologyTheStep()
    {
        KVWizardProgressCirclesView view;
        view.setIdentifier(QStringLiteral("3-2"));
        QCOMPARE(view.accessibleDescription(), QStringLiteral("Step 2 of 3"));
        view.setIdentifier(QStringLiteral("4-4"));
        QVERIFY(view.accessibleDescription().isEmpty());
    }
};

QTEST_MAIN(TestKVWizardProgressCirclesView)
#include "tst_kvwizardprogresscirclesview.moc"
