#include "controls/KVAccessibleProgressIndicator.h"

#include "controls/KVCustomProgressIndicatorView.h"

#include <QLatin1StringView>

namespace {

QAccessibleInterface *createAccessibleProgressIndicator(const QString &className, QObject *object)
{
    // The factory is asked once per class of the object's hierarchy, so this
    // also answers for subclasses such as the space indicator.
    if (className == QLatin1StringView("KVCustomProgressIndicatorView"))
        return new KVAccessibleProgressIndicator(static_cast<KVCustomProgressIndicatorView *>(object));
    return nullptr;
}

} // namespace

KVAccessibleProgressIndicator::KVAccessibleProgressIndicator(KVCustomProgressIndicatorView *view)
    : QAccessibleWidget(view, QAccessible::ProgressBar)
{
}

void KVAccessibleProgressIndicator::installFactory()
{
    static const bool installed = [] {
        QAccessible::installFactory(createAccessibleProgressIndicator);
        return true;
    }();
    Q_UNUSED(installed);
}

KVCustomProgressIndicatorView *KVAccessibleProgressIndicator::view() const
{
    return static_cast<KVCustomProgressIndicatorView *>(widget());
}

QString KVAccessibleProgressIndicator::text(QAccessible::Text t) const
{
    if (t != QAccessible::Value)
        return QAccessibleWidget::text(t);
    // Say what the bar shows, which is what a sighted user reads off it.
    const double width = view()->width();
    const double shown = width > 0 ? view()->shapes().barEnd / width : 0.0;
    return QObject::tr("%1%").arg(qRound(shown * 100));
}

void *KVAccessibleProgressIndicator::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

QVariant KVAccessibleProgressIndicator::currentValue() const
{
    return view()->value();
}

QVariant KVAccessibleProgressIndicator::maximumValue() const
{
    return view()->maximum();
}

QVariant KVAccessibleProgressIndicator::minimumValue() const
{
    return view()->minimum();
}
