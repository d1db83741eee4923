#include "KVFavouriteFolder.h"

#include "favourites/KVFavouriteItem.h"

namespace {
const QString Untitled = QStringLiteral("untitled");
}

KVFavouriteFolderPtr KVFavouriteFolder::create(const QString &name)
{
    return KVFavouriteFolderPtr(new KVFavouriteFolder(name.isNull() ? Untitled : name));
}

KVFavouriteFolder::KVFavouriteFolder(const QString &name)
    : m_name(name)
{
}

KVOptionalError KVFavouriteFolder::addChildWithVolumeItem(const KVVolumeItem &volume)
{
    const KVResult<KVFavouriteItemPtr> created = KVFavouriteItem::create(volume, shared_from_this());
    if (!created)
        return created.error();
    m_content.append(created.value());
    return std::nullopt;
}

bool KVFavouriteFolder::operator==(const KVFavouriteFolder &other) const
{
    return this == &other
        || (m_name == other.m_name
            && std::equal(m_content.cbegin(), m_content.cend(), other.m_content.cbegin(), other.m_content.cend(),
                          [](const KVFavouriteItemPtr &a, const KVFavouriteItemPtr &b) { return *a == *b; }));
}

size_t KVFavouriteFolder::hash() const
{
    // An array's hash is its count.
    return 31u * quint64(qHash(m_name)) + quint64(m_content.size()) + 961u;
}

qsizetype kvIndexOfFolder(const QList<KVFavouriteFolderPtr> &folders, const KVFavouriteFolder &folder)
{
    for (qsizetype i = 0; i < folders.size(); ++i) {
        if (*folders.at(i) == folder)
            return i;
    }
    return -1;
}
