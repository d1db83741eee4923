#pragma once

#include "favourites/KVFavouriteFolder.h"

#include <QString>

class QMimeData;

// Favourites dragged inside the sidebar. A drag carries a keyed archive of one
// favourite under a private format: an item goes into a folder, a folder to
// another place among the folders.
class KVFavouritesDrop
{
public:
    KVFavouritesDrop() = delete;

    static inline const QString ItemFormat = QStringLiteral("kvFavourites");
    static inline const QString FolderFormat = QStringLiteral("kvFavouritesFolder");

    // The drag's data for one favourite; the caller owns it.
    static QMimeData *mimeData(const KVFavouriteFolderPtr &folder);
    static QMimeData *mimeData(const KVFavouriteItemPtr &item);

    // An item may go into a folder anywhere, on the folder's own row (index
    // -1) included.
    static bool validateItemDrop(const QMimeData &data);
    // A folder may go between two folders or after the last one, never onto
    // the section's own row (index -1).
    static bool validateFolderDrop(const QMimeData &data, int childIndex, qsizetype folderCount);

    // Moves the dragged item to `childIndex` of `folder`; false when it is no
    // longer among the favourites.
    static bool acceptItemDrop(QList<KVFavouriteFolderPtr> &favourites, const QMimeData &data,
                               const KVFavouriteFolderPtr &folder, int childIndex);
    // Moves the dragged folder to `childIndex` among the folders.
    static bool acceptFolderDrop(QList<KVFavouriteFolderPtr> &favourites, const QMimeData &data, int childIndex);
};
