#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "KVCommand.h"
#include "KVHelpBrowser.h"
#include "KVOutlineView.h"
#include "model/KVVolumeItem.h"

#include <QMainWindow>
#include <QPointer>

#include <array>

class KVDetailPaneView;
class KVHelpPopovers;
class KVMainToolBar;
class KVWindowActions;
class KVHoverArea;
class KVMountAreaView;
class KVSidebarModel;
class QGraphicsOpacityEffect;
class QLabel;
class QMenu;
class QMimeData;
class QSplitter;
class QParallelAnimationGroup;

// The single main window: on the left the sidebar of favourites and mounted
// volumes above the area where disk images are dropped, on the right the
// detail pane.
//
// A file dragged over the window is offered to the controller only when it
// is exactly one file with the extension "sparseimage": the window reports
// the drop; the window itself lights its drop area up while the drag is over
// it.
class KVMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit KVMainWindow(QWidget *parent = nullptr);
    ~KVMainWindow() override;

    KVOutlineView *sidebar() const { return m_sidebar; }
    KVSidebarModel *sidebarModel() const { return m_sidebarModel; }
    QMenu *addToFavouritesMenu() const { return m_addToFavouritesMenu; }
    KVHoverArea *outerMountArea() const { return m_outerMountArea; }
    KVMountAreaView *innerMountArea() const { return m_innerMountArea; }
    QLabel *mountVolumeLabel() const { return m_mountVolumeLabel; }
    // The drop area's fade between its label and what it offers.
    QParallelAnimationGroup *mountAreaFade() const { return m_mountAreaFade; }
    // How opaque each of the drop area's three parts is now.
    qreal mountAreaOpacity(int part) const;

    void reloadSidebar(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                       const KVVolumeItemPtr &selection);
    // The right side of the window: what is known of the selected volume.
    KVDetailPaneView *detailPane() const { return m_detailPane; }
    // Adding to favourites is for disk images only.
    void setAddToFavouritesEnabled(bool enabled);
    KVWindowActions *actions() const { return m_actions; }
    KVMainToolBar *toolBar() const { return m_toolBar; }
    KVHelpPopovers *helpPopovers() const { return m_helpPopovers; }
    KVHelpBrowser *helpBrowser() const { return m_helpBrowser; }
    // The menu items and toolbar buttons follow the selection and the volumes.
    void updateActionState(const KVVolumeItemPtr &selection, bool anyVolumeMounted);
    void focusSidebar();
    void setMountVolumeLabelColour(const QColor &colour);
    // While a quit waits for volumes to unmount, the window says which.
    void showQuitWaitingFor(const QStringList &volumeNames);
    // The application is ending: closing the window no longer asks to quit.
    void allowClose();

Q_SIGNALS:
    // The user chose Quit: the application decides whether to quit now.
    void closeRequested();
    // The user closed the window: quit, or keep running without it.
    void closeButtonClicked();
    void preferencesRequested();
    void mountDiskImageRequested();
    // A command of the menu bar or the toolbar that the window does not carry out itself.
    void commandRequested(KVCommand command);
    void addFavouriteFolderRequested();
    // A disk image was dropped on the window: its absolute path.
    void fileDropped(const QString &imagePath);
    // The sidebar's requests, with what they are about.
    void volumeSelected(const KVVolumeItemPtr &volume); // null: none
    void unmountRequested(const KVVolumeItemPtr &volume);
    void favouriteActivated(const KVFavouriteItemPtr &item);
    void favouriteItemDeleteRequested(const KVFavouriteItemPtr &item);
    void favouriteFolderDeleteRequested(const KVFavouriteFolderPtr &folder);
    void favouriteDroppedOnRemoveButton(const QMimeData &data);
    void favouriteFolderRenamed(const KVFavouriteFolderPtr &folder, const QString &name);

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QWidget *createSidebarPane();
    QWidget *createMountArea();
    // The sidebar's requests leave the window as signals about favourites and volumes.
    void connectSidebar();
    // The window shows its own help; everything else is asked of the controller.
    void performCommand(KVCommand command);
    void showTips();
    void showHelp(KVHelpBrowser::Page page);
    void showAbout();
    void mouseDidEnter();
    void mouseDidExit();
    void fadeMountArea(qreal labelOpacity, qreal offersOpacity);
    // While an image is dragged over the window, the drop area lights up.
    void showDropHighlight(bool shown);
    // Whether a drag with these file names may be dropped on the window.
    static bool acceptsDroppedFiles(const QStringList &fileNames);

    KVSidebarModel *m_sidebarModel;
    KVOutlineView *m_sidebar;
    KVDetailPaneView *m_detailPane;
    KVWindowActions *m_actions = nullptr;
    KVMainToolBar *m_toolBar = nullptr;
    KVHelpPopovers *m_helpPopovers = nullptr;
    QPointer<KVHelpBrowser> m_helpBrowser;
    QSplitter *m_splitter = nullptr;
    QMenu *m_addToFavouritesMenu;
    KVHoverArea *m_outerMountArea = nullptr;
    KVMountAreaView *m_innerMountArea = nullptr;
    QLabel *m_mountVolumeLabel = nullptr;
    std::array<QGraphicsOpacityEffect *, 3> m_mountAreaOpacity{};
    QParallelAnimationGroup *m_mountAreaFade;
    bool m_closeAllowed = false;
};
