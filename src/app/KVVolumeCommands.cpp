#include "KVVolumeCommands.h"

#include "KVAlert.h"
#include "KVFavouritesController.h"
#include "KVUnmountController.h"
#include "controls/KVPasswordFieldView.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVFileManager.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "wizards/KVChangePasswordController.h"
#include "wizards/KVResizeController.h"
#include "wizards/KVSensitiveString.h"

#include <QDesktopServices>
#include <QDir>
#include <QUrl>
#include <QWidget>

namespace {

// The password typed into an alert, taken out of its field at once.
std::shared_ptr<KVSensitiveString> takePassword(KVCommandAlert *alert)
{
    auto password = std::make_shared<KVSensitiveString>(alert->passwordField()->text());
    alert->passwordField()->clear();
    return password;
}

// The folder that holds a mount point: an image is attached again under it.
QUrl mountRootOf(const QString &mountPoint)
{
    const QString parent = QDir::cleanPath(mountPoint).section(u'/', 0, -2);
    return QUrl::fromLocalFile(parent.isEmpty() ? QStringLiteral("/") : parent + u'/');
}

} // namespace

struct KVVolumeCommands::CompactJob
{
    QString imagePath;
    bool readOnly = false;
    QUrl mountRoot;
    KVSensitiveString password;
};

KVVolumeCommands::KVVolumeCommands(QWidget *window, KVQuitCoordinator *quit, KVFavouritesController *favourites,
                                   QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_favourites(favourites)
    , m_unmounts(new KVUnmountController(quit, window, this))
    , m_fileManager(std::make_unique<KVFreedesktopFileManager>(
          [](const QString &folder) { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); }))
{
}

KVVolumeCommands::~KVVolumeCommands() = default;

void KVVolumeCommands::setDi(KVDiskImage *di)
{
    m_di = di;
    m_unmounts->setDi(di);
}

void KVVolumeCommands::setDisks(KVDisk *disks)
{
    m_disks = disks;
}

void KVVolumeCommands::setVolumes(const QList<KVVolumeItemPtr> &unifiedVolumes, const KVVolumeItemPtr &currentSelection)
{
    m_unifiedVolumes = unifiedVolumes;
    m_currentSelection = currentSelection;
    // The volume was unmounted elsewhere: its question has no subject any more.
    if (m_alert && !kvContainsVolume(m_unifiedVolumes, *m_alertVolume))
        m_alert->reject();
}

void KVVolumeCommands::setFileManager(std::unique_ptr<KVFileManager> fileManager)
{
    m_fileManager = std::move(fileManager);
}

void KVVolumeCommands::perform(const QString &identifier)
{
    if (!m_currentSelection)
        return;
    static const QHash<QString, void (KVVolumeCommands::*)()> commands{
        {QStringLiteral("changePW"), &KVVolumeCommands::changePassword},
        {QStringLiteral("eraseKey"), &KVVolumeCommands::eraseKeys},
        {QStringLiteral("resize"), &KVVolumeCommands::resize},
        {QStringLiteral("compact"), &KVVolumeCommands::compact},
        {QStringLiteral("decrypt"), &KVVolumeCommands::decrypt},
    };
    if (const auto command = commands.value(identifier))
        (this->*command)();
}

bool KVVolumeCommands::isImage() const
{
    return m_currentSelection && m_currentSelection->type() == KVVolumeKind::DiskImage && m_di;
}

KVCommandAlert *KVVolumeCommands::ask(const KVVolumeItemPtr &item, const QString &objectName,
                                      const KVCommandAlert::Text &text)
{
    if (m_alert)
        return nullptr;
    auto *alert = new KVCommandAlert(text, m_window);
    alert->setObjectName(objectName);
    m_alert = alert;
    m_alertVolume = item;
    connect(alert, &QObject::destroyed, this, [this] { m_alertVolume.reset(); });
    alert->begin();
    return alert;
}

void KVVolumeCommands::showError(const KVAppError &error)
{
    KVAlert::showError(m_window, error);
}

void KVVolumeCommands::changePassword()
{
    if (!m_currentSelection || m_currentSelection->isSystemPartition())
        return;
    if (!m_changePasswordController)
        m_changePasswordController = new KVChangePasswordController(m_window);
    m_changePasswordController->setDi(m_di);
    m_changePasswordController->setDisks(m_disks);
    m_changePasswordController->setCurrentSelection(m_currentSelection);
    m_changePasswordController->open();
}

void KVVolumeCommands::eraseKeys()
{
    if (!isImage())
        return;
    const KVVolumeItemPtr item = m_currentSelection;
    KVCommandAlert *alert =
        ask(item, QStringLiteral("eraseKeyAlert"),
            {QMessageBox::Critical, tr("This will render all the data in this Disk Image inaccessible."),
             tr("Are you sure you want to continue?"), tr("Erase"), false});
    if (!alert)
        return;
    connect(alert, &KVCommandAlert::confirmed, this, [this, item] {
        const QString imagePath = item->location();
        m_unmounts->unmountForCommand(
            item,
            [self = QPointer(this), imagePath] {
                if (!self || !self->m_di)
                    return;
                self->m_di->eraseKeys(imagePath, [self](const KVOptionalError &error) {
                    if (error)
                        KVMainQueue::post(self, [self, error = *error] { self->showError(error); });
                });
            },
            [](const KVAppError &error) {
                KVSystemLog::write(QStringLiteral("Unmount error: %1").arg(error.debugDescription()));
            });
    });
}

void KVVolumeCommands::resize()
{
    if (!isImage())
        return;
    const KVVolumeItemPtr item = m_currentSelection;
    KVCommandAlert *alert =
        ask(item, QStringLiteral("resizeAlert"),
            {QMessageBox::Warning, tr("Enter the password"),
             tr("Please enter the password for the Disk Image to continue the resize process."), tr("Continue"), true});
    if (!alert)
        return;
    connect(alert, &KVCommandAlert::confirmed, this, [this, alert, item] {
        auto password = takePassword(alert);
        m_di->getLimits(item, password->value(),
                        [self = QPointer(this), item, password](const std::optional<QVariantMap> &limits,
                                                                 const KVOptionalError &error) {
                            KVMainQueue::post(self, [self, item, password, limits, error] {
                                if (error)
                                    self->showError(*error);
                                else
                                    self->openResizeController(item, limits.value_or(QVariantMap()), password->value());
                                password->wipe();
                            });
                        });
    });
}

void KVVolumeCommands::openResizeController(const KVVolumeItemPtr &item, const QVariantMap &limits,
                                            const QString &password)
{
    if (!m_resizeController)
        m_resizeController = new KVResizeController(m_window);
    m_resizeController->setDi(m_di);
    m_resizeController->setDictFromLimits(limits);
    m_resizeController->setCurrentSelection(item);
    m_resizeController->setVolumePassword(password);
    m_resizeController->open();
}

void KVVolumeCommands::compact()
{
    if (!isImage())
        return;
    const KVVolumeItemPtr item = m_currentSelection;
    KVCommandAlert *alert =
        ask(item, QStringLiteral("compactAlert"),
            {QMessageBox::Information, tr("Enter the password"),
             tr("This will shrink the Disk Image file on your drive to the smallest possible size."), tr("Compact"),
             true});
    if (!alert)
        return;
    connect(alert, &KVCommandAlert::confirmed, this, [this, alert, item] {
        auto job = std::make_shared<CompactJob>();
        job->imagePath = item->location();
        job->readOnly = item->readOnly();
        job->mountRoot = mountRootOf(item->mountPoint());
        job->password = std::move(*takePassword(alert));
        m_unmounts->unmountForCommand(
            item, [self = QPointer(this), job] {
                if (self)
                    self->compactUnmounted(job);
            },
            [job](const KVAppError &) { job->password.wipe(); });
    });
}

void KVVolumeCommands::compactUnmounted(const std::shared_ptr<CompactJob> &job)
{
    if (!m_di)
        return;
    m_di->compact(job->imagePath, job->password.value(), [self = QPointer(this), job](const KVOptionalError &error) {
        KVMainQueue::post(self, [self, job, error] { self->compactDidEnd(job, error); });
    });
}

void KVVolumeCommands::compactDidEnd(const std::shared_ptr<CompactJob> &job, const KVOptionalError &error)
{
    if (error)
        showError(*error);
    // A password known to be wrong is not tried again: the image stays detached.
    if ((error && error->is(KVAppErrorCode::WrongPassword)) || !m_di) {
        job->password.wipe();
        return;
    }
    m_di->mountDiskImage(job->imagePath, job->password.value(), job->readOnly, job->mountRoot, false,
                         [self = QPointer(this)](const KVOptionalError &attachError) {
                             if (attachError)
                                 KVMainQueue::post(self, [self, error = *attachError] { self->showError(error); });
                         });
    // The engine holds its own copy from here on.
    job->password.wipe();
}

void KVVolumeCommands::decrypt()
{
    if (!m_currentSelection || m_currentSelection->type() != KVVolumeKind::Disk
        || m_currentSelection->isSystemPartition() || !m_disks)
        return;
    const KVVolumeItemPtr item = m_currentSelection;
    KVCommandAlert *alert =
        ask(item, QStringLiteral("decryptAlert"),
            {QMessageBox::Warning, tr("This will decrypt the data on this Disk."),
             tr("The data will be accessible without a password. Are you sure you want to continue?"), tr("Decrypt"),
             true});
    if (!alert)
        return;
    connect(alert, &KVCommandAlert::confirmed, this, [this, alert, item] {
        const auto password = takePassword(alert);
        m_disks->decrypt(item, password->value(), [self = QPointer(this)](const KVOptionalError &error) {
            KVMainQueue::post(self, [self, error] {
                if (error)
                    self->showError(*error);
                else if (self->m_disks)
                    self->m_disks->updateMountedDisksStatus();
            });
        });
        password->wipe();
    });
}

void KVVolumeCommands::renameVolume(const QString &newName)
{
    if (!m_currentSelection || !m_disks || newName.trimmed().isEmpty() || newName == m_currentSelection->name())
        return;
    m_disks->renameVolume(m_currentSelection, newName, [self = QPointer(this)](const KVOptionalError &error) {
        if (error)
            KVMainQueue::post(self, [self, error = *error] { self->showError(error); });
    });
}

void KVVolumeCommands::revealInFinder()
{
    if (m_currentSelection && !m_currentSelection->mountPoint().isEmpty() && m_fileManager)
        m_fileManager->showItem(m_currentSelection->mountPoint());
}

void KVVolumeCommands::unmountCurrentVolume()
{
    if (m_currentSelection)
        m_unmounts->unmountVolume(m_currentSelection);
}

void KVVolumeCommands::unmountAll()
{
    m_unmounts->unmountAll(m_unifiedVolumes);
}

void KVVolumeCommands::unmountVolume(const KVVolumeItemPtr &item)
{
    m_unmounts->unmountVolume(item);
}

void KVVolumeCommands::addToFavourites(const KVFavouriteFolderPtr &folder)
{
    if (folder && m_favourites)
        m_favourites->addToFavourites(folder, m_currentSelection);
}
