#include "favourites/KVFavouriteItem.h"
#include "favourites/KVFavouritesArchive.h"
#include "app/KVMainWindow.h"
#include "app/KVMountedCellView.h"
#include "app/KVOutlineView.h"
#include "app/KVSidebarModel.h"

#include "KVMountFixture.h"
#include "KVScreenshot.h"

#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

using namespace KVMountFixture;

namespace {

using Part = KVOutlineView::Part;

KVFavouriteItemPtr favourite(const QString &name, const KVFavouriteFolderPtr &folder)
{
    KVFavouriteItemPtr item = KVFavouriteItem::create(name, folder);
    item->setType(KVVolumeKind::DiskImage);
    item->setMountPoint(QStringLiteral("/media/someone/") + name);
    folder->content().append(item);
    return item;
}

// Home holds "Tax Returns" and "Family Photos", Work holds "Clients".
QList<KVFavouriteFolderPtr> homeAndWork()
{
    const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
    favourite(QStringLiteral("Tax Returns"), home);
    favourite(QStringLiteral("Family Photos"), home);
    const KVFavouriteFolderPtr work = KVFavouriteFolder::create(QStringLiteral("Work"));
    favourite(QStringLiteral("Clients"), work);
    return {home, work};
}

QStringList names(const QAbstractItemModel &model, const QModelIndex &parent)
{
    QStringList found;
    for (int row = 0; row < model.rowCount(parent); ++row)
        found.append(model.index(row, 0, parent).data().toString());
    return found;
}

// The favourites as they were last saved.
QStringList savedFavourites()
{
    QStringList found;
    const auto saved = KVFavouritesArchive::unarchiveList(KVUserDefaults::standard().dataForKey(KVFavouritesKey));
    for (const KVFavouriteFolderPtr &folder : saved.value_or(QList<KVFavouriteFolderPtr>())) {
        QStringList items;
        for (const KVFavouriteItemPtr &item : folder->content())
            items.append(item->name());
        found.append(folder->name() + QStringLiteral(": ") + items.join(QStringLiteral(", ")));
    }
    return found;
}

// Moves a drag of `data` over `point` of the sidebar and drops it there when
// asked; answers whether the sidebar took it.
bool dragTo(KVOutlineView *outline, const QMimeData &data, QPoint point, bool dropIt = true)
{
    QWidget *viewport = outline->viewport();
    QDragEnterEvent enter(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    if (!dropIt || !move.isAccepted()) {
        QDragLeaveEvent leave;
        QApplication::sendEvent(viewport, &leave);
        return move.isAccepted();
    }
    QDropEvent drop(point, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    return drop.isAccepted();
}

void click(KVOutlineView *outline, QPoint point)
{
    QTest::mouseClick(outline->viewport(), Qt::LeftButton, Qt::NoModifier, point);
}

// A controller showing the favourites of homeAndWork() and `images` mounted images.
struct LaunchedController : Controller
{
    explicit LaunchedController(int images = 0)
    {
        KVUserDefaults::standard().setObject(KVFavouritesArchive::archive(homeAndWork()), KVFavouritesKey);
        QList<int> disks;
        for (int i = 0; i < images; ++i)
            disks.append(i + 4);
        setAttachedImages(disks);
        delegate->applicationDidFinishLaunching();
        window()->show();
        exposed = QTest::qWaitForWindowExposed(window());
    }
    KVMainWindow *window() const { return delegate->mainWindow(); }
    bool exposed = false;
    KVOutlineView *outline() const { return window()->sidebar(); }
    KVSidebarModel *model() const { return window()->sidebarModel(); }
    QModelIndex favourites() const { return model()->sectionIndex(KVSidebarModel::FavoritesSection); }
    QModelIndex mounted() const { return model()->sectionIndex(KVSidebarModel::MountedSection); }
    QModelIndex folder(int row) const { return model()->index(row, 0, favourites()); }
    QModelIndex item(int folderRow, int row) const { return model()->index(row, 0, folder(folderRow)); }
};

} // namespace

class TestKVSidebar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }

    void init() { resetUserDefaults(); }
    void cleanup() { closeAlerts(); }

    void treeShapeAndRowHeights_data()
    {
        QTest::addColumn<int>("volumes");
        QTest::newRow("nothing mounted") << 0;
        QTest::newRow("three mounted") << 3;
    }

    void treeShapeAndRowHeights()
    {
        QFETCH(int, volumes);
        QList<KVVolumeItemPtr> mounted;
        for (int i = 0; i < volumes; ++i)
            mounted.append(imageVolume(i + 4, QStringLiteral("/media/someone/Volume%1").arg(i + 4)));
        KVMainWindow window;
        window.reloadSidebar(homeAndWork(), mounted, nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        const KVSidebarModel &model = *window.sidebarModel();
        KVOutlineView *outline = window.findChild<KVOutlineView *>(QStringLiteral("sidebar"));
        QVERIFY(outline);
        QCOMPARE(names(model, QModelIndex()), (QStringList{"Favorites", "Mounted"}));
        const QModelIndex favourites = model.index(0, 0);
        const QModelIndex mountedSection = model.index(1, 0);
        QCOMPARE(names(model, favourites), (QStringList{"Home", "Work", "New Folder"}));
        QVERIFY(model.holds<KVOutlineFavouriteMenu>(model.index(2, 0, favourites)));
        QCOMPARE(names(model, model.index(0, 0, favourites)), (QStringList{"Tax Returns", "Family Photos"}));
        QCOMPARE(model.rowCount(mountedSection), std::max(volumes, 1));
        if (volumes == 0)
            QVERIFY(model.holds<KVOutlinePlaceholder>(model.index(0, 0, mountedSection)));
        else
            QCOMPARE(names(model, mountedSection), (QStringList{"Volume4", "Volume5", "Volume6"}));

        // Everything starts expanded; the heights are the rows' own.
        const auto height = [outline](const QModelIndex &index) { return outline->visualRect(index).height(); };
        QVERIFY(outline->isExpanded(favourites) && outline->isExpanded(mountedSection));
        QVERIFY(outline->isExpanded(model.index(0, 0, favourites)));
        QCOMPARE(height(favourites), 30);
        QCOMPARE(height(mountedSection), 30);
        QCOMPARE(height(model.index(0, 0, favourites)), 24);
        QCOMPARE(height(model.index(0, 0, model.index(0, 0, favourites))), 24);
        QCOMPARE(height(model.index(2, 0, favourites)), 30);
        QCOMPARE(height(model.index(0, 0, mountedSection)), volumes == 0 ? 140 : 44);

        // Only volumes select: a click on anything else leaves the selection empty.
        click(outline, outline->rowRect(model.index(0, 0, mountedSection)).center());
        QCOMPARE(outline->selectionModel()->selectedRows().size(), volumes == 0 ? 0 : 1);
        outline->clearSelection();
        for (const QModelIndex &other : {favourites, model.index(0, 0, favourites), model.index(2, 0, favourites),
                                         model.index(0, 0, model.index(0, 0, favourites))})
            QVERIFY(!(model.flags(other) & Qt::ItemIsSelectable));
    }

    void volumeRows()
    {
        const KVVolumeItemPtr image = imageVolume(4, QStringLiteral("/media/someone/Secret Stuff"));
        const KVMountedCellView imageRow(*image);
        QCOMPARE(imageRow.name(), QStringLiteral("Secret Stuff"));
        QCOMPARE(imageRow.size(), QStringLiteral("750 MB of 1 GB used"));
        QCOMPARE(imageRow.image(), QStringLiteral("DiskImageMountedIcon"));
        QVERIFY(imageRow.unmountButtonVisible());
        QVERIFY(!imageRow.encryptionProgress());

        // A disk being converted shows a thin bar in place of its size.
        const KVVolumeItemPtr disk =
            diskVolume(QStringLiteral("Backup"), QStringLiteral("/media/someone/Backup"), 2000000000000, 500000000000);
        QCOMPARE(KVMountedCellView(*disk).size(), QStringLiteral("1 TB of 2 TB used"));
        disk->setConverting(true);
        disk->setConversionProgress(42);
        const KVMountedCellView converting(*disk);
        QCOMPARE(converting.image(), QStringLiteral("DiskIcon"));
        QVERIFY(!converting.size());
        QCOMPARE(converting.encryptionProgress(), 42.0);
        QVERIFY(converting.unmountButtonVisible());
        QCOMPARE(KVMountedCellView::layout(QRect(0, 0, 240, 44)).encryptionProgress.height(), 6);

        // The system's own volume cannot be unmounted from here; other kinds show a name only.
        const KVVolumeItemPtr system = diskVolume(QStringLiteral("System"), QStringLiteral("/"), 100, 50);
        QVERIFY(!KVMountedCellView(*system).unmountButtonVisible());
        const KVVolumeItemPtr odd = KVVolumeItem::create({{QStringLiteral("somethingElse"), QVariantMap()}}, nullptr);
        const KVMountedCellView oddRow(*odd);
        QVERIFY(!oddRow.size() && oddRow.image().isEmpty() && !oddRow.unmountButtonVisible());

        KVMainWindow window;
        window.reloadSidebar({}, {image, disk, system}, nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QModelIndex mounted = window.sidebarModel()->sectionIndex(KVSidebarModel::MountedSection);
        KVOutlineView *outline = window.sidebar();
        QVERIFY(!outline->partRect(window.sidebarModel()->index(0, 0, mounted), Part::UnmountButton).isEmpty());
        QVERIFY(outline->partRect(window.sidebarModel()->index(2, 0, mounted), Part::UnmountButton).isEmpty());
    }

    void sizeLine_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<qint64>("free");
        QTest::addColumn<QString>("line");
        QTest::newRow("fractions are cut") << "en_US" << qint64(2000000000) << qint64(500000000) << "1 GB of 2 GB used";
        QTest::newRow("decimal comma") << "de_DE" << qint64(2000000000) << qint64(500000000) << "1 GB of 2 GB used";
        QTest::newRow("bytes stay") << "en_US" << qint64(1000) << qint64(488) << "512 bytes of 1 kB used";
        QTest::newRow("empty volume") << "en_US" << qint64(0) << qint64(0) << "0 bytes of 0 bytes used";
    }

    void sizeLine()
    {
        QFETCH(QString, locale);
        QFETCH(qint64, total);
        QFETCH(qint64, free);
        QFETCH(QString, line);
        const QLocale previous;
        QLocale::setDefault(QLocale(locale));
        const QString made = KVMountedCellView::createSizeInfoFromVolumeItem(
            *imageVolume(4, QStringLiteral("/media/someone/Volume4"), total, free));
        QLocale::setDefault(previous);
        QCOMPARE(made, line);
    }

    void selectionIsDrawnAfterARebuildAndGivesWayToTheUser()
    {
        LaunchedController controller(2);
        QVERIFY(controller.exposed);
        KVAppDelegate &delegate = *controller.delegate;
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 2);
        const KVVolumeItemPtr selected = delegate.unifiedVolumes().at(1);
        delegate.setCurrentSelection(selected);

        // The engine finds the same images again, in another order: new, equal objects.
        controller.setAttachedImages({5, 4});
        delegate.reloadMountedList();
        QTRY_VERIFY(delegate.unifiedVolumes().first() != selected
                    && delegate.unifiedVolumes().first()->uuid() == selected->uuid());
        QTRY_VERIFY(controller.model()->isDrawnSelected(controller.model()->index(0, 0, controller.mounted())));
        QVERIFY(!controller.model()->isDrawnSelected(controller.model()->index(1, 0, controller.mounted())));
        QCOMPARE(delegate.currentSelection(), selected);

        // Choosing in the sidebar: the drawn state goes, the choice is the row's object.
        const QModelIndex other = controller.model()->index(1, 0, controller.mounted());
        click(controller.outline(), controller.outline()->rowRect(other).center());
        QVERIFY(!controller.model()->isDrawnSelected(controller.model()->index(0, 0, controller.mounted())));
        QCOMPARE(delegate.currentSelection(), delegate.unifiedVolumes().at(1));
    }

    void unmountButtonUnmountsItsVolume()
    {
        LaunchedController controller(2);
        QVERIFY(controller.exposed);
        QTRY_COMPARE(controller.delegate->unifiedVolumes().size(), 2);
        const QModelIndex second = controller.model()->index(1, 0, controller.mounted());
        click(controller.outline(), controller.outline()->partRect(second, Part::UnmountButton).center());
        QTRY_COMPARE(controller.runs(QStringLiteral("detach")).size(), 1);
        QCOMPARE(controller.hdiutil.arguments(controller.runs(QStringLiteral("detach")).first()),
                 (QStringList{"detach", "-verbose", "/dev/disk5"}));
        // The button does not select its row.
        QVERIFY(!controller.delegate->currentSelection());
    }

    void itemDroppedOnAnotherFolderGoesFirstThere()
    {
        LaunchedController controller;
        QVERIFY(controller.exposed);
        const QScopedPointer<QMimeData> taxReturns(controller.model()->mimeData({controller.item(0, 0)}));
        QVERIFY(taxReturns->hasFormat(QStringLiteral("kvFavourites")));
        QVERIFY(
            dragTo(controller.outline(), *taxReturns, controller.outline()->rowRect(controller.folder(1)).center()));
        QCOMPARE(savedFavourites(), (QStringList{"Home: Family Photos", "Work: Tax Returns, Clients"}));
        QCOMPARE(names(*controller.model(), controller.folder(1)), (QStringList{"Tax Returns", "Clients"}));
        QCOMPARE(controller.delegate->favourites().at(1)->content().first()->parent(),
                 controller.delegate->favourites().at(1));
    }

    void foldersMoveOnlyBetweenFolders()
    {
        LaunchedController controller;
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        const QScopedPointer<QMimeData> home(controller.model()->mimeData({controller.folder(0)}));
        QVERIFY(home->hasFormat(QStringLiteral("kvFavouritesFolder")));

        // Not onto the section's own row, not into another folder, not into "Mounted".
        QVERIFY(!dragTo(outline, *home, outline->rowRect(controller.favourites()).center()));
        QVERIFY(!dragTo(outline, *home, outline->rowRect(controller.folder(1)).center()));
        QVERIFY(!dragTo(outline, *home, outline->rowRect(controller.mounted()).center()));
        QCOMPARE(names(*controller.model(), controller.favourites()), (QStringList{"Home", "Work", "New Folder"}));

        // After the last folder, that is just above the favourites menu row.
        const QRect menu = outline->rowRect(controller.model()->favouriteMenuIndex());
        QVERIFY(dragTo(outline, *home, QPoint(menu.center().x(), menu.top() + 1)));
        QCOMPARE(names(*controller.model(), controller.favourites()), (QStringList{"Work", "Home", "New Folder"}));
        QCOMPARE(savedFavourites(), (QStringList{"Work: Clients", "Home: Tax Returns, Family Photos"}));
    }

    void removeButtonShowsDuringADragAndDeletes()
    {
        LaunchedController controller;
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        QVERIFY(!outline->removeButtonShown());
        bool shownDuringDrag = false;
        bool highlightedOver = false;
        bool dropped = false;
        // While the drag runs, the pointer moves onto the remove button and lets go.
        connect(outline, &KVOutlineView::favouriteDragStarted, this, [&] {
            shownDuringDrag = outline->removeButtonShown();
            const QModelIndex clients = controller.item(1, 0);
            const QScopedPointer<QMimeData> data(controller.model()->mimeData({clients}));
            const QPoint bin = outline->partRect(controller.model()->favouriteMenuIndex(), Part::RemoveButton).center();
            QDragEnterEvent enter(bin, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(outline->viewport(), &enter);
            QDragMoveEvent move(bin, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(outline->viewport(), &move);
            highlightedOver = move.isAccepted() && outline->removeButtonHighlighted();
            kvSaveScreenshot(controller.window(), QStringLiteral("sidebar-favourite-over-remove-button"));
            QDropEvent drop(bin, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(outline->viewport(), &drop);
            dropped = drop.isAccepted();
        });
        const QPoint start = outline->rowRect(controller.item(1, 0)).center();
        QTest::mousePress(outline->viewport(), Qt::LeftButton, Qt::NoModifier, start);
        QMouseEvent drag(QEvent::MouseMove, start + QPoint(30, 0),
                         outline->viewport()->mapToGlobal(start + QPoint(30, 0)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(outline->viewport(), &drag);
        QVERIFY(shownDuringDrag);
        QVERIFY(highlightedOver);
        QVERIFY(dropped);
        QVERIFY(!outline->removeButtonShown());
        QCOMPARE(savedFavourites(), (QStringList{"Home: Tax Returns, Family Photos", "Work: "}));
    }

    void contextMenuDeletesFavourites()
    {
        LaunchedController controller(1);
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        const auto requestMenu = [outline](const QModelIndex &index) {
            const QPoint point = outline->rowRect(index).center();
            QContextMenuEvent event(QContextMenuEvent::Mouse, point, outline->viewport()->mapToGlobal(point));
            QApplication::sendEvent(outline->viewport(), &event);
            return event.isAccepted();
        };
        QTRY_COMPARE(controller.delegate->unifiedVolumes().size(), 1);
        QVERIFY(!requestMenu(controller.model()->index(0, 0, controller.mounted())));
        QVERIFY(!requestMenu(controller.favourites()));

        QVERIFY(requestMenu(controller.item(0, 1)));
        QCOMPARE(outline->contextRow(), QPersistentModelIndex(controller.item(0, 1)));
        QTRY_VERIFY(outline->contextMenu()->isVisible());
        outline->contextMenu()->findChild<QAction *>(QStringLiteral("deleteFavouriteAction"))->trigger();
        QCOMPARE(savedFavourites(), (QStringList{"Home: Tax Returns", "Work: Clients"}));

        QVERIFY(requestMenu(controller.folder(0)));
        outline->contextMenu()->findChild<QAction *>(QStringLiteral("deleteFavouriteAction"))->trigger();
        QCOMPARE(savedFavourites(), (QStringList{"Work: Clients"}));
        outline->contextMenu()->close();
    }

    void theKeyboardReachesEveryRow()
    {
        LaunchedController controller(1);
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        QTRY_COMPARE(controller.delegate->unifiedVolumes().size(), 1);
        controller.window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(controller.window()));
        outline->setFocus();
        QTRY_VERIFY(outline->hasFocus());
        QVERIFY(outline->focusPolicy() & Qt::TabFocus);

        // The row the keyboard is on is drawn so that it shows.
        const QModelIndex first = controller.item(0, 0);
        const QRect firstRow = outline->rowRect(first);
        outline->selectionModel()->setCurrentIndex(controller.folder(1), QItemSelectionModel::NoUpdate);
        const QImage elsewhere = outline->viewport()->grab(firstRow).toImage();
        outline->selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
        QVERIFY(outline->viewport()->grab(firstRow).toImage() != elsewhere);

        // Arrows move; Delete removes the favourite the keyboard is on.
        QTest::keyClick(outline, Qt::Key_Down);
        QCOMPARE(outline->currentIndex(), QModelIndex(controller.item(0, 1)));
        QTest::keyClick(outline, Qt::Key_Delete);
        QCOMPARE(savedFavourites(), (QStringList{"Home: Tax Returns", "Work: Clients"}));

        // Enter selects a volume.
        const QModelIndex volume = controller.model()->index(0, 0, controller.mounted());
        outline->selectionModel()->setCurrentIndex(volume, QItemSelectionModel::NoUpdate);
        QTest::keyClick(outline, Qt::Key_Return);
        QCOMPARE(controller.delegate->currentSelection(), controller.delegate->unifiedVolumes().first());

        // Enter on a folder folds it; on a favourite it asks to mount it.
        QVERIFY(outline->isExpanded(controller.folder(1)));
        outline->selectionModel()->setCurrentIndex(controller.folder(1), QItemSelectionModel::NoUpdate);
        QTest::keyClick(outline, Qt::Key_Enter);
        QVERIFY(!outline->isExpanded(controller.folder(1)));
        QSignalSpy mountAsked(outline, &KVOutlineView::favouriteActivated);
        outline->selectionModel()->setCurrentIndex(controller.item(0, 0), QItemSelectionModel::NoUpdate);
        QTest::keyClick(outline, Qt::Key_Return);
        QCOMPARE(mountAsked.count(), 1);
        QCOMPARE(mountAsked.first().first().value<QModelIndex>(), QModelIndex(controller.item(0, 0)));
    }

    void folderRenamedInPlace()
    {
        LaunchedController controller;
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        click(outline, outline->partRect(controller.folder(1), Part::RenamePen).center());
        auto *field = outline->findChild<QLineEdit *>(QStringLiteral("favouriteFolderNameField"));
        QVERIFY(field);
        QTRY_VERIFY(field->hasFocus());
        QCOMPARE(field->selectedText(), QStringLiteral("Work"));
        QTest::keyClicks(field, QStringLiteral("Clients & Co"));
        QTest::keyClick(field, Qt::Key_Return);
        QTRY_COMPARE(savedFavourites(), (QStringList{"Home: Tax Returns, Family Photos", "Clients & Co: Clients"}));
        QCOMPARE(controller.folder(1).data().toString(), QStringLiteral("Clients & Co"));
        // The menu reads "Clients & Co": the "&" is doubled so that it is not taken for a shortcut.
        QCOMPARE(controller.delegate->mainWindow()->addToFavouritesMenu()->actions().at(1)->text(),
                 QStringLiteral("Clients && Co"));
        QCOMPARE(controller.delegate->mainWindow()->addToFavouritesMenu()->actions().at(1)->iconText(),
                 QStringLiteral("Clients & Co"));

        // Escape leaves the name as it was.
        click(outline, outline->partRect(controller.folder(0), Part::RenamePen).center());
        field = outline->findChild<QLineEdit *>(QStringLiteral("favouriteFolderNameField"));
        QTRY_VERIFY(field && field->hasFocus());
        QTest::keyClicks(field, QStringLiteral("Elsewhere"));
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(controller.folder(0).data().toString(), QStringLiteral("Home"));

        // A rename still open when the application goes away is dropped, not half-committed.
        click(outline, outline->partRect(controller.folder(0), Part::RenamePen).center());
        QTRY_VERIFY(outline->findChild<QLineEdit *>(QStringLiteral("favouriteFolderNameField")));
    }

    void foldingSurvivesRebuilds()
    {
        LaunchedController controller;
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.outline();
        click(outline, outline->partRect(controller.folder(0), Part::Disclosure).center());
        QVERIFY(!outline->isExpanded(controller.folder(0)));
        click(outline, outline->rowRect(controller.mounted()).center());
        QVERIFY(!outline->isExpanded(controller.mounted()));

        controller.delegate->addFavouriteFolder();
        QCOMPARE(controller.model()->rowCount(controller.favourites()), 4);
        QVERIFY(!outline->isExpanded(controller.folder(0)));
        QVERIFY(!outline->isExpanded(controller.mounted()));
        QVERIFY(outline->isExpanded(controller.folder(1)));
        QVERIFY(outline->isExpanded(controller.favourites()));
    }

    void screenshots()
    {
        // As at the first start: the two folders every user begins with, nothing mounted.
        KVMainWindow window;
        window.reloadSidebar(
            {KVFavouriteFolder::create(QStringLiteral("Home")), KVFavouriteFolder::create(QStringLiteral("Work"))}, {},
            nullptr);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        kvSaveScreenshot(&window, QStringLiteral("main-window-empty"));

        const KVVolumeItemPtr converting = diskVolume(
            QStringLiteral("Backup Disk"), QStringLiteral("/media/someone/Backup Disk"), 2000000000000, 1200000000000);
        converting->setConverting(true);
        converting->setConversionProgress(42);
        const KVVolumeItemPtr selected =
            imageVolume(4, QStringLiteral("/media/someone/Secret Stuff"), 104857600, 78643200);
        window.reloadSidebar(homeAndWork(),
                             {selected,
                              imageVolume(5, QStringLiteral("/media/someone/Archive"), 500000000000, 120000000000),
                              converting},
                             selected);
        kvSaveScreenshot(&window, QStringLiteral("main-window-volumes"));

        // Pointing at a folder shows its rename pen; at a volume's unmount button, the button.
        KVOutlineView *outline = window.sidebar();
        const KVSidebarModel *model = window.sidebarModel();
        const QModelIndex work = model->index(1, 0, model->sectionIndex(KVSidebarModel::FavoritesSection));
        QTest::mouseMove(outline->viewport(), outline->rowRect(work).center());
        kvSaveScreenshot(outline, QStringLiteral("sidebar-folder-pointed-at"));
        const QModelIndex archive = model->index(1, 0, model->sectionIndex(KVSidebarModel::MountedSection));
        QTest::mouseMove(outline->viewport(), outline->partRect(archive, Part::UnmountButton).center());
        kvSaveScreenshot(outline, QStringLiteral("sidebar-unmount-pointed-at"));
    }
};

QTEST_MAIN(TestKVSidebar)
#include "tst_kvsidebar.moc"
