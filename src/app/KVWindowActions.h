#pragma once

#include "KVCommand.h"
#include "model/KVVolumeItem.h"

#include <QHash>
#include <QKeySequence>
#include <QObject>

class QAction;
class QMenu;
class QMenuBar;

// The main window's commands as actions, one per command, shared by the menu
// bar and the toolbar so that both are enabled alike. Choosing one reports
// the command; what it does is decided elsewhere.
class KVWindowActions : public QObject
{
    Q_OBJECT

public:
    explicit KVWindowActions(QObject *parent = nullptr);

    QAction *action(KVCommand command) const { return m_actions.value(command); }
    // File, Volume and Help; the volume menu lends itself the window's
    // add-to-favourites menu.
    void populate(QMenuBar *menuBar, QMenu *addToFavouritesMenu);
    // Enables every action by the rules for this selection and these volumes.
    void updateActionState(const KVVolumeItemPtr &selection, bool anyVolumeMounted);

Q_SIGNALS:
    void triggered(KVCommand command);

private:
    QAction *add(KVCommand command, const QString &name, const QString &text, const QKeySequence &shortcut = {});

    QHash<KVCommand, QAction *> m_actions;
};
