#include "KVAppDelegate.h"

#include "KVAlert.h"
#include "KVDesktopIntegration.h"
#include "KVDetailPaneController.h"
#include "KVFavouriteMountViewsController.h"
#include "KVImageMountSheetController.h"
#include "KVMainWindow.h"
#include "KVMountImageSheet.h"
#include "KVPreferencesController.h"
#include "KVSidebarModel.h"
#include "KVTaskLauncher.h"
#include "KVVolumeCommands.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "favourites/KVFavouriteItem.h"
#include "model/KVDisplayText.h"
#include "platform/KVAppNotifications.h"
#include "platform/KVMainQueue.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferences.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QWindow>

KVAppDelegate::KVAppDelegate(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_mainWindow(std::make_unique<KVMainWindow>())
    , m_quit(new KVQuitCoordinator(this))
    , m_favourites(new KVFavouritesController(this))
    , m_detailPane(new KVDetailPaneController(m_mainWindow.get(), this))
    , m_commands(new KVVolumeCommands(m_mainWindow.get(), m_quit, m_favourites, this))
    , m_refreshFailures(m_mainWindow.get())
    , m_desktop(new KVDesktopIntegration(m_commands, {}, this))
{
    connect(m_favourites, &KVFavouritesController::changed, this, &KVAppDelegate::reloadSidebar);
    connect(m_favourites, &KVFavouritesController::failed, this, &KVAppDelegate::showError);
    connect(m_quit, &KVQuitCoordinator::terminate, this, &KVAppDelegate::terminateOnceNotified);
    // The window shows why the quit waits, and no longer holds it back once
    // it may end: quitting closes every window first.
    connect(m_quit, &KVQuitCoordinator::waitingForChanged, m_mainWindow.get(), &KVMainWindow::showQuitWaitingFor);
    connect(this, &KVAppDelegate::terminate, m_mainWindow.get(), &KVMainWindow::allowClose);
    if (!m_services.workspace)
        m_services.workspace = KVWorkspaceNotifications::shared();
    connect(m_mainWindow.get(), &KVMainWindow::closeRequested, this, &KVAppDelegate::requestQuit);
    m_desktop->followCloseButton(m_mainWindow.get());
    connect(m_desktop, &KVDesktopIntegration::quitRequested, this, &KVAppDelegate::requestQuit);
    connect(m_desktop, &KVDesktopIntegration::showWindowRequested, this,
            [this] { applicationShouldHandleReopen(false); });
    connect(m_mainWindow.get(), &KVMainWindow::preferencesRequested, this, &KVAppDelegate::showPreferences);
    connect(m_mainWindow.get(), &KVMainWindow::commandRequested, this, &KVAppDelegate::performCommand);
    connectSidebarAndMountSheets();
    connect(m_detailPane, &KVDetailPaneController::commandChosen, m_commands, &KVVolumeCommands::perform);
    connect(m_detailPane, &KVDetailPaneController::renameRequested, m_commands, &KVVolumeCommands::renameVolume);
    connect(m_detailPane, &KVDetailPaneController::revealRequested, m_commands, &KVVolumeCommands::revealInFinder);
}

KVAppDelegate::~KVAppDelegate()
{
    // Nothing may reach a half-destroyed controller: the engines stop
    // reporting first, then the windows that send it their signals go.
    m_di.reset();
    m_disks.reset();
    m_favouriteMountViewsController.reset();
    m_preferencesController.reset();
    m_mainWindow.reset();
}

void KVAppDelegate::applicationDidFinishLaunching()
{
    KVUserDefaults::standard().registerDefaults(KVPreferencesController::registeredDefaults());
    connect(&KVAppNotifications::instance(), &KVAppNotifications::updateFavs, this, &KVAppDelegate::updateFavs);
    connect(&KVUserDefaults::standard(), &KVUserDefaults::writeFailed, this, [this](const QString &file) {
        showError(KVAppError(NSCocoaErrorDomain, 0, tr("Your settings cannot be saved"),
                             tr("Korvelle cannot write its settings to %1. Changes to your favourites and "
                                "preferences will be lost when Korvelle quits.")
                                 .arg(file)));
    });
    m_favourites->load();

    m_unifiedVolumes.clear();
    m_di = std::make_unique<KVDiskImage>(m_services.tools, m_services.workspace);
    m_di->setDelegate(this);
    // Without the disk tools the disk engine does not follow mounts either.
    m_disks = std::make_unique<KVDisk>(m_services.tools, disksAvailable() ? m_services.workspace : nullptr);
    m_disks->setDelegate(this);
    m_taskLauncher = std::make_unique<KVTaskLauncher>(m_mainWindow.get(), m_di.get(), m_disks.get(),
                                                      [this](KVSheetReturnCode code, const QString &imagePath) {
                                                          createImageWizardDidEnd(code, imagePath);
                                                      });
    m_commands->setDi(m_di.get());
    m_commands->setDisks(m_disks.get());
    m_desktop->setDisks(m_disks.get());
    m_desktop->start();
    reloadMountedList();

    reloadSidebar();
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow *window) {
        if (window)
            windowBecomesKey();
    });
    updateAddToFavouritePullDown();
    updateDetailView();
}

bool KVAppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (hasVisibleWindows)
        return false;
    m_mainWindow->show();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
    return true;
}

bool KVAppDelegate::openFile(const QString &path)
{
    if (QFileInfo(path).suffix() != u"sparseimage")
        return false;
    Q_EMIT mountDiskImageSheetRequested(QFileInfo(path).absoluteFilePath());
    return true;
}

void KVAppDelegate::createImageWizardDidEnd(KVSheetReturnCode returnCode, const QString &imagePath)
{
    if (returnCode == KVSheetReturnCode::Finished && KVPreferences::prefSaveOpenRecent()
        && KVPreferences::prefMountDiskImageAfterCreation())
        m_services.recentDocuments.noteNewRecentDocumentURL(imagePath);
}

KVAppDelegate::TerminateReply KVAppDelegate::applicationShouldTerminate()
{
    return m_quit->applicationShouldTerminate(KVPreferences::prefAutoUnmountVolumes(), m_unifiedVolumes,
                                              [this] { unmountAll(); });
}

void KVAppDelegate::requestQuit()
{
    if (applicationShouldTerminate() == TerminateReply::Now)
        terminateOnceNotified();
}

void KVAppDelegate::terminateOnceNotified()
{
    // The desktop integration is a child: it cannot call back once this is gone.
    m_desktop->whenNotificationsSent([this] { Q_EMIT terminate(); });
}

void KVAppDelegate::showPreferences()
{
    if (!m_preferencesController)
        m_preferencesController = std::make_unique<KVPreferencesController>(m_mainWindow.get(), m_desktop->services());
    m_preferencesController->showWindow();
}

bool KVAppDelegate::disksAvailable() const
{
    // Encrypted disks need the system's storage report; where it does not
    // exist, the disk features are simply not there, which is no error.
    return QFileInfo(m_services.tools.systemProfiler).isExecutable();
}

void KVAppDelegate::windowBecomesKey()
{
    if (m_disks && disksAvailable())
        m_disks->updateMountedDisksStatus();
}

void KVAppDelegate::reloadMountedList()
{
    const QPointer<KVAppDelegate> self(this);
    auto showFailure = [self](const KVOptionalError &error) {
        if (!error)
            return;
        KVMainQueue::post(self, [self, error = *error] {
            self->m_refreshFailures.show(error);
        });
    };
    m_di->updateMountedDiskImages(std::nullopt, showFailure);
    if (disksAvailable())
        m_disks->updateMountedDisks(showFailure);
}

void KVAppDelegate::unmountVolume(const KVVolumeItemPtr &item)
{
    m_commands->unmountVolume(item);
}

void KVAppDelegate::unmountAll()
{
    m_commands->unmountAll();
}

void KVAppDelegate::setCurrentSelection(const KVVolumeItemPtr &item)
{
    m_currentSelection = item;
    updateDetailView();
}

void KVAppDelegate::updateAfterVolumeChange()
{
    m_unifiedVolumes.clear();
    m_unifiedVolumes.append(m_di->mountedDiskImages());
    m_unifiedVolumes.append(m_disks->mountedDisks());
    if (m_currentSelection && !kvContainsVolume(m_unifiedVolumes, *m_currentSelection))
        m_currentSelection.reset();
    reloadSidebar();
    updateDetailView();
}

void KVAppDelegate::mountedDiskImagesDidChange(KVDiskImage *, const QList<KVVolumeItemPtr> &)
{
    updateAfterVolumeChange();
}

void KVAppDelegate::mountedDiskImagesUpdateDidFail(KVDiskImage *, const KVAppError &error)
{
    m_refreshFailures.show(error);
}

void KVAppDelegate::mountedDisksDidChange(KVDisk *, const QList<KVVolumeItemPtr> &)
{
    updateAfterVolumeChange();
}

void KVAppDelegate::mountedDisksUpdateDidFail(KVDisk *, const KVAppError &error)
{
    m_refreshFailures.show(error);
}

void KVAppDelegate::updateFavs()
{
    m_favourites->save();
    updateAddToFavouritePullDown();
}

void KVAppDelegate::updateAddToFavouritePullDown()
{
    QMenu *menu = m_mainWindow->addToFavouritesMenu();
    menu->clear();
    for (const KVFavouriteFolderPtr &folder : m_favourites->favourites()) {
        QAction *action = menu->addAction(KVDisplayText::inMenu(folder->name()));
        connect(action, &QAction::triggered, this, [this, weakFolder = std::weak_ptr(folder)] {
            if (KVFavouriteFolderPtr target = weakFolder.lock())
                addToFavourites(target);
        });
    }
}

void KVAppDelegate::reloadSidebar()
{
    m_mainWindow->reloadSidebar(m_favourites->favourites(), m_unifiedVolumes, m_currentSelection);
}

void KVAppDelegate::updateDetailView()
{
    m_commands->setVolumes(m_unifiedVolumes, m_currentSelection);
    m_desktop->setVolumes(m_unifiedVolumes);
    m_detailPane->updateDetailView(m_currentSelection);
    m_mainWindow->updateActionState(m_currentSelection, !m_unifiedVolumes.isEmpty());
}

void KVAppDelegate::performCommand(KVCommand command)
{
    // The wizards exist once the engines do, when the application has started.
    const auto task = [this](void (KVTaskLauncher::*start)()) {
        if (m_taskLauncher)
            (m_taskLauncher.get()->*start)();
    };
    switch (command) {
    case KVCommand::CreateDiskImage: task(&KVTaskLauncher::createDiskImage); break;
    case KVCommand::EncryptDisk: task(&KVTaskLauncher::encryptDisk); break;
    case KVCommand::MountDisk: task(&KVTaskLauncher::mountDisk); break;
    case KVCommand::RevealInFinder: m_commands->revealInFinder(); break;
    case KVCommand::ChangePassword: m_commands->changePassword(); break;
    case KVCommand::EraseKeys: m_commands->eraseKeys(); break;
    case KVCommand::Resize: m_commands->resize(); break;
    case KVCommand::Compact: m_commands->compact(); break;
    case KVCommand::Decrypt: m_commands->decrypt(); break;
    case KVCommand::UnmountCurrentVolume: m_commands->unmountCurrentVolume(); break;
    case KVCommand::UnmountAll: m_commands->unmountAll(); break;
    default: break; // the window carries out the others itself
    }
}

void KVAppDelegate::showError(const KVAppError &error)
{
    KVAlert::showError(m_mainWindow.get(), error);
}

void KVAppDelegate::connectSidebarAndMountSheets()
{
    KVMainWindow *window = m_mainWindow.get();
    connect(this, &KVAppDelegate::mountDiskImageSheetRequested, this, &KVAppDelegate::mountDiskImageSheet);
    connect(window, &KVMainWindow::mountDiskImageRequested, this, &KVAppDelegate::mountDiskImage);
    connect(window, &KVMainWindow::addFavouriteFolderRequested, this, &KVAppDelegate::addFavouriteFolder);
    connect(window, &KVMainWindow::fileDropped, this, &KVAppDelegate::performDragOperation);
    connect(window, &KVMainWindow::volumeSelected, this, &KVAppDelegate::setCurrentSelection);
    connect(window, &KVMainWindow::unmountRequested, this, &KVAppDelegate::unmountVolume);
    connect(window, &KVMainWindow::favouriteActivated, this, &KVAppDelegate::mountFavourite);
    connect(window, &KVMainWindow::favouriteItemDeleteRequested, this,
            [this](const KVFavouriteItemPtr &item) { deleteFavourite(item); });
    connect(window, &KVMainWindow::favouriteFolderDeleteRequested, this,
            [this](const KVFavouriteFolderPtr &folder) { deleteFavourite(folder); });
    connect(window, &KVMainWindow::favouriteDroppedOnRemoveButton, m_favourites,
            &KVFavouritesController::deleteDroppedFavourite);
    // Once the name field has closed: a rename rebuilds the sidebar.
    connect(window, &KVMainWindow::favouriteFolderRenamed, m_favourites,
            &KVFavouritesController::renameFavouriteFolder, Qt::QueuedConnection);
    window->sidebarModel()->setFavouriteDropHandler(
        [this](const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex) {
            return m_favourites->acceptDrop(data, folder, childIndex);
        });
}

void KVAppDelegate::performDragOperation(const QString &imagePath)
{
    mountDiskImageSheet(imagePath);
}

void KVAppDelegate::mountDiskImage()
{
    auto *panel = new QFileDialog(m_mainWindow.get(), tr("Choose a Disk Image:"));
    panel->setObjectName(QStringLiteral("mountDiskImagePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setAcceptMode(QFileDialog::AcceptOpen);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setOption(QFileDialog::ReadOnly); // no new folders from here
    panel->setNameFilter(tr("Disk Images (*.dmg *.sparseimage *.sparsebundle)"));
    connect(panel, &QFileDialog::accepted, this, [this, panel] {
        const QList<QUrl> urls = panel->selectedUrls();
        if (urls.isEmpty() || !std::all_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); }))
            return;
        // After the panel has gone: both are sheets of the main window.
        KVMainQueue::post(this, [this, path = urls.first().toLocalFile()] { mountDiskImageSheet(path); });
    });
    panel->open();
}

void KVAppDelegate::mountDiskImageSheet(const QString &imagePath)
{
    if (!m_mountImageWindow) {
        m_mountImageWindow = new KVMountImageSheet(m_mainWindow.get());
        // This sheet ends as a success even after an alert.
        m_mountImageFlow = new KVImageMountSheetController(m_mountImageWindow, KVSheetReturnCode::Succeeded,
                                                           m_mountImageWindow);
        connect(m_mountImageWindow, &KVMountSheet::buttonClicked, this, &KVAppDelegate::mountDiskImageButtons);
        connect(m_mountImageWindow, &QDialog::finished, this, &KVAppDelegate::mountDiskImageSheetDidEnd);
    }
    m_mountImageWindow->setImagePath(imagePath);
    m_mountImageWindow->open();
    m_mountImageWindow->focusPassword();
}

void KVAppDelegate::mountDiskImageButtons(const QString &identifier)
{
    if (identifier == u"cancel") {
        m_mountImageWindow->endSheet(KVSheetReturnCode::Cancelled);
        return;
    }
    if (identifier != u"mount")
        return;
    m_mountImageFlow->setDi(m_di.get());
    m_mountImageFlow->mount({m_mountImageWindow->imagePath(), m_mountImageWindow->readOnly(), m_mountImageWindow->mountRoot(),
                             KVPreferences::prefOpenFinderAfterMount()});
}

void KVAppDelegate::mountDiskImageSheetDidEnd()
{
    resetDiskImageMountSheet();
    // Also after a cancel: the image was opened, if not mounted.
    if (KVPreferences::prefSaveOpenRecent())
        m_services.recentDocuments.noteNewRecentDocumentURL(m_mountImageWindow->imagePath());
}

void KVAppDelegate::resetDiskImageMountSheet()
{
    m_mountImageWindow->reset();
}

void KVAppDelegate::mountFavourite(const KVFavouriteItemPtr &item)
{
    if (!item || item->type() != KVVolumeKind::DiskImage)
        return;
    if (!m_favouriteMountViewsController)
        m_favouriteMountViewsController =
            std::make_unique<KVFavouriteMountViewsController>(m_di.get(), m_mainWindow.get());
    m_favouriteMountViewsController->setDi(m_di.get());
    m_favouriteMountViewsController->setFavouriteItemToMount(item);
    // A favourite whose file was not found keeps the one chosen before, if any.
    m_favouriteMountViewsController->openSheet();
}
