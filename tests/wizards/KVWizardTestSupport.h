#pragma once

// What the wizard tests share: finding a wizard's parts by objectName, typing
// as a person does, and the sheet's end.

#include "controls/KVPasswordFieldView.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QWidget>

namespace KVWizardTest {

template<typename T = QWidget>
T *part(const QWidget *wizard, const char *name)
{
    auto *found = wizard->findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

// An edit, as typing is: the field reports it.
inline void type(const QWidget *wizard, const char *field, const QString &text)
{
    auto *edit = part<QLineEdit>(wizard, field);
    edit->setFocus();
    edit->selectAll();
    edit->del();
    edit->insert(text);
}

inline int openAlerts()
{
    int count = 0;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            ++count;
    }
    return count;
}

inline void closeAlerts()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            box->done(QMessageBox::Ok);
    }
}

// A field holds no password: no text, and nothing that undo would bring back,
// whether the field shows its text or hides it.
inline bool holdsNoPassword(KVPasswordFieldView *field)
{
    if (!field->text().isEmpty() || field->isUndoAvailable() || field->isRedoAvailable())
        return false;
    const bool shown = field->showsText();
    field->setShowsText(!shown);
    const bool stillEmpty = !field->isUndoAvailable() && field->text().isEmpty();
    field->setShowsText(shown);
    return stillEmpty;
}

} // namespace KVWizardTest
