#pragma once

#include <QObject>

// A named child that a test cannot go on without: a missing one ends the
// test at once with its name, instead of a null pointer further on.
template<typename T = QWidget>
T *kvOutlet(const QObject *root, const QString &name)
{
    T *child = root->findChild<T *>(name);
    if (!child)
        qFatal("no %s", qPrintable(name));
    return child;
}
