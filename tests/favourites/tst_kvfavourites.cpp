#include "platform/KVAppNotifications.h"
#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"
#include "model/KVVolumeItem.h"
#include "platform/KVBookmark.h"
#include "tools/KVKeyedArchiver.h"

#include "KVToolDouble.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

KVFavouriteItemPtr item(const QString &name, const KVFavouriteFolderPtr &parent, const QString &mountPoint = QString())
{
    KVFavouriteItemPtr made = KVFavouriteItem::create(name, parent);
    made->setMountPoint(mountPoint);
    made->setType(KVVolumeKind::DiskImage);
    made->setLocation(QByteArray("bookmark of ") + name.toUtf8());
    parent->content().append(made);
    return made;
}

// A favourites list whose first folder's item names as its parent another
// folder, whose item names a third, and so on `depth` times.
QByteArray chainedArchive(int depth)
{
    const auto uid = [](qsizetype index) { return QVariant::fromValue(KVPropertyListUid{quint64(index)}); };
    const auto classOf = [](const QString &name, const QStringList &more) {
        return QVariantMap{{QStringLiteral("$classname"), name}, {QStringLiteral("$classes"), QStringList{name} + more}};
    };
    constexpr qsizetype arrayClass = 2, folderClass = 3, itemClass = 4, name = 5, kind = 6, first = 7;
    QVariantList objects{QStringLiteral("$null"),
                         QVariantMap{{QStringLiteral("NS.objects"), QVariantList{uid(first)}}, {QStringLiteral("$class"), uid(arrayClass)}},
                         classOf(QStringLiteral("NSMutableArray"), {QStringLiteral("NSArray"), QStringLiteral("NSObject")}),
                         classOf(QStringLiteral("KVFavouriteFolder"), {QStringLiteral("NSObject")}),
                         classOf(QStringLiteral("KVFavouriteItem"), {QStringLiteral("NSObject")}),
                         QStringLiteral("Link"), QStringLiteral("Disk Image")};
    for (int level = 0; level < depth; ++level) {
        const qsizetype folder = objects.size();
        objects.append(QVariantMap{{QStringLiteral("name"), uid(name)}, {QStringLiteral("content"), uid(folder + 1)},
                                   {QStringLiteral("$class"), uid(folderClass)}});
        objects.append(QVariantMap{{QStringLiteral("NS.objects"), QVariantList{uid(folder + 2)}},
                                   {QStringLiteral("$class"), uid(arrayClass)}});
        QVariantMap item{{QStringLiteral("name"), uid(name)}, {QStringLiteral("type"), uid(kind)},
                         {QStringLiteral("$class"), uid(itemClass)}};
        if (level + 1 < depth)
            item.insert(QStringLiteral("parent"), uid(folder + 3));
        objects.append(item);
    }
    return KVPropertyList::encodeBinary(QVariantMap{
        {QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver")},
        {QStringLiteral("$version"), qint64(100000)},
        {QStringLiteral("$top"), QVariantMap{{QStringLiteral("root"), uid(1)}}},
        {QStringLiteral("$objects"), objects},
    });
}

} // namespace

class TestKVFavourites : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesAndEquality()
    {
        QCOMPARE(KVFavouriteFolder::create()->name(), QStringLiteral("untitled"));
        QCOMPARE(KVFavouriteItem::create()->name(), QStringLiteral("untitled"));
        QCOMPARE(KVFavouriteFolder::create(QStringLiteral(""))->name(), QString());

        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const KVFavouriteFolderPtr work = KVFavouriteFolder::create(QStringLiteral("Work"));
        const KVFavouriteItemPtr a = item(QStringLiteral("Secrets"), home, QStringLiteral("/media/Secrets"));
        const KVFavouriteItemPtr b = item(QStringLiteral("Secrets"), work, QStringLiteral("/media/Secrets"));
        b->setLocation(QByteArray("elsewhere"));
        // Neither the folder nor the bookmark takes part.
        QVERIFY(*a == *b);
        QCOMPARE(a->hash(), b->hash());
        b->setReadOnly(true);
        QVERIFY(!(*a == *b));

        const KVFavouriteFolderPtr homeAgain = KVFavouriteFolder::create(QStringLiteral("Home"));
        QVERIFY(!(*home == *homeAgain));
        item(QStringLiteral("Secrets"), homeAgain, QStringLiteral("/media/Secrets"));
        QVERIFY(*home == *homeAgain);
        QCOMPARE(home->hash(), homeAgain->hash());
        QCOMPARE(kvIndexOfFolder({work, homeAgain}, *home), 1);
    }

    void archiveKeepsIdentityAndFields()
    {
        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const KVFavouriteFolderPtr work = KVFavouriteFolder::create(QStringLiteral("Wörk"));
        item(QStringLiteral("Tax 2026"), home, QStringLiteral("/media/Tax 2026"))->setReadOnly(true);
        item(QStringLiteral("Photos"), home);
        const QByteArray data = KVFavouritesArchive::archive(QList<KVFavouriteFolderPtr>{home, work});

        // The platform's own format.
        const QVariantMap top = KVPropertyList::decode(data)->toMap();
        QVERIFY(data.startsWith("bplist00"));
        QCOMPARE(top.value(QStringLiteral("$archiver")).toString(), QStringLiteral("NSKeyedArchiver"));
        QCOMPARE(top.value(QStringLiteral("$version")).toLongLong(), 100000);

        const std::optional<QList<KVFavouriteFolderPtr>> loaded = KVFavouritesArchive::unarchiveList(data);
        QVERIFY(loaded);
        QCOMPARE(loaded->size(), 2);
        const KVFavouriteFolderPtr loadedHome = loaded->at(0);
        QVERIFY(*loadedHome == *home);
        QCOMPARE(loaded->at(1)->name(), QStringLiteral("Wörk"));
        QCOMPARE(loadedHome->content().size(), 2);
        for (const KVFavouriteItemPtr &child : loadedHome->content())
            QCOMPARE(child->parent(), loadedHome); // the very same folder object
        const KVFavouriteItemPtr tax = loadedHome->content().first();
        QVERIFY(tax->readOnly());
        QCOMPARE(tax->mountPoint(), QStringLiteral("/media/Tax 2026"));
        QCOMPARE(tax->type(), KVVolumeKind::DiskImage);
        QCOMPARE(tax->location(), QByteArray("bookmark of Tax 2026"));
    }

    void dragArchivesOfOneObject()
    {
        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const KVFavouriteItemPtr photos = item(QStringLiteral("Photos"), home);
        const std::optional<KVFavouritesArchive::ArchivedItem> dragged =
            KVFavouritesArchive::unarchiveItem(KVFavouritesArchive::archive(photos));
        QVERIFY(dragged);
        QVERIFY(*dragged->item == *photos);
        QCOMPARE(dragged->item->parent(), dragged->parent);
        QVERIFY(*dragged->parent == *home);

        const KVFavouriteFolderPtr folder = KVFavouritesArchive::unarchiveFolder(KVFavouritesArchive::archive(home));
        QVERIFY(folder && *folder == *home);
        // One kind is not the other.
        QVERIFY(!KVFavouritesArchive::unarchiveFolder(KVFavouritesArchive::archive(photos)));
        QVERIFY(!KVFavouritesArchive::unarchiveItem(KVFavouritesArchive::archive(home)));
    }

    void unreadableArchives_data()
    {
        QTest::addColumn<QByteArray>("data");
        const QByteArray good = KVFavouritesArchive::archive(QList<KVFavouriteFolderPtr>{KVFavouriteFolder::create(QStringLiteral("Home"))});
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbage") << QByteArray("not an archive at all");
        QTest::newRow("truncated") << good.left(good.size() - 20);
        QVariantMap later = KVPropertyList::decode(good)->toMap();
        later.insert(QStringLiteral("$version"), qint64(200000));
        QTest::newRow("later version") << KVPropertyList::encodeBinary(later);
        KVKeyedArchiver other;
        QTest::newRow("another class") << other.archive(other.encodeObject(&other, {QStringLiteral("NSDate"), QStringLiteral("NSObject")},
                                                                           [](KVKeyedArchiver::Fields &) {}));
        QVariantMap broken = KVPropertyList::decode(good)->toMap();
        broken.insert(QStringLiteral("$objects"), QVariantList{QStringLiteral("$null"), qint64(5)});
        QTest::newRow("objects of the wrong shape") << KVPropertyList::encodeBinary(broken);
    }

    void unreadableArchives()
    {
        QFETCH(QByteArray, data);
        QVERIFY(!KVFavouritesArchive::unarchiveList(data));
    }

    void namesEndAtANulAndMountPointsWithOneAreNone()
    {
        // UTF-16 strings with a NUL inside, as a hand-edited settings file may hold.
        const std::optional<QList<KVFavouriteFolderPtr>> loaded =
            KVFavouritesArchive::unarchiveList(KVToolDouble::readFixture(QStringLiteral("favourites/names-with-nul.archive")));
        QVERIFY(loaded);
        QCOMPARE(loaded->size(), 1);
        QCOMPARE(loaded->first()->name(), QStringLiteral("Wörk"));
        const KVFavouriteItemPtr item = loaded->first()->content().value(0);
        QVERIFY(item);
        QCOMPARE(item->name(), QStringLiteral("Täx"));
        QCOMPARE(item->mountPoint(), QString());
        QCOMPARE(item->location(), QByteArray("bookmark"));
    }

    void deepArchivesAreRefusedQuickly()
    {
        QVERIFY(KVFavouritesArchive::unarchiveList(chainedArchive(5)));

        const QByteArray deep = chainedArchive(10000);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!KVFavouritesArchive::unarchiveList(deep));
        QVERIFY2(clock.elapsed() < 5000, qPrintable(QStringLiteral("took %1 ms").arg(clock.elapsed())));
    }

    void favouriteOfAMountedImageFollowsItsFile()
    {
        QTemporaryDir dir;
        const QString image = dir.filePath(QStringLiteral("Secrets.sparseimage"));
        QFile file(image);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();

        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const KVVolumeItemPtr volume = KVVolumeItem::create(
            {{QStringLiteral("hdiutilInfo"), QVariantMap{{QStringLiteral("image-path"), image}}},
             {QStringLiteral("diskutilInfo"), QVariantMap{{QStringLiteral("VolumeName"), QStringLiteral("Secrets")},
                                                           {QStringLiteral("MountPoint"), QStringLiteral("/media/Secrets")},
                                                           {QStringLiteral("Writable"), false}}}},
            nullptr);
        QVERIFY(!home->addChildWithVolumeItem(*volume));
        QVERIFY(!home->addChildWithVolumeItem(*volume)); // the same image twice: two entries
        QCOMPARE(home->content().size(), 2);
        const KVFavouriteItemPtr favourite = home->content().first();
        QCOMPARE(favourite->parent(), home);
        QCOMPARE(favourite->name(), QStringLiteral("Secrets"));
        QVERIFY(favourite->readOnly());

        QSignalSpy saves(&KVAppNotifications::instance(), &KVAppNotifications::updateFavs);
        QCOMPARE(favourite->locationURL().value(), image);
        QCOMPARE(saves.count(), 0);

        const QString moved = dir.filePath(QStringLiteral("Renamed.sparseimage"));
        QVERIFY(QFile::rename(image, moved));
        const QByteArray oldBookmark = favourite->location();
        QCOMPARE(favourite->locationURL().value(), moved);
        QCOMPARE(saves.count(), 1);
        QVERIFY(favourite->location() != oldBookmark);

        QVERIFY(QFile::remove(moved));
        auto gone = favourite->locationURL();
        QVERIFY(!gone.hasValue());
        QVERIFY(gone.error().localizedFailureReason().contains(u"Renamed.sparseimage"));

        // An image whose file cannot be bookmarked is not added.
        QVERIFY(home->addChildWithVolumeItem(*volume));
        QCOMPARE(home->content().size(), 2);
    }
};

QTEST_MAIN(TestKVFavourites)
#include "tst_kvfavourites.moc"
