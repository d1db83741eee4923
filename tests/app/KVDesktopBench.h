#pragma once

// What the tests of automatic unmounting and of the panel entry share: the
// volume commands and the desktop integration on an image engine whose
// hdiutil is a double, with mounted images made without running anything.

#include "app/KVDesktopIntegration.h"
#include "app/KVFavouritesController.h"
#include "app/KVQuitCoordinator.h"
#include "app/KVUnmountController.h"
#include "app/KVVolumeCommands.h"
#include "settings/KVPreferenceKeys.h"

#include "KVMountFixture.h"

#include <QFileInfo>

namespace KVDesktopBench {

using namespace KVMountFixture;

// hdiutil: "detach" waits while detach-hold exists, then refuses while
// detach-busy exists (unless forced); everything else succeeds.
inline constexpr char AutoHdiutilScript[] = R"sh(case "$1" in
info) cat "$d/info.plist"; exit 0;;
detach)
  while [ -f "$d/detach-hold" ]; do sleep 0.02; done
  case " $* " in *" -force "*) ;; *) if [ -f "$d/detach-busy" ]; then cat "$d/detach-busy.txt"; exit 16; fi;; esac
  for last in "$@"; do :; done; printf '"%s" unmounted.\n"%s" ejected.\n' "$last" "$last"; exit 0;;
esac
)sh";

// The volume commands and the desktop on an image engine whose hdiutil is a
// double, with volumes 1 and 2 mounted.
struct Bench
{
    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    QWidget window;
    KVQuitCoordinator quit;
    KVFavouritesController favourites;
    std::unique_ptr<KVDiskImage> di;
    std::unique_ptr<KVVolumeCommands> commands;
    std::unique_ptr<KVDesktopIntegration> desktop;
    QList<KVVolumeItemPtr> volumes;

    explicit Bench(const QStringList &mountPoints = {QStringLiteral("/media/someone/Volume1"),
                                                     QStringLiteral("/media/someone/Volume2")})
    {
        hdiutil.setScript(AutoHdiutilScript);
        diskutil.setScript(DiskutilScript);
        hdiutil.addFile(QStringLiteral("info.plist"),
                        KVToolDouble::readFixture(QStringLiteral("hdiutil/info-nothing-attached.plist")));
        hdiutil.addFile(QStringLiteral("detach-busy.txt"), KVToolDouble::readFixture(QStringLiteral("hdiutil/detach-busy.txt")));
        di = std::make_unique<KVDiskImage>(KVToolPaths{hdiutil.path(), QString(), QString()}, &workspace);
        commands = std::make_unique<KVVolumeCommands>(&window, &quit, &favourites);
        commands->setDi(di.get());
        desktop = std::make_unique<KVDesktopIntegration>(commands.get());
        for (int disk = 1; disk <= mountPoints.size(); ++disk)
            volumes.append(image(disk, mountPoints.at(disk - 1)));
        commands->setVolumes(volumes, nullptr);
        desktop->setVolumes(volumes);
    }

    ~Bench()
    {
        hold(false);
        closeAlerts();
        const auto drained = std::make_shared<std::atomic<bool>>(false);
        di->processingQueue().addOperation([drained] { *drained = true; });
        // A destructor cannot fail the test; a queue that never drains shows as the next test's failure.
        if (!QTest::qWaitFor([&drained] { return drained->load(); }, 10000))
            qWarning("the image engine's queue did not drain");
    }

    // An attached image as the engine makes it: hdiutil's entry, and
    // diskutil asked about its mount point.
    KVVolumeItemPtr image(int disk, const QString &mountPoint)
    {
        diskutil.addFile(QFileInfo(mountPoint).fileName() + QStringLiteral(".plist"),
                         KVPropertyList::encodeXml(diskutilInfo(disk, mountPoint)));
        return KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), imageEntry(disk, mountPoint)}}, nullptr,
                                    KVToolPaths{hdiutil.path(), diskutil.path(), QString()});
    }

    // Detaching waits until released.
    void hold(bool held)
    {
        const QString file = QDir(hdiutil.directory()).filePath(QStringLiteral("detach-hold"));
        if (held)
            hdiutil.addFile(QStringLiteral("detach-hold"), {});
        else
            QFile::remove(file);
    }

    // The devices hdiutil detached (or was asked to), in order.
    QStringList detached() const
    {
        QStringList devices;
        for (int run = 1; run <= hdiutil.runCount(); ++run) {
            const QStringList arguments = hdiutil.arguments(run);
            if (arguments.value(0) == u"detach")
                devices.append(arguments.constLast());
        }
        return devices;
    }
};

// Every desktop preference back to its default.
inline void resetDesktopPreferences()
{
    for (const QString &key : {KVUnmountBeforeSleepKey, KVUnmountOnScreenLockKey, KVUnmountWhenIdleKey, KVIdleMinutesKey,
                               KVShowInPanelKey, KVKeepRunningInPanelKey, KVDesktopNotificationsKey})
        KVUserDefaults::standard().removeObject(key);
}

} // namespace KVDesktopBench
