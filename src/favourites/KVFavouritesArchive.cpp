#include "KVFavouritesArchive.h"

#include "favourites/KVFavouriteItem.h"
#include "tools/KVKeyedArchiver.h"
#include "tools/KVValue.h"

#include <QHash>

namespace {

const QStringList FolderClasses{QStringLiteral("KVFavouriteFolder"), QStringLiteral("NSObject")};
const QStringList ItemClasses{QStringLiteral("KVFavouriteItem"), QStringLiteral("NSObject")};
// Reading a folder reads its items, and an item its folder: an archive that
// chains folders through items' parents would take ever more stack. Ours go
// three steps deep at most; a far deeper one is refused as unreadable.
constexpr int MaximumNesting = 64;

class Writer
{
public:
    KVPropertyListUid folder(const KVFavouriteFolderPtr &folder)
    {
        return m_archiver.encodeObject(folder.get(), FolderClasses, [&](KVKeyedArchiver::Fields &fields) {
            fields.encodeString(QStringLiteral("name"), folder->name());
            QList<KVPropertyListUid> content;
            for (const KVFavouriteItemPtr &child : folder->content())
                content.append(item(child));
            fields.encodeObject(QStringLiteral("content"), m_archiver.encodeArray(content));
        });
    }

    KVPropertyListUid item(const KVFavouriteItemPtr &item)
    {
        return m_archiver.encodeObject(item.get(), ItemClasses, [&](KVKeyedArchiver::Fields &fields) {
            if (KVFavouriteFolderPtr parent = item->parent())
                fields.encodeObject(QStringLiteral("parent"), folder(parent));
            fields.encodeString(QStringLiteral("name"), item->name());
            fields.encodeString(QStringLiteral("mountPoint"), item->mountPoint());
            fields.encodeBool(QStringLiteral("readOnly"), item->readOnly());
            fields.encodeString(QStringLiteral("type"), kvVolumeKindText(item->type()));
            fields.encodeData(QStringLiteral("location"), item->location());
        });
    }

    KVPropertyListUid list(const QList<KVFavouriteFolderPtr> &favourites)
    {
        QList<KVPropertyListUid> folders;
        for (const KVFavouriteFolderPtr &each : favourites)
            folders.append(folder(each));
        return m_archiver.encodeArray(folders);
    }

    QByteArray finish(KVPropertyListUid root) const { return m_archiver.archive(root); }

private:
    KVKeyedArchiver m_archiver;
};

// Counts how deep the reading is while an object is being read.
class Nesting
{
public:
    explicit Nesting(int &depth) : m_depth(++depth) {}
    ~Nesting() { --m_depth; }
    bool tooDeep() const { return m_depth > MaximumNesting; }

private:
    int &m_depth;
};

// Reads objects once each: a reference met again gives the same object.
class Reader
{
public:
    explicit Reader(const KVKeyedUnarchiver &archive) : m_archive(archive) {}

    KVFavouriteFolderPtr folder(KVPropertyListUid reference)
    {
        if (KVFavouriteFolderPtr known = m_folders.value(reference.value))
            return known;
        const Nesting nesting(m_depth);
        if (nesting.tooDeep() || m_archive.className(reference) != FolderClasses.first())
            return fail<KVFavouriteFolderPtr>();
        const QVariantMap fields = m_archive.fields(reference);
        KVFavouriteFolderPtr folder = KVFavouriteFolder::create(KVValue::nameValue(object(fields, QStringLiteral("name"))));
        m_folders.insert(reference.value, folder);
        const std::optional<KVPropertyListUid> content = KVKeyedUnarchiver::referenceIn(fields, QStringLiteral("content"));
        const std::optional<QList<KVPropertyListUid>> elements = content ? m_archive.arrayElements(*content) : std::nullopt;
        if (!elements)
            return fail<KVFavouriteFolderPtr>();
        for (KVPropertyListUid element : *elements) {
            KVFavouriteItemPtr child = item(element);
            if (!child)
                return fail<KVFavouriteFolderPtr>();
            folder->content().append(child);
        }
        return folder;
    }

    KVFavouriteItemPtr item(KVPropertyListUid reference)
    {
        if (KVFavouriteItemPtr known = m_items.value(reference.value))
            return known;
        const Nesting nesting(m_depth);
        if (nesting.tooDeep() || m_archive.className(reference) != ItemClasses.first())
            return fail<KVFavouriteItemPtr>();
        const QVariantMap fields = m_archive.fields(reference);
        KVFavouriteItemPtr item = KVFavouriteItem::create(QString());
        m_items.insert(reference.value, item);
        if (const std::optional<KVPropertyListUid> parent = KVKeyedUnarchiver::referenceIn(fields, QStringLiteral("parent"))) {
            KVFavouriteFolderPtr folder = this->folder(*parent);
            if (!folder)
                return fail<KVFavouriteItemPtr>();
            item->setParent(folder);
        }
        item->setName(KVValue::nameValue(object(fields, QStringLiteral("name"))));
        item->setMountPoint(KVValue::pathValue(object(fields, QStringLiteral("mountPoint"))));
        item->setReadOnly(KVValue::boolValue(fields.value(QStringLiteral("readOnly"))));
        item->setType(kvVolumeKindFromText(string(fields, QStringLiteral("type"))));
        item->setLocation(object(fields, QStringLiteral("location")).toByteArray());
        return item;
    }

    bool failed() const { return m_failed; }

private:
    template<typename T>
    T fail()
    {
        m_failed = true;
        return nullptr;
    }

    QVariant object(const QVariantMap &fields, const QString &key) const
    {
        const std::optional<KVPropertyListUid> reference = KVKeyedUnarchiver::referenceIn(fields, key);
        return reference ? m_archive.object(*reference) : QVariant();
    }

    QString string(const QVariantMap &fields, const QString &key) const
    {
        return KVValue::stringValue(object(fields, key));
    }

    const KVKeyedUnarchiver &m_archive;
    QHash<quint64, KVFavouriteFolderPtr> m_folders;
    QHash<quint64, KVFavouriteItemPtr> m_items;
    int m_depth = 0;
    bool m_failed = false;
};

} // namespace

QByteArray KVFavouritesArchive::archive(const QList<KVFavouriteFolderPtr> &favourites)
{
    Writer writer;
    return writer.finish(writer.list(favourites));
}

QByteArray KVFavouritesArchive::archive(const KVFavouriteFolderPtr &folder)
{
    Writer writer;
    return writer.finish(writer.folder(folder));
}

QByteArray KVFavouritesArchive::archive(const KVFavouriteItemPtr &item)
{
    Writer writer;
    return writer.finish(writer.item(item));
}

std::optional<QList<KVFavouriteFolderPtr>> KVFavouritesArchive::unarchiveList(const QByteArray &data)
{
    const std::optional<KVKeyedUnarchiver> archive = KVKeyedUnarchiver::fromData(data);
    if (!archive)
        return std::nullopt;
    const std::optional<QList<KVPropertyListUid>> elements = archive->arrayElements(*archive->root());
    if (!elements)
        return std::nullopt;
    Reader reader(*archive);
    QList<KVFavouriteFolderPtr> favourites;
    for (KVPropertyListUid element : *elements)
        favourites.append(reader.folder(element));
    if (reader.failed())
        return std::nullopt;
    return favourites;
}

KVFavouriteFolderPtr KVFavouritesArchive::unarchiveFolder(const QByteArray &data)
{
    const std::optional<KVKeyedUnarchiver> archive = KVKeyedUnarchiver::fromData(data);
    if (!archive)
        return nullptr;
    Reader reader(*archive);
    KVFavouriteFolderPtr folder = reader.folder(*archive->root());
    return reader.failed() ? nullptr : folder;
}

std::optional<KVFavouritesArchive::ArchivedItem> KVFavouritesArchive::unarchiveItem(const QByteArray &data)
{
    const std::optional<KVKeyedUnarchiver> archive = KVKeyedUnarchiver::fromData(data);
    if (!archive)
        return std::nullopt;
    Reader reader(*archive);
    KVFavouriteItemPtr item = reader.item(*archive->root());
    if (reader.failed() || !item)
        return std::nullopt;
    return ArchivedItem{item, item->parent()};
}
