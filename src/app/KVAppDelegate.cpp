#include "KVAppDelegate.h"

#include "KVAlert.h"
#include "KVAppNotifications.h"
#include "KVFavouriteItem.h"
#include "KVFavouriteMountViewsController.h"
#include "KVFavouritesArchive.h"
#include "KVFavouritesDrop.h"
#include "KVMainWindow.h"
#include "KVMountAreaView.h"
#include "KVMountImageSheet.h"
#include "KVOutlineView.h"
#include "KVPreferenceKeys.h"
#include "KVPreferencesController.h"
#include "KVSidebarModel.h"
#include "controls/KVColors.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QWindow>

namespace {

const QString HdiutilEndedAbnormally = QStringLiteral("hdiutil ended abnormally.");

QList<KVFavouriteFolderPtr> defaultFavourites()
{
    return {KVFavouriteFolder::create(QStringLiteral("Home")), KVFavouriteFolder::create(QStringLiteral("Work"))};
}

} // namespace

KVAppDelegate::KVAppDelegate(Services services, QObject *parent)
    : QObject(parent)
    , m_services(std::move(services))
    , m_mainWindow(std::make_unique<KVMainWindow>())
    , m_quit(new KVQuitCoordinator(this))
{
    connect(m_quit, &KVQuitCoordinator::terminate, this, &KVAppDelegate::terminate);
    // The window shows why the quit waits, and no longer holds it back once
    // it may end: quitting closes every window first.
    connect(m_quit, &KVQuitCoordinator::waitingForChanged, m_mainWindow.get(), &KVMainWindow::showQuitWaitingFor);
    connect(this, &KVAppDelegate::terminate, m_mainWindow.get(), &KVMainWindow::allowClose);
    if (!m_services.workspace)
        m_services.workspace = KVWorkspaceNotifications::shared();
    connect(m_mainWindow.get(), &KVMainWindow::closeRequested, this, &KVAppDelegate::requestQuit);
    connect(m_mainWindow.get(), &KVMainWindow::preferencesRequested, this, &KVAppDelegate::showPreferences);
    connectSidebarAndMountSheets();
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

QVariantMap KVAppDelegate::registeredDefaults()
{
    return {
        {KVAnimationDurationMultiplierKey, 1.0},
        {KVShowWelcomeHelpKey, true},
        {KVAutoUnmountVolumesKey, false},
        {KVForceAutoUnmountKey, false},
        {KVForceUnmountKey, false},
        {KVMountDiskImageAfterCreationKey, true},
        {KVOpenFinderAfterMountKey, false},
        {KVSaveOpenRecentKey, false},
        {KVFavouritesKey, KVFavouritesArchive::archive(defaultFavourites())},
    };
}

void KVAppDelegate::applicationDidFinishLaunching()
{
    KVUserDefaults::standard().registerDefaults(registeredDefaults());
    connect(&KVAppNotifications::instance(), &KVAppNotifications::updateFavs, this, &KVAppDelegate::updateFavs);
    connect(&KVUserDefaults::standard(), &KVUserDefaults::writeFailed, this, [this](const QString &file) {
        showError(KVAppError(NSCocoaErrorDomain, 0, tr("Your settings cannot be saved"),
                             tr("Korvelle cannot write its settings to %1. Changes to your favourites and "
                                "preferences will be lost when Korvelle quits.")
                                 .arg(file)));
    });
    m_favourites = getFavourites();

    m_unifiedVolumes.clear();
    m_di = std::make_unique<KVDiskImage>(m_services.tools, m_services.workspace);
    m_di->setDelegate(this);
    // Without the disk tools the disk engine does not follow mounts either.
    m_disks = std::make_unique<KVDisk>(m_services.tools, disksAvailable() ? m_services.workspace : nullptr);
    m_disks->setDelegate(this);
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
    m_mountImagePath = QFileInfo(path).absoluteFilePath();
    Q_EMIT mountDiskImageSheetRequested();
    return true;
}

void KVAppDelegate::createImageWizardDidEnd(KVSheetReturnCode returnCode, const QString &imagePath)
{
    if (returnCode == KVSheetReturnCode::Finished && KVPreferencesController::prefSaveOpenRecent()
        && KVPreferencesController::prefMountDiskImageAfterCreation())
        m_services.recentDocuments.noteNewRecentDocumentURL(imagePath);
}

KVAppDelegate::TerminateReply KVAppDelegate::applicationShouldTerminate()
{
    return m_quit->applicationShouldTerminate(KVPreferencesController::prefAutoUnmountVolumes(), m_unifiedVolumes,
                                              [this] { unmountAll(); });
}

void KVAppDelegate::requestQuit()
{
    if (applicationShouldTerminate() == TerminateReply::Now)
        Q_EMIT terminate();
}

void KVAppDelegate::showPreferences()
{
    if (!m_preferencesController)
        m_preferencesController = std::make_unique<KVPreferencesController>(m_mainWindow.get());
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
            self->showError(error);
        });
    };
    m_di->updateMountedDiskImages(std::nullopt, showFailure);
    if (disksAvailable())
        m_disks->updateMountedDisks(showFailure);
}

bool KVAppDelegate::forceUnmount() const
{
    if (m_quit->isQuitting())
        return KVPreferencesController::prefAutoUnmountVolumes() && KVPreferencesController::prefForceAutoUnmount();
    return KVPreferencesController::prefForceUnmount();
}

void KVAppDelegate::unmountVolume(const KVVolumeItemPtr &item)
{
    const bool unmountable = item->type() == KVVolumeKind::DiskImage || item->type() == KVVolumeKind::Disk;
    if (!unmountable || item->isSystemPartition())
        return;
    const QPointer<KVAppDelegate> self(this);
    // Decided now, on the GUI thread: the completion may come on a worker thread.
    const KVQuitCoordinator::Report reportToQuit =
        m_quit->reportFor(item->name(), KVPreferencesController::prefAutoUnmountVolumes());
    m_di->unmountVolume(item, forceUnmount(), [self, reportToQuit](const KVOptionalError &error) {
        // During a quit a failure counts like a success and is neither logged nor shown.
        if (reportToQuit())
            return;
        if (!error)
            return;
        KVSystemLog::write(QStringLiteral("Unmount volume error: %1").arg(error->debugDescription()));
        if (error->localizedFailureReason() == HdiutilEndedAbnormally)
            return;
        KVMainQueue::post(self, [self, error = *error] {
            self->showError(error);
        });
    });
}

void KVAppDelegate::unmountAll()
{
    // A copy: nothing may change the list while it is walked.
    const QList<KVVolumeItemPtr> volumes = m_unifiedVolumes;
    for (const KVVolumeItemPtr &item : volumes)
        unmountVolume(item);
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
    showError(error);
}

void KVAppDelegate::mountedDisksDidChange(KVDisk *, const QList<KVVolumeItemPtr> &)
{
    updateAfterVolumeChange();
}

void KVAppDelegate::mountedDisksUpdateDidFail(KVDisk *, const KVAppError &error)
{
    showError(error);
}

QList<KVFavouriteFolderPtr> KVAppDelegate::getFavourites() const
{
    KVUserDefaults &defaults = KVUserDefaults::standard();
    const QByteArray stored = defaults.dataForKey(KVFavouritesKey);
    if (std::optional<QList<KVFavouriteFolderPtr>> favourites = KVFavouritesArchive::unarchiveList(stored))
        return *favourites;
    // Never lose what the user had: keep the bytes aside and start afresh.
    if (defaults.dataForKey(KVUnreadableFavouritesKey) != stored)
        defaults.setObject(stored, KVUnreadableFavouritesKey);
    KVSystemLog::write(QStringLiteral("Error: the favourites could not be read; they are kept under \"%1\"")
                           .arg(KVUnreadableFavouritesKey));
    return defaultFavourites();
}

void KVAppDelegate::updateFavs()
{
    KVUserDefaults::standard().setObject(KVFavouritesArchive::archive(m_favourites), KVFavouritesKey);
    updateAddToFavouritePullDown();
}

void KVAppDelegate::addFavouriteFolder()
{
    m_favourites.append(KVFavouriteFolder::create(QStringLiteral("Untitled %1").arg(m_favourites.size() + 1)));
    reloadSidebar();
    KVAppNotifications::instance().postUpdateFavs();
}

void KVAppDelegate::addToFavourites(const KVFavouriteFolderPtr &folder)
{
    if (!m_currentSelection || m_currentSelection->type() != KVVolumeKind::DiskImage)
        return;
    if (KVOptionalError error = folder->addChildWithVolumeItem(*m_currentSelection)) {
        KVSystemLog::write(QStringLiteral("Error: %1").arg(error->debugDescription()));
        showError(*error);
        return;
    }
    reloadSidebar();
    KVAppNotifications::instance().postUpdateFavs();
}

void KVAppDelegate::deleteFavourite(const std::variant<KVFavouriteFolderPtr, KVFavouriteItemPtr> &favourite)
{
    if (const auto *item = std::get_if<KVFavouriteItemPtr>(&favourite); item && *item) {
        const KVFavouriteFolderPtr parent = (*item)->parent();
        const qsizetype folderIndex = parent ? kvIndexOfFolder(m_favourites, *parent) : -1;
        QList<KVFavouriteItemPtr> *content = folderIndex >= 0 ? &m_favourites[folderIndex]->content() : nullptr;
        const qsizetype itemIndex = content ? kvIndexOfItem(*content, **item) : -1;
        if (itemIndex < 0)
            return;
        content->removeAt(itemIndex);
    } else if (const auto *folder = std::get_if<KVFavouriteFolderPtr>(&favourite); folder && *folder) {
        const qsizetype folderIndex = kvIndexOfFolder(m_favourites, **folder);
        if (folderIndex < 0)
            return;
        m_favourites.removeAt(folderIndex);
    }
    reloadSidebar();
    KVAppNotifications::instance().postUpdateFavs();
}

void KVAppDelegate::renameFavouriteFolder(const KVFavouriteFolderPtr &folder, const QString &name)
{
    folder->setName(name);
    reloadSidebar();
    KVAppNotifications::instance().postUpdateFavs();
}

void KVAppDelegate::updateAddToFavouritePullDown()
{
    QMenu *menu = m_mainWindow->addToFavouritesMenu();
    menu->clear();
    for (const KVFavouriteFolderPtr &folder : std::as_const(m_favourites)) {
        QAction *action = menu->addAction(folder->name());
        connect(action, &QAction::triggered, this, [this, weakFolder = std::weak_ptr(folder)] {
            if (KVFavouriteFolderPtr target = weakFolder.lock())
                addToFavourites(target);
        });
    }
}

void KVAppDelegate::reloadSidebar()
{
    m_mainWindow->reloadSidebar(m_favourites, m_unifiedVolumes, m_currentSelection);
}

void KVAppDelegate::updateDetailView()
{
    m_mainWindow->showDetails(m_currentSelection);
}

void KVAppDelegate::showError(const KVAppError &error)
{
    KVAlert::showError(m_mainWindow.get(), error);
}

void KVAppDelegate::connectSidebarAndMountSheets()
{
    KVMainWindow *window = m_mainWindow.get();
    KVOutlineView *outline = window->sidebar();
    KVSidebarModel *model = window->sidebarModel();
    connect(this, &KVAppDelegate::mountDiskImageSheetRequested, this, &KVAppDelegate::mountDiskImageSheet);
    connect(window, &KVMainWindow::mountDiskImageRequested, this, &KVAppDelegate::mountDiskImage);
    connect(window, &KVMainWindow::addFavouriteFolderRequested, this, &KVAppDelegate::addFavouriteFolder);
    connect(window, &KVMainWindow::draggingEntered, this, &KVAppDelegate::draggingEntered);
    connect(window, &KVMainWindow::draggingExited, this, &KVAppDelegate::draggingExited);
    connect(window, &KVMainWindow::performDragOperation, this, &KVAppDelegate::performDragOperation);
    connect(outline, &KVOutlineView::unmountRequested, this, &KVAppDelegate::unmountFromOutlineView);
    connect(outline, &KVOutlineView::favouriteActivated, this,
            [this, model](const QModelIndex &index) { mountFavourite(model->favouriteItem(index)); });
    connect(outline, &KVOutlineView::deleteRequested, this, &KVAppDelegate::deleteFavouriteContext);
    connect(outline, &KVOutlineView::favouriteDroppedOnRemoveButton, this, &KVAppDelegate::deleteFavouriteTrash);
    connect(outline->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &KVAppDelegate::outlineViewSelectionDidChange);
    // Once the name field has closed: a rename rebuilds the sidebar.
    connect(model, &KVSidebarModel::favouriteFolderRenamed, this, &KVAppDelegate::renameFavouriteFolder,
            Qt::QueuedConnection);
    model->setFavouriteDropHandler([this](const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex) {
        return acceptFavouriteDrop(data, folder, childIndex);
    });
}

void KVAppDelegate::outlineViewSelectionDidChange()
{
    // The row drawn selected since the last rebuild gives way to the user's choice.
    KVSidebarModel *model = m_mainWindow->sidebarModel();
    model->clearDrawnSelection();
    const QModelIndexList selected = m_mainWindow->sidebar()->selectionModel()->selectedRows();
    setCurrentSelection(selected.isEmpty() ? nullptr : model->volume(selected.first()));
}

void KVAppDelegate::unmountFromOutlineView(const QModelIndex &index)
{
    if (const KVVolumeItemPtr volume = m_mainWindow->sidebarModel()->volume(index))
        unmountVolume(volume);
}

bool KVAppDelegate::acceptFavouriteDrop(const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex)
{
    const bool moved = folder ? KVFavouritesDrop::acceptItemDrop(m_favourites, data, folder, childIndex)
                              : KVFavouritesDrop::acceptFolderDrop(m_favourites, data, childIndex);
    if (!moved)
        return false;
    reloadSidebar();
    KVAppNotifications::instance().postUpdateFavs();
    return true;
}

void KVAppDelegate::deleteFavouriteTrash(const QMimeData &data)
{
    if (data.hasFormat(KVFavouritesDrop::ItemFormat)) {
        // The archived folder must live while the item is looked up by it.
        if (const auto archived = KVFavouritesArchive::unarchiveItem(data.data(KVFavouritesDrop::ItemFormat)))
            deleteFavourite(archived->item);
    } else if (data.hasFormat(KVFavouritesDrop::FolderFormat)) {
        if (const KVFavouriteFolderPtr folder =
                KVFavouritesArchive::unarchiveFolder(data.data(KVFavouritesDrop::FolderFormat)))
            deleteFavourite(folder);
    }
}

void KVAppDelegate::deleteFavouriteContext(const QModelIndex &index)
{
    const KVSidebarModel *model = m_mainWindow->sidebarModel();
    if (const KVFavouriteItemPtr item = model->favouriteItem(index))
        deleteFavourite(item);
    else if (const KVFavouriteFolderPtr folder = model->folder(index))
        deleteFavourite(folder);
}

void KVAppDelegate::draggingEntered()
{
    m_mainWindow->innerMountArea()->setActive(true);
    m_mainWindow->setMountVolumeLabelColour(KVColors::kvWhiteText());
}

void KVAppDelegate::draggingExited()
{
    m_mainWindow->innerMountArea()->setActive(false);
    m_mainWindow->setMountVolumeLabelColour(KVColors::kvLightGreyText());
}

void KVAppDelegate::performDragOperation(const QString &fileName)
{
    m_mountImagePath = QFileInfo(fileName).absoluteFilePath();
    mountDiskImageSheet();
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
        m_mountImagePath = urls.first().toLocalFile();
        // After the panel has gone: both are sheets of the main window.
        KVMainQueue::post(this, [this] { mountDiskImageSheet(); });
    });
    panel->open();
}

void KVAppDelegate::mountDiskImageSheet()
{
    if (!m_mountImageWindow) {
        m_mountImageWindow = new KVMountImageSheet(m_mainWindow.get());
        connect(m_mountImageWindow, &KVMountSheet::buttonClicked, this, &KVAppDelegate::mountDiskImageButtons);
        connect(m_mountImageWindow, &QDialog::finished, this, &KVAppDelegate::mountDiskImageSheetDidEnd);
    }
    m_mountImageWindow->setImagePath(m_mountImagePath);
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
    m_mountImageWindow->disableButtons();
    m_di->mountDiskImage(m_mountImagePath, m_mountImageWindow->password(), m_mountImageWindow->readOnly(),
                         m_mountImageWindow->mountRoot(), KVPreferencesController::prefOpenFinderAfterMount(),
                         [self = QPointer(this)](const KVOptionalError &error) {
                             KVMainQueue::post(self, [self, error] {
                                 self->mountDiskImageDidEnd(error);
                             });
                         });
}

void KVAppDelegate::mountDiskImageDidEnd(const KVOptionalError &error)
{
    if (error && KVMountSheet::showsInSheet(*error)) {
        m_mountImageWindow->showErrorNotification(error->localizedFailureReason());
        m_mountImageWindow->enableButtons();
        return;
    }
    if (error) {
        KVSystemLog::write(QStringLiteral("Error: %1").arg(error->debugDescription()));
        showError(*error);
    }
    m_mountImageWindow->endSheet(KVSheetReturnCode::Succeeded);
}

void KVAppDelegate::mountDiskImageSheetDidEnd()
{
    resetDiskImageMountSheet();
    // Also after a cancel: the image was opened, if not mounted.
    if (KVPreferencesController::prefSaveOpenRecent())
        m_services.recentDocuments.noteNewRecentDocumentURL(m_mountImagePath);
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
    if (m_favouriteMountViewsController->favouriteItemToMount())
        m_favouriteMountViewsController->mountFavouriteWindow()->open();
}
