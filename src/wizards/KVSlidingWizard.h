#pragma once

#include "app/KVSheetReturnCode.h"
#include "platform/KVMainQueue.h"

#include <QDialog>
#include <QPointer>
#include <QVector>

class KVSlidingSteps;
class QPushButton;
class QScrollArea;

// The sheet window of a wizard whose steps slide side by side: what the
// create-image, encrypt-disk and mount-disk wizards have in common.
//
// Every navigation button carries its command as the string property
// "identifier" ("continue", "goBack", "cancel", ...), which the wizard changes
// as the steps change; a click hands the identifier to wizardButtons(). Return
// presses the continue button while it is enabled (it is the default button),
// and Escape or closing the window presses Cancel while Cancel is enabled and
// does nothing otherwise, so that a running operation cannot be left behind.
// After each step change the wizard's accessible description becomes the
// step's title, which screen readers announce.
class KVSlidingWizard : public QDialog
{
    Q_OBJECT

public:
    int currentStep() const;
    KVSlidingSteps *slidingSteps() const { return m_steps; }

    // One row of a wizard's button table.
    struct ButtonState
    {
        const char *title;
        const char *identifier;
        bool enabled;
    };
    static void applyButtonState(QPushButton *button, const ButtonState &state);

public Q_SLOTS:
    // "continue" and "goBack" slide, "cancel" resets and ends the sheet as
    // cancelled, "exit" calls finish(); a wizard's own identifiers ("create",
    // "mount", ...) go to performAction().
    void wizardButtons(const QString &identifier);
    // Back to the first step, with nothing typed, as when first shown.
    virtual void reset() = 0;
    void reject() override;

protected:
    explicit KVSlidingWizard(QWidget *parent = nullptr);
    ~KVSlidingWizard() override;

    // Called once, after the interface is loaded. `stepTitles` are the
    // spoken titles of the steps, in order.
    void setUpSteps(QScrollArea *clipView, const QVector<QWidget *> &steps, const QStringList &stepTitles,
                    QPushButton *continueButton, QPushButton *goBackButton, QPushButton *cancelButton);

    // The slides take 0.8 s times the user default "animationDurationMultiplier".
    void nextStep();
    void previousStep();
    void showFirstStep();
    // The next step after a pause, unless the wizard is reset before.
    void nextStepAfter(int milliseconds);
    // The user default "animationDurationMultiplier" as it is now.
    static float animationDurationMultiplier();

    void endSheet(KVSheetReturnCode returnCode);

    // Every showing of the wizard is a run of its own; reset() starts a new one,
    // so that a late answer for an earlier showing changes nothing.
    void startNewRun() { ++m_run; }
    bool isCurrentRun(int run) const { return run == m_run; }
    // Wraps `fn` as a completion for an engine: called from any thread, it
    // runs `fn` with the same arguments on the GUI thread, and only while the
    // wizard exists and is still in the run in which the request was made.
    template<typename Fn>
    auto inCurrentRun(Fn fn)
    {
        return [self = QPointer<KVSlidingWizard>(this), run = m_run, fn](const auto &...args) {
            KVMainQueue::post(self, [self, run, fn, ... args = args] {
                if (self->isCurrentRun(run))
                    fn(args...);
            });
        };
    }

    // The buttons for the step that is shown now.
    virtual void updateButtons() = 0;
    virtual void performAction(const QString &identifier) = 0;
    // Resets the wizard and ends the sheet as finished.
    virtual void finish();

private:
    void stepDidChange(int step);

    KVSlidingSteps *m_steps = nullptr;
    QStringList m_stepTitles;
    QPointer<QPushButton> m_cancelButton;
    int m_run = 0;
};
