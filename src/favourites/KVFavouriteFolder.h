#pragma once

#include "model/KVAppError.h"

#include <QList>
#include <QString>

#include <memory>

class KVFavouriteFolder;
class KVFavouriteItem;
class KVVolumeItem;
using KVFavouriteFolderPtr = std::shared_ptr<KVFavouriteFolder>;
using KVFavouriteItemPtr = std::shared_ptr<KVFavouriteItem>;

// A named folder of favourite disk images in the sidebar.
class KVFavouriteFolder : public std::enable_shared_from_this<KVFavouriteFolder>
{
public:
    // A folder made without a name is called "untitled".
    static KVFavouriteFolderPtr create(const QString &name = QString());

    const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    // The entries in display order. The same entry may stand twice.
    QList<KVFavouriteItemPtr> &content() { return m_content; }
    const QList<KVFavouriteItemPtr> &content() const { return m_content; }

    // Appends a favourite for a mounted image; fails when its file cannot be bookmarked.
    KVOptionalError addChildWithVolumeItem(const KVVolumeItem &volume);

    // Folders are equal when their names and their entries (in order) are.
    bool operator==(const KVFavouriteFolder &other) const;
    size_t hash() const;

private:
    explicit KVFavouriteFolder(const QString &name);

    QString m_name;
    QList<KVFavouriteItemPtr> m_content;
};

// Index of the first folder equal to `folder`, or -1.
qsizetype kvIndexOfFolder(const QList<KVFavouriteFolderPtr> &folders, const KVFavouriteFolder &folder);
