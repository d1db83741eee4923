#include "KVAppDelegate.h"

#include "KVAlert.h"
#include "KVAppNotifications.h"
#include "KVFavouriteItem.h"
#include "KVFavouritesArchive.h"
#include "KVMainWindow.h"
#include "KVPreferenceKeys.h"
#include "KVPreferencesController.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QMenu>
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
{
    if (!m_services.workspace)
        m_services.workspace = KVWorkspaceNotifications::shared();
    connect(m_mainWindow.get(), &KVMainWindow::closeRequested, this, &KVAppDelegate::requestQuit);
    connect(m_mainWindow.get(), &KVMainWindow::preferencesRequested, this, &KVAppDelegate::showPreferences);
}

KVAppDelegate::~KVAppDelegate()
{
    // The engines go first: no delegate call may reach a half-destroyed controller.
    m_di.reset();
    m_disks.reset();
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
    m_quit->appShouldTerminate = false;
    m_favourites = getFavourites();

    m_unifiedVolumes.clear();
    m_di = std::make_unique<KVDiskImage>(m_services.tools, m_services.workspace);
    m_di->setDelegate(this);
    m_disks = std::make_unique<KVDisk>(m_services.tools, m_services.workspace);
    m_disks->setDelegate(this);
    reloadMountedList();

    reloadSidebar();
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow *window) {
        if (window)
            windowBecomesKey();
    });
    m_quit->tryToUnmountCount = 0;
    m_quit->tryToUnmountQuantity = 0;
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

void KVAppDelegate::createImageWizardDidEnd(int returnCode, const QString &imagePath)
{
    if (returnCode == SheetFinished && KVPreferencesController::prefSaveOpenRecent()
        && KVPreferencesController::prefMountDiskImageAfterCreation())
        m_services.recentDocuments.noteNewRecentDocumentURL(imagePath);
}

KVAppDelegate::TerminateReply KVAppDelegate::applicationShouldTerminate()
{
    if (!KVPreferencesController::prefAutoUnmountVolumes() || m_unifiedVolumes.isEmpty())
        return TerminateReply::Now;
    if (m_quit->appShouldTerminate)
        return TerminateReply::Later; // already unmounting for a quit
    m_quit->tryToUnmountQuantity = m_unifiedVolumes.size();
    m_quit->appShouldTerminate = true;
    unmountAll();
    return TerminateReply::Later;
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
        KVMainQueue::post([self, error = *error] {
            if (self)
                self->showError(error);
        });
    };
    m_di->updateMountedDiskImages(std::nullopt, showFailure);
    if (disksAvailable())
        m_disks->updateMountedDisks(showFailure);
}

bool KVAppDelegate::forceUnmount() const
{
    if (m_quit->appShouldTerminate)
        return KVPreferencesController::prefAutoUnmountVolumes() && KVPreferencesController::prefForceAutoUnmount();
    return KVPreferencesController::prefForceUnmount();
}

void KVAppDelegate::unmountVolume(const KVVolumeItemPtr &item)
{
    const bool unmountable = item->type() == KVVolumeItem::DiskImageType || item->type() == KVVolumeItem::DiskType;
    if (!unmountable || item->isSystemPartition())
        return;
    const QPointer<KVAppDelegate> self(this);
    // Decided now, on the GUI thread: the completion may come on a worker thread.
    const bool countsForQuit = KVPreferencesController::prefAutoUnmountVolumes();
    m_di->unmountVolume(item, forceUnmount(), [self, countsForQuit, quit = m_quit](const KVOptionalError &error) {
        // Counting for a quit happens right here, on whatever thread reports;
        // a failure counts like a success and is neither logged nor shown.
        if (quit->appShouldTerminate) {
            if (countsForQuit && ++quit->tryToUnmountCount == quit->tryToUnmountQuantity) {
                KVMainQueue::post([self] {
                    if (self)
                        Q_EMIT self->terminate();
                });
            }
            return;
        }
        if (!error)
            return;
        KVSystemLog::write(QStringLiteral("Unmount volume error: %1").arg(error->debugDescription()));
        if (error->localizedFailureReason() == HdiutilEndedAbnormally)
            return;
        KVMainQueue::post([self, error = *error] {
            if (self)
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
    if (!m_currentSelection || m_currentSelection->type() != KVVolumeItem::DiskImageType)
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
