#include "KVFavouritesController.h"

#include "platform/KVAppNotifications.h"
#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"
#include "KVFavouritesDrop.h"
#include "settings/KVPreferenceKeys.h"
#include "platform/KVSystemLog.h"
#include "platform/KVUserDefaults.h"

#include <QMimeData>

KVFavouritesController::KVFavouritesController(QObject *parent)
    : QObject(parent)
{
}

QList<KVFavouriteFolderPtr> KVFavouritesController::defaultFavourites()
{
    return {KVFavouriteFolder::create(QStringLiteral("Home")), KVFavouriteFolder::create(QStringLiteral("Work"))};
}

void KVFavouritesController::load()
{
    KVUserDefaults &defaults = KVUserDefaults::standard();
    const QByteArray stored = defaults.dataForKey(KVFavouritesKey);
    if (std::optional<QList<KVFavouriteFolderPtr>> favourites = KVFavouritesArchive::unarchiveList(stored)) {
        m_favourites = *favourites;
        return;
    }
    if (defaults.dataForKey(KVUnreadableFavouritesKey) != stored)
        defaults.setObject(stored, KVUnreadableFavouritesKey);
    KVSystemLog::write(QStringLiteral("Error: the favourites could not be read; they are kept under \"%1\"")
                           .arg(KVUnreadableFavouritesKey));
    m_favourites = defaultFavourites();
}

void KVFavouritesController::save()
{
    KVUserDefaults::standard().setObject(KVFavouritesArchive::archive(m_favourites), KVFavouritesKey);
}

void KVFavouritesController::didChange()
{
    Q_EMIT changed();
    KVAppNotifications::instance().postUpdateFavs();
}

void KVFavouritesController::addFavouriteFolder()
{
    m_favourites.append(KVFavouriteFolder::create(tr("Untitled %1").arg(m_favourites.size() + 1)));
    didChange();
}

void KVFavouritesController::addToFavourites(const KVFavouriteFolderPtr &folder, const KVVolumeItemPtr &volume)
{
    if (!volume || volume->type() != KVVolumeKind::DiskImage)
        return;
    if (KVOptionalError error = folder->addChildWithVolumeItem(*volume)) {
        KVSystemLog::write(QStringLiteral("Error: %1").arg(error->debugDescription()));
        Q_EMIT failed(*error);
        return;
    }
    didChange();
}

void KVFavouritesController::deleteFavourite(const Favourite &favourite)
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
    didChange();
}

void KVFavouritesController::deleteDroppedFavourite(const QMimeData &data)
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

void KVFavouritesController::renameFavouriteFolder(const KVFavouriteFolderPtr &folder, const QString &name)
{
    folder->setName(name);
    didChange();
}

bool KVFavouritesController::acceptDrop(const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex)
{
    const bool moved = folder ? KVFavouritesDrop::acceptItemDrop(m_favourites, data, folder, childIndex)
                              : KVFavouritesDrop::acceptFolderDrop(m_favourites, data, childIndex);
    if (moved)
        didChange();
    return moved;
}
