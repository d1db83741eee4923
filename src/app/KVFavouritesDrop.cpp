#include "KVFavouritesDrop.h"

#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"

#include <QMimeData>

#include <algorithm>

namespace {

// Takes the entry at `oldPosition` of `source` to `childIndex` of
// `destination` (which may be the same list). The order of the two steps
// depends on the positions, as it always has: dropped on the destination's
// own row (-1) the entry goes first and the old position is removed
// afterwards, which, within one list, takes out the entry that stood just
// before it and leaves the moved one twice. Users have favourites arranged
// that way, so it stays.
template<typename T>
void moveEntry(QList<T> &source, qsizetype oldPosition, QList<T> &destination, qsizetype childIndex, const T &entry)
{
    if (childIndex == -1) {
        destination.insert(0, entry);
        source.removeAt(oldPosition);
    } else if (oldPosition >= childIndex) {
        source.removeAt(oldPosition);
        destination.insert(std::min(childIndex, destination.size()), entry);
    } else {
        destination.insert(std::min(childIndex, destination.size()), entry);
        source.removeAt(oldPosition);
    }
}

} // namespace

QMimeData *KVFavouritesDrop::mimeData(const KVFavouriteFolderPtr &folder)
{
    auto *data = new QMimeData;
    data->setData(FolderFormat, KVFavouritesArchive::archive(folder));
    return data;
}

QMimeData *KVFavouritesDrop::mimeData(const KVFavouriteItemPtr &item)
{
    auto *data = new QMimeData;
    data->setData(ItemFormat, KVFavouritesArchive::archive(item));
    return data;
}

bool KVFavouritesDrop::validateItemDrop(const QMimeData &data)
{
    return data.hasFormat(ItemFormat);
}

bool KVFavouritesDrop::validateFolderDrop(const QMimeData &data, int childIndex, qsizetype folderCount)
{
    // Compared unsigned, so the section's own row (-1) is out of range.
    return data.hasFormat(FolderFormat) && quint64(qint64(childIndex)) <= quint64(folderCount);
}

bool KVFavouritesDrop::acceptItemDrop(QList<KVFavouriteFolderPtr> &favourites, const QMimeData &data,
                                      const KVFavouriteFolderPtr &folder, int childIndex)
{
    const std::optional<KVFavouritesArchive::ArchivedItem> dragged =
        KVFavouritesArchive::unarchiveItem(data.data(ItemFormat));
    if (!dragged || !folder || childIndex < -1)
        return false;
    const qsizetype sourceIndex = dragged->parent ? kvIndexOfFolder(favourites, *dragged->parent) : -1;
    if (sourceIndex < 0)
        return false;
    QList<KVFavouriteItemPtr> &source = favourites[sourceIndex]->content();
    const qsizetype oldPosition = kvIndexOfItem(source, *dragged->item);
    if (oldPosition < 0)
        return false;
    const KVFavouriteItemPtr item = source.at(oldPosition);
    moveEntry(source, oldPosition, folder->content(), childIndex, item);
    item->setParent(folder);
    return true;
}

bool KVFavouritesDrop::acceptFolderDrop(QList<KVFavouriteFolderPtr> &favourites, const QMimeData &data, int childIndex)
{
    const KVFavouriteFolderPtr dragged = KVFavouritesArchive::unarchiveFolder(data.data(FolderFormat));
    if (!dragged || childIndex < -1)
        return false;
    const qsizetype oldPosition = kvIndexOfFolder(favourites, *dragged);
    if (oldPosition < 0)
        return false;
    const KVFavouriteFolderPtr folder = favourites.at(oldPosition);
    moveEntry(favourites, oldPosition, favourites, childIndex, folder);
    return true;
}
