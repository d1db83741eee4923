#pragma once

#include <QAccessibleWidget>

class KVCustomProgressIndicatorView;

// Tells assistive technologies that a drawn progress bar is a progress bar,
// with its value, its range and, as text, the part of it that is filled.
class KVAccessibleProgressIndicator : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit KVAccessibleProgressIndicator(KVCustomProgressIndicatorView *view);

    // Makes queryAccessibleInterface() use this class for every progress
    // view; safe to call any number of times.
    static void installFactory();

    QString text(QAccessible::Text t) const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant &) override {}
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override { return 0.0; }

private:
    KVCustomProgressIndicatorView *view() const;
};
