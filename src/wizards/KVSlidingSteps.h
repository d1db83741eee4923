#pragma once

#include <QObject>
#include <QPointer>
#include <QVector>

class QAbstractAnimation;
class QAbstractButton;
class QScrollArea;
class QWidget;

// The step mechanics the wizards share: the steps sit side by side in a strip inside a clip view
// (a QScrollArea without scroll bars) and a step change slides the strip by one clip width. The
// current step is always read back from the scroll position, so an interrupted slide cannot leave
// the index and the picture disagreeing. A step asked for while a slide runs (an engine that
// answers before the slide is over) follows once it has ended, as the person would have seen it.
class KVSlidingSteps : public QObject
{
    Q_OBJECT
public:
    // `steps` become children of a strip owned by `clipView`; `continueButton` and `goBackButton`
    // are disabled while a slide runs (cancel is never touched).
    KVSlidingSteps(QScrollArea *clipView, const QVector<QWidget *> &steps,
                   QAbstractButton *continueButton, QAbstractButton *goBackButton, QObject *parent = nullptr);

    int currentStep() const { return m_currentStep; }
    int stepCount() const { return static_cast<int>(m_steps.size()); }
    bool isSliding() const { return m_sliding; }

    // Seconds of one slide before scaling: the user default "animationDurationMultiplier" scales it.
    static constexpr double baseSlideSeconds = 0.8;
    void setAnimationDurationMultiplier(float multiplier) { m_multiplier = multiplier; }

    void nextStep();
    void previousStep();
    // Jumps back to step one without animation (the wizards' reset), dropping a running slide and
    // any step asked for meanwhile.
    void showFirstStep();

    void updateCurrentStep();
    void disableNavigationButtons();
    void makeThisStepVisible();
    void makeThisAndNextStepVisible();
    void makeThisAndPreviousStepVisible();
    void afterStepChange();

Q_SIGNALS:
    // After every finished slide (and after showFirstStep): the owner updates its buttons.
    void stepChanged(int step);

private:
    void requestSlide(int direction);
    void slideBy(int direction);
    void showStepRange(int first, int last);
    void layOutSteps();
    bool eventFilter(QObject *watched, QEvent *event) override;

    QScrollArea *m_clipView;
    QWidget *m_strip;
    QVector<QWidget *> m_steps;
    QPointer<QAbstractButton> m_continueButton;
    QPointer<QAbstractButton> m_goBackButton;
    QPointer<QAbstractAnimation> m_slide;
    QVector<int> m_pendingSlides;
    float m_multiplier = 1.0f;
    int m_currentStep = 0;
    bool m_sliding = false;
};
