#include "wizards/KVSlidingSteps.h"

#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

class TestKVSlidingSteps : public QObject
{
    Q_OBJECT

    struct Wizard
    {
        QWidget window;
        QScrollArea *clip = new QScrollArea(&window);
        QPushButton *continueButton = new QPushButton(QStringLiteral("Continue"), &window);
        QPushButton *goBackButton = new QPushButton(QStringLiteral("Go Back"), &window);
        QPushButton *cancelButton = new QPushButton(QStringLiteral("Cancel"), &window);
        QVector<QWidget *> steps{new QWidget, new QWidget, new QWidget, new QWidget};
        KVSlidingSteps sliding{clip, steps, continueButton, goBackButton};

        Wizard()
        {
            clip->setGeometry(0, 0, 400, 300);
            sliding.setAnimationDurationMultiplier(0.05f);
            window.resize(400, 360);
            window.show();
        }
        QVector<bool> visibility() const
        {
            QVector<bool> shown;
            for (QWidget *step : steps)
                shown << !step->isHidden();
            return shown;
        }
    };

private Q_SLOTS:
    void slidesForwardAndBackWithinBounds()
    {
        Wizard wizard;
        QSignalSpy changed(&wizard.sliding, &KVSlidingSteps::stepChanged);
        QCOMPARE(wizard.visibility(), (QVector<bool>{true, false, false, false}));

        wizard.sliding.nextStep();
        QVERIFY(wizard.sliding.isSliding());
        QVERIFY(!wizard.continueButton->isEnabled());
        QVERIFY(!wizard.goBackButton->isEnabled());
        QVERIFY(wizard.cancelButton->isEnabled());
        QCOMPARE(wizard.visibility(), (QVector<bool>{true, true, false, false}));
        QVERIFY(changed.wait(2000));
        QCOMPARE(wizard.sliding.currentStep(), 1);
        QCOMPARE(wizard.clip->horizontalScrollBar()->value(), 400);
        QCOMPARE(wizard.visibility(), (QVector<bool>{false, true, false, false}));

        wizard.sliding.previousStep();
        QCOMPARE(wizard.visibility(), (QVector<bool>{true, true, false, false}));
        QVERIFY(changed.wait(2000));
        QCOMPARE(wizard.sliding.currentStep(), 0);

        wizard.sliding.previousStep(); // already on the first step: nothing happens
        QVERIFY(!wizard.sliding.isSliding());
    }

    void stopsAtTheLastStep()
    {
        Wizard wizard;
        QSignalSpy changed(&wizard.sliding, &KVSlidingSteps::stepChanged);
        for (int step = 1; step < 4; ++step) {
            wizard.sliding.nextStep();
            QVERIFY(changed.wait(2000));
        }
        QCOMPARE(wizard.sliding.currentStep(), 3);
        wizard.sliding.nextStep();
        QVERIFY(!wizard.sliding.isSliding());
        wizard.sliding.afterStepChange();
        QCOMPARE(wizard.visibility(), (QVector<bool>{false, false, true, true}));
        wizard.sliding.showFirstStep();
        QCOMPARE(wizard.sliding.currentStep(), 0);
        QCOMPARE(wizard.visibility(), (QVector<bool>{true, false, false, false}));
    }

    void currentStepIsTruncatedFromTheScrollPosition()
    {
        Wizard wizard;
        wizard.clip->horizontalScrollBar()->setValue(799);
        wizard.sliding.updateCurrentStep();
        QCOMPARE(wizard.sliding.currentStep(), 1);
    }

    // An engine that answers while the slide to its progress step still runs: the step it asks
    // for follows the slide instead of being lost.
    void stepsAskedForDuringASlideFollowIt()
    {
        Wizard wizard;
        QSignalSpy changed(&wizard.sliding, &KVSlidingSteps::stepChanged);
        wizard.sliding.nextStep();
        wizard.sliding.nextStep();
        wizard.sliding.nextStep();
        QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 3, 5000);
        QCOMPARE(wizard.sliding.currentStep(), 3);
        QCOMPARE(wizard.clip->horizontalScrollBar()->value(), 1200);
        QCOMPARE(wizard.visibility(), (QVector<bool>{false, false, false, true}));
    }

    void showingTheFirstStepDropsARunningSlide()
    {
        Wizard wizard;
        QSignalSpy changed(&wizard.sliding, &KVSlidingSteps::stepChanged);
        wizard.sliding.nextStep();
        wizard.sliding.nextStep();
        wizard.sliding.showFirstStep();
        QVERIFY(!wizard.sliding.isSliding());
        QTest::qWait(200); // longer than a slide
        QCOMPARE(changed.size(), 1);
        QCOMPARE(wizard.sliding.currentStep(), 0);
        QCOMPARE(wizard.clip->horizontalScrollBar()->value(), 0);
    }
};

QTEST_MAIN(TestKVSlidingSteps)
#include "tst_kvslidingsteps.moc"
