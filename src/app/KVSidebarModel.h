#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "model/KVVolumeItem.h"

#include <QAbstractItemModel>

#include <functional>
#include <variant>
#include <vector>

// The last row of the "Favorites" section: adds folders, and takes favourites
// dragged onto its remove button.
struct KVOutlineFavouriteMenu
{
};

// The one row of an empty "Mounted" section.
struct KVOutlinePlaceholder
{
};

// The sidebar's tree: the section "Favorites" with the favourite folders and
// their images, then the favourites menu row; the section "Mounted" with every
// mounted volume, or a placeholder when there is none.
//
// The model shows a snapshot and is rebuilt as a whole after every change of
// either list (the engines report often, so a rebuild is cheap: the nodes are
// one flat array, and text is only made for rows that are painted). Only
// volume rows can be selected. The volume equal to the controller's selection
// is drawn selected after a rebuild, since the view's own selection does not
// survive it.
class KVSidebarModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    // The sections' identities, in English; the titles shown are their translations.
    static inline const QString FavoritesSection = QStringLiteral("Favorites");
    static inline const QString MountedSection = QStringLiteral("Mounted");

    using Node = std::variant<QString, KVFavouriteFolderPtr, KVFavouriteItemPtr, KVOutlineFavouriteMenu,
                              KVOutlinePlaceholder, KVVolumeItemPtr>;

    // Row heights, in points.
    static constexpr int VolumeRowHeight = 44;
    static constexpr int FavouriteRowHeight = 24;
    static constexpr int PlaceholderRowHeight = 140;
    static constexpr int RowHeight = 30;

    // A favourite dropped into `folder` (or among the folders when it is
    // null) at `childIndex`: the owner of the list moves it and answers
    // whether it did.
    using FavouriteDropHandler =
        std::function<bool(const QMimeData &data, const KVFavouriteFolderPtr &folder, int childIndex)>;

    explicit KVSidebarModel(QObject *parent = nullptr);

    void reload(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                const KVVolumeItemPtr &selection);
    void setFavouriteDropHandler(FavouriteDropHandler handler);

    const Node &node(const QModelIndex &index) const;
    template<typename T>
    bool holds(const QModelIndex &index) const
    {
        return index.isValid() && std::holds_alternative<T>(node(index));
    }
    bool isSection(const QModelIndex &index) const { return holds<QString>(index); }
    KVFavouriteFolderPtr folder(const QModelIndex &index) const;
    KVFavouriteItemPtr favouriteItem(const QModelIndex &index) const;
    KVVolumeItemPtr volume(const QModelIndex &index) const;

    QModelIndex sectionIndex(const QString &section) const;
    QModelIndex favouriteMenuIndex() const;
    // Every node that can be expanded: the sections and the folders.
    QModelIndexList expandableIndexes() const;

    // Whether the row is drawn selected because it showed the controller's
    // selection when the model was rebuilt.
    bool isDrawnSelected(const QModelIndex &index) const;
    // The user chose in the sidebar: no row keeps the drawn selection.
    void clearDrawnSelection();

    static int rowHeight(const Node &node);

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    // The user renamed a folder in place (to any text, an empty one included).
    void favouriteFolderRenamed(const KVFavouriteFolderPtr &folder, const QString &name);

private:
    struct Entry
    {
        Node node;
        int parent = -1;    // entry of the parent; -1 under the root
        int row = 0;        // row under the parent
        int firstChild = 0; // children are contiguous entries
        int childCount = 0;
        bool drawnSelected = false;
    };

    int append(Node node, int parent, int row);
    const Entry *entry(const QModelIndex &index) const;
    QModelIndex indexOfEntry(int entry) const;

    std::vector<Entry> m_entries;
    int m_mountedEntry = 1;
    FavouriteDropHandler m_favouriteDropHandler;
};
