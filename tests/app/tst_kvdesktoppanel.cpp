// The panel entry's menu and what its items do, the close button with and
// without the panel, and the preferences window's desktop group.
#include "app/KVDesktopIntegration.h"
#include "app/KVMainWindow.h"
#include "app/KVPreferencesController.h"
#include "app/KVTrayIcon.h"
#include "platform/KVServiceAvailability.h"
#include "settings/KVPreferences.h"

#include "KVDesktopBench.h"
#include "KVOutlet.h"
#include "KVScreenshot.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QSpinBox>

using namespace KVDesktopBench;

namespace {

QStringList texts(const QMenu *menu)
{
    QStringList found;
    for (const QAction *action : menu->actions())
        found.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return found;
}

QAction *action(const QMenu *menu, const QString &text)
{
    for (QAction *candidate : menu->actions()) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

} // namespace

class TestKVDesktopPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }
    void init()
    {
        resetUserDefaults();
        resetDesktopPreferences();
    }
    void cleanup() { closeAlerts(); }

    void menuListsTheMountedVolumes()
    {
        KVTrayIcon tray;
        QCOMPARE(texts(tray.menu()), (QStringList{"No volumes mounted", "-", "Unmount All", "Show Korvelle", "-", "Quit"}));
        QVERIFY(!action(tray.menu(), QStringLiteral("Unmount All"))->isEnabled());

        const QList<KVVolumeItemPtr> volumes{imageVolume(1, QStringLiteral("/media/someone/Volume1")),
                                             imageVolume(2, QStringLiteral("/media/someone/Volume2"))};
        tray.setVolumes(volumes);
        QCOMPARE(texts(tray.menu()), (QStringList{"Volume1", "Volume2", "-", "Unmount All", "Show Korvelle", "-", "Quit"}));
        QVERIFY(action(tray.menu(), QStringLiteral("Unmount All"))->isEnabled());
        QCOMPARE(texts(action(tray.menu(), QStringLiteral("Volume2"))->menu()), (QStringList{"Open", "Unmount"}));

        // Rebuilt with the list, without leaving the old submenus behind.
        tray.setVolumes({volumes.at(1)});
        QCOMPARE(texts(tray.menu()), (QStringList{"Volume2", "-", "Unmount All", "Show Korvelle", "-", "Quit"}));
        QCOMPARE(tray.menu()->findChildren<QMenu *>(Qt::FindDirectChildrenOnly).size(), 1);

        QSignalSpy open(&tray, &KVTrayIcon::openRequested);
        action(action(tray.menu(), QStringLiteral("Volume2"))->menu(), QStringLiteral("Open"))->trigger();
        QCOMPARE(open.size(), 1);
        QCOMPARE(open.constFirst().constFirst().value<KVVolumeItemPtr>(), volumes.at(1));
    }

    void menuItemsRunTheUnmounts()
    {
        Bench bench;
        QMenu *menu = bench.desktop->trayIcon()->menu();
        action(menu, QStringLiteral("Unmount All"))->trigger();
        QTRY_COMPARE(bench.detached(), (QStringList{"/dev/disk1", "/dev/disk2"}));

        action(action(menu, QStringLiteral("Volume2"))->menu(), QStringLiteral("Unmount"))->trigger();
        QTRY_COMPARE(bench.detached(), (QStringList{"/dev/disk1", "/dev/disk2", "/dev/disk2"}));

        QSignalSpy show(bench.desktop.get(), &KVDesktopIntegration::showWindowRequested);
        QSignalSpy quit(bench.desktop.get(), &KVDesktopIntegration::quitRequested);
        action(menu, QStringLiteral("Show Korvelle"))->trigger();
        action(menu, QStringLiteral("Quit"))->trigger();
        QCOMPARE(show.size(), 1);
        QCOMPARE(quit.size(), 1);
        kvSaveScreenshot(menu, QStringLiteral("tray-menu"));
    }

    // Without a panel to stay in, closing the window quits even when the
    // user asked to keep running there.
    void closeButtonQuitsWithoutAPanel()
    {
        KVPreferences::setPrefShowInPanel(true);
        KVPreferences::setPrefKeepRunningInPanel(true);
        Bench bench;
        KVMainWindow window;
        bench.desktop->followCloseButton(&window);
        bench.desktop->start();
        QSignalSpy quit(bench.desktop.get(), &KVDesktopIntegration::quitRequested);
        window.show();
        QVERIFY(!window.close());
        QCOMPARE(quit.size(), KVTrayIcon::panelAvailable() ? 0 : 1);
        QCOMPARE(window.isVisible(), !KVTrayIcon::panelAvailable());
    }

    void preferencesShowTheDesktopGroup()
    {
        KVServiceAvailability sleep(QStringLiteral("sleep"));
        KVServiceAvailability panel(QStringLiteral("panel"));
        KVServiceAvailability notifications(QStringLiteral("notifications"));
        sleep.setAvailable();
        KVPreferencesController window(nullptr, {&sleep, nullptr, &panel, &notifications});
        window.showWindow();
        auto *sleepBox = kvOutlet<QCheckBox>(&window, "unmountBeforeSleepCheckbox");
        auto *panelBox = kvOutlet<QCheckBox>(&window, "showInPanelCheckbox");
        auto *keepRunning = kvOutlet<QCheckBox>(&window, "keepRunningInPanelCheckbox");
        auto *minutes = kvOutlet<QSpinBox>(&window, "idleMinutesSpinBox");
        auto *note = kvOutlet<QLabel>(&window, "desktopServicesNote");

        // Everything is off until chosen; staying in the panel needs the panel entry.
        for (const char *name : {"unmountBeforeSleepCheckbox", "unmountOnScreenLockCheckbox", "unmountWhenIdleCheckbox",
                                 "showInPanelCheckbox", "keepRunningInPanelCheckbox", "desktopNotificationsCheckbox"})
            QVERIFY2(!kvOutlet<QCheckBox>(&window, name)->isChecked(), name);
        QCOMPARE(minutes->value(), 30);
        QVERIFY(!keepRunning->isEnabled());
        QVERIFY(note->isHidden());

        sleepBox->click();
        QVERIFY(KVPreferences::prefUnmountBeforeSleep());
        minutes->setValue(5);
        QCOMPARE(KVPreferences::prefIdleMinutes(), 5);
        panelBox->click();
        QVERIFY(keepRunning->isEnabled());
        keepRunning->click();
        QVERIFY(KVPreferences::prefKeepRunningInPanel());

        // Services that turn out missing are shown off, and the note says why.
        panel.setUnavailable(QStringLiteral("none here"));
        notifications.setUnavailable(QStringLiteral("none here"));
        QVERIFY(!panelBox->isEnabled());
        QVERIFY(!keepRunning->isEnabled());
        QVERIFY(!kvOutlet<QCheckBox>(&window, "desktopNotificationsCheckbox")->isEnabled());
        QVERIFY(sleepBox->isEnabled());
        QVERIFY(note->isVisible());
        QCOMPARE(note->text().count(u'\n'), 1);
        // The window grows to show the note whole, once the platform has applied the new size.
        QTRY_VERIFY(note->height() >= note->heightForWidth(note->width()));
        kvSaveScreenshot(&window, QStringLiteral("preferences-desktop-group"));
    }

    // Under a real display with a panel (KV_SCREENSHOT_DIR and a tray host
    // such as stalonetray): the entry in the panel with its menu open.
    void panelPicture()
    {
        if (qEnvironmentVariable("KV_SCREENSHOT_DIR").isEmpty() || !KVTrayIcon::panelAvailable())
            QSKIP("needs a display with a panel and KV_SCREENSHOT_DIR");
        KVPreferences::setPrefShowInPanel(true);
        Bench bench;
        bench.desktop->start();
        QTRY_VERIFY(bench.desktop->trayIcon()->isShown());
        QTest::qWait(1000);
        QMenu *menu = bench.desktop->trayIcon()->menu();
        menu->popup(QPoint(20, 40));
        QTest::qWait(500);
        QGuiApplication::primaryScreen()->grabWindow(0).save(
            QDir(qEnvironmentVariable("KV_SCREENSHOT_DIR")).filePath(QStringLiteral("tray-on-screen.png")));
        menu->hide();
    }
};

QTEST_MAIN(TestKVDesktopPanel)

#include "tst_kvdesktoppanel.moc"
