#include "KVDiskTestSupport.h"

#include <QSignalSpy>

using namespace std::chrono_literals;

namespace {

QByteArray listing(const char *fixture)
{
    return KVToolDouble::readFixture(QStringLiteral("diskutil/") + QString::fromUtf8(fixture));
}

} // namespace

// Polling, as the engine does it while a volume converts: one look at the
// listing after every change of the list, then one every few seconds for as
// long as something converts and the listing can be read.
class TestKVDiskStatus : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pollsEveryFourSeconds()
    {
        DiskWithDoubles d;
        QCOMPARE(d.disk.updateMountedDisksStatusTimer().interval(), 4000);
        QVERIFY(d.disk.updateMountedDisksStatusTimer().isSingleShot());
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
    }

    void pollsOnlyWhileAVolumeConverts()
    {
        DiskWithDoubles d;
        d.disk.setUpdateMountedDisksStatusInterval(1h); // fired by hand below
        d.diskutil.setResponse(1, listing("cs-list-converting-forward.txt"));
        d.diskutil.setResponse(2, listing("cs-list-converting-backward.txt"));
        d.diskutil.setResponse(3, listing("cs-list-complete.txt"));
        d.diskutil.setResponse(4, listing("cs-list-converting-forward.txt"), 1);
        d.diskutil.setResponse(5, listing("cs-list-converting-forward.txt"));
        d.diskutil.setResponse(6, listing("cs-list-converting-backward.txt"));
        d.diskutil.setResponse(listing("cs-list-complete.txt"));
        QSignalSpy ended(&d.disk, &KVDisk::conversionEnded);

        // The new list is looked at at once: the volume converts, so the next
        // poll is scheduled and the delegate hears of it.
        QVERIFY(d.loadMountedDisks());
        const KVVolumeItemPtr backup = d.mountedDisk(QStringLiteral("Backup"));
        const KVVolumeItemPtr vault = d.mountedDisk(QStringLiteral("Vault"));
        QCOMPARE(d.diskutil.arguments(1), (QStringList{"cs", "list"}));
        QVERIFY(!d.diskutil.standardInputWasPipe(1));
        QVERIFY(backup->converting());
        QCOMPARE(backup->statusVisible(), QStringLiteral("Encrypting"));
        QVERIFY(backup->conversionDirectionForward());
        QCOMPARE(backup->conversionProgress(), 91);
        QVERIFY(!vault->converting());
        QCOMPARE(vault->statusVisible(), QString());
        QVERIFY(d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 2); // the new list, then the running conversion
        QCOMPARE(d.delegate.changes.last(), d.disk.mountedDisks());

        // Still converting: the next poll is scheduled.
        d.disk.runUpdateMountedDisksStatus();
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
        QTRY_COMPARE_WITH_TIMEOUT(backup->conversionProgress(), 37, 30000);
        QCOMPARE(backup->statusVisible(), QStringLiteral("Decrypting"));
        QVERIFY(!backup->conversionDirectionForward());
        QVERIFY(d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 3);

        // Finished: the item shows it, but nobody is told and polling stops.
        d.disk.runUpdateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(backup->statusVisible(), QStringLiteral("Complete"), 30000);
        QVERIFY(!backup->converting());
        QCOMPARE(backup->conversionProgress(), 37);
        QVERIFY(!backup->conversionDirectionForward());
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 3);
        QCOMPARE(ended.size(), 1); // but the end of the conversion is announced
        QCOMPARE(ended.constFirst().constFirst().value<KVVolumeItemPtr>(), backup);

        // A poll whose run fails still updates what it read, then stops.
        d.disk.updateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(backup->conversionProgress(), 91, 30000);
        QVERIFY(backup->converting());
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 3);

        // Until something asks again.
        d.disk.updateMountedDisksStatus();
        QTRY_VERIFY_WITH_TIMEOUT(d.disk.updateMountedDisksStatusTimer().isActive(), 30000);
        QCOMPARE(d.delegate.changes.size(), 4);

        // A poll made while the next one is pending schedules nothing and tells nobody.
        d.disk.updateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(backup->conversionProgress(), 37, 30000);
        QVERIFY(d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 4);

        // The timer itself polls when it is due.
        d.disk.setUpdateMountedDisksStatusInterval(10ms);
        QTRY_COMPARE_WITH_TIMEOUT(backup->statusVisible(), QStringLiteral("Complete"), 30000);
        QCOMPARE(d.diskutil.runCount(), 7);
        QCOMPARE(ended.size(), 2); // once per conversion that ends
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 4);
        QVERIFY(d.delegate.allOnGuiThread);
    }

    void itemUpdates()
    {
        DiskWithDoubles d;
        d.disk.setUpdateMountedDisksStatusInterval(1h);
        d.diskutil.setResponseFromFile(QStringLiteral("diskutil/cs-list-complete.txt"));
        QVERIFY(d.loadMountedDisks());
        const KVVolumeItemPtr backup = d.mountedDisk(QStringLiteral("Backup"));
        const KVVolumeItemPtr vault = d.mountedDisk(QStringLiteral("Vault"));

        // The older layout, and a second group with tree columns.
        d.diskutil.setResponse(2, listing("cs-list-older-layout-converting.txt"));
        d.disk.updateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(vault->conversionProgress(), 35, 30000);
        QCOMPARE(vault->statusVisible(), QStringLiteral("Encrypting"));
        d.diskutil.setResponse(3, listing("cs-list-two-groups.txt"));
        d.disk.updateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(vault->conversionProgress(), 12, 30000);
        QCOMPARE(vault->statusVisible(), QStringLiteral("Decrypting"));
        QCOMPARE(backup->statusVisible(), QStringLiteral("Complete"));

        // A direction other than forward or backward is shown as printed.
        d.diskutil.setResponse(4, "+-> Logical Volume 9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65\n"
                                  "    Conversion Status:       Converting\n"
                                  "    Conversion Direction:    sideways\n"
                                  "    Conversion Progress:     5%\n");
        d.disk.updateMountedDisksStatus();
        QTRY_COMPARE_WITH_TIMEOUT(vault->conversionProgress(), 5, 30000);
        QCOMPARE(vault->statusVisible(), QStringLiteral("sideways"));
        QVERIFY(!vault->conversionDirectionForward());
        QVERIFY(vault->converting());

        // Volumes that are not mounted here, and text that says nothing, change nothing.
        for (const QByteArray &output : {listing("cs-list-fusion-no-conversion.txt"), listing("cs-list-unencrypted.txt"),
                                         QByteArray("No CoreStorage logical volume groups found\n"), QByteArray()}) {
            d.diskutil.setResponse(output);
            d.disk.updateMountedDisksStatus();
            QVERIFY(d.waitForQueue());
            QCOMPARE(vault->statusVisible(), QStringLiteral("sideways"));
            QCOMPARE(vault->conversionProgress(), 5);
            QCOMPARE(backup->statusVisible(), QStringLiteral("Complete"));
        }
    }

    void aVolumeWithoutConversionShowsItsStatusWord()
    {
        DiskWithDoubles d;
        d.disk.setUpdateMountedDisksStatusInterval(1h);
        d.diskutil.setResponse(QByteArray("+-> Logical Volume 5C2678FC-47C8-498A-8C9C-6B1D80A07AF4\n"
                                          "Conversion Status: NoConversion\n"
                                          "Conversion Progress: -none-\n"));
        QVERIFY(d.loadMountedDisks());
        const KVVolumeItemPtr backup = d.mountedDisk(QStringLiteral("Backup"));
        QCOMPARE(backup->statusVisible(), QStringLiteral("NoConversion"));
        QVERIFY(!backup->converting());
        QVERIFY(backup->conversionDirectionForward()); // as it was
        QCOMPARE(backup->conversionProgress(), 0);
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
    }

    void aPollThatCannotRunStopsPolling()
    {
        DiskWithDoubles d;
        QVERIFY(d.loadMountedDisks());
        QFile::remove(d.diskutil.path());
        d.disk.updateMountedDisksStatus();
        QVERIFY(d.waitForQueue());
        QVERIFY(!d.disk.updateMountedDisksStatusTimer().isActive());
        QCOMPARE(d.delegate.changes.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestKVDiskStatus)
#include "tst_kvdiskstatus.moc"
