#include "app/KVActionMenuView.h"
#include "app/KVDetailPaneController.h"
#include "app/KVDetailPaneView.h"
#include "app/KVMainWindow.h"

#include "KVMountFixture.h"
#include "KVOutlet.h"
#include "KVScreenshot.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>

using namespace KVMountFixture;

namespace {

template<typename T = QWidget>
T *outlet(QWidget *window, const char *name)
{
    return kvOutlet<T>(window, QString::fromLatin1(name));
}

// What the action menu offers: per button its title and identifier, or
// nothing when hidden; then which separators show.
struct MenuState
{
    QStringList buttons;
    QList<bool> separators;
    bool operator==(const MenuState &) const = default;
};

MenuState menuState(QWidget *window)
{
    MenuState state;
    for (int index = 0; index < KVActionMenuView::ButtonCount; ++index) {
        auto *button = outlet<QPushButton>(window, qPrintable(QStringLiteral("amButton%1").arg(index)));
        state.buttons.append(button->isHidden() ? QString()
                                                : button->text() + u'/' + KVActionMenuView::identifier(button));
    }
    for (int index = 0; index < KVActionMenuView::ButtonCount - 1; ++index)
        state.separators.append(!outlet(window, qPrintable(QStringLiteral("amSeparator%1").arg(index)))->isHidden());
    return state;
}

// An attached image whose file lies in the home folder.
KVVolumeItemPtr imageInHome()
{
    QVariantMap entry = imageEntry(4, QStringLiteral("/media/someone/Secret Stuff"));
    entry.insert(QStringLiteral("image-path"), QString(QDir::homePath() + QStringLiteral("/Documents/Secret Stuff.sparseimage")));
    return KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), entry},
                                 {QStringLiteral("diskutilInfo"),
                                  diskutilInfo(4, QStringLiteral("/media/someone/Secret Stuff"), 2000000000, 500000000)}},
                                nullptr);
}

KVVolumeItemPtr convertingDisk()
{
    KVVolumeItemPtr disk =
        diskVolume(QStringLiteral("Backup"), QStringLiteral("/media/someone/Backup"), 2000000000000, 500000000000);
    disk->setConverting(true);
    disk->setConversionProgress(42);
    disk->setStatusVisible(QStringLiteral("Encrypting 42%"));
    return disk;
}

struct Pane
{
    Pane() { window.resize(900, 560); }
    KVMainWindow window;
    KVDetailPaneController controller{&window};
    QWidget *operator->() { return &window; }
};

} // namespace

class TestKVDetailPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        useTestSettings();
        KVUserDefaults::standard().registerDefaults({{KVShowWelcomeHelpKey, true}});
    }

    void init()
    {
        resetUserDefaults();
        KVUserDefaults::standard().removeObject(KVShowWelcomeHelpKey);
    }

    void actionMenuFollowsTheKindOfVolume_data()
    {
        QTest::addColumn<KVVolumeItemPtr>("volume");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QList<bool>>("separators");
        QTest::addColumn<bool>("active");
        const QStringList imageCommands{"Change Password/changePW", "Erase Key/eraseKey", "Resize/resize",
                                        "Compact/compact"};
        const QStringList diskCommands{QString(), "Change Password/changePW", "Decrypt/decrypt", QString()};
        QTest::newRow("image") << imageVolume(4, QStringLiteral("/media/someone/Volume4")) << imageCommands
                               << QList<bool>{true, true, true} << true;
        QTest::newRow("disk") << convertingDisk() << diskCommands << QList<bool>{false, true, false} << true;
        QTest::newRow("system volume")
            << diskVolume(QStringLiteral("System"), QStringLiteral("/"), 100000000000, 5000000000) << diskCommands
            << QList<bool>{false, true, false} << false;
    }

    void actionMenuFollowsTheKindOfVolume()
    {
        QFETCH(KVVolumeItemPtr, volume);
        QFETCH(QStringList, buttons);
        QFETCH(QList<bool>, separators);
        QFETCH(bool, active);
        Pane pane;
        // An image first: a disk must hide what the image showed.
        pane.controller.updateDetailView(imageVolume(5, QStringLiteral("/media/someone/Volume5")));
        pane.controller.updateDetailView(volume);
        QCOMPARE(menuState(&pane.window), (MenuState{buttons, separators}));
        QCOMPARE(outlet<KVActionMenuView>(&pane.window, "actionMenuView")->isActive(), active);
        for (int index = 0; index < KVActionMenuView::ButtonCount; ++index)
            QCOMPARE(outlet<QPushButton>(&pane.window, qPrintable(QStringLiteral("amButton%1").arg(index)))->isEnabled(),
                     active);

        pane.controller.updateDetailView(nullptr);
        QVERIFY(!outlet<KVActionMenuView>(&pane.window, "actionMenuView")->isActive());
        QVERIFY(outlet(&pane.window, "volumeInfoView")->isHidden());
    }

    void welcomeTipShowsOnlyUntilTheFirstSelectionEver()
    {
        {
            Pane pane;
            pane.controller.updateDetailView(nullptr);
            QVERIFY(!outlet(&pane.window, "detailTipView")->isHidden());
            QVERIFY(outlet(&pane.window, "detailPlaceholderView")->isHidden());
            pane.controller.updateDetailView(imageVolume(4, QStringLiteral("/media/someone/Volume4")));
            QVERIFY(outlet(&pane.window, "detailTipView")->isHidden());
            QVERIFY(!KVUserDefaults::standard().boolForKey(KVShowWelcomeHelpKey));
            pane.controller.updateDetailView(nullptr);
            QVERIFY(outlet(&pane.window, "detailTipView")->isHidden());
            QVERIFY(!outlet(&pane.window, "detailPlaceholderView")->isHidden());
        }
        // As after a restart: a new window and controller read the stored answer.
        Pane again;
        again.controller.updateDetailView(nullptr);
        QVERIFY(outlet(&again.window, "detailTipView")->isHidden());
        QVERIFY(!outlet(&again.window, "detailPlaceholderView")->isHidden());
    }

    void imageAndDiskAreDescribed()
    {
        Pane pane;
        const KVVolumeItemPtr image = imageInHome();
        pane.controller.updateDetailView(image);
        QCOMPARE(outlet<QLineEdit>(&pane.window, "volumeName")->text(), image->name());
        QCOMPARE(outlet<QLabel>(&pane.window, "mountPointInfo")->text(), QStringLiteral("/media/someone/Secret Stuff"));
        QCOMPARE(outlet<QLabel>(&pane.window, "locationOrStatusLabel")->text(), QStringLiteral("Location:"));
        QCOMPARE(outlet<QLabel>(&pane.window, "locationOrStatusInfo")->text(),
                 QStringLiteral("~/Documents/Secret Stuff.sparseimage"));
        QVERIFY(outlet<QToolButton>(&pane.window, "addToFavouritePullDown")->isEnabled());
        QVERIFY(!outlet(&pane.window, "spaceProgressBar")->isHidden());

        pane.controller.updateDetailView(convertingDisk());
        QCOMPARE(outlet<QLabel>(&pane.window, "locationOrStatusLabel")->text(), QStringLiteral("Status:"));
        QCOMPARE(outlet<QLabel>(&pane.window, "locationOrStatusInfo")->text(), QStringLiteral("Encrypting 42%"));
        QVERIFY(!outlet<QToolButton>(&pane.window, "addToFavouritePullDown")->isEnabled());

        QCOMPARE(KVDetailPaneView::abbreviatingHome(QDir::homePath()), QStringLiteral("~"));
        QCOMPARE(KVDetailPaneView::abbreviatingHome(QDir::homePath() + QStringLiteral("stead/x")),
                 QString(QDir::homePath() + QStringLiteral("stead/x")));
    }

    void renamingAsksOnlyForANewName()
    {
        Pane pane;
        pane.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&pane.window));
        const KVVolumeItemPtr image = imageVolume(4, QStringLiteral("/media/someone/Volume4"));
        pane.controller.updateDetailView(image);
        QSignalSpy renames(&pane.controller, &KVDetailPaneController::renameRequested);
        auto *name = outlet<QLineEdit>(&pane.window, "volumeName");
        KVDetailPaneView *view = pane.window.detailPane();

        auto renameTo = [&](const QString &text, Qt::Key end) {
            view->beginRenaming();
            QVERIFY(!name->isReadOnly());
            QCOMPARE(name->selectedText(), image->name());
            name->setText(text);
            QTest::keyClick(name, end);
            QVERIFY(name->isReadOnly());
            // The field shows the volume's own name again on the next turn.
            QTRY_COMPARE(name->text(), image->name());
        };
        renameTo(image->name(), Qt::Key_Return);
        renameTo(QStringLiteral("   "), Qt::Key_Return);
        renameTo(QStringLiteral("Somewhere else"), Qt::Key_Escape);
        QCOMPARE(renames.count(), 0);
        renameTo(QStringLiteral("Tax Returns"), Qt::Key_Return);
        QCOMPARE(renames.count(), 1);
        QCOMPARE(renames.first().first().toString(), QStringLiteral("Tax Returns"));
        QVERIFY(pane.window.sidebar()->hasFocus());
    }

    void commandsReachTheControllerOnlyWithASelection()
    {
        Pane pane;
        QSignalSpy commands(&pane.controller, &KVDetailPaneController::commandChosen);
        pane.controller.updateDetailView(imageVolume(4, QStringLiteral("/media/someone/Volume4")));
        outlet<QPushButton>(&pane.window, "amButton1")->click();
        outlet<QPushButton>(&pane.window, "amButton3")->click();
        QCOMPARE(commands.count(), 2);
        QCOMPARE(commands.at(0).first().toString(), QStringLiteral("eraseKey"));
        QCOMPARE(commands.at(1).first().toString(), QStringLiteral("compact"));
        pane.controller.updateDetailView(nullptr);
        // A click that was on its way as the selection went.
        Q_EMIT outlet<KVActionMenuView>(&pane.window, "actionMenuView")->commandChosen(QStringLiteral("compact"));
        QCOMPARE(commands.count(), 2);
    }

    void screenshots()
    {
        if (qEnvironmentVariableIsEmpty("KV_SCREENSHOT_DIR"))
            QSKIP("set KV_SCREENSHOT_DIR to keep pictures of the pane");
        Pane pane;
        pane.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&pane.window));
        // Laid out as the user would see it, after the event loop has run.
        auto shoot = [&pane](const KVVolumeItemPtr &volume, const char *name) {
            pane.controller.updateDetailView(volume);
            QTest::qWait(50);
            kvSaveScreenshot(&pane.window, QString::fromLatin1(name));
        };
        KVUserDefaults::standard().setBool(true, KVShowWelcomeHelpKey);
        shoot(nullptr, "detail-welcome");
        shoot(imageInHome(), "detail-image");
        shoot(convertingDisk(), "detail-disk-converting");
        shoot(nullptr, "detail-placeholder");
    }
};

QTEST_MAIN(TestKVDetailPane)
#include "tst_kvdetailpane.moc"
