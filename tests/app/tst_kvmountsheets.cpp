#include "favourites/KVFavouriteItem.h"
#include "settings/KVPreferences.h"
#include "app/KVFavouriteMountViewsController.h"
#include "favourites/KVFavouritesArchive.h"
#include "app/KVHoverArea.h"
#include "app/KVMainWindow.h"
#include "app/KVMountAreaView.h"
#include "app/KVMountImageSheet.h"
#include "app/KVMountedCellView.h"
#include "app/KVOutlineView.h"
#include "app/KVSidebarModel.h"
#include "controls/KVColors.h"
#include "controls/KVPasswordFieldView.h"

#include "KVMountFixture.h"
#include "KVScreenshot.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QParallelAnimationGroup>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace KVMountFixture;

namespace {

template<typename T>
T *part(QWidget *sheet, const char *name)
{
    T *found = sheet->findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s in the sheet", name);
    return found;
}

QMimeData *filesDrag(const QStringList &paths)
{
    auto *data = new QMimeData;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data->setUrls(urls);
    return data;
}

// A drag of these files entering the window; answers whether it was taken.
bool dragEnters(KVMainWindow *window, const QMimeData &data)
{
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    return enter.isAccepted();
}

bool dropsOn(KVMainWindow *window, const QMimeData &data)
{
    if (!dragEnters(window, data))
        return false;
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &drop);
    return drop.isAccepted();
}

QString recentDocuments(const QString &file)
{
    QFile xbel(file);
    return xbel.open(QIODevice::ReadOnly) ? QString::fromUtf8(xbel.readAll()) : QString();
}

// A launched controller whose favourites are stored before it starts.
struct Launched : Controller
{
    explicit Launched(const QList<KVFavouriteFolderPtr> &favourites = {})
    {
        if (!favourites.isEmpty())
            KVUserDefaults::standard().setObject(KVFavouritesArchive::archive(favourites), KVFavouritesKey);
        delegate->applicationDidFinishLaunching();
        window()->show();
        exposed = QTest::qWaitForWindowExposed(window());
    }
    KVMainWindow *window() const { return delegate->mainWindow(); }
    KVMountImageSheet *sheet() const { return delegate->mountImageWindow(); }
    bool exposed = false;
};

// Types a password in the image sheet and presses Mount.
void mountWithPassword(QWidget *sheet, const char *passwordField, const char *mountButton, const QString &password)
{
    auto *field = part<KVPasswordFieldView>(sheet, passwordField);
    field->clear();
    QTest::keyClicks(field, password);
    part<QPushButton>(sheet, mountButton)->click();
}

} // namespace

class TestKVMountSheets : public QObject
{
    Q_OBJECT

    QTemporaryDir m_files;

    // An image file that exists, for the open panel and the favourites.
    QString imageFile(const QString &name)
    {
        const QString path = m_files.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("encrypted image") < 0)
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    // A favourite of an existing image, recorded while mounted at `mountPoint`.
    KVFavouriteItemPtr favouriteOf(const QString &name, const KVFavouriteFolderPtr &folder, const QString &mountPoint)
    {
        KVFavouriteItemPtr item = KVFavouriteItem::create(name, folder);
        item->setType(KVVolumeKind::DiskImage);
        item->setMountPoint(mountPoint);
        item->setLocation(KVFavouriteItem::bookmarkForURL(imageFile(name + QStringLiteral(".sparseimage"))).value());
        folder->content().append(item);
        return item;
    }

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }

    void init() { resetUserDefaults(); }
    void cleanup() { closeAlerts(); }

    void windowTakesExactlyOneSparseImage_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<bool>("taken");
        QTest::newRow("one sparse image") << QStringList{"/home/someone/Secrets.sparseimage"} << true;
        QTest::newRow("spaces and accents") << QStringList{"/home/someone/My Sécrets 2026.sparseimage"} << true;
        QTest::newRow("leading dash") << QStringList{"/home/someone/-rf.sparseimage"} << true;
        QTest::newRow("two images") << QStringList{"/home/someone/a.sparseimage", "/home/someone/b.sparseimage"}
                                    << false;
        QTest::newRow("dmg") << QStringList{"/home/someone/Secrets.dmg"} << false;
        QTest::newRow("sparse bundle") << QStringList{"/home/someone/Secrets.sparsebundle"} << false;
        QTest::newRow("other case") << QStringList{"/home/someone/Secrets.SPARSEIMAGE"} << false;
        QTest::newRow("nothing") << QStringList{} << false;
    }

    void windowTakesExactlyOneSparseImage()
    {
        QFETCH(QStringList, files);
        QFETCH(bool, taken);
        Launched controller;
        QVERIFY(controller.exposed);
        KVMainWindow *window = controller.window();
        const QScopedPointer<QMimeData> data(filesDrag(files));

        QCOMPARE(dragEnters(window, *data), taken);
        // The drop area lights up while an acceptable file is over the window.
        QCOMPARE(window->innerMountArea()->isActive(), taken);
        QCOMPARE(window->mountVolumeLabel()->palette().color(QPalette::WindowText),
                 taken ? KVColors::kvWhiteText() : KVColors::kvLightGreyText());
        QDragLeaveEvent leave;
        QApplication::sendEvent(window, &leave);
        QVERIFY(!window->innerMountArea()->isActive());

        QCOMPARE(dropsOn(window, *data), taken);
        QCOMPARE(controller.sheet() && controller.sheet()->isVisible(), taken);
        QVERIFY(!window->innerMountArea()->isActive());
        if (taken) {
            QCOMPARE(controller.sheet()->imagePath(), files.first());
            QCOMPARE(part<QLabel>(controller.sheet(), "heading")->text(),
                     QStringLiteral("Enter Password for ") + QFileInfo(files.first()).completeBaseName());
        }
    }

    void typicalRequest()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        KVAppDelegate &delegate = *controller.delegate;
        const QString image = QStringLiteral("/home/someone/My Secrets.sparseimage");

        // The user drops the image, types the password and mounts.
        const QScopedPointer<QMimeData> data(filesDrag({image}));
        QVERIFY(dropsOn(controller.window(), *data));
        QVERIFY(controller.sheet()->isVisible());
        QSignalSpy ended(controller.sheet(), &QDialog::finished);
        mountWithPassword(controller.sheet(), "mountImagePassword", "mountImageMountButton",
                          QStringLiteral("correct horse"));
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(ended.first().first().toInt(), int(KVSheetReturnCode::Succeeded));
        QVERIFY(!controller.sheet()->isVisible());

        // hdiutil got the password on its standard input, never in its arguments.
        const QList<int> attaches = controller.runs(QStringLiteral("attach"));
        QCOMPARE(attaches.size(), 1);
        QCOMPARE(controller.hdiutil.arguments(attaches.first()),
                 (QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", image}));
        QCOMPARE(controller.hdiutil.standardInput(attaches.first()), QByteArray("correct horse"));
        QVERIFY(controller.hdiutil.standardInputWasPipe(attaches.first()));
        // The sheet is ready for the next image.
        QVERIFY(part<KVPasswordFieldView>(controller.sheet(), "mountImagePassword")->text().isEmpty());

        // The system reports the mount; the engine finds the volume; the sidebar shows it.
        controller.setAttachedImages({4});
        Q_EMIT controller.workspace.didMount({{NSDevicePath, Controller::volumeMountPoint(4)}});
        QTRY_COMPARE(delegate.unifiedVolumes().size(), 1);
        const KVSidebarModel *model = controller.window()->sidebarModel();
        const QModelIndex row = model->index(0, 0, model->sectionIndex(KVSidebarModel::MountedSection));
        QCOMPARE(row.data().toString(), QStringLiteral("Volume4"));
        QCOMPARE(KVMountedCellView(*model->volume(row)).size(), QStringLiteral("750 MB of 1 GB used"));
        QCOMPARE(controller.window()->sidebar()->visualRect(row).height(), 44);
    }

    void wrongPasswordKeepsTheSheetOpen()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        QVERIFY(controller.delegate->openFile(QStringLiteral("/home/someone/Tax Returns.sparseimage")));
        KVMountImageSheet *sheet = controller.sheet();
        QSignalSpy ended(sheet, &QDialog::finished);
        mountWithPassword(sheet, "mountImagePassword", "mountImageMountButton", QStringLiteral("wrong"));
        auto *reason = part<QLabel>(sheet, "mountImageErrorNotification");
        QTRY_VERIFY(reason->isVisible());
        QCOMPARE(reason->text(), QStringLiteral("Wrong Password"));
        QVERIFY(sheet->isVisible());
        QVERIFY(part<QPushButton>(sheet, "mountImageMountButton")->isEnabled());
        QVERIFY(part<QPushButton>(sheet, "mountImageCancelButton")->isEnabled());
        QCOMPARE(part<KVPasswordFieldView>(sheet, "mountImagePassword")->text(), QStringLiteral("wrong"));
        QCOMPARE(ended.count(), 0);
        QVERIFY(!openAlert());
        kvSaveScreenshot(sheet, QStringLiteral("mount-sheet-wrong-password"));

        // A second try with the right password mounts.
        mountWithPassword(sheet, "mountImagePassword", "mountImageMountButton", QStringLiteral("right"));
        QTRY_COMPARE(ended.count(), 1);
        QVERIFY(!part<QLabel>(sheet, "mountImageErrorNotification")->isVisibleTo(sheet));
    }

    void missingMountFolderIsSaidInTheSheet()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        controller.delegate->openFile(QStringLiteral("/home/someone/Secrets.sparseimage"));
        KVMountImageSheet *sheet = controller.sheet();
        const QString missing = m_files.filePath(QStringLiteral("no such folder"));
        QTest::keyClicks(part<QLineEdit>(sheet, "mountImageMountPoint"), missing + QStringLiteral("/"));
        part<QCheckBox>(sheet, "mountImageReadOnly")->setChecked(true);
        mountWithPassword(sheet, "mountImagePassword", "mountImageMountButton", QStringLiteral("secret"));
        auto *reason = part<QLabel>(sheet, "mountImageErrorNotification");
        QTRY_VERIFY(reason->isVisible());
        QCOMPARE(reason->text(), QStringLiteral("Invalid Mount Path"));
        QVERIFY(sheet->isVisible());
        QCOMPARE(controller.hdiutil.arguments(controller.runs(QStringLiteral("attach")).first()),
                 (QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", "/home/someone/Secrets.sparseimage",
                              "-readonly", "-mountroot", missing}));

        // Cancel: the sheet closes and is clean for the next image.
        part<QPushButton>(sheet, "mountImageCancelButton")->click();
        QVERIFY(!sheet->isVisible());
        QCOMPARE(sheet->result(), int(KVSheetReturnCode::Cancelled));
        QVERIFY(part<QLineEdit>(sheet, "mountImageMountPoint")->text().isEmpty());
        QVERIFY(!part<QCheckBox>(sheet, "mountImageReadOnly")->isChecked());
        QVERIFY(part<KVPasswordFieldView>(sheet, "mountImagePassword")->text().isEmpty());
    }

    void mountFolderText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("folder");
        const QString home = QDir::homePath();
        QTest::newRow("empty") << QStringLiteral("") << QStringLiteral("");
        QTest::newRow("blank") << QStringLiteral("  ") << QStringLiteral("");
        QTest::newRow("home") << "~" << QString(home + QStringLiteral("/"));
        QTest::newRow("under home") << "~/Volumes" << QString(home + QStringLiteral("/Volumes/"));
        QTest::newRow("relative") << "Volumes/Private/" << QString(home + QStringLiteral("/Volumes/Private/"));
        QTest::newRow("absolute with slash") << QStringLiteral("/media/someone/") << QStringLiteral("/media/someone/");
        QTest::newRow("other user") << "~other/x" << QString(home + QStringLiteral("/~other/x/"));
    }

    void mountFolderText()
    {
        QFETCH(QString, text);
        QFETCH(QString, folder);
        const QUrl root = KVMountImageSheet::mountRootFromText(text);
        QCOMPARE(root.isLocalFile() ? root.toLocalFile() : QString(), folder);
    }

    void otherFailuresEndTheSheetWithAnAlert()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        controller.hdiutil.addFile(
            QStringLiteral("attach-failure.txt"),
            KVToolDouble::readFixture(QStringLiteral("hdiutil/attach-temporarily-unavailable.txt")));
        controller.delegate->openFile(QStringLiteral("/home/someone/Secrets.sparseimage"));
        QSignalSpy ended(controller.sheet(), &QDialog::finished);
        mountWithPassword(controller.sheet(), "mountImagePassword", "mountImageMountButton", QStringLiteral("secret"));
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->text(), QStringLiteral("Mounting Disk Image failed"));
        // The tool's line, without the tool's name.
        QCOMPARE(openAlert()->informativeText(), QStringLiteral("Attach failed - Resource temporarily unavailable"));
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(ended.first().first().toInt(), int(KVSheetReturnCode::Succeeded));
    }

    void nothingEndsTheSheetWhileItMounts()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        controller.hdiutil.addFile(QStringLiteral("attach-hold"), QByteArray());
        controller.delegate->openFile(QStringLiteral("/home/someone/Secrets.sparseimage"));
        KVMountImageSheet *sheet = controller.sheet();
        mountWithPassword(sheet, "mountImagePassword", "mountImageMountButton", QStringLiteral("secret"));
        QVERIFY(!part<QPushButton>(sheet, "mountImageMountButton")->isEnabled());
        QVERIFY(!part<QPushButton>(sheet, "mountImageCancelButton")->isEnabled());
        QTest::keyClick(sheet, Qt::Key_Escape);
        sheet->close();
        QVERIFY(sheet->isVisible());

        QFile::remove(QDir(controller.hdiutil.directory()).filePath(QStringLiteral("attach-hold")));
        QTRY_VERIFY(!sheet->isVisible());
        // Once the sheet is back, Escape cancels.
        controller.delegate->openFile(QStringLiteral("/home/someone/Secrets.sparseimage"));
        QVERIFY(sheet->isVisible());
        QTest::keyClick(sheet, Qt::Key_Escape);
        QVERIFY(!sheet->isVisible());
        QCOMPARE(sheet->result(), int(KVSheetReturnCode::Cancelled));
    }

    void recentDocumentsAfterTheSheet_data()
    {
        QTest::addColumn<bool>("saveRecent");
        QTest::addColumn<bool>("cancel");
        QTest::newRow("cancelled, noted") << true << true;
        QTest::newRow("mounted, noted") << true << false;
        QTest::newRow("preference off") << false << false;
    }

    void recentDocumentsAfterTheSheet()
    {
        QFETCH(bool, saveRecent);
        QFETCH(bool, cancel);
        KVPreferences::setPrefSaveOpenRecent(saveRecent);
        Launched controller;
        QVERIFY(controller.exposed);
        const QString image = QStringLiteral("/home/someone/Noted Image.sparseimage");
        controller.delegate->openFile(image);
        QSignalSpy ended(controller.sheet(), &QDialog::finished);
        if (cancel)
            part<QPushButton>(controller.sheet(), "mountImageCancelButton")->click();
        else
            mountWithPassword(controller.sheet(), "mountImagePassword", "mountImageMountButton", QStringLiteral("pw"));
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(
            recentDocuments(controller.recentFile).contains(QString::fromUtf8(QUrl::fromLocalFile(image).toEncoded())),
            saveRecent);
    }

    void openPanelLeadsToTheSheet()
    {
        Launched controller;
        QVERIFY(controller.exposed);
        const QString image = imageFile(QStringLiteral("Chosen.dmg"));
        controller.delegate->mountDiskImage();
        auto *panel = controller.window()->findChild<QFileDialog *>(QStringLiteral("mountDiskImagePanel"));
        QVERIFY(panel);
        QTRY_VERIFY(panel->isVisible());
        QCOMPARE(panel->windowModality(), Qt::WindowModal);
        QCOMPARE(panel->fileMode(), QFileDialog::ExistingFile);
        for (const char *kind : {"*.dmg", "*.sparseimage", "*.sparsebundle"})
            QVERIFY(panel->nameFilters().first().contains(QString::fromLatin1(kind)));
        panel->setDirectory(m_files.path());
        panel->selectFile(image);
        static_cast<QDialog *>(panel)->accept();
        QTRY_VERIFY(controller.sheet() && controller.sheet()->isVisible());
        QCOMPARE(controller.sheet()->imagePath(), image);
    }

    void favouriteMountsUnderItsFolder()
    {
        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const QString mounts = m_files.filePath(QStringLiteral("mounts"));
        QDir().mkpath(mounts);
        favouriteOf(QStringLiteral("Photos"), home, mounts + QStringLiteral("/Photos"))->setReadOnly(true);
        Launched controller({home});
        QVERIFY(controller.exposed);
        KVOutlineView *outline = controller.window()->sidebar();
        const KVSidebarModel *model = controller.window()->sidebarModel();
        const QModelIndex photos =
            model->index(0, 0, model->index(0, 0, model->sectionIndex(KVSidebarModel::FavoritesSection)));
        QTest::mouseClick(outline->viewport(), Qt::LeftButton, Qt::NoModifier, outline->rowRect(photos).center());

        KVFavouriteMountViewsController *favourites = controller.delegate->favouriteMountViewsController();
        QVERIFY(favourites);
        QWidget *sheet = favourites->mountFavouriteWindow();
        QVERIFY(sheet->isVisible());
        QCOMPARE(part<QLabel>(sheet, "heading")->text(), QStringLiteral("Enter Password for Photos"));

        mountWithPassword(sheet, "passwordField", "mountFavouriteMountButton", QStringLiteral("wrong"));
        auto *reason = part<QLabel>(sheet, "mountFavouriteErrorNotification");
        QTRY_VERIFY(reason->isVisible());
        QCOMPARE(reason->text(), QStringLiteral("Wrong Password"));
        QVERIFY(part<QPushButton>(sheet, "mountFavouriteMountButton")->isEnabled());

        QSignalSpy ended(sheet, SIGNAL(finished(int)));
        mountWithPassword(sheet, "passwordField", "mountFavouriteMountButton", QStringLiteral("secret"));
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(ended.first().first().toInt(), int(KVSheetReturnCode::Succeeded));
        const QList<int> attaches = controller.runs(QStringLiteral("attach"));
        QCOMPARE(
            controller.hdiutil.arguments(attaches.last()),
            (QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings",
                         m_files.filePath(QStringLiteral("Photos.sparseimage")), "-readonly", "-mountroot", mounts}));
        QCOMPARE(controller.hdiutil.standardInput(attaches.last()), QByteArray("secret"));
        QVERIFY(part<KVPasswordFieldView>(sheet, "passwordField")->text().isEmpty());
    }

    void favouriteWhoseFileIsGone()
    {
        const KVFavouriteFolderPtr home = KVFavouriteFolder::create(QStringLiteral("Home"));
        const KVFavouriteItemPtr kept =
            favouriteOf(QStringLiteral("Kept"), home, QStringLiteral("/media/someone/Kept"));
        const KVFavouriteItemPtr gone =
            favouriteOf(QStringLiteral("Gone"), home, QStringLiteral("/media/someone/Gone"));
        const KVFavouriteItemPtr broken = KVFavouriteItem::create(QStringLiteral("Broken"), home);
        broken->setType(KVVolumeKind::DiskImage);
        broken->setLocation(QByteArray("not a bookmark"));
        home->content().append(broken);
        QVERIFY(QFile::remove(m_files.filePath(QStringLiteral("Gone.sparseimage"))));
        Launched controller({home});
        QVERIFY(controller.exposed);
        const QList<KVFavouriteItemPtr> &loaded = controller.delegate->favourites().first()->content();

        // Nothing mounted before: an alert, and no sheet.
        for (const KVFavouriteItemPtr &unusable : {loaded.at(1), loaded.at(2)}) {
            controller.delegate->mountFavourite(unusable);
            QTRY_VERIFY(openAlert());
            closeAlerts();
            QVERIFY(!controller.delegate->favouriteMountViewsController()->mountFavouriteWindow()->isVisible());
            QVERIFY(!controller.delegate->favouriteMountViewsController()->favouriteItemToMount());
        }

        // After another favourite, its sheet comes back instead; nothing is lost.
        controller.delegate->mountFavourite(loaded.at(0));
        QWidget *sheet = controller.delegate->favouriteMountViewsController()->mountFavouriteWindow();
        QVERIFY(sheet->isVisible());
        part<QPushButton>(sheet, "mountFavouriteCancelButton")->click();
        QVERIFY(!sheet->isVisible());
        // The alert stands alone, answerable, until it is answered.
        controller.delegate->mountFavourite(loaded.at(1));
        QTRY_VERIFY(openAlert());
        QVERIFY(!sheet->isVisible());
        QCOMPARE(QApplication::activeModalWidget(), openAlert());
        openAlert()->button(QMessageBox::Ok)->click();
        QTRY_VERIFY(sheet->isVisible());
        QCOMPARE(part<QLabel>(sheet, "heading")->text(), QStringLiteral("Enter Password for Kept"));
        QCOMPARE(controller.delegate->favourites().first()->content().size(), 3);

        // The file goes while the sheet is up: the mount does not reach hdiutil.
        QFile::remove(m_files.filePath(QStringLiteral("Kept.sparseimage")));
        mountWithPassword(sheet, "passwordField", "mountFavouriteMountButton", QStringLiteral("secret"));
        QTRY_VERIFY(openAlert());
        QVERIFY(!sheet->isVisible());
        QVERIFY(controller.runs(QStringLiteral("attach")).isEmpty());
    }

    void favouriteMountFolder_data()
    {
        QTest::addColumn<QString>("mountPoint");
        QTest::addColumn<QString>("folder");
        QTest::newRow("usual") << QStringLiteral("/media/someone/Secrets") << QStringLiteral("/media/someone/");
        QTest::newRow("trailing slash") << QStringLiteral("/media/someone/Secrets/")
                                        << QStringLiteral("/media/someone/");
        QTest::newRow("at the top") << QStringLiteral("/Secrets") << QStringLiteral("/");
        QTest::newRow("no folder") << QStringLiteral("Secrets") << QStringLiteral("");
        QTest::newRow("none") << QStringLiteral("") << QStringLiteral("");
    }

    void favouriteMountFolder()
    {
        QFETCH(QString, mountPoint);
        QFETCH(QString, folder);
        const QUrl root = KVFavouriteMountViewsController::mountRoot(mountPoint);
        QCOMPARE(root.isLocalFile() ? root.toLocalFile() : QString(), folder);
    }

    void dropAreaFadesWithTheMultiplier()
    {
        KVUserDefaults::standard().setObject(0.5, KVAnimationDurationMultiplierKey);
        Launched controller;
        QVERIFY(controller.exposed);
        KVMainWindow *window = controller.window();
        const auto pointerGoes = [window](QEvent::Type type) {
            QEvent event(type);
            if (type == QEvent::Enter) {
                QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
                QApplication::sendEvent(window->outerMountArea(), &enter);
            } else {
                QApplication::sendEvent(window->outerMountArea(), &event);
            }
        };
        QCOMPARE(window->mountAreaOpacity(0), 1.0);
        QCOMPARE(window->mountAreaOpacity(1), 0.0);
        pointerGoes(QEvent::Enter);
        QCOMPARE(window->mountAreaFade()->duration(), 150);
        QTRY_COMPARE(window->mountAreaOpacity(0), 0.0);
        QCOMPARE(window->mountAreaOpacity(1), 1.0);
        QCOMPARE(window->mountAreaOpacity(2), 1.0);
        kvSaveScreenshot(window, QStringLiteral("main-window-drop-area-hovered"));
        pointerGoes(QEvent::Leave);
        QTRY_COMPARE(window->mountAreaOpacity(0), 1.0);
        QCOMPARE(window->mountAreaOpacity(2), 0.0);

        // While a file is dragged over the window the label stays.
        const QScopedPointer<QMimeData> data(filesDrag({QStringLiteral("/home/someone/Secrets.sparseimage")}));
        QVERIFY(dragEnters(window, *data));
        pointerGoes(QEvent::Enter);
        QTRY_COMPARE(window->mountAreaFade()->state(), QAbstractAnimation::Stopped);
        QCOMPARE(window->mountAreaOpacity(0), 1.0);
        kvSaveScreenshot(window, QStringLiteral("main-window-file-dragged-over"));
    }
};

QTEST_MAIN(TestKVMountSheets)
#include "tst_kvmountsheets.moc"
