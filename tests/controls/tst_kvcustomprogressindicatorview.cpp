#include "controls/KVCustomProgressIndicatorView.h"
#include "controls/KVSpaceIndicatorView.h"

#include <QAccessible>
#include <QEnterEvent>
#include <QImage>
#include <QLabel>
#include <QTest>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kInset = double(0.8f);
constexpr int kWidth = 200;
constexpr int kHeight = 20;
constexpr int kMiddle = kHeight / 2;

QImage paintedImage(QWidget &widget)
{
    QImage image(widget.size().expandedTo(QSize(1, 1)), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

QRgb opaque(const QColor &colour)
{
    return colour.rgba();
}

} // namespace

class TestKVCustomProgressIndicatorView : public QObject
{
    Q_OBJECT

private:
    // A bar of kWidth x kHeight showing value within [minimum, maximum].
    static void setUp(KVCustomProgressIndicatorView &view, double minimum, double maximum, double value)
    {
        view.setHeight(kHeight);
        view.resize(kWidth, kHeight);
        view.setMinimum(minimum);
        view.setMaximum(maximum);
        view.setValue(value);
    }

private Q_SLOTS:
    void valuePercentIsNotOffsetByTheMinimum_data()
    {
        QTest::addColumn<double>("minimum");
        QTest::addColumn<double>("maximum");
        QTest::addColumn<double>("value");
        QTest::addColumn<float>("percent");
        QTest::newRow("zero") << 0.0 << 100.0 << 0.0 << 0.0f;
        QTest::newRow("half") << 0.0 << 100.0 << 50.0 << 0.5f;
        QTest::newRow("full") << 0.0 << 100.0 << 100.0 << 1.0f;
        QTest::newRow("minimum 10, maximum 20, value 15") << 10.0 << 20.0 << 15.0 << 1.5f;
        QTest::newRow("below the minimum") << 10.0 << 20.0 << 5.0 << 0.5f;
        QTest::newRow("above the maximum") << 0.0 << 100.0 << 150.0 << 1.5f;
        QTest::newRow("negative") << 0.0 << 100.0 << -5.0 << 0.0f;
        QTest::newRow("NaN") << 0.0 << 100.0 << kNaN << 0.0f;
        QTest::newRow("minus infinity") << 0.0 << 100.0 << -kInfinity << 0.0f;
        QTest::newRow("NaN range") << kNaN << 100.0 << 5.0 << 0.0f;
        QTest::newRow("inverted range") << 20.0 << 10.0 << 15.0 << 0.0f;
        QTest::newRow("empty range, zero value") << 5.0 << 5.0 << 0.0 << 0.0f;
    }

    void valuePercentIsNotOffsetByTheMinimum()
    {
        QFETCH(double, minimum);
        QFETCH(double, maximum);
        QFETCH(double, value);
        QFETCH(float, percent);
        KVCustomProgressIndicatorView view;
        setUp(view, minimum, maximum, value);
        QCOMPARE(view.valuePercent(), percent);
    }

    void valueZeroDrawsNoBarAndNoInset()
    {
        KVCustomProgressIndicatorView view;
        setUp(view, 0, 100, 0);
        const auto shapes = view.shapes();
        QCOMPARE(shapes.leftInset, 0.0);
        QCOMPARE(shapes.rightInset, 0.0);
        QCOMPARE(*shapes.background, QRectF(0, 0, kWidth, kHeight));
        QCOMPARE(*shapes.outline, QRectF(0.5, 0.5, kWidth - 1, kHeight - 1));
        QVERIFY(shapes.barClip.isEmpty());

        const QImage image = paintedImage(view);
        QCOMPARE(image.pixel(kWidth / 2, kMiddle), opaque(view.backgroundColor()));
        // The outline's stroke covers the first column when nothing moves it in.
        QVERIFY(qAlpha(image.pixel(0, kMiddle)) > 200);
        QVERIFY(qAlpha(image.pixel(kWidth - 1, kMiddle)) > 200);
    }

    void aBarInsetsTheLeftEnd()
    {
        KVCustomProgressIndicatorView view;
        setUp(view, 0, 100, 50);
        const auto shapes = view.shapes();
        QCOMPARE(shapes.leftInset, kInset);
        QCOMPARE(shapes.rightInset, 0.0);
        QCOMPARE(*shapes.background, QRectF(kInset, 0, kWidth - kInset, kHeight));
        QCOMPARE(shapes.barClip, QRectF(0, 0, kWidth / 2, kHeight));
        // The end lies on the straight part, so a line closes the bar there.
        QCOMPARE(*shapes.barEndLineX, kWidth / 2 - 0.5);

        QImage image = paintedImage(view);
        QCOMPARE(image.pixel(kWidth / 4, kMiddle), opaque(view.progressBarColor()));
        QCOMPARE(image.pixel(kWidth / 2 + 1, kMiddle), opaque(view.backgroundColor()));

        // With an invisible bar what lies under it shows: the outline's stroke
        // begins 0.8 in, leaving the first column mostly empty.
        view.setProgressBarColor(Qt::transparent);
        view.setProgressBarOutlineColor(Qt::transparent);
        image = paintedImage(view);
        QVERIFY(qAlpha(image.pixel(0, kMiddle)) < 100);
        QVERIFY(qAlpha(image.pixel(kWidth - 1, kMiddle)) > 200);
    }

    void aFullBarInsetsBothEnds()
    {
        KVCustomProgressIndicatorView view;
        setUp(view, 0, 100, 100);
        const auto shapes = view.shapes();
        QCOMPARE(shapes.leftInset, kInset);
        QCOMPARE(shapes.rightInset, kInset);
        QCOMPARE(*shapes.background, QRectF(kInset, 0, kWidth - 2 * kInset, kHeight));
        QCOMPARE(*shapes.outline, QRectF(0.5 + kInset, 0.5, kWidth - 1 - 2 * kInset, kHeight - 1));
        QCOMPARE(shapes.barEnd, double(kWidth));

        QImage image = paintedImage(view);
        QCOMPARE(image.pixel(kWidth / 2, kMiddle), opaque(view.progressBarColor()));
        view.setProgressBarColor(Qt::transparent);
        view.setProgressBarOutlineColor(Qt::transparent);
        image = paintedImage(view);
        QVERIFY(qAlpha(image.pixel(0, kMiddle)) < 100);
        QVERIFY(qAlpha(image.pixel(kWidth - 1, kMiddle)) < 100);
    }

    void aBarBeyondTheWidthIsClamped()
    {
        KVCustomProgressIndicatorView view;
        setUp(view, 10, 20, 15);
        const auto shapes = view.shapes();
        QCOMPARE(shapes.barClip.width(), double(kWidth));
        QCOMPARE(shapes.barEnd, double(kWidth));
        QCOMPARE(shapes.rightInset, 0.0); // only exactly 1 insets the right end
        QVERIFY(!shapes.barEndLineX);

        const QImage image = paintedImage(view);
        for (int x : {5, kWidth / 2, kWidth - 5})
            QCOMPARE(image.pixel(x, kMiddle), opaque(view.progressBarColor()));
    }

    void badValuesDrawSensibly_data()
    {
        QTest::addColumn<double>("maximum");
        QTest::addColumn<double>("value");
        QTest::addColumn<bool>("barShown");
        QTest::newRow("NaN") << 100.0 << kNaN << false;
        QTest::newRow("minus infinity") << 100.0 << -kInfinity << false;
        QTest::newRow("negative") << 100.0 << -50.0 << false;
        QTest::newRow("infinity") << 100.0 << kInfinity << true;
        QTest::newRow("far above the maximum") << 100.0 << 1e300 << true;
        QTest::newRow("empty range") << 0.0 << 3.0 << true;
    }

    void badValuesDrawSensibly()
    {
        QFETCH(double, maximum);
        QFETCH(double, value);
        QFETCH(bool, barShown);
        KVCustomProgressIndicatorView view;
        setUp(view, 0, maximum, value);
        const auto shapes = view.shapes();
        QCOMPARE(shapes.barEnd, barShown ? double(kWidth) : 0.0);
        QVERIFY(!shapes.barEndLineX);
        const QImage image = paintedImage(view);
        const QColor expected = barShown ? view.progressBarColor() : view.backgroundColor();
        QCOMPARE(image.pixel(kWidth / 2, kMiddle), opaque(expected));
        QCOMPARE(image.pixel(kWidth - 5, kMiddle), opaque(expected));
    }

    void viewsSmallerThanTheirInsetsDrawNothing_data()
    {
        QTest::addColumn<QSizeF>("size");
        QTest::addColumn<double>("outlineWidth");
        QTest::addColumn<float>("percent");
        QTest::newRow("narrower than both insets") << QSizeF(1, 20) << 1.0 << 1.0f;
        QTest::newRow("lower than the outline") << QSizeF(200, 0.5) << 1.0 << 0.5f;
        QTest::newRow("outline wider than the view") << QSizeF(10, 20) << 30.0 << 0.5f;
        QTest::newRow("empty") << QSizeF(0, 0) << 1.0 << 0.5f;
        QTest::newRow("negative") << QSizeF(-10, -10) << 1.0 << 0.5f;
    }

    void viewsSmallerThanTheirInsetsDrawNothing()
    {
        QFETCH(QSizeF, size);
        QFETCH(double, outlineWidth);
        QFETCH(float, percent);
        const auto shapes = KVCustomProgressIndicatorView::shapes(size, outlineWidth, percent);
        for (const auto &rect : {shapes.background, shapes.outline, shapes.barOutline}) {
            if (rect)
                QVERIFY(rect->width() > 0 && rect->height() > 0);
        }
        QVERIFY(shapes.barClip.width() >= 0);
        QVERIFY(!(shapes.barEndLineX && *shapes.barEndLineX < 0));

        KVCustomProgressIndicatorView view;
        view.setHeight(qMax(0.0, size.height()));
        view.setOutlineWidth(outlineWidth);
        view.setValue(percent * 100);
        view.resize(size.toSize());
        paintedImage(view); // must not crash or assert
    }

    void keepsItsHeightWhateverLayoutAsks()
    {
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *view = new KVCustomProgressIndicatorView;
        layout->addWidget(view);
        view->setHeight(6);
        window.resize(300, 300);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(view->height(), 6);

        view->resize(250, 40);
        QCOMPARE(view->height(), 6);
        QCOMPARE(view->width(), 250);
        window.resize(400, 500);
        QTRY_COMPARE(view->width(), 400 - layout->contentsMargins().left() - layout->contentsMargins().right());
        QCOMPARE(view->height(), 6);

        // A .ui file sets it as a property of the promoted widget.
        QVERIFY(view->setProperty("customProgressIndicatorHeight", 12.0));
        QTRY_COMPARE(view->height(), 12);
    }

    void tellsAssistiveTechnologyWhatItShows()
    {
        KVCustomProgressIndicatorView view;
        setUp(view, 0, 200, 50);
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&view);
        QVERIFY(accessible);
        QCOMPARE(accessible->role(), QAccessible::ProgressBar);
        QCOMPARE(accessible->text(QAccessible::Value), QStringLiteral("25%"));
        QAccessibleValueInterface *value = accessible->valueInterface();
        QVERIFY(value);
        QCOMPARE(value->currentValue().toDouble(), 50.0);
        QCOMPARE(value->maximumValue().toDouble(), 200.0);

        view.setMinimum(10);
        view.setMaximum(20);
        view.setValue(15);
        QCOMPARE(accessible->text(QAccessible::Value), QStringLiteral("100%"));

        KVSpaceIndicatorView space;
        QCOMPARE(QAccessible::queryAccessibleInterface(&space)->role(), QAccessible::ProgressBar);
    }

    void spaceIndicatorCentresItsLabelsOnTheBarsEnd()
    {
        QWidget window;
        window.resize(400, 100);
        auto *space = new KVSpaceIndicatorView(&window);
        space->setHeight(6);
        space->setGeometry(50, 40, 200, 6);
        auto *used = new QLabel(QStringLiteral("1 GB"), &window);
        auto *free = new QLabel(QStringLiteral("3 GB"), &window);
        used->setGeometry(0, 10, 40, 20);
        free->setGeometry(0, 60, 60, 20);
        space->setTextFields(used, free);
        space->setValue(25);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        QVERIFY(!used->isVisible());
        QVERIFY(!free->isVisible());
        QCOMPARE(used->geometry().center().x() + 1, 50 + 50); // QRect's centre rounds down
        QCOMPARE(free->geometry().center().x() + 1, 50 + 50);
        QCOMPARE(used->y(), 10);

        QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(51, 41));
        QCoreApplication::sendEvent(space, &enter);
        QVERIFY(used->isVisible());
        QVERIFY(free->isVisible());

        space->setValue(75);
        QCOMPARE(used->geometry().center().x() + 1, 50 + 150);
        space->move(100, 40);
        QCOMPARE(used->geometry().center().x() + 1, 100 + 150);

        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(space, &leave);
        QVERIFY(!used->isVisible());
        QVERIFY(!free->isVisible());
    }
};

QTEST_MAIN(TestKVCustomProgressIndicatorView)
#include "tst_kvcustomprogressindicatorview.moc"
