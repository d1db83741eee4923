#pragma once

#include "KVFavouriteFolder.h"
#include "model/KVVolumeItem.h"

#include <QMainWindow>

class QLabel;
class QMenu;
class QStandardItemModel;
class QTreeView;

// The single main window: the sidebar of favourites and mounted volumes on the
// left, the detail pane on the right.
class KVMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit KVMainWindow(QWidget *parent = nullptr);

    QTreeView *sidebar() const { return m_sidebar; }
    QMenu *addToFavouritesMenu() const { return m_addToFavouritesMenu; }

    void reloadSidebar(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                       const KVVolumeItemPtr &selection);
    void showDetails(const KVVolumeItemPtr &volume);

Q_SIGNALS:
    // The user closed the window or chose Quit: the application decides
    // whether to quit now.
    void closeRequested();
    void preferencesRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QTreeView *m_sidebar;
    QStandardItemModel *m_sidebarModel;
    QLabel *m_detail;
    QMenu *m_addToFavouritesMenu;
};
