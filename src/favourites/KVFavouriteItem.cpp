#include "KVFavouriteItem.h"

#include "platform/KVAppNotifications.h"
#include "model/KVVolumeItem.h"
#include "platform/KVBookmark.h"

KVFavouriteItemPtr KVFavouriteItem::create(const QString &name, const KVFavouriteFolderPtr &parent)
{
    KVFavouriteItemPtr item(new KVFavouriteItem);
    item->m_name = name.isNull() ? QStringLiteral("untitled") : name;
    item->m_parent = parent;
    return item;
}

KVResult<KVFavouriteItemPtr> KVFavouriteItem::create(const KVVolumeItem &volume,
                                                                     const KVFavouriteFolderPtr &parent)
{
    KVFavouriteItemPtr item(new KVFavouriteItem);
    item->m_parent = parent;
    item->m_name = volume.name();
    item->m_mountPoint = volume.mountPoint();
    item->m_type = volume.type();
    item->m_readOnly = volume.readOnly();
    if (!volume.location().isEmpty()) {
        KVResult<QByteArray> bookmark = bookmarkForURL(volume.location());
        if (!bookmark)
            return bookmark.error();
        item->m_location = std::move(bookmark).value();
    }
    return item;
}

KVResult<QByteArray> KVFavouriteItem::bookmarkForURL(const QString &path)
{
    return KVBookmark::create(path);
}

KVResult<QString> KVFavouriteItem::locationURL()
{
    const KVResult<KVBookmark::Resolution> resolved = KVBookmark::resolve(m_location);
    if (!resolved)
        return resolved.error();
    const KVBookmark::Resolution &resolution = resolved.value();
    if (resolution.stale) {
        KVResult<QByteArray> renewed = bookmarkForURL(resolution.path);
        if (!renewed)
            return renewed.error();
        m_location = std::move(renewed).value();
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
    return 31u * (t != 0 ? 1231u : 1237u) + quint64(qHash(kvVolumeKindText(m_type)));
}

qsizetype kvIndexOfItem(const QList<KVFavouriteItemPtr> &items, const KVFavouriteItem &item)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (*items.at(i) == item)
            return i;
    }
    return -1;
}
