#pragma once

#include <QToolBar>

class KVCreatePopover;
class KVWindowActions;
class QMenu;
class QToolButton;

// The window's toolbar: Create (with its popover), Unmount All, and at the
// far end Add to Favorites and the tips. The buttons stand for the window's
// actions, so that they are enabled as the menu items are.
class KVMainToolBar : public QToolBar
{
    Q_OBJECT

public:
    KVMainToolBar(KVWindowActions *actions, QMenu *addToFavouritesMenu, QWidget *parent = nullptr);

    QToolButton *createButton() const { return m_createButton; }
    QToolButton *addToFavouritesButton() const { return m_addToFavouritesButton; }
    KVCreatePopover *createPopover() const { return m_createPopover; }

private:
    QToolButton *m_createButton;
    QToolButton *m_addToFavouritesButton;
    KVCreatePopover *m_createPopover;
};
