#pragma once

// What the sidebar and mount-sheet tests share: tool doubles that answer like
// hdiutil and diskutil, volume items made without running anything, and a
// controller on those doubles.

#include "app/KVAppDelegate.h"
#include "settings/KVPreferenceKeys.h"
#include "diskimage/KVDiskImage.h"
#include "model/KVVolumeItem.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVPropertyList.h"

#include "KVToolDouble.h"

#include <QApplication>
#include <QStandardPaths>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

namespace KVMountFixture {

// hdiutil: "info" lists info.plist; "attach" refuses the password "wrong",
// a -mountroot folder that does not exist (as hdiutil does, with 112), and
// anything when attach-failure.txt exists, which it prints; it waits while
// attach-hold exists. "detach" succeeds.
inline constexpr char HdiutilScript[] = R"sh(case "$1" in
info) cat "$d/info.plist"; exit 0;;
attach)
  root=""; previous=""
  for a in "$@"; do [ "$previous" = "-mountroot" ] && root="$a"; previous="$a"; done
  if [ "$(cat "$d/stdin.$n")" = "wrong" ]; then cat "$d/attach-wrong-password.txt"; exit 1; fi
  if [ -n "$root" ] && [ ! -d "$root" ]; then cat "$d/attach-invalid-mount-root.txt"; exit 1; fi
  while [ -f "$d/attach-hold" ]; do sleep 0.02; done
  if [ -f "$d/attach-failure.txt" ]; then cat "$d/attach-failure.txt"; exit 1; fi
  cat "$d/attach-success.txt"; exit 0;;
detach) for last in "$@"; do :; done; printf '"%s" unmounted.\n"%s" ejected.\n' "$last" "$last"; exit 0;;
esac
)sh";

// diskutil info -plist MOUNTPOINT answers with the file named after the mount point's last component.
inline constexpr char DiskutilScript[] = R"(name=$(basename "$3"); cat "$d/$name.plist"; exit 0
)";

inline QVariantMap imageEntry(int disk, const QString &mountPoint)
{
    const QString device = QStringLiteral("/dev/disk%1").arg(disk);
    return {{QStringLiteral("image-encrypted"), true},
            {QStringLiteral("image-path"), QStringLiteral("/home/someone/%1.sparseimage").arg(disk)},
            {QStringLiteral("system-entities"),
             QVariantList{QVariantMap{{QStringLiteral("content-hint"), QStringLiteral("GUID_partition_scheme")},
                                      {QStringLiteral("dev-entry"), device}},
                          QVariantMap{{QStringLiteral("content-hint"), QStringLiteral("Linux")},
                                      {QStringLiteral("dev-entry"), QString(device + QStringLiteral("s1"))},
                                      {QStringLiteral("mount-point"), mountPoint}}}}};
}

inline QVariantMap diskutilInfo(int disk, const QString &mountPoint, qint64 total = 1000000000, qint64 free = 250000000)
{
    return {
        {QStringLiteral("VolumeName"), mountPoint.section(u'/', -1)},
        {QStringLiteral("MountPoint"), mountPoint},
        {QStringLiteral("VolumeUUID"), QStringLiteral("UUID-%1").arg(disk)},
        {QStringLiteral("Writable"), true},
        {QStringLiteral("TotalSize"), total},
        {QStringLiteral("FreeSpace"), free},
        {QStringLiteral("FilesystemName"), QStringLiteral("Journaled HFS+")},
        {QStringLiteral("DeviceIdentifier"), QStringLiteral("disk%1s1").arg(disk)},
    };
}

// A mounted image, made from what hdiutil and diskutil would say, without running them.
inline KVVolumeItemPtr imageVolume(int disk, const QString &mountPoint, qint64 total = 1000000000,
                                   qint64 free = 250000000)
{
    return KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), imageEntry(disk, mountPoint)},
                                 {QStringLiteral("diskutilInfo"), diskutilInfo(disk, mountPoint, total, free)}},
                                nullptr);
}

// A disk volume as the storage report lists it.
inline KVVolumeItemPtr diskVolume(const QString &name, const QString &mountPoint, qint64 total, qint64 free)
{
    return KVVolumeItem::create({{QStringLiteral("sysProfilerInfo"),
                                  QVariantMap{{QStringLiteral("_name"), name},
                                              {QStringLiteral("bsd_name"), QStringLiteral("disk2s2")},
                                              {QStringLiteral("mount_point"), mountPoint},
                                              {QStringLiteral("size_in_bytes"), total},
                                              {QStringLiteral("free_space_in_bytes"), free},
                                              {QStringLiteral("volume_uuid"), QString(QStringLiteral("UUID-") + name)},
                                              {QStringLiteral("writable"), QStringLiteral("yes")}}}},
                                nullptr);
}

// Tests keep their settings apart from the user's: call once, before any
// settings are read.
inline void useTestSettings()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
}

// Settings of the test mode only, cleared before each test.
inline void resetUserDefaults()
{
    KVUserDefaults &defaults = KVUserDefaults::standard();
    for (const QString &key :
         {KVFavouritesKey, KVUnreadableFavouritesKey, KVAutoUnmountVolumesKey, KVForceAutoUnmountKey, KVForceUnmountKey,
          KVSaveOpenRecentKey, KVOpenFinderAfterMountKey, KVAnimationDurationMultiplierKey})
        defaults.removeObject(key);
}

inline QMessageBox *openAlert()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            return box;
    }
    return nullptr;
}

inline void closeAlerts()
{
    while (QMessageBox *box = openAlert())
        box->close();
}

// A controller whose engines run the doubles; nothing is attached at first.
class Controller
{
public:
    Controller()
        : hdiutil(QStringLiteral("hdiutil"))
        , diskutil(QStringLiteral("diskutil"))
    {
        setAttachedImages({});
        hdiutil.setScript(HdiutilScript);
        diskutil.setScript(DiskutilScript);
        for (const char *fixture : {"attach-success.txt", "attach-wrong-password.txt"})
            hdiutil.addFile(QString::fromLatin1(fixture),
                            KVToolDouble::readFixture(QStringLiteral("hdiutil/") + QString::fromLatin1(fixture)));
        hdiutil.addFile(QStringLiteral("attach-invalid-mount-root.txt"),
                        KVToolDouble::readFixture(QStringLiteral("hdiutil/attach-no-mountable-file-systems.txt")));
        recentFile = recentDir.filePath(QStringLiteral("recently-used.xbel"));
        // No storage report here: the disk engine stays out of the way.
        delegate = std::make_unique<KVAppDelegate>(KVAppDelegate::Services{
            KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace, KVRecentDocuments(recentFile)});
    }

    // Everything queued on the image engine has run, so that no tool starts
    // after the doubles are gone.
    ~Controller()
    {
        if (!delegate->di())
            return;
        const auto drained = std::make_shared<std::atomic<bool>>(false);
        delegate->di()->processingQueue().addOperation([drained] { *drained = true; });
        if (!QTest::qWaitFor([&drained] { return drained->load(); }, 10000))
            qWarning("the image engine is still busy");
    }

    // What hdiutil info lists from now on: these disks, each mounted at /media/someone/Volume<disk>.
    void setAttachedImages(const QList<int> &disks)
    {
        QVariantList entries;
        for (const int disk : disks) {
            const QString mountPoint = volumeMountPoint(disk);
            entries.append(imageEntry(disk, mountPoint));
            diskutil.addFile(QStringLiteral("Volume%1.plist").arg(disk),
                             KVPropertyList::encodeXml(diskutilInfo(disk, mountPoint)));
        }
        hdiutil.addFile(QStringLiteral("info.plist"),
                        KVPropertyList::encodeXml(QVariantMap{{QStringLiteral("images"), entries}}));
    }

    static QString volumeMountPoint(int disk) { return QStringLiteral("/media/someone/Volume%1").arg(disk); }

    // The hdiutil runs with this first argument.
    QList<int> runs(const QString &command) const
    {
        QList<int> found;
        for (int run = 1; run <= hdiutil.runCount(); ++run) {
            if (hdiutil.arguments(run).value(0) == command)
                found.append(run);
        }
        return found;
    }

    KVToolDouble hdiutil;
    KVToolDouble diskutil;
    KVWorkspaceNotifications workspace;
    QTemporaryDir recentDir;
    QString recentFile;
    std::unique_ptr<KVAppDelegate> delegate;
};

} // namespace KVMountFixture
