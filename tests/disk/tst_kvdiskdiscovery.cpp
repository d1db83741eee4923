#include "KVDiskTestSupport.h"

#include <QUrl>

namespace {

const QStringList StorageReportArguments{QStringLiteral("SPStorageDataType"), QStringLiteral("-xml")};

QStringList csInfo(const QString &uuid)
{
    return {QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"), uuid};
}

QStringList info(const QString &identifier)
{
    return {QStringLiteral("info"), QStringLiteral("-plist"), identifier};
}

void answer(KVToolDouble &diskutil, const QStringList &fixtures)
{
    for (int run = 1; run <= fixtures.size(); ++run)
        diskutil.setResponse(run, KVToolDouble::readFixture(QStringLiteral("diskutil/") + fixtures.at(run - 1)));
}

// The diskutil answers for the listing in cs-list.plist: six groups, of which
// four have the simple shape (one family, one physical and one logical volume).
void answerListing(KVToolDouble &diskutil)
{
    answer(diskutil, {
                         "cs-list.plist",
                         "cs-info-family-unlocked.plist",          // group 1: encrypted, unlocked
                         "cs-info-family-locked.plist",            // group 2: encrypted, locked
                         "cs-info-family-unencrypted.plist",       // group 3: not encrypted
                         "cs-info-family-mounted.plist",           // group 6: encrypted, unlocked
                         "cs-info-physical-volume.plist",          // group 2's physical volume
                         "info-unlocked-volume-not-mounted.plist", // group 1's volume
                         "info-mounted-volume.plist",              // group 6's volume
                         "info-locked-physical-volume.plist",      // group 2's partition
                     });
}
} // namespace

class TestKVDiskDiscovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mountedDisksAreTheEncryptedCoreStorageVolumes()
    {
        DiskWithDoubles d;
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"));
        BlockRecord done;
        d.disk.updateMountedDisks(done.errorBlock());
        QVERIFY(done.wait());

        QVERIFY(!done.error());
        QVERIFY(done.calledOffTheGuiThread());
        QCOMPARE(d.systemProfiler.arguments(), StorageReportArguments);
        QVERIFY(!d.systemProfiler.standardInputWasPipe());
        QCOMPARE(names(d.disk.mountedDisks()), (QStringList{"Backup", "Vault"}));
        const KVVolumeItemPtr backup = d.disk.mountedDisks().first();
        QCOMPARE(backup->type(), KVVolumeKind::Disk);
        QCOMPARE(backup->logicalVolumeUUID(), QStringLiteral("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4"));
        QCOMPARE(backup->diskReference(), &d.disk);
        QVERIFY(d.disk.mountedDisks().at(1)->readOnly()); // "writable" is printed as "no"

        // The delegate hears of the new list, then the conversion state is looked at.
        QCOMPARE(d.delegate.changes.size(), 1);
        QCOMPARE(d.delegate.changes.first(), d.disk.mountedDisks());
        QCOMPARE(d.delegate.engines.first(), &d.disk);
        QVERIFY(d.delegate.allOnGuiThread);
        QVERIFY(d.waitForQueue());
        QCOMPARE(d.diskutil.runCount(), 1);
        QCOMPARE(d.diskutil.arguments(), (QStringList{"cs", "list"}));

        // The same volumes again: nothing to tell, nothing to poll.
        BlockRecord again;
        d.disk.updateMountedDisks(again.errorBlock());
        QVERIFY(again.wait());
        QVERIFY(d.waitForQueue());
        QCOMPARE(d.delegate.changes.size(), 1);
        QCOMPARE(d.diskutil.runCount(), 1);

        // One of them is gone.
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-one-encrypted.xml"));
        BlockRecord fewer;
        d.disk.updateMountedDisks(fewer.errorBlock());
        QVERIFY(fewer.wait());
        QCOMPARE(names(d.disk.mountedDisks()), QStringList{"Backup"});
        QCOMPARE(d.delegate.changes.size(), 2);
        QCOMPARE(d.delegate.changes.last(), d.disk.mountedDisks());
        QVERIFY(d.waitForQueue());
    }

    void noEncryptedVolumeTellsNobodyWhenNoneWereThere_data()
    {
        QTest::addColumn<QString>("report");
        QTest::newRow("only APFS volumes") << "system_profiler/storage-apfs-only.xml";
        QTest::newRow("no volumes") << "system_profiler/storage-empty-items.xml";
        QTest::newRow("no _items") << "system_profiler/storage-no-items.xml";
        QTest::newRow("not an array") << "system_profiler/storage-top-level-dictionary.xml";
    }

    void noEncryptedVolumeTellsNobodyWhenNoneWereThere()
    {
        QFETCH(QString, report);
        DiskWithDoubles d;
        d.systemProfiler.setResponseFromFile(report);
        BlockRecord done;
        d.disk.updateMountedDisks(done.errorBlock());
        QVERIFY(done.wait());
        QVERIFY(!done.error());
        QVERIFY(d.disk.mountedDisks().isEmpty());
        QVERIFY(d.delegate.changes.isEmpty());
    }

    void oddEntriesAreSkipped()
    {
        DiskWithDoubles d;
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-odd-entries.xml"));
        BlockRecord mounted;
        d.disk.updateMountedDisks(mounted.errorBlock());
        QVERIFY(mounted.wait());
        QVERIFY(!mounted.error());
        QCOMPARE(names(d.disk.mountedDisks()), QStringList{"Real"});

        BlockRecord toEncrypt;
        d.disk.updateDisksToEncrypt(toEncrypt.errorBlock());
        QVERIFY(toEncrypt.wait());
        QVERIFY(!toEncrypt.error());
        // A volume entry that is a string, a drive that is a string, a
        // CoreStorage entry that is not a dictionary: read as empty, no crash.
        QCOMPARE(names(d.disk.disksToEncrypt()), (QStringList{"Odd LV", "Odd Drive"}));
        QVERIFY(d.waitForQueue());
    }

    void aFailedReportKeepsTheMountedList()
    {
        DiskWithDoubles d;
        QVERIFY(d.loadMountedDisks());
        const QList<KVVolumeItemPtr> before = d.disk.mountedDisks();

        d.systemProfiler.setResponse("system_profiler: SPStorageDataType is not available\n", 3);
        BlockRecord done;
        d.disk.updateMountedDisks(done.errorBlock());
        QVERIFY(done.wait());
        QVERIFY(done.error());
        // The abnormal end is reported even over the output's own failure.
        QCOMPARE(done.error()->domain(), NSCocoaErrorDomain);
        QCOMPARE(done.error()->code(), 3);
        QCOMPARE(done.error()->localizedDescription(), QStringLiteral("Error executing system_profiler command"));
        QCOMPARE(done.error()->localizedFailureReason(), QStringLiteral("system_profiler ended abnormally."));
        QCOMPARE(done.error()->localizedRecoverySuggestion(), QStringLiteral("system_profiler ended abnormally."));
        QCOMPARE(d.disk.mountedDisks(), before);
        QCOMPARE(d.delegate.changes.size(), 1);

        d.systemProfiler.setResponse("not a property list", 0);
        BlockRecord unreadable;
        d.disk.updateMountedDisks(unreadable.errorBlock());
        QVERIFY(unreadable.wait());
        QCOMPARE(unreadable.error()->code(), 3840);
        QCOMPARE(unreadable.error()->localizedFailureReason(), QStringLiteral("system_profiler output is not a property list."));
        QCOMPARE(d.disk.mountedDisks(), before);
        QVERIFY(d.waitForQueue());
    }

    void aReportThatEndsAbnormallyStillCounts()
    {
        DiskWithDoubles d;
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"), 1);
        BlockRecord done;
        d.disk.updateMountedDisks(done.errorBlock());
        QVERIFY(done.wait());
        QCOMPARE(done.error()->code(), 1);
        QCOMPARE(names(d.disk.mountedDisks()), (QStringList{"Backup", "Vault"}));
        QVERIFY(d.waitForQueue());
    }

    void disksToEncrypt()
    {
        DiskWithDoubles d;
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"));
        BlockRecord done;
        d.disk.updateDisksToEncrypt(done.errorBlock());
        QVERIFY(done.wait());
        QVERIFY(!done.error());
        QVERIFY(done.calledOffTheGuiThread());
        QCOMPARE(d.systemProfiler.arguments(), StorageReportArguments);
        // Not offered: the start-up volume, the encrypted volumes, a mounted
        // disk image, FAT and case-sensitive HFS+. An unencrypted CoreStorage
        // volume is.
        QCOMPARE(names(d.disk.disksToEncrypt()), (QStringList{"Archive", "Data"}));
        QCOMPARE(d.disk.disksToEncrypt().first()->diskIdentifier(), QStringLiteral("disk4"));
        QVERIFY(d.delegate.changes.isEmpty());
        QVERIFY(d.disk.mountedDisks().isEmpty());

        // A failed refresh leaves the list empty; the output's own failure is kept.
        d.systemProfiler.setResponse("not a property list", 3);
        BlockRecord failed;
        d.disk.updateDisksToEncrypt(failed.errorBlock());
        QVERIFY(failed.wait());
        QVERIFY(d.disk.disksToEncrypt().isEmpty());
        QCOMPARE(failed.error()->domain(), NSCocoaErrorDomain);
        QCOMPARE(failed.error()->code(), 3840);
        QCOMPARE(failed.error()->localizedFailureReason(), QStringLiteral("system_profiler output is not a property list."));

        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"), 6);
        BlockRecord abnormal;
        d.disk.updateDisksToEncrypt(abnormal.errorBlock());
        QVERIFY(abnormal.wait());
        QCOMPARE(abnormal.error()->code(), 6);
        QCOMPARE(abnormal.error()->localizedFailureReason(), QStringLiteral("system_profiler ended abnormally."));
        QCOMPARE(names(d.disk.disksToEncrypt()), (QStringList{"Archive", "Data"}));
    }

    void disksToMount()
    {
        DiskWithDoubles d;
        answerListing(d.diskutil);
        BlockRecord done;
        d.disk.updateDisksToMount(done.errorBlock());
        QVERIFY(done.wait());
        QVERIFY(!done.error());
        QVERIFY(done.calledOffTheGuiThread());

        // The listing, each simple group's family, the locked volume's
        // physical volume, then every candidate: the unlocked ones by their
        // volume UUID, the locked one by its partition.
        QCOMPARE(d.diskutil.runCount(), 9);
        QCOMPARE(d.diskutil.arguments(1), (QStringList{"cs", "list", "-plist"}));
        QCOMPARE(d.diskutil.arguments(2), csInfo("6B00786D-BE89-4932-9795-6EBEDC381935"));
        QCOMPARE(d.diskutil.arguments(3), csInfo("AE155E04-46F0-4013-8E75-12C6AA2EE944"));
        QCOMPARE(d.diskutil.arguments(4), csInfo("55BBD386-3404-4D39-ABD0-C70EC1716D8A"));
        QCOMPARE(d.diskutil.arguments(5), csInfo("1F185A56-CDFC-4651-BB7B-719139E4676E"));
        QCOMPARE(d.diskutil.arguments(6), csInfo("E264BB06-A4E4-4DDD-9D29-8D5DEDB87540"));
        QCOMPARE(d.diskutil.arguments(7), info("1D1AEEDF-2794-4459-9D1A-D7E328B726BF"));
        QCOMPARE(d.diskutil.arguments(8), info("9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65"));
        QCOMPARE(d.diskutil.arguments(9), info("disk2s2"));
        for (int run = 1; run <= 9; ++run)
            QVERIFY(!d.diskutil.standardInputWasPipe(run));

        // The mounted one is left out.
        const QList<KVVolumeItemPtr> volumes = d.disk.disksToMount();
        QCOMPARE(volumes.size(), 2);
        const KVVolumeItemPtr unlocked = volumes.at(0);
        QCOMPARE(unlocked->type(), KVVolumeKind::NotMountedDisk);
        QCOMPARE(unlocked->name(), QStringLiteral("BLACK"));
        QCOMPARE(unlocked->logicalVolumeUUID(), QStringLiteral("1D1AEEDF-2794-4459-9D1A-D7E328B726BF"));
        QVERIFY(!unlocked->locked());
        const KVVolumeItemPtr locked = volumes.at(1);
        QCOMPARE(locked->logicalVolumeUUID(), QStringLiteral("FA33A826-C98E-425A-BCF1-9A68A926D36E"));
        QCOMPARE(locked->diskIdentifier(), QStringLiteral("disk2s2"));
        QVERIFY(locked->locked());
        QCOMPARE(locked->raw().keys(), (QStringList{"LogicalVolumeFamilyInfo", "LogicalVolumeGroup", "diskutilInfo"}));
        QVERIFY(d.delegate.changes.isEmpty());
    }

    void disksToMountGoesOnAfterAFailedRun()
    {
        DiskWithDoubles d;
        answerListing(d.diskutil);
        d.diskutil.setResponse(2, KVToolDouble::readFixture(QStringLiteral("diskutil/cs-info-family-unlocked.plist")), 5);
        d.diskutil.setResponse(4, KVToolDouble::readFixture(QStringLiteral("diskutil/cs-info-family-unencrypted.plist")), 6);
        BlockRecord done;
        d.disk.updateDisksToMount(done.errorBlock());
        QVERIFY(done.wait());
        // The first abnormal end is the one reported; what the runs printed still counts.
        QCOMPARE(done.error()->domain(), NSCocoaErrorDomain);
        QCOMPARE(done.error()->code(), 5);
        QCOMPARE(done.error()->localizedDescription(), QStringLiteral("Error executing diskutil command"));
        QCOMPARE(done.error()->localizedFailureReason(), QStringLiteral("diskutil ended abnormally."));
        QCOMPARE(d.disk.disksToMount().size(), 2);
    }

    void aDiskThatCannotBeFoundIsSkipped()
    {
        DiskWithDoubles d;
        answerListing(d.diskutil);
        d.diskutil.setResponse(2, KVToolDouble::readFixture(QStringLiteral("diskutil/cs-info-family-unlocked.plist")), 5);
        d.diskutil.setResponse(7, KVToolDouble::readFixture(QStringLiteral("diskutil/info-could-not-find-disk.txt")), 1);
        BlockRecord done;
        d.disk.updateDisksToMount(done.errorBlock());
        QVERIFY(done.wait());
        // diskutil's own message replaces the earlier abnormal end, and is
        // still reported in NSCocoaErrorDomain.
        QCOMPARE(done.error()->domain(), NSCocoaErrorDomain);
        QCOMPARE(done.error()->code(), 150);
        QCOMPARE(done.error()->localizedFailureReason(), QStringLiteral("Error diskutil info: Could not find disk"));
        QCOMPARE(d.diskutil.runCount(), 9);
        QCOMPARE(d.disk.disksToMount().size(), 1);
        QVERIFY(d.disk.disksToMount().first()->locked());
    }

    void unreadableFamilyInfoDropsTheFamily()
    {
        DiskWithDoubles d;
        answer(d.diskutil, {"cs-list.plist", "cs-info-family-unlocked.plist", "cs-info-family-locked.plist",
                            "cs-info-family-unencrypted.plist", "cs-info-family-mounted.plist",
                            "info-unlocked-volume-not-mounted.plist", "info-mounted-volume.plist"});
        d.diskutil.setResponse(3, "Error: -69808: Some information was unavailable during an internal lookup\n", 1);
        BlockRecord done;
        d.disk.updateDisksToMount(done.errorBlock());
        QVERIFY(done.wait());
        QCOMPARE(done.error()->code(), 3840);
        QCOMPARE(done.error()->localizedFailureReason(), QStringLiteral("diskutil output is not a property list."));
        QCOMPARE(d.diskutil.runCount(), 7);
        QCOMPARE(names(d.disk.disksToMount()), QStringList{"BLACK"});
    }

    void disksToMountIsEmptiedFirst()
    {
        DiskWithDoubles d;
        answerListing(d.diskutil);
        BlockRecord first;
        d.disk.updateDisksToMount(first.errorBlock());
        QVERIFY(first.wait());
        QCOMPARE(d.disk.disksToMount().size(), 2);

        d.diskutil.setResponse(10, "not a property list\n", 2);
        BlockRecord second;
        d.disk.updateDisksToMount(second.errorBlock());
        QVERIFY(second.wait());
        QCOMPARE(second.error()->code(), 3840);
        QVERIFY(d.disk.disksToMount().isEmpty());
    }

    void listingsOfOtherShapesAreIgnored_data()
    {
        QTest::addColumn<QString>("listing");
        QTest::newRow("groups of other shapes") << "diskutil/cs-list-odd-groups.plist";
        QTest::newRow("no groups") << "diskutil/cs-list-no-groups.plist";
        QTest::newRow("a report of another kind") << "system_profiler/storage-corestorage.xml";
    }

    void listingsOfOtherShapesAreIgnored()
    {
        QFETCH(QString, listing);
        DiskWithDoubles d;
        d.diskutil.setResponseFromFile(listing);
        BlockRecord done;
        d.disk.updateDisksToMount(done.errorBlock());
        QVERIFY(done.wait());
        QVERIFY(!done.error());
        QCOMPARE(d.diskutil.runCount(), 1);
        QVERIFY(d.disk.disksToMount().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestKVDiskDiscovery)
#include "tst_kvdiskdiscovery.moc"
