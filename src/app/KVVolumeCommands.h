#pragma once

#include "KVCommandAlert.h"
#include "favourites/KVFavouriteFolder.h"
#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QObject>
#include <QPointer>

#include <memory>

class KVChangePasswordController;
class KVDisk;
class KVDiskImage;
class KVFavouritesController;
class KVFileManager;
class KVQuitCoordinator;
class KVResizeController;
class KVUnmountController;
class QWidget;

// The commands on the selected volume: each one's question to the user,
// its engine calls in order and what its failures show. Alerts and dialogs
// are sheets of the main window; every engine error ends in an alert built
// from it. Passwords typed into an alert are taken out of the field at once
// and wiped when the command no longer needs them.
//
// The shell keeps it told of the listed volumes and the selection. A
// command acts on the volume that was selected when it was asked; when that
// volume leaves the list while its alert is open, the alert closes as if
// cancelled.
class KVVolumeCommands : public QObject
{
    Q_OBJECT

public:
    KVVolumeCommands(QWidget *window, KVQuitCoordinator *quit, KVFavouritesController *favourites,
                     QObject *parent = nullptr);
    ~KVVolumeCommands() override;

    void setDi(KVDiskImage *di);
    void setDisks(KVDisk *disks);
    void setVolumes(const QList<KVVolumeItemPtr> &unifiedVolumes, const KVVolumeItemPtr &currentSelection);
    const KVVolumeItemPtr &currentSelection() const { return m_currentSelection; }

    // The desktop's file manager by default.
    void setFileManager(std::unique_ptr<KVFileManager> fileManager);

    KVUnmountController *unmounts() const { return m_unmounts; }
    // Made on first use.
    KVChangePasswordController *changePasswordController() const { return m_changePasswordController; }
    KVResizeController *resizeController() const { return m_resizeController; }

public Q_SLOTS:
    // A button of the action menu, by its identifier: "changePW", "eraseKey",
    // "resize", "compact", "decrypt". Nothing without a selection.
    void perform(const QString &identifier);

    void changePassword();
    void eraseKeys();
    void resize();
    void compact();
    void decrypt();
    // Nothing when the name is blank or the volume's own.
    void renameVolume(const QString &newName);
    void revealInFinder();
    void unmountCurrentVolume();
    void unmountAll();
    void unmountVolume(const KVVolumeItemPtr &item);
    void addToFavourites(const KVFavouriteFolderPtr &folder);

private:
    struct CompactJob;

    // The alert of a command on `item`, or null while another is open.
    KVCommandAlert *ask(const KVVolumeItemPtr &item, const QString &objectName, const KVCommandAlert::Text &text);
    void showError(const KVAppError &error);
    void openResizeController(const KVVolumeItemPtr &item, const QVariantMap &limits, const QString &password);
    void compactUnmounted(const std::shared_ptr<CompactJob> &job);
    void compactDidEnd(const std::shared_ptr<CompactJob> &job, const KVOptionalError &error);
    bool isImage() const;

    QPointer<QWidget> m_window;
    QPointer<KVDiskImage> m_di;
    QPointer<KVDisk> m_disks;
    KVFavouritesController *m_favourites;
    KVUnmountController *m_unmounts; // a child
    std::unique_ptr<KVFileManager> m_fileManager;
    QList<KVVolumeItemPtr> m_unifiedVolumes;
    KVVolumeItemPtr m_currentSelection;
    QPointer<KVCommandAlert> m_alert;
    KVVolumeItemPtr m_alertVolume;
    KVChangePasswordController *m_changePasswordController = nullptr; // a child of the window
    KVResizeController *m_resizeController = nullptr;                 // a child of the window
};
