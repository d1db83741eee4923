#pragma once

#include "app/KVSheetReturnCode.h"

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
    virtual void wizardButtons(const QString &identifier) = 0;
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
    // The user default "animationDurationMultiplier" as it is now.
    static float animationDurationMultiplier();

    void endSheet(KVSheetReturnCode returnCode);

    // The buttons for the step that is shown now.
    virtual void updateButtons() = 0;

private:
    void stepDidChange(int step);

    KVSlidingSteps *m_steps = nullptr;
    QStringList m_stepTitles;
    QPointer<QPushButton> m_cancelButton;
};
