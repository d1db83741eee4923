#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "model/KVResult.h"
#include "model/KVVolumeKind.h"

#include <QByteArray>
#include <QString>


// A disk image the user keeps in a favourite folder, to attach again later.
// It remembers the image file through a bookmark, so a moved or renamed file is
// still found.
class KVFavouriteItem
{
public:
    // An item made without a name is called "untitled".
    static KVFavouriteItemPtr create(const QString &name = QString(), const KVFavouriteFolderPtr &parent = nullptr);
    // A favourite for a mounted volume: its name, mount point, read-only state
    // and type, and a bookmark of its image file.
    static KVResult<KVFavouriteItemPtr> create(const KVVolumeItem &volume,
                                                               const KVFavouriteFolderPtr &parent);

    // The folder that holds the item. Folders own their items, so the item
    // refers back weakly: the list of folders keeps every folder alive.
    KVFavouriteFolderPtr parent() const { return m_parent.lock(); }
    void setParent(const KVFavouriteFolderPtr &parent) { m_parent = parent; }
    const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    const QString &mountPoint() const { return m_mountPoint; }
    void setMountPoint(const QString &mountPoint) { m_mountPoint = mountPoint; }
    bool readOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }
    KVVolumeKind type() const { return m_type; }
    void setType(KVVolumeKind type) { m_type = type; }
    // Bookmark data of the image file.
    const QByteArray &location() const { return m_location; }
    void setLocation(const QByteArray &location) { m_location = location; }

    static KVResult<QByteArray> bookmarkForURL(const QString &path);
    // The image file's path now. A bookmark that found the file elsewhere is
    // renewed, and "updateFavs" posted so that the list is saved again.
    KVResult<QString> locationURL();

    // Items are equal when name, mount point, read-only state and type agree.
    bool operator==(const KVFavouriteItem &other) const;
    size_t hash() const;

private:
    KVFavouriteItem() = default;

    std::weak_ptr<KVFavouriteFolder> m_parent;
    QString m_name;
    QString m_mountPoint;
    bool m_readOnly = false;
    KVVolumeKind m_type = KVVolumeKind::None;
    QByteArray m_location;
};

// Index of the first item equal to `item`, or -1.
qsizetype kvIndexOfItem(const QList<KVFavouriteItemPtr> &items, const KVFavouriteItem &item);
