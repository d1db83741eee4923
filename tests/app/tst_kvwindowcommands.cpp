#include "app/KVCommandValidation.h"
#include "app/KVCreatePopover.h"
#include "app/KVHelpBrowser.h"
#include "app/KVHelpPopovers.h"
#include "app/KVMainWindow.h"
#include "app/KVWindowActions.h"
#include "controls/KVPopover.h"

#include "KVMountFixture.h"
#include "KVOutlet.h"
#include "KVScreenshot.h"

#include <QAction>
#include <QCommandLinkButton>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QToolButton>

using namespace KVMountFixture;

namespace {

KVVolumeItemPtr image()
{
    return imageVolume(4, QStringLiteral("/media/someone/Volume4"));
}

KVVolumeItemPtr disk()
{
    return diskVolume(QStringLiteral("Backup"), QStringLiteral("/media/someone/Backup"), 2000000000, 500000000);
}

KVVolumeItemPtr systemVolume()
{
    return diskVolume(QStringLiteral("System"), QStringLiteral("/"), 100000000000, 5000000000);
}

// The commands of the selected volume, by their action's name.
const QStringList VolumeCommands{"openAddToFavouritePullDown", "eraseKeys", "resize", "compact",
                                 "unmountCurrentVolume", "changePassword", "decrypt", "unmountAll"};

QStringList enabledVolumeCommands(const KVMainWindow &window)
{
    QStringList enabled;
    for (const QString &name : VolumeCommands) {
        if (kvOutlet<QAction>(&window, name)->isEnabled())
            enabled.append(name);
    }
    return enabled;
}

} // namespace

class tst_KVWindowCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        useTestSettings();
        KVUserDefaults::standard().setBool(false, KVShowWelcomeHelpKey);
    }

    void commandsFollowTheSelection_data()
    {
        QTest::addColumn<KVVolumeItemPtr>("selection");
        QTest::addColumn<bool>("anyMounted");
        QTest::addColumn<QStringList>("enabled");
        QTest::newRow("nothing selected, nothing mounted") << KVVolumeItemPtr() << false << QStringList{};
        QTest::newRow("nothing selected") << KVVolumeItemPtr() << true << QStringList{"unmountAll"};
        QTest::newRow("image") << image() << true
                               << QStringList{"openAddToFavouritePullDown", "eraseKeys", "resize", "compact",
                                              "unmountCurrentVolume", "changePassword", "unmountAll"};
        QTest::newRow("disk") << disk() << true
                              << QStringList{"unmountCurrentVolume", "changePassword", "decrypt", "unmountAll"};
        QTest::newRow("system volume") << systemVolume() << true << QStringList{"unmountAll"};
    }

    void commandsFollowTheSelection()
    {
        QFETCH(KVVolumeItemPtr, selection);
        QFETCH(bool, anyMounted);
        QFETCH(QStringList, enabled);
        KVMainWindow window;
        // From everything enabled, so that each rule has to refuse on its own.
        window.updateActionState(image(), true);
        window.updateActionState(selection, anyMounted);
        QCOMPARE(enabledVolumeCommands(window), enabled);
        // The toolbar's unmount-all button follows its action.
        QCOMPARE(kvOutlet<QToolButton>(&window, QStringLiteral("unmountAll"))->isEnabled(), anyMounted);
        // Commands that need no volume are always there.
        for (KVCommand command : {KVCommand::CreateDiskImage, KVCommand::MountDiskImage, KVCommand::EncryptDisk,
                                  KVCommand::MountDisk, KVCommand::Preferences, KVCommand::Quit, KVCommand::ShowTips})
            QVERIFY(KVCommandValidation::isEnabled(command, selection, anyMounted));
    }

    void shortcutsAreThoseOfTheDesktop()
    {
        KVMainWindow window;
        const QList<std::pair<const char *, QKeySequence>> shortcuts{
            {"createDiskImage", QKeySequence(QStringLiteral("Ctrl+N"))},
            {"mountDiskImage", QKeySequence(QStringLiteral("Ctrl+O"))},
            {"unmountCurrentVolume", QKeySequence(QStringLiteral("Ctrl+E"))},
            {"unmountAll", QKeySequence(QStringLiteral("Ctrl+Shift+E"))},
            {"editVolumeName", QKeySequence(QStringLiteral("F2"))},
            {"showPreferences", QKeySequence(QStringLiteral("Ctrl+,"))},
            {"quit", QKeySequence(QStringLiteral("Ctrl+Q"))},
        };
        for (const auto &[name, keys] : shortcuts)
            QCOMPARE(kvOutlet<QAction>(&window, QString::fromLatin1(name))->shortcut(), keys);
        // Every command is in the menu bar, under File, Volume or Help.
        QStringList menus;
        for (QAction *menu : window.menuBar()->actions())
            menus.append(menu->text().remove(u'&'));
        QCOMPARE(menus, (QStringList{"File", "Volume", "Help"}));
    }

    void commandsLeaveTheWindowOrAreShownByIt()
    {
        KVMainWindow window;
        QSignalSpy requested(&window, &KVMainWindow::commandRequested);
        QSignalSpy quit(&window, &KVMainWindow::closeRequested);
        window.updateActionState(image(), true);
        kvOutlet<QAction>(&window, QStringLiteral("compact"))->trigger();
        kvOutlet<QAction>(&window, QStringLiteral("quit"))->trigger();
        QCOMPARE(requested.size(), 1);
        QCOMPARE(requested.first().first().value<KVCommand>(), KVCommand::Compact);
        QCOMPARE(quit.size(), 1);

        // Help is the window's own business.
        kvOutlet<QAction>(&window, QStringLiteral("showEncryptionHelp"))->trigger();
        QVERIFY(window.helpBrowser() && window.helpBrowser()->isVisible());
        QVERIFY(window.helpBrowser()->browser()->toPlainText().contains(QStringLiteral("LUKS2")));
        kvOutlet<QAction>(&window, QStringLiteral("showHelp"))->trigger();
        QVERIFY(window.helpBrowser()->browser()->toPlainText().contains(QStringLiteral("Keyboard shortcuts")));
        QCOMPARE(requested.size(), 1);
    }

    void createPopoverOffersTheThreeTasks()
    {
        KVMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy requested(&window, &KVMainWindow::commandRequested);
        auto *popover = kvOutlet<KVCreatePopover>(&window, QStringLiteral("createToolbarPopOver"));
        const QList<std::pair<const char *, KVCommand>> entries{{"createImageButton", KVCommand::CreateDiskImage},
                                                                {"encryptDiskButton", KVCommand::EncryptDisk},
                                                                {"mountDiskButton", KVCommand::MountDisk}};
        for (const auto &[button, command] : entries) {
            kvOutlet<QToolButton>(&window, QStringLiteral("createButton"))->click();
            QTRY_VERIFY(popover->isVisible());
            QCOMPARE(popover->edge(), Qt::BottomEdge);
            kvSaveScreenshot(popover, QStringLiteral("create-popover"));
            kvOutlet<QCommandLinkButton>(popover, QString::fromLatin1(button))->click();
            QVERIFY(!popover->isVisible());
            QCOMPARE(requested.takeFirst().first().value<KVCommand>(), command);
        }
    }

    void tipsComeAndGoTogether()
    {
        KVMainWindow window;
        window.resize(860, 560);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QAction *tips = kvOutlet<QAction>(&window, QStringLiteral("showtips"));
        tips->trigger();
        KVHelpPopovers *help = window.helpPopovers();
        QVERIFY(help);
        const std::array<Qt::Edge, KVHelpPopovers::NoteCount> edges{Qt::RightEdge, Qt::TopEdge, Qt::BottomEdge,
                                                                    Qt::TopEdge};
        for (int note = 0; note < KVHelpPopovers::NoteCount; ++note) {
            QVERIFY(help->note(KVHelpPopovers::Note(note))->isVisible());
            QCOMPARE(help->note(KVHelpPopovers::Note(note))->edge(), edges[note]);
            // Each note lies inside the window, beside what it explains.
            const QRect placed = help->note(KVHelpPopovers::Note(note))->geometry();
            QVERIFY(window.rect().contains(placed));
            for (int other = 0; other < note; ++other)
                QVERIFY(!placed.intersects(help->note(KVHelpPopovers::Note(other))->geometry()));
        }
        kvSaveScreenshot(&window, QStringLiteral("window-tips"));
        // One note still shown is enough for the next toggle to close them all.
        for (int note = 1; note < KVHelpPopovers::NoteCount; ++note)
            help->note(KVHelpPopovers::Note(note))->hide();
        tips->trigger();
        QVERIFY(!help->isAnyShown());
        tips->trigger();
        QVERIFY(help->note(KVHelpPopovers::DropArea)->isVisible());
    }

    void controllerCarriesOutTheMenusCommands()
    {
        resetUserDefaults();
        Controller controller;
        controller.setAttachedImages({4, 5});
        controller.delegate->applicationDidFinishLaunching();
        KVMainWindow *window = controller.delegate->mainWindow();
        QTRY_COMPARE(controller.delegate->unifiedVolumes().size(), 2);
        QVERIFY(kvOutlet<QAction>(window, QStringLiteral("unmountAll"))->isEnabled());
        QVERIFY(!kvOutlet<QAction>(window, QStringLiteral("unmountCurrentVolume"))->isEnabled());

        controller.delegate->setCurrentSelection(controller.delegate->unifiedVolumes().at(1));
        // The menu's commands are the pane's: erasing the key asks first.
        kvOutlet<QAction>(window, QStringLiteral("eraseKeys"))->trigger();
        QTRY_VERIFY(openAlert());
        QCOMPARE(openAlert()->text(), QStringLiteral("This will render all the data in this Disk Image inaccessible."));
        closeAlerts();
        QVERIFY(controller.runs(QStringLiteral("detach")).isEmpty());
        kvOutlet<QAction>(window, QStringLiteral("unmountCurrentVolume"))->trigger();
        QTRY_COMPARE(controller.runs(QStringLiteral("detach")).size(), 1);
        QCOMPARE(controller.hdiutil.arguments(controller.runs(QStringLiteral("detach")).first()).last(),
                 QStringLiteral("/dev/disk5"));

        kvOutlet<QAction>(window, QStringLiteral("unmountAll"))->trigger();
        QTRY_COMPARE(controller.runs(QStringLiteral("detach")).size(), 3);
    }
};

QTEST_MAIN(tst_KVWindowCommands)
#include "tst_kvwindowcommands.moc"
