#include "favourites/KVFavouriteItem.h"
#include "app/KVFavouritesDrop.h"

#include <QMimeData>
#include <QTest>

namespace {

// Folders named by their first letter, holding items named by the other letters.
QList<KVFavouriteFolderPtr> favourites(const QStringList &folders)
{
    QList<KVFavouriteFolderPtr> list;
    for (const QString &layout : folders) {
        const KVFavouriteFolderPtr folder = KVFavouriteFolder::create(layout.left(1));
        for (const QChar name : layout.mid(1)) {
            KVFavouriteItemPtr item = KVFavouriteItem::create(QString(name), folder);
            item->setType(KVVolumeKind::DiskImage);
            folder->content().append(item);
        }
        list.append(folder);
    }
    return list;
}

QStringList shape(const QList<KVFavouriteFolderPtr> &list)
{
    QStringList found;
    for (const KVFavouriteFolderPtr &folder : list) {
        QString layout = folder->name();
        for (const KVFavouriteItemPtr &item : folder->content())
            layout += item->name();
        found.append(layout);
    }
    return found;
}

} // namespace

class TestKVFavouritesDrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void validation()
    {
        const auto list = favourites({"Hab", "Wc"});
        const QScopedPointer<QMimeData> item(KVFavouritesDrop::mimeData(list.at(0)->content().at(0)));
        const QScopedPointer<QMimeData> folder(KVFavouritesDrop::mimeData(list.at(1)));
        QVERIFY(KVFavouritesDrop::validateItemDrop(*item));
        QVERIFY(!KVFavouritesDrop::validateItemDrop(*folder));
        // Between folders and after the last one, never on the section row or beyond.
        QVERIFY(!KVFavouritesDrop::validateFolderDrop(*folder, -1, 2));
        QVERIFY(KVFavouritesDrop::validateFolderDrop(*folder, 0, 2));
        QVERIFY(KVFavouritesDrop::validateFolderDrop(*folder, 2, 2));
        QVERIFY(!KVFavouritesDrop::validateFolderDrop(*folder, 3, 2));
        QVERIFY(!KVFavouritesDrop::validateFolderDrop(*item, 1, 2));
    }

    void itemMoves_data()
    {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<int>("folder");
        QTest::addColumn<int>("item");
        QTest::addColumn<int>("target");
        QTest::addColumn<int>("childIndex");
        QTest::addColumn<QStringList>("after");
        QTest::newRow("onto another folder's row")
            << QStringList{"Hab", "Wc"} << 0 << 1 << 1 << -1 << QStringList{"Ha", "Wbc"};
        QTest::newRow("into another folder")
            << QStringList{"Hab", "Wcd"} << 0 << 0 << 1 << 1 << QStringList{"Hb", "Wcad"};
        QTest::newRow("later in its folder") << QStringList{"Habc"} << 0 << 0 << 0 << 2 << QStringList{"Hbac"};
        QTest::newRow("earlier in its folder") << QStringList{"Habc"} << 0 << 2 << 0 << 0 << QStringList{"Hcab"};
        QTest::newRow("to the end") << QStringList{"Habc"} << 0 << 0 << 0 << 3 << QStringList{"Hbca"};
        // Onto its own folder's row: the entry before it goes, and it stands twice.
        QTest::newRow("onto its own folder's row") << QStringList{"Habc"} << 0 << 2 << 0 << -1 << QStringList{"Hcac"};
        QTest::newRow("first onto its own folder's row")
            << QStringList{"Habc"} << 0 << 0 << 0 << -1 << QStringList{"Habc"};
    }

    void itemMoves()
    {
        QFETCH(QStringList, before);
        QFETCH(int, folder);
        QFETCH(int, item);
        QFETCH(int, target);
        QFETCH(int, childIndex);
        QFETCH(QStringList, after);
        QList<KVFavouriteFolderPtr> list = favourites(before);
        const KVFavouriteItemPtr moved = list.at(folder)->content().at(item);
        const QScopedPointer<QMimeData> data(KVFavouritesDrop::mimeData(moved));
        QVERIFY(KVFavouritesDrop::acceptItemDrop(list, *data, list.at(target), childIndex));
        QCOMPARE(shape(list), after);
        // The very object moves, and knows its new folder.
        QVERIFY(list.at(target)->content().contains(moved));
        QCOMPARE(moved->parent(), list.at(target));
    }

    void folderMoves_data()
    {
        QTest::addColumn<int>("folder");
        QTest::addColumn<int>("childIndex");
        QTest::addColumn<QStringList>("after");
        QTest::newRow("after the last") << 0 << 3 << QStringList{"B", "C", "A"};
        QTest::newRow("to the front") << 2 << 0 << QStringList{"C", "A", "B"};
        QTest::newRow("where it is") << 1 << 1 << QStringList{"A", "B", "C"};
    }

    void folderMoves()
    {
        QFETCH(int, folder);
        QFETCH(int, childIndex);
        QFETCH(QStringList, after);
        QList<KVFavouriteFolderPtr> list = favourites({"A", "B", "C"});
        const QScopedPointer<QMimeData> data(KVFavouritesDrop::mimeData(list.at(folder)));
        QVERIFY(KVFavouritesDrop::acceptFolderDrop(list, *data, childIndex));
        QCOMPARE(shape(list), after);
    }

    void somethingNoLongerThereIsRefused()
    {
        QList<KVFavouriteFolderPtr> list = favourites({"Hab", "Wc"});
        const QList<KVFavouriteFolderPtr> elsewhere = favourites({"Xa", "Yz"});
        const QScopedPointer<QMimeData> strangerItem(KVFavouritesDrop::mimeData(elsewhere.at(1)->content().at(0)));
        const QScopedPointer<QMimeData> strangerFolder(KVFavouritesDrop::mimeData(elsewhere.at(0)));
        QVERIFY(!KVFavouritesDrop::acceptItemDrop(list, *strangerItem, list.at(1), 0));
        QVERIFY(!KVFavouritesDrop::acceptFolderDrop(list, *strangerFolder, 0));

        QMimeData garbage;
        garbage.setData(KVFavouritesDrop::ItemFormat, QByteArray("bplist00 broken"));
        garbage.setData(KVFavouritesDrop::FolderFormat, QByteArray());
        QVERIFY(!KVFavouritesDrop::acceptItemDrop(list, garbage, list.at(1), 0));
        QVERIFY(!KVFavouritesDrop::acceptFolderDrop(list, garbage, 0));
        QCOMPARE(shape(list), (QStringList{"Hab", "Wc"}));
    }
};

QTEST_MAIN(TestKVFavouritesDrop)
#include "tst_kvfavouritesdrop.moc"
