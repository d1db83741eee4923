#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QObject>

#include <variant>

class QMimeData;

// The user's favourite folders and the images in them: read from the settings
// at start-up, changed by the sidebar's requests, and written back whenever
// "updateFavs" is posted. The window is told about changes through changed(),
// failures through failed(); this class never touches a widget.
class KVFavouritesController : public QObject
{
    Q_OBJECT

public:
    using Favourite = std::variant<KVFavouriteFolderPtr, KVFavouriteItemPtr>;

    explicit KVFavouritesController(QObject *parent = nullptr);

    // The folders a new user starts with.
    static QList<KVFavouriteFolderPtr> defaultFavourites();

    // Reads the settings. Unreadable favourites are kept aside under their own
    // key, never lost, and the defaults are used instead.
    void load();
    // Writes the favourites to the settings.
    void save();

    const QList<KVFavouriteFolderPtr> &favourites() const { return m_favourites; }
    QList<KVFavouriteFolderPtr> &favourites() { return m_favourites; }

    void addFavouriteFolder();
    // Only disk images can be added; anything else is silently ignored.
    void addToFavourites(const KVFavouriteFolderPtr &folder, const KVVolumeItemPtr &volume);
    void deleteFavourite(const Favourite &favourite);
    // A favourite dragged onto the remove button.
    void deleteDroppedFavourite(const QMimeData &data);
    void renameFavouriteFolder(const KVFavouriteFolderPtr &folder, const QString &name);
    // A drop inside the sidebar: an item into `folder`, or a folder among the
    // folders when `folder` is null.
    bool acceptDrop(const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex);

Q_SIGNALS:
    void changed();
    void failed(const KVAppError &error);

private:
    void didChange();

    QList<KVFavouriteFolderPtr> m_favourites;
};
