#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "KVCommand.h"
#include "KVFavouritesController.h"
#include "KVQuitCoordinator.h"
#include "KVRefreshFailureAlert.h"
#include "KVSheetReturnCode.h"
#include "diskimage/KVDiskImageDelegate.h"
#include "disk/KVDiskDelegate.h"
#include "model/KVVolumeItem.h"
#include "platform/KVRecentDocuments.h"
#include "tools/KVToolPaths.h"

#include <QObject>
#include <QPointer>

#include <memory>

class KVDesktopIntegration;
class KVDetailPaneController;
class KVVolumeCommands;
class KVDisk;
class KVDiskImage;
class KVFavouriteMountViewsController;
class KVImageMountSheetController;
class KVMainWindow;
class KVMountImageSheet;
class KVPreferencesController;
class KVTaskLauncher;
class KVWorkspaceNotifications;
class QMimeData;
class QModelIndex;

// The application's controller: it owns the two engines, the unified list of
// mounted volumes, the favourites and the dialogs, and it decides what happens
// at start-up, when a file is handed over and at quit.
class KVAppDelegate : public QObject, public KVDiskImageDelegate, public KVDiskDelegate
{
    Q_OBJECT

public:
    // What the controller works with; the application passes the system's.
    struct Services
    {
        KVToolPaths tools = KVToolPaths::defaults();
        KVWorkspaceNotifications *workspace = nullptr;
        KVRecentDocuments recentDocuments;
    };

    explicit KVAppDelegate(Services services, QObject *parent = nullptr);
    ~KVAppDelegate() override;

    KVMainWindow *mainWindow() const { return m_mainWindow.get(); }
    KVDiskImage *di() const { return m_di.get(); }
    KVDisk *disks() const { return m_disks.get(); }

    void applicationDidFinishLaunching();
    // The application was started again: bring the window back when it is not shown.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    // A file handed over by the system: only "sparseimage" images are taken.
    bool openFile(const QString &path);

    // Quit. When volumes are to be unmounted first, the answer is Later and
    // terminate() follows once every unmount has reported back.
    using TerminateReply = KVQuitCoordinator::Reply;
    TerminateReply applicationShouldTerminate();
    // The window's close button and the Quit command both come here.
    void requestQuit();

    void showPreferences();
    void windowBecomesKey();
    void reloadMountedList();
    void unmountVolume(const KVVolumeItemPtr &item);
    void unmountAll();
    // A command of the menu bar or the toolbar, on the current selection.
    void performCommand(KVCommand command);

    // What the "Mounted" section shows: the images, then the disks.
    const QList<KVVolumeItemPtr> &unifiedVolumes() const { return m_unifiedVolumes; }
    const KVVolumeItemPtr &currentSelection() const { return m_currentSelection; }
    void setCurrentSelection(const KVVolumeItemPtr &item);
    void updateAfterVolumeChange();

    // Favourites: kept by the favourites controller.
    const QList<KVFavouriteFolderPtr> &favourites() const { return m_favourites->favourites(); }
    QList<KVFavouriteFolderPtr> &favourites() { return m_favourites->favourites(); }
    void addFavouriteFolder() { m_favourites->addFavouriteFolder(); }
    void addToFavourites(const KVFavouriteFolderPtr &folder) { m_favourites->addToFavourites(folder, m_currentSelection); }
    void deleteFavourite(const KVFavouritesController::Favourite &favourite) { m_favourites->deleteFavourite(favourite); }
    void renameFavouriteFolder(const KVFavouriteFolderPtr &folder, const QString &name)
    {
        m_favourites->renameFavouriteFolder(folder, name);
    }
    void updateFavs();

    // The create-image wizard's sheet ended: a finished creation that was
    // mounted goes to the recent documents when the user wants that.
    void createImageWizardDidEnd(KVSheetReturnCode returnCode, const QString &imagePath);

    // Mounting through the sheets. The open panel and a file dropped on the
    // window lead to the image mount sheet, a favourite to its own.
    void mountDiskImage();
    void mountDiskImageSheet(const QString &imagePath);
    void mountDiskImageButtons(const QString &identifier);
    void mountFavourite(const KVFavouriteItemPtr &item);
    KVMountImageSheet *mountImageWindow() const { return m_mountImageWindow; }
    KVFavouriteMountViewsController *favouriteMountViewsController() const
    {
        return m_favouriteMountViewsController.get();
    }

    // A disk image dropped on the main window.
    void performDragOperation(const QString &imagePath);

    // A favourite dragged onto the sidebar's remove button.
    void deleteFavouriteTrash(const QMimeData &data) { m_favourites->deleteDroppedFavourite(data); }

    bool appShouldTerminate() const { return m_quit->isQuitting(); }

    void mountedDiskImagesDidChange(KVDiskImage *engine, const QList<KVVolumeItemPtr> &volumes) override;
    void mountedDiskImagesUpdateDidFail(KVDiskImage *engine, const KVAppError &error) override;
    void mountedDisksDidChange(KVDisk *engine, const QList<KVVolumeItemPtr> &volumes) override;
    void mountedDisksUpdateDidFail(KVDisk *engine, const KVAppError &error) override;

Q_SIGNALS:
    // The application may end now.
    void terminate();
    // The mount sheet is to be shown for this image.
    void mountDiskImageSheetRequested(const QString &imagePath);

private:
    // terminate(), once the desktop has taken the notifications still on their way.
    void terminateOnceNotified();
    void updateAddToFavouritePullDown();
    void updateDetailView();
    void showError(const KVAppError &error);
    bool disksAvailable() const;
    void reloadSidebar();
    void connectSidebarAndMountSheets();
    void mountDiskImageSheetDidEnd();
    void resetDiskImageMountSheet();

    Services m_services;
    std::unique_ptr<KVMainWindow> m_mainWindow;
    std::unique_ptr<KVDiskImage> m_di;
    std::unique_ptr<KVDisk> m_disks;
    std::unique_ptr<KVPreferencesController> m_preferencesController;
    KVQuitCoordinator *m_quit;                // a child
    KVFavouritesController *m_favourites;     // a child
    KVDetailPaneController *m_detailPane;     // a child
    KVVolumeCommands *m_commands;             // a child
    KVRefreshFailureAlert m_refreshFailures;
    KVDesktopIntegration *m_desktop;          // a child: sleep, screen lock, idle, panel, notifications

    QList<KVVolumeItemPtr> m_unifiedVolumes;
    KVVolumeItemPtr m_currentSelection;
    KVMountImageSheet *m_mountImageWindow = nullptr; // a child of the main window
    KVImageMountSheetController *m_mountImageFlow = nullptr; // a child of the sheet
    std::unique_ptr<KVFavouriteMountViewsController> m_favouriteMountViewsController;
    std::unique_ptr<KVTaskLauncher> m_taskLauncher; // the create, encrypt and mount wizards
};
