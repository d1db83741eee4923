#include "KVSidebarModel.h"

#include "favourites/KVFavouriteItem.h"
#include "KVFavouritesDrop.h"
#include "model/KVDisplayText.h"

#include <QMimeData>
#include <QSize>

namespace {

template<typename T>
T pointer(const KVSidebarModel::Node &node)
{
    const T *held = std::get_if<T>(&node);
    return held ? *held : T();
}

} // namespace

KVSidebarModel::KVSidebarModel(QObject *parent)
    : QAbstractItemModel(parent)
{
    reload({}, {}, nullptr);
}

int KVSidebarModel::append(Node node, int parent, int row)
{
    m_entries.push_back(Entry{std::move(node), parent, row});
    return int(m_entries.size()) - 1;
}

void KVSidebarModel::reload(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                            const KVVolumeItemPtr &selection)
{
    beginResetModel();
    m_entries.clear();
    m_entries.reserve(size_t(4 + favourites.size() + volumes.size()));

    // Breadth first, so that the children of every node are contiguous.
    const int favouritesEntry = append(FavoritesSection, -1, 0);
    m_mountedEntry = append(MountedSection, -1, 1);

    m_entries[favouritesEntry].firstChild = int(m_entries.size());
    for (const KVFavouriteFolderPtr &folder : favourites)
        append(folder, favouritesEntry, int(m_entries.size()) - m_entries[favouritesEntry].firstChild);
    append(KVOutlineFavouriteMenu(), favouritesEntry, int(favourites.size()));
    m_entries[favouritesEntry].childCount = int(favourites.size()) + 1;

    m_entries[m_mountedEntry].firstChild = int(m_entries.size());
    for (int row = 0; row < volumes.size(); ++row) {
        const int added = append(volumes.at(row), m_mountedEntry, row);
        m_entries[added].drawnSelected = selection && *volumes.at(row) == *selection;
    }
    if (volumes.isEmpty())
        append(KVOutlinePlaceholder(), m_mountedEntry, 0);
    m_entries[m_mountedEntry].childCount = int(std::max<qsizetype>(volumes.size(), 1));

    for (int row = 0; row < favourites.size(); ++row) {
        const int folderEntry = m_entries[favouritesEntry].firstChild + row;
        m_entries[folderEntry].firstChild = int(m_entries.size());
        const QList<KVFavouriteItemPtr> &content = favourites.at(row)->content();
        for (int itemRow = 0; itemRow < content.size(); ++itemRow)
            append(content.at(itemRow), folderEntry, itemRow);
        m_entries[folderEntry].childCount = int(content.size());
    }
    endResetModel();
}

void KVSidebarModel::setFavouriteDropHandler(FavouriteDropHandler handler)
{
    m_favouriteDropHandler = std::move(handler);
}

const KVSidebarModel::Entry *KVSidebarModel::entry(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this || index.internalId() >= m_entries.size())
        return nullptr;
    return &m_entries[index.internalId()];
}

QModelIndex KVSidebarModel::indexOfEntry(int entry) const
{
    return createIndex(m_entries[entry].row, 0, quintptr(entry));
}

const KVSidebarModel::Node &KVSidebarModel::node(const QModelIndex &index) const
{
    static const Node none;
    const Entry *found = entry(index);
    return found ? found->node : none;
}

KVFavouriteFolderPtr KVSidebarModel::folder(const QModelIndex &index) const
{
    return pointer<KVFavouriteFolderPtr>(node(index));
}

KVFavouriteItemPtr KVSidebarModel::favouriteItem(const QModelIndex &index) const
{
    return pointer<KVFavouriteItemPtr>(node(index));
}

KVVolumeItemPtr KVSidebarModel::volume(const QModelIndex &index) const
{
    return pointer<KVVolumeItemPtr>(node(index));
}

QModelIndex KVSidebarModel::sectionIndex(const QString &section) const
{
    if (section == FavoritesSection)
        return indexOfEntry(0);
    if (section == MountedSection)
        return indexOfEntry(m_mountedEntry);
    return {};
}

QModelIndex KVSidebarModel::favouriteMenuIndex() const
{
    const Entry &favourites = m_entries.front();
    return indexOfEntry(favourites.firstChild + favourites.childCount - 1);
}

QModelIndexList KVSidebarModel::expandableIndexes() const
{
    QModelIndexList expandable{indexOfEntry(0), indexOfEntry(m_mountedEntry)};
    const Entry &favourites = m_entries.front();
    for (int row = 0; row < favourites.childCount - 1; ++row)
        expandable.append(indexOfEntry(favourites.firstChild + row));
    return expandable;
}

bool KVSidebarModel::isDrawnSelected(const QModelIndex &index) const
{
    const Entry *found = entry(index);
    return found && found->drawnSelected;
}

void KVSidebarModel::clearDrawnSelection()
{
    const Entry &mounted = m_entries[m_mountedEntry];
    for (int row = 0; row < mounted.childCount; ++row)
        m_entries[mounted.firstChild + row].drawnSelected = false;
    Q_EMIT dataChanged(index(0, 0, indexOfEntry(m_mountedEntry)),
                       index(mounted.childCount - 1, 0, indexOfEntry(m_mountedEntry)));
}

int KVSidebarModel::rowHeight(const Node &node)
{
    if (std::holds_alternative<KVVolumeItemPtr>(node))
        return VolumeRowHeight;
    if (std::holds_alternative<KVFavouriteFolderPtr>(node) || std::holds_alternative<KVFavouriteItemPtr>(node))
        return FavouriteRowHeight;
    if (std::holds_alternative<KVOutlinePlaceholder>(node))
        return PlaceholderRowHeight;
    return RowHeight;
}

QModelIndex KVSidebarModel::index(int row, int column, const QModelIndex &parent) const
{
    int first = 0;
    int count = 2;
    if (parent.isValid()) {
        const Entry *parentEntry = entry(parent);
        if (!parentEntry)
            return {};
        first = parentEntry->firstChild;
        count = parentEntry->childCount;
    }
    if (row < 0 || row >= count || column != 0)
        return {};
    return createIndex(row, 0, quintptr(first + row));
}

QModelIndex KVSidebarModel::parent(const QModelIndex &child) const
{
    const Entry *found = entry(child);
    if (!found || found->parent < 0)
        return {};
    return indexOfEntry(found->parent);
}

int KVSidebarModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return 2;
    const Entry *found = entry(parent);
    return found ? found->childCount : 0;
}

int KVSidebarModel::columnCount(const QModelIndex &) const
{
    return 1;
}

bool KVSidebarModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant KVSidebarModel::data(const QModelIndex &index, int role) const
{
    const Entry *found = entry(index);
    if (!found)
        return {};
    const Node &node = found->node;
    switch (role) {
    case Qt::DisplayRole:
        // What the row shows; editing starts from the name as it is stored.
        if (const KVFavouriteFolderPtr *folder = std::get_if<KVFavouriteFolderPtr>(&node))
            return KVDisplayText::singleLine((*folder)->name());
        if (const KVFavouriteItemPtr *item = std::get_if<KVFavouriteItemPtr>(&node))
            return KVDisplayText::singleLine((*item)->name());
        if (const KVVolumeItemPtr *volume = std::get_if<KVVolumeItemPtr>(&node))
            return KVDisplayText::singleLine((*volume)->name());
        [[fallthrough]];
    case Qt::EditRole:
        if (const QString *section = std::get_if<QString>(&node))
            return *section == FavoritesSection ? tr("Favorites") : tr("Mounted");
        if (const KVFavouriteFolderPtr *folder = std::get_if<KVFavouriteFolderPtr>(&node))
            return (*folder)->name();
        if (const KVFavouriteItemPtr *item = std::get_if<KVFavouriteItemPtr>(&node))
            return (*item)->name();
        if (const KVVolumeItemPtr *volume = std::get_if<KVVolumeItemPtr>(&node))
            return (*volume)->name();
        if (std::holds_alternative<KVOutlineFavouriteMenu>(node))
            return tr("New Folder");
        return tr("No volumes mounted");
    case Qt::ToolTipRole:
        if (const KVVolumeItemPtr *volume = std::get_if<KVVolumeItemPtr>(&node))
            return KVDisplayText::shortened((*volume)->mountPoint(), KVDisplayText::MaximumPathLength);
        return {};
    case Qt::SizeHintRole:
        return QSize(-1, rowHeight(node));
    default:
        return {};
    }
}

bool KVSidebarModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const KVFavouriteFolderPtr renamed = folder(index);
    if (!renamed || role != Qt::EditRole)
        return false;
    Q_EMIT favouriteFolderRenamed(renamed, value.toString());
    return true;
}

Qt::ItemFlags KVSidebarModel::flags(const QModelIndex &index) const
{
    const Entry *found = entry(index);
    if (!found)
        return Qt::NoItemFlags;
    const Node &node = found->node;
    if (const QString *section = std::get_if<QString>(&node))
        return *section == FavoritesSection ? Qt::ItemIsEnabled | Qt::ItemIsDropEnabled : Qt::ItemIsEnabled;
    if (std::holds_alternative<KVFavouriteFolderPtr>(node))
        return Qt::ItemIsEnabled | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled | Qt::ItemIsEditable;
    if (std::holds_alternative<KVFavouriteItemPtr>(node))
        return Qt::ItemIsEnabled | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    if (std::holds_alternative<KVVolumeItemPtr>(node))
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    return Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
}

QStringList KVSidebarModel::mimeTypes() const
{
    return {KVFavouritesDrop::ItemFormat, KVFavouritesDrop::FolderFormat};
}

QMimeData *KVSidebarModel::mimeData(const QModelIndexList &indexes) const
{
    // Only the first dragged row counts.
    if (indexes.isEmpty())
        return nullptr;
    if (const KVFavouriteItemPtr item = favouriteItem(indexes.first()))
        return KVFavouritesDrop::mimeData(item);
    if (const KVFavouriteFolderPtr dragged = folder(indexes.first()))
        return KVFavouritesDrop::mimeData(dragged);
    return nullptr;
}

Qt::DropActions KVSidebarModel::supportedDragActions() const
{
    return Qt::MoveAction;
}

Qt::DropActions KVSidebarModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
}

bool KVSidebarModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                     const QModelIndex &parent) const
{
    if (!data)
        return false;
    if (holds<KVFavouriteFolderPtr>(parent))
        return KVFavouritesDrop::validateItemDrop(*data);
    if (const QString *section = std::get_if<QString>(&node(parent)); section && *section == FavoritesSection)
        return KVFavouritesDrop::validateFolderDrop(*data, row, m_entries.front().childCount - 1);
    return false;
}

bool KVSidebarModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                  const QModelIndex &parent)
{
    if (!m_favouriteDropHandler || !canDropMimeData(data, action, row, column, parent))
        return false;
    return m_favouriteDropHandler(*data, folder(parent), row);
}
