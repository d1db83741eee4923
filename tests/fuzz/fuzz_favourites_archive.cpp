// The favourites archive as the settings keep it and a drag carries it: read
// as a list, a folder and an item. A list that was read must be written and
// read back to as many folders.

#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    (void)KVFavouritesArchive::unarchiveFolder(input);
    (void)KVFavouritesArchive::unarchiveItem(input);
    const std::optional<QList<KVFavouriteFolderPtr>> list = KVFavouritesArchive::unarchiveList(input);
    if (!list)
        return 0;
    for (const KVFavouriteFolderPtr &folder : *list) {
        for (const KVFavouriteItemPtr &item : folder->content()) {
            if (item->name().contains(QChar(0)) || item->mountPoint().contains(QChar(0)))
                __builtin_trap();
        }
    }
    const std::optional<QList<KVFavouriteFolderPtr>> again =
        KVFavouritesArchive::unarchiveList(KVFavouritesArchive::archive(*list));
    if (!again || again->size() != list->size())
        __builtin_trap();
    return 0;
}
