#include "KVSlidingSteps.h"

#include <QAbstractButton>
#include <QEvent>
#include <QPropertyAnimation>
#include <QScrollArea>
#include <QScrollBar>

KVSlidingSteps::KVSlidingSteps(QScrollArea *clipView, const QVector<QWidget *> &steps,
                               QAbstractButton *continueButton, QAbstractButton *goBackButton, QObject *parent)
    : QObject(parent)
    , m_clipView(clipView)
    , m_strip(new QWidget)
    , m_steps(steps)
    , m_continueButton(continueButton)
    , m_goBackButton(goBackButton)
{
    m_clipView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_clipView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_clipView->setFrameShape(QFrame::NoFrame);
    // The strip is placed by hand: hiding a step must not move the others.
    for (QWidget *step : m_steps)
        step->setParent(m_strip);
    m_clipView->setWidget(m_strip);
    m_clipView->viewport()->installEventFilter(this);
    layOutSteps();
    makeThisStepVisible();
}

void KVSlidingSteps::nextStep()
{
    requestSlide(+1);
}

void KVSlidingSteps::previousStep()
{
    requestSlide(-1);
}

void KVSlidingSteps::requestSlide(int direction)
{
    if (m_sliding) {
        m_pendingSlides.append(direction);
        return;
    }
    if (direction > 0 && m_currentStep >= stepCount() - 1)
        return;
    if (direction < 0 && m_currentStep <= 0)
        return;
    if (direction > 0)
        makeThisAndNextStepVisible();
    else
        makeThisAndPreviousStepVisible();
    slideBy(direction);
}

void KVSlidingSteps::showFirstStep()
{
    m_pendingSlides.clear();
    if (m_slide) {
        m_slide->disconnect(this);
        m_slide->stop();
    }
    m_sliding = false;
    m_clipView->horizontalScrollBar()->setValue(0);
    updateCurrentStep();
    makeThisStepVisible();
    Q_EMIT stepChanged(m_currentStep);
}

void KVSlidingSteps::slideBy(int direction)
{
    QScrollBar *bar = m_clipView->horizontalScrollBar();
    auto *animation = new QPropertyAnimation(bar, "value", this);
    animation->setDuration(qRound(baseSlideSeconds * m_multiplier * 1000.0));
    animation->setStartValue(bar->value());
    animation->setEndValue(bar->value() + direction * m_clipView->viewport()->width());
    m_sliding = true;
    m_slide = animation;
    disableNavigationButtons();
    connect(animation, &QPropertyAnimation::finished, this, [this] {
        m_sliding = false;
        updateCurrentStep();
        makeThisStepVisible();
        Q_EMIT stepChanged(m_currentStep);
        if (!m_sliding && !m_pendingSlides.isEmpty())
            requestSlide(m_pendingSlides.takeFirst());
    });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void KVSlidingSteps::updateCurrentStep()
{
    const int width = m_clipView->viewport()->width();
    // Integer division truncates toward zero, as the step index must.
    m_currentStep = width > 0 ? m_clipView->horizontalScrollBar()->value() / width : 0;
}

void KVSlidingSteps::disableNavigationButtons()
{
    if (m_continueButton)
        m_continueButton->setEnabled(false);
    if (m_goBackButton)
        m_goBackButton->setEnabled(false);
}

void KVSlidingSteps::makeThisStepVisible() { showStepRange(m_currentStep, m_currentStep); }
void KVSlidingSteps::makeThisAndNextStepVisible() { showStepRange(m_currentStep, m_currentStep + 1); }
void KVSlidingSteps::makeThisAndPreviousStepVisible() { showStepRange(m_currentStep - 1, m_currentStep); }
void KVSlidingSteps::afterStepChange() { showStepRange(m_currentStep - 1, m_currentStep + 1); }

void KVSlidingSteps::showStepRange(int first, int last)
{
    for (int index = 0; index < stepCount(); ++index)
        m_steps[index]->setVisible(index >= first && index <= last);
}

void KVSlidingSteps::layOutSteps()
{
    const QSize page = m_clipView->viewport()->size();
    for (int index = 0; index < stepCount(); ++index)
        m_steps[index]->setGeometry(index * page.width(), 0, page.width(), page.height());
    m_strip->resize(page.width() * stepCount(), page.height());
    if (!m_sliding)
        m_clipView->horizontalScrollBar()->setValue(m_currentStep * page.width());
}

bool KVSlidingSteps::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_clipView->viewport() && event->type() == QEvent::Resize)
        layOutSteps();
    return QObject::eventFilter(watched, event);
}
