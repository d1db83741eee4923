#pragma once

#include "favourites/KVFavouriteFolder.h"

#include <QObject>
#include <QPointer>
#include <QUrl>

#include <memory>

class KVDiskImage;
class KVImageMountSheetController;
class KVMountSheet;
class QMessageBox;
namespace Ui {
class FavouriteMountViews;
}

// Mounts a favourite: asks for its password in a sheet of the main window
// and attaches the image it refers to, under the folder where its volume was
// mounted when it was added, read-only if it was then.
class KVFavouriteMountViewsController : public QObject
{
    Q_OBJECT

public:
    // The sheet is made at once, window-modal on `window`.
    KVFavouriteMountViewsController(KVDiskImage *di, QWidget *window, QObject *parent = nullptr);
    ~KVFavouriteMountViewsController() override;

    KVDiskImage *di() const;
    void setDi(KVDiskImage *di);

    const KVFavouriteItemPtr &favouriteItemToMount() const { return m_favouriteItemToMount; }
    // Takes the favourite when its image file can be found; otherwise shows
    // why not and keeps the one it had.
    void setFavouriteItemToMount(const KVFavouriteItemPtr &item);

    KVMountSheet *mountFavouriteWindow() const { return m_window; }
    // Shows the sheet for the favourite held, if any: at once, or, while the
    // alert about a favourite that could not be found is up, once it has been
    // answered. The sheet would otherwise open over the alert and block it.
    void openSheet();
    void mountFavouriteButtons(const QString &identifier);
    void reset();
    void cleanPasswords();
    void disableButtons();
    void enableButtons();

    // The folder that held the favourite's volume, as a directory URL; empty
    // when the favourite does not know where it was mounted.
    static QUrl mountRoot(const QString &mountPoint);

private:
    void mount();

    KVFavouriteItemPtr m_favouriteItemToMount;
    QPointer<QMessageBox> m_unresolvedAlert;
    KVMountSheet *m_window;
    std::unique_ptr<Ui::FavouriteMountViews> m_ui;
    KVImageMountSheetController *m_mountFlow; // a child
};
