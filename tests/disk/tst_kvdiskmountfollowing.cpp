#include "KVDiskTestSupport.h"

#include <QUrl>

namespace {

// A lookup whose answers the test sets, and which remembers what it was asked.
struct FakeLookup
{
    KVMountedVolumeLookup lookup()
    {
        return {[this] {
                    ++listings;
                    return mounted;
                },
                [this](const QString &path) -> std::optional<QString> {
                    typeQueries.append(path);
                    return types.isEmpty() ? std::nullopt : types.takeFirst();
                }};
    }

    QStringList mounted;
    QList<std::optional<QString>> types;
    int listings = 0;
    QStringList typeQueries;
};

} // namespace

// How the disk engine follows the system's mounts and unmounts of encrypted
// volumes, and what it asks the tools when it does.
class TestKVDiskMountFollowing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMountedHfsVolumeRefreshesTheList()
    {
        DiskWithDoubles d;
        FakeLookup lookup;
        lookup.mounted = {QStringLiteral("/"), QStringLiteral("/Volumes/Backup"), QStringLiteral("/media/stick")};
        lookup.types = {QStringLiteral("hfs")};
        d.disk.setMountedVolumeLookup(lookup.lookup());
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"));

        Q_EMIT d.workspace.didMount({{NSDevicePath, QStringLiteral("/Volumes/Backup/")}});
        QCOMPARE(lookup.listings, 0); // a moment later, not at once
        QTRY_COMPARE_WITH_TIMEOUT(names(d.disk.mountedDisks()), (QStringList{"Backup", "Vault"}), 30000);
        QCOMPARE(lookup.typeQueries, QStringList{"/Volumes/Backup"});
        QCOMPARE(d.systemProfiler.runCount(), 1);
        QCOMPARE(d.delegate.changes.size(), 1);
        QVERIFY(d.waitForQueue());
    }

    void otherMountsDoNotRefresh_data()
    {
        QTest::addColumn<QStringList>("mounted");
        QTest::addColumn<QList<std::optional<QString>>>("types");
        QTest::addColumn<int>("queries");
        QTest::newRow("not HFS+") << QStringList{"/media/stick"} << QList<std::optional<QString>>{QStringLiteral("vfat")} << 1;
        QTest::newRow("not among the mounted volumes") << QStringList{"/", "/media/other"} << QList<std::optional<QString>>{} << 0;
        QTest::newRow("its type cannot be read") << QStringList{"/media/stick"} << QList<std::optional<QString>>{std::nullopt} << 1;
    }

    void otherMountsDoNotRefresh()
    {
        QFETCH(QStringList, mounted);
        QFETCH(QList<std::optional<QString>>, types);
        QFETCH(int, queries);
        DiskWithDoubles d;
        FakeLookup lookup;
        lookup.mounted = mounted;
        lookup.types = types;
        d.disk.setMountedVolumeLookup(lookup.lookup());

        Q_EMIT d.workspace.didMount({{NSDevicePath, QStringLiteral("/media/stick")}});
        QTRY_COMPARE_WITH_TIMEOUT(lookup.listings, 1, 30000);
        QVERIFY(d.waitForQueue());
        QCOMPARE(lookup.typeQueries.size(), queries);
        QCOMPARE(d.systemProfiler.runCount(), 0);
    }

    void theLatestMountOfAPathCounts()
    {
        DiskWithDoubles d;
        FakeLookup lookup;
        // Two mounts on one path: the later one is asked first; when its type
        // cannot be read the walk goes on to the earlier one.
        lookup.mounted = {QStringLiteral("/Volumes/Backup"), QStringLiteral("/Volumes/Other"), QStringLiteral("/Volumes/Backup")};
        lookup.types = {std::nullopt, QStringLiteral("hfs")};
        d.disk.setMountedVolumeLookup(lookup.lookup());
        d.systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"));

        Q_EMIT d.workspace.didMount({{NSDevicePath, QStringLiteral("/Volumes/./Other/../Backup")}});
        QTRY_COMPARE_WITH_TIMEOUT(d.systemProfiler.runCount(), 1, 30000);
        QCOMPARE(lookup.typeQueries, (QStringList{"/Volumes/Backup", "/Volumes/Backup"}));
        QVERIFY(d.waitForQueue());
    }

    void aFailedRefreshAfterAMountReachesTheDelegate()
    {
        DiskWithDoubles d;
        FakeLookup lookup;
        lookup.mounted = {QStringLiteral("/Volumes/Backup")};
        lookup.types = {QStringLiteral("hfs")};
        d.disk.setMountedVolumeLookup(lookup.lookup());
        d.systemProfiler.setResponse(QByteArray(), 2);

        Q_EMIT d.workspace.didMount({{NSDevicePath, QStringLiteral("/Volumes/Backup")}});
        QTRY_COMPARE_WITH_TIMEOUT(d.delegate.failures.size(), 1, 30000);
        QCOMPARE(d.delegate.failures.first().code(), 2);
        QCOMPARE(d.delegate.failures.first().localizedFailureReason(), QStringLiteral("system_profiler ended abnormally."));
        QVERIFY(d.delegate.allOnGuiThread);
    }

    void unmountAndRenameFollowTheSystem()
    {
        DiskWithDoubles d;
        QVERIFY(d.loadMountedDisks());
        QCOMPARE(d.delegate.changes.size(), 1);
        const KVVolumeItemPtr backup = d.mountedDisk(QStringLiteral("Backup"));

        Q_EMIT d.workspace.didRenameVolume({{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Backup/"))},
                                            {NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Old Backup/"))},
                                            {NSWorkspaceVolumeLocalizedNameKey, QStringLiteral("Old Backup")}});
        QTRY_COMPARE_WITH_TIMEOUT(d.delegate.changes.size(), 2, 30000);
        QCOMPARE(backup->mountPoint(), QStringLiteral("/Volumes/Old Backup"));
        QCOMPARE(backup->name(), QStringLiteral("Old Backup"));
        QCOMPARE(d.disk.mountedDisks().first(), backup);

        Q_EMIT d.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Vault"))}});
        QTRY_COMPARE_WITH_TIMEOUT(d.delegate.changes.size(), 3, 30000);
        QCOMPARE(d.disk.mountedDisks(), QList<KVVolumeItemPtr>{backup});
        QCOMPARE(d.delegate.changes.last(), d.disk.mountedDisks());

        // Volumes that are not ours.
        Q_EMIT d.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Vault"))}});
        Q_EMIT d.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Backup"))}});
        Q_EMIT d.workspace.didRenameVolume({{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Nothing"))}});
        Q_EMIT d.workspace.didUnmount({});
        QVERIFY(BlockRecord::drainMainQueue());
        QCOMPARE(d.delegate.changes.size(), 3);
        QCOMPARE(d.disk.mountedDisks().size(), 1);
        QCOMPARE(d.systemProfiler.runCount(), 1);
    }

    void aDestroyedDelegateIsNeverCalled()
    {
        DiskWithDoubles d;
        QVERIFY(d.loadMountedDisks());
        auto delegate = std::make_unique<RecordingDelegate>();
        d.disk.setDelegate(delegate.get());
        QCOMPARE(d.disk.delegate(), delegate.get());
        delegate.reset();
        QCOMPARE(d.disk.delegate(), nullptr);

        Q_EMIT d.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Vault"))}});
        QTRY_COMPARE_WITH_TIMEOUT(d.disk.mountedDisks().size(), 1, 30000);
    }

    void aDestroyedEngineIgnoresLateResults()
    {
        KVToolDouble systemProfiler;
        systemProfiler.setResponseFromFile(QStringLiteral("system_profiler/storage-corestorage.xml"));
        systemProfiler.setScript("sleep 0.3\n");
        RecordingDelegate delegate;
        BlockRecord done;
        {
            KVDisk disk(KVToolPaths{QString(), QString(), systemProfiler.path()}, nullptr);
            disk.setDelegate(&delegate);
            disk.updateMountedDisks(done.errorBlock());
            QTRY_COMPARE_WITH_TIMEOUT(systemProfiler.runCount(), 1, 30000);
        }
        QVERIFY(done.wait());
        QVERIFY(!done.error());
        QVERIFY(delegate.changes.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestKVDiskMountFollowing)
#include "tst_kvdiskmountfollowing.moc"
