#include "KVFavouriteItem.h"

#include "KVAppNotifications.h"
#include "model/KVVolumeItem.h"
#include "platform/KVBookmark.h"

KVFavouriteItemPtr KVFavouriteItem::create(const QString &name, const KVFavouriteFolderPtr &parent)
{
    KVFavouriteItemPtr item(new KVFavouriteItem);
    item->m_name = name.isNull() ? QStringLiteral("untitled") : name;
    item->m_parent = parent;
    return item;
}

std::variant<KVFavouriteItemPtr, KVAppError> KVFavouriteItem::create(const KVVolumeItem &volume,
                                                                     const KVFavouriteFolderPtr &parent)
{
    KVFavouriteItemPtr item(new KVFavouriteItem);
    item->m_parent = parent;
    item->m_name = volume.name();
    item->m_mountPoint = volume.mountPoint();
    item->m_type = volume.type();
    item->m_readOnly = volume.readOnly();
    if (!volume.location().isEmpty()) {
        auto bookmark = bookmarkForURL(volume.location());
        if (auto *error = std::get_if<KVAppError>(&bookmark))
            return *error;
        item->m_location = std::get<QByteArray>(bookmark);
    }
    return item;
}

std::variant<QByteArray, KVAppError> KVFavouriteItem::bookmarkForURL(const QString &path)
{
    return KVBookmark::create(path);
}

std::variant<QString, KVAppError> KVFavouriteItem::locationURL()
{
    auto resolved = KVBookmark::resolve(m_location);
    if (auto *error = std::get_if<KVAppError>(&resolved))
        return *error;
    const KVBookmark::Resolution resolution = std::get<KVBookmark::Resolution>(resolved);
    if (resolution.stale) {
        auto renewed = bookmarkForURL(resolution.path);
        if (auto *error = std::get_if<KVAppError>(&renewed))
            return *error;
        m_location = std::get<QByteArray>(renewed);
        KVAppNotifications::instance().postUpdateFavs();
    }
    if (KVOptionalError unreachable = KVBookmark::checkReachable(resolution.path))
        return *unreachable;
    return resolution.path;
}

bool KVFavouriteItem::operator==(const KVFavouriteItem &other) const
{
    return this == &other
        || (m_name == other.m_name && m_mountPoint == other.m_mountPoint && m_readOnly == other.m_readOnly
            && m_type == other.m_type);
}

size_t KVFavouriteItem::hash() const
{
    // Grouped as it has always been: in practice only the type counts, which
    // agrees with equality.
    const quint64 t = 31u * (31u * (31u + quint64(qHash(m_name))) + quint64(qHash(m_mountPoint)))
        + (m_readOnly ? 1u : 0u);
    return 31u * (t != 0 ? 1231u : 1237u) + quint64(qHash(m_type));
}

qsizetype kvIndexOfItem(const QList<KVFavouriteItemPtr> &items, const KVFavouriteItem &item)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (*items.at(i) == item)
            return i;
    }
    return -1;
}
