#include "KVSlidingWizard.h"

#include "platform/KVUserDefaults.h"
#include "settings/KVPreferenceKeys.h"
#include "wizards/KVSlidingSteps.h"

#include <QPushButton>
#include <QScrollArea>
#include <QTimer>

KVSlidingWizard::KVSlidingWizard(QWidget *parent)
    : QDialog(parent, Qt::Sheet)
{
    setWindowModality(Qt::WindowModal);
}

KVSlidingWizard::~KVSlidingWizard() = default;

void KVSlidingWizard::setUpSteps(QScrollArea *clipView, const QVector<QWidget *> &steps, const QStringList &stepTitles,
                                 QPushButton *continueButton, QPushButton *goBackButton, QPushButton *cancelButton)
{
    m_steps = new KVSlidingSteps(clipView, steps, continueButton, goBackButton, this);
    m_stepTitles = stepTitles;
    m_cancelButton = cancelButton;
    connect(m_steps, &KVSlidingSteps::stepChanged, this, &KVSlidingWizard::stepDidChange);
    for (QPushButton *button : {continueButton, goBackButton, cancelButton}) {
        button->setAutoDefault(false);
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { wizardButtons(button->property("identifier").toString()); });
    }
    continueButton->setDefault(true);
    setAccessibleDescription(m_stepTitles.value(0));
}

int KVSlidingWizard::currentStep() const
{
    return m_steps->currentStep();
}

void KVSlidingWizard::applyButtonState(QPushButton *button, const ButtonState &state)
{
    button->setText(tr(state.title));
    button->setProperty("identifier", QString::fromLatin1(state.identifier));
    button->setEnabled(state.enabled);
}

float KVSlidingWizard::animationDurationMultiplier()
{
    return float(KVUserDefaults::standard().doubleForKey(KVAnimationDurationMultiplierKey));
}

void KVSlidingWizard::nextStep()
{
    m_steps->setAnimationDurationMultiplier(animationDurationMultiplier());
    m_steps->nextStep();
}

void KVSlidingWizard::previousStep()
{
    m_steps->setAnimationDurationMultiplier(animationDurationMultiplier());
    m_steps->previousStep();
}

void KVSlidingWizard::nextStepAfter(int milliseconds)
{
    QTimer::singleShot(milliseconds, this, [this, run = m_run] {
        if (isCurrentRun(run))
            nextStep();
    });
}

void KVSlidingWizard::showFirstStep()
{
    m_steps->showFirstStep();
}

void KVSlidingWizard::stepDidChange(int step)
{
    updateButtons();
    setAccessibleDescription(m_stepTitles.value(step));
}

void KVSlidingWizard::reject()
{
    if (m_cancelButton && m_cancelButton->isEnabled())
        m_cancelButton->click();
}

void KVSlidingWizard::wizardButtons(const QString &identifier)
{
    if (identifier == u"continue") {
        nextStep();
    } else if (identifier == u"goBack") {
        previousStep();
    } else if (identifier == u"cancel") {
        reset();
        endSheet(KVSheetReturnCode::Cancelled);
    } else if (identifier == u"exit") {
        finish();
    } else {
        performAction(identifier);
    }
}

void KVSlidingWizard::finish()
{
    reset();
    endSheet(KVSheetReturnCode::Finished);
}

void KVSlidingWizard::endSheet(KVSheetReturnCode returnCode)
{
    done(int(returnCode));
}
