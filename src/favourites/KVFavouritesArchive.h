#pragma once

#include "favourites/KVFavouriteFolder.h"

#include <QByteArray>

#include <optional>

// The favourites as keyed archives: the whole list for the user defaults, and a
// single folder or item for a drag inside the sidebar. Identity is kept: after
// reading, each item's parent is the very folder that lists it.
class KVFavouritesArchive
{
public:
    static QByteArray archive(const QList<KVFavouriteFolderPtr> &favourites);
    static QByteArray archive(const KVFavouriteFolderPtr &folder);
    static QByteArray archive(const KVFavouriteItemPtr &item);

    // Nothing when the data is not a readable archive of favourites.
    static std::optional<QList<KVFavouriteFolderPtr>> unarchiveList(const QByteArray &data);
    static KVFavouriteFolderPtr unarchiveFolder(const QByteArray &data);
    // An item read from a drag, with the folder it came from, which the item
    // refers to and which must live as long as the item is used.
    struct ArchivedItem
    {
        KVFavouriteItemPtr item;
        KVFavouriteFolderPtr parent;
    };
    static std::optional<ArchivedItem> unarchiveItem(const QByteArray &data);
};
