// Renders every drawn control in its main states into one picture, saved when
// KV_SCREENSHOT_DIR names a folder, so that a person can look at them all.
#include "controls/KVCustomProgressIndicatorView.h"
#include "controls/KVPasswordFieldView.h"
#include "controls/KVSpaceIndicatorView.h"
#include "controls/KVWizardProgressCirclesView.h"
#include "controls/LogarithmicSlider.h"
#include "wizards/KVPasswordStrengthEstimator.h"
#include "wizards/KVPasswordStrengthMeterView.h"

#include "KVScreenshot.h"

#include <QEnterEvent>
#include <QFormLayout>
#include <QLabel>
#include <QTest>

#include <limits>

class TestControlsGallery : public QObject
{
    Q_OBJECT

private:
    static KVCustomProgressIndicatorView *progress(double minimum, double maximum, double value)
    {
        auto *view = new KVCustomProgressIndicatorView;
        view->setMinimum(minimum);
        view->setMaximum(maximum);
        view->setValue(value);
        return view;
    }

    static KVWizardProgressCirclesView *circles(const QString &identifier)
    {
        auto *view = new KVWizardProgressCirclesView;
        view->setIdentifier(identifier);
        view->setFixedSize(60, 12);
        return view;
    }

    static KVPasswordFieldView *passwordField(const QString &text, bool showsText)
    {
        auto *field = new KVPasswordFieldView;
        field->setText(text);
        field->setShowsText(showsText);
        return field;
    }

    static KVPasswordStrengthMeterView *meter(const QString &password)
    {
        auto *view = new KVPasswordStrengthMeterView;
        view->setFixedSize(160, 4);
        view->scorePassword(KVPasswordStrengthEstimator::scoreForPassword(password));
        view->setToolTip(password);
        return view;
    }

    // The space bar with its two labels shown, as while the pointer is over it.
    static QWidget *hoveredSpaceIndicator()
    {
        auto *area = new QWidget;
        area->setFixedSize(220, 46);
        auto *space = new KVSpaceIndicatorView(area);
        space->setHeight(6);
        space->setGeometry(0, 20, 220, 6);
        auto *used = new QLabel(QStringLiteral("6 GB used"), area);
        auto *free = new QLabel(QStringLiteral("4 GB free"), area);
        used->adjustSize();
        free->adjustSize();
        free->move(0, 28);
        space->setTextFields(used, free);
        space->setValue(60);
        QEnterEvent enter(QPointF(1, 1), QPointF(1, 1), QPointF(1, 1));
        QCoreApplication::sendEvent(space, &enter);
        return area;
    }

private Q_SLOTS:
    void rendersEveryControl()
    {
        QWidget gallery;
        gallery.setWindowTitle(QStringLiteral("Korvelle controls"));
        auto *form = new QFormLayout(&gallery);
        form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
        auto row = [form](const QString &label, QWidget *field) { form->addRow(label, field); };

        row(QStringLiteral("Progress 0"), progress(0, 100, 0));
        row(QStringLiteral("Progress 35%"), progress(0, 100, 35));
        row(QStringLiteral("Progress 97%"), progress(0, 100, 97));
        row(QStringLiteral("Progress 100%"), progress(0, 100, 100));
        row(QStringLiteral("Min 10, max 20, value 15"), progress(10, 20, 15));
        row(QStringLiteral("Progress NaN"), progress(0, 100, std::numeric_limits<double>::quiet_NaN()));
        KVCustomProgressIndicatorView *recoloured = progress(0, 100, 60);
        recoloured->setProgressBarColor(QColor(0x3d, 0x7e, 0xdb));
        recoloured->setProgressBarOutlineColor(QColor(0x2a, 0x5a, 0xa8));
        row(QStringLiteral("Recoloured 60%"), recoloured);
        row(QStringLiteral("Space 60%, height 6, hovered"), hoveredSpaceIndicator());

        row(QStringLiteral("Circles 3-1"), circles(QStringLiteral("3-1")));
        row(QStringLiteral("Circles 3-2"), circles(QStringLiteral("3-2")));
        row(QStringLiteral("Circles 3-3"), circles(QStringLiteral("3-3")));
        row(QStringLiteral("Circles 4-4"), circles(QStringLiteral("4-4")));

        row(QStringLiteral("Password hidden"), passwordField(QStringLiteral("correct horse"), false));
        row(QStringLiteral("Password shown"), passwordField(QStringLiteral("correct horse"), true));
        row(QStringLiteral("Password empty"), passwordField(QString(), false));

        const QString passwords[] = {
            QString(), QStringLiteral("Kettle73"), QStringLiteral("Tr0ub4dor"),
            QStringLiteral("mauve-kettle"), QStringLiteral("x7$Lq!9vR@2mZ#p4Wk%e"),
        };
        for (const QString &password : passwords)
            row(QStringLiteral("Meter \"%1\"").arg(password), meter(password));

        auto *slider = new LogarithmicSlider(Qt::Horizontal);
        slider->setPositionRange(6, 12);
        slider->setPosition(9);
        row(QStringLiteral("Size slider at 1 GB"), slider);

        gallery.resize(460, gallery.sizeHint().height());
        gallery.show();
        QVERIFY(QTest::qWaitForWindowExposed(&gallery));
        QVERIFY(!gallery.grab().isNull());
        kvSaveScreenshot(&gallery, QStringLiteral("controls-gallery"));
    }
};

QTEST_MAIN(TestControlsGallery)
#include "tst_controlsgallery.moc"
