#include "model/KVVolumeEngine.h"
#include "model/KVVolumeItem.h"
#include "platform/KVFileSystemEventWatcher.h"
#include "tools/KVPropertyList.h"
#include "tools/KVValue.h"

#include "KVToolDouble.h"

#include <QTest>
#include <QThread>

#include <thread>

namespace {

class FakeEngine : public KVVolumeEngine
{
public:
    explicit FakeEngine(const QString &diskutil)
        : tools{QString(), diskutil, QString()}
    {
    }
    void volumeSpaceDidChange() override { ++notifications; }
    KVVolumeItemPtr create(const QVariantMap &data) { return KVVolumeItem::create(data, this, tools); }

    const KVToolPaths tools;
    int notifications = 0;
};

QVariantMap imageEntry(int index)
{
    const QVariantMap info = KVPropertyList::decode(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-encrypted-images.plist")))->toMap();
    return KVValue::dictionary(info.value(QStringLiteral("images")).toList().at(index));
}

QVariantMap sysProfilerEntry(const QString &mountPoint, const QString &writable)
{
    return {
        {QStringLiteral("_name"), QStringLiteral("Backup")},
        {QStringLiteral("bsd_name"), QStringLiteral("disk2")},
        {QStringLiteral("file_system"), QStringLiteral("Journaled HFS+")},
        {QStringLiteral("free_space_in_bytes"), qint64(250)},
        {QStringLiteral("mount_point"), mountPoint},
        {QStringLiteral("size_in_bytes"), qint64(1000)},
        {QStringLiteral("volume_uuid"), QStringLiteral("11111111-2222-3333-4444-555555555555")},
        {QStringLiteral("writable"), writable},
        {QStringLiteral("com.apple.corestorage.lv"),
         QVariantMap{{QStringLiteral("com.apple.corestorage.lv.uuid"), QStringLiteral("AAAA-LV")},
                     {QStringLiteral("com.apple.corestorage.lv.encrypted"), QStringLiteral("yes")},
                     {QStringLiteral("com.apple.corestorage.lv.locked"), QStringLiteral("yes")}}},
    };
}

KVVolumeItemPtr diskItem(FakeEngine *engine, const QString &uuid, bool writable, const QString &mountPoint = QStringLiteral("/Volumes/X"))
{
    QVariantMap entry = sysProfilerEntry(mountPoint, writable ? QStringLiteral("yes") : QStringLiteral("no"));
    entry.insert(QStringLiteral("volume_uuid"), uuid);
    return engine->create({{QStringLiteral("sysProfilerInfo"), entry}});
}

} // namespace

class TestKVVolumeItem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void diskImageFromHdiutilAndDiskutil()
    {
        KVToolDouble diskutil;
        diskutil.setResponseFromFile(QStringLiteral("diskutil/info-image-volume.plist"));
        FakeEngine engine(diskutil.path());
        const KVVolumeItemPtr item = engine.create({{QStringLiteral("hdiutilInfo"), imageEntry(0)}});

        QCOMPARE(diskutil.arguments(), (QStringList{"info", "-plist", "/Volumes/Secret Stuff"}));
        QVERIFY(!diskutil.standardInputWasPipe());
        QCOMPARE(item->type(), KVVolumeKind::DiskImage);
        QCOMPARE(item->diReference(), &engine);
        QCOMPARE(item->diskReference(), nullptr);
        QCOMPARE(item->guidDevice(), QStringLiteral("/dev/disk4"));
        QCOMPARE(item->location(), QStringLiteral("/Users/someone/Documents/Secret Stuff.sparseimage"));
        QCOMPARE(item->name(), QStringLiteral("Secret Stuff"));
        QCOMPARE(item->mountPoint(), QStringLiteral("/Volumes/Secret Stuff"));
        QCOMPARE(item->uuid(), QStringLiteral("5C2E3B2A-6D1F-3A44-9B0E-7F1D2C3B4A59"));
        QVERIFY(item->readOnly());
        QCOMPARE(item->totalSize(), 104857600);
        QCOMPARE(item->freeSpace(), 78643200);
        QCOMPARE(item->usedSpace(), 26214400);
        QCOMPARE(item->usedSpacePercentage(), QStringLiteral("25 %"));
        QCOMPARE(item->fileSystemName(), QStringLiteral("Journaled HFS+"));
        QCOMPARE(item->diskIdentifier(), QStringLiteral("disk4s2"));
        QVERIFY(item->raw().contains(QStringLiteral("diskutilInfo")));
    }

    void lastMountPointWinsAndDiskutilMayFail()
    {
        QVariantMap entry = imageEntry(0);
        QVariantList entities = entry.value(QStringLiteral("system-entities")).toList();
        QVariantMap extra{{QStringLiteral("content-hint"), QStringLiteral("Apple_HFS")},
                          {QStringLiteral("dev-entry"), QStringLiteral("/dev/disk4s3")},
                          {QStringLiteral("mount-point"), QStringLiteral("/Volumes/Second")}};
        entities.append(extra);
        entry.insert(QStringLiteral("system-entities"), entities);

        KVToolDouble diskutil;
        diskutil.setResponse("Could not find disk: /Volumes/Second\n", 1);
        FakeEngine engine(diskutil.path());
        const KVVolumeItemPtr item = engine.create({{QStringLiteral("hdiutilInfo"), entry}});
        QCOMPARE(diskutil.arguments().last(), QStringLiteral("/Volumes/Second"));
        QCOMPARE(item->mountPoint(), QStringLiteral("/Volumes/Second"));
        QVERIFY(!item->raw().contains(QStringLiteral("diskutilInfo")));
        QCOMPARE(item->name(), QString());

        FakeEngine noTool(QStringLiteral("/nonexistent/diskutil"));
        QCOMPARE(noTool.create({{QStringLiteral("hdiutilInfo"), entry}})->type(), KVVolumeKind::DiskImage);
    }

    void diskFromTheStorageReport()
    {
        FakeEngine engine{QString()};
        const KVVolumeItemPtr item = engine.create({{QStringLiteral("sysProfilerInfo"), sysProfilerEntry("/", "no")}});
        QCOMPARE(item->type(), KVVolumeKind::Disk);
        QCOMPARE(item->diskReference(), &engine);
        QCOMPARE(item->name(), QStringLiteral("Backup"));
        QVERIFY(item->readOnly());
        QVERIFY(item->isSystemPartition());
        QCOMPARE(item->usedSpacePercentage(), QStringLiteral("75 %"));
        QCOMPARE(item->logicalVolumeUUID(), QStringLiteral("AAAA-LV"));
        // The report's "locked" flag is never the one that counts.
        QVERIFY(!item->locked());

        const KVVolumeItemPtr writable = engine.create({{QStringLiteral("sysProfilerInfo"), sysProfilerEntry("/Volumes/Backup", "yes")}});
        QVERIFY(!writable->readOnly());
        QVERIFY(!writable->isSystemPartition());
    }

    void namesEndAtANulAndPathsWithOneAreNone()
    {
        FakeEngine engine{QString()};
        QVariantMap entry = sysProfilerEntry(QStringLiteral("/Volumes/Back\u0000up"), QStringLiteral("yes"));
        entry.insert(QStringLiteral("_name"), QStringLiteral("Back\u0000up"));
        const KVVolumeItemPtr item = engine.create({{QStringLiteral("sysProfilerInfo"), entry}});
        QCOMPARE(item->name(), QStringLiteral("Back"));
        QCOMPARE(item->mountPoint(), QString());
    }

    void lockedVolumeThatIsNotMounted()
    {
        const QVariantMap group{
            {QStringLiteral("CoreStorageUUID"), QStringLiteral("GROUP")},
            {QStringLiteral("CoreStorageLogicalVolumeFamilies"),
             QVariantList{QVariantMap{{QStringLiteral("CoreStorageUUID"), QStringLiteral("FAMILY")},
                                      {QStringLiteral("CoreStorageLogicalVolumes"),
                                       QVariantList{QVariantMap{{QStringLiteral("CoreStorageUUID"), QStringLiteral("LV-1")}}}}}}},
        };
        FakeEngine engine{QString()};
        for (const QString &status : {QStringLiteral("Locked"), QStringLiteral("Unlocked")}) {
            const KVVolumeItemPtr item = KVVolumeItem::create(
                {{QStringLiteral("LogicalVolumeGroup"), group},
                 {QStringLiteral("LogicalVolumeFamilyInfo"), QVariantMap{{QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionStatus"), status}}},
                 {QStringLiteral("diskutilInfo"), QVariantMap{{QStringLiteral("MountPoint"), QString()}, {QStringLiteral("VolumeName"), QStringLiteral("Vault")}}}},
                &engine);
            QCOMPARE(item->type(), KVVolumeKind::NotMountedDisk);
            QCOMPARE(item->diReference(), nullptr);
            QCOMPARE(item->diskReference(), nullptr);
            QCOMPARE(item->logicalVolumeUUID(), QStringLiteral("LV-1"));
            QCOMPARE(item->name(), QStringLiteral("Vault"));
            QCOMPARE(item->locked(), status == u"Locked");
        }

        // A group of the wrong shape yields no volume UUID, and no crash.
        const KVVolumeItemPtr odd = KVVolumeItem::create(
            {{QStringLiteral("LogicalVolumeGroup"), QVariantMap{{QStringLiteral("CoreStorageLogicalVolumeFamilies"), QVariantList()}}},
             {QStringLiteral("diskutilInfo"), QVariantMap()}},
            &engine);
        QCOMPARE(odd->logicalVolumeUUID(), QString());
        QCOMPARE(KVVolumeItem::create({}, nullptr)->type(), KVVolumeKind::None);
    }

    void usedSpacePercentage_data()
    {
        QTest::addColumn<qint64>("used");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<QString>("text");
        QTest::newRow("quarter") << qint64(25) << qint64(100) << "25 %";
        QTest::newRow("truncated, not rounded") << qint64(2) << qint64(3) << "66 %";
        QTest::newRow("full") << qint64(100) << qint64(100) << "100 %";
        QTest::newRow("empty volume") << qint64(0) << qint64(0) << "-2147483648 %";
        QTest::newRow("nothing of nothing but used") << qint64(5) << qint64(0) << "-2147483648 %";
        QTest::newRow("terabytes") << qint64(1) << qint64(3000000000000) << "0 %";
    }

    void usedSpacePercentage()
    {
        QFETCH(qint64, used);
        QFETCH(qint64, total);
        QFETCH(QString, text);
        QCOMPARE(KVVolumeItem::usedSpacePercentageText(used, total), text);
    }

    void equalityAndHash()
    {
        FakeEngine engine{QString()};
        const KVVolumeItemPtr a = diskItem(&engine, "U1", true, "/Volumes/A");
        const KVVolumeItemPtr sameElsewhere = diskItem(&engine, "U1", true, "/Volumes/B");
        const KVVolumeItemPtr readOnly = diskItem(&engine, "U1", false);
        const KVVolumeItemPtr other = diskItem(&engine, "U2", true);
        QVERIFY(*a == *sameElsewhere);
        QCOMPARE(qHash(*a), qHash(*sameElsewhere));
        QVERIFY(!(*a == *readOnly));
        QVERIFY(!(*a == *other));
        QVERIFY(kvSameVolumes({a, other}, {sameElsewhere, other}));
        QVERIFY(!kvSameVolumes({a, other}, {other, a}));
        QVERIFY(!kvSameVolumes({a}, {a, other}));
        QVERIFY(kvContainsVolume({other, sameElsewhere}, *a));
    }

    void spaceRefreshTellsTheEngineOnlyOfChanges()
    {
        FakeEngine engine{QString()};
        // /proc reports no free space, ever: a stable value to refresh to.
        const KVVolumeItemPtr item = diskItem(&engine, "U1", true, QStringLiteral("/proc"));
        QCOMPARE(item->freeSpace(), 250);
        item->updateSpace();
        QCOMPARE(item->freeSpace(), 0);
        QCOMPARE(item->usedSpacePercentage(), QStringLiteral("100 %"));
        QCOMPARE(engine.notifications, 1);
        item->updateSpace();
        QCOMPARE(engine.notifications, 1);

        // A volume that is not there changes nothing.
        const KVVolumeItemPtr gone = diskItem(&engine, "U2", true, QStringLiteral("/nonexistent/volume"));
        gone->updateSpace();
        QCOMPARE(gone->freeSpace(), 250);
        QCOMPARE(engine.notifications, 1);
    }

    void eventsAreThrottled()
    {
        FakeEngine engine{QString()};
        const KVVolumeItemPtr item = diskItem(&engine, "U1", true, QStringLiteral("/proc"));
        QTRY_VERIFY(item->events());
        for (int i = 0; i < 5; ++i)
            Q_EMIT item->events()->eventOccurred(item->mountPoint());
        QVERIFY(item->ignoreEvents());
        QCOMPARE(engine.notifications, 1);
    }

    void builtOnAWorkerThreadLivesOnTheGuiThread()
    {
        KVToolDouble diskutil;
        diskutil.setResponseFromFile(QStringLiteral("diskutil/info-image-volume.plist"));
        FakeEngine engine(diskutil.path());
        KVVolumeItemPtr item;
        std::thread worker([&] { item = engine.create({{QStringLiteral("hdiutilInfo"), imageEntry(0)}}); });
        worker.join();
        QCOMPARE(item->thread(), QThread::currentThread());
        QTRY_VERIFY(item->events());
        QCOMPARE(item->events()->path(), QStringLiteral("/Volumes/Secret Stuff"));

        item->setMountPoint(QStringLiteral("/Volumes/Renamed"));
        QCOMPARE(item->events()->path(), QStringLiteral("/Volumes/Renamed"));

        // Released on the worker thread, destroyed on the GUI thread.
        QPointer<KVVolumeItem> watched = item.get();
        std::thread releaser([item = std::move(item)]() mutable { item.reset(); });
        releaser.join();
        QTRY_VERIFY(!watched);
    }
};

QTEST_GUILESS_MAIN(TestKVVolumeItem)
#include "tst_kvvolumeitem.moc"
