#include "KVDiskImageBench.h"

#include <QElapsedTimer>
#include <QTest>

using namespace KVDiskImageTest;

// How the engine keeps its list of mounted images: full and filtered scans,
// and what notifications of the system start.
class TestKVDiskImageScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullScanListsMountedEncryptedImages()
    {
        Bench bench;
        bench.scan(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-several-images.plist")));
        QCOMPARE(bench.listed(), (QStringList{SecretStuff, Diaries, NoPath}));
        QCOMPARE(bench.engine->mountedDiskImages().first()->location(), SecretImage);
        QCOMPARE(bench.engine->mountedDiskImages().last()->location(), QString());
        QCOMPARE(bench.engine->mountedDiskImages().first()->diReference(), bench.engine.get());
        QCOMPARE(bench.diskutil.runCount(), 3);
        QCOMPARE(bench.diskutil.arguments(2), (QStringList{"info", "-plist", Diaries}));
        QCOMPARE(bench.delegate.changes, (QList<QStringList>{{SecretStuff, Diaries, NoPath}}));
        QVERIFY(bench.delegate.onGuiThreadOnly);
        QVERIFY(bench.delegate.listWasCurrent);
        QCOMPARE(bench.outcome.calls(), 1);
        QVERIFY(!bench.outcome.error());
        QVERIFY(bench.outcome.wellBehaved());

        bench.engine->volumeSpaceDidChange();
        QCOMPARE(bench.delegate.changes.size(), 2);
    }

    void onlyDifferencesChangeTheList()
    {
        Bench bench;
        bench.scan(infoWith({0, 2}));
        bench.scan(infoWith({0, 2}));
        QCOMPARE(bench.delegate.changes.size(), 1);
        bench.scan(infoWith({2, 0}));
        QCOMPARE(bench.delegate.changes, (QList<QStringList>{{SecretStuff, Diaries}, {Diaries, SecretStuff}}));
        // Recent systems print no "images" at all when nothing is attached.
        bench.scan(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-nothing-attached.plist")));
        QCOMPARE(bench.delegate.changes.last(), QStringList());
        QVERIFY(!bench.outcome.error());
        QVERIFY(bench.delegate.listWasCurrent);
    }

    void aFailedScanLeavesTheList()
    {
        Bench bench;
        bench.scan(infoWith({0}));
        bench.scan("hdiutil: info: failed\n");
        QCOMPARE(bench.listed(), QStringList{SecretStuff});
        QCOMPARE(bench.delegate.changes.size(), 1);
        const KVOptionalError error = bench.outcome.error();
        QVERIFY(error);
        QCOMPARE(error->domain(), NSCocoaErrorDomain);
        QCOMPARE(error->code(), 3840);
        QCOMPARE(error->localizedDescription(), QStringLiteral("Error executing hdiutil command"));
        QCOMPARE(error->localizedFailureReason(), QStringLiteral("hdiutil output is not a property list."));
    }

    void filteredScan_data()
    {
        QTest::addColumn<QByteArray>("info");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("listed");
        QVariantMap twin = fixtureImage(2);
        twin.insert(QStringLiteral("image-path"), QStringLiteral("/Users/someone/twin.sparseimage"));
        QTest::newRow("a new image goes first") << infoWith({0, 1, 2}) << Diaries << QStringList{Diaries, SecretStuff};
        QTest::newRow("already listed") << infoWith({0, 2}) << SecretStuff << QStringList{SecretStuff};
        QTest::newRow("no match") << infoWith({0, 2}) << QStringLiteral("/Volumes/Other") << QStringList{SecretStuff};
        QTest::newRow("two matches") << infoOf({fixtureImage(2), twin}) << Diaries << QStringList{SecretStuff};
        QTest::newRow("not encrypted") << infoWith({1}) << QStringLiteral("/Volumes/plain") << QStringList{SecretStuff};
        QTest::newRow("case counts") << infoWith({2}) << Diaries.toUpper() << QStringList{SecretStuff};
    }

    void filteredScan()
    {
        QFETCH(QByteArray, info);
        QFETCH(QString, filter);
        QFETCH(QStringList, listed);
        Bench bench;
        bench.scan(infoWith({0}));
        bench.scan(info, filter);
        QCOMPARE(bench.listed(), listed);
        QCOMPARE(bench.delegate.changes.size(), listed.size() > 1 ? 2 : 1);
        QVERIFY(bench.delegate.listWasCurrent);
    }

    void aMountIsLookedForOnceItSettled()
    {
        Bench bench;
        bench.hdiutil.setResponse(infoWith({0, 2}));
        QElapsedTimer clock;
        clock.start();
        Q_EMIT bench.workspace.didMount({{NSDevicePath, Diaries}});
        QTRY_COMPARE_WITH_TIMEOUT(bench.listed(), QStringList{Diaries}, Patience);
        QVERIFY(clock.elapsed() >= 200);
        Q_EMIT bench.workspace.didMount({{NSDevicePath, SecretStuff}});
        QTRY_COMPARE_WITH_TIMEOUT(bench.listed(), (QStringList{SecretStuff, Diaries}), Patience);
        QCOMPARE(bench.hdiutil.runCount(), 2);
        QCOMPARE(bench.delegate.changes.size(), 2);
        QVERIFY(bench.delegate.failures.isEmpty());

        // A failure of that refresh reaches nobody but the delegate.
        bench.hdiutil.setResponse("hdiutil: info: failed\n");
        Q_EMIT bench.workspace.didMount({{NSDevicePath, QStringLiteral("/Volumes/USB")}});
        QTRY_COMPARE_WITH_TIMEOUT(bench.delegate.failures.size(), 1, Patience);
        QCOMPARE(bench.delegate.failures.first().localizedDescription(), QStringLiteral("Error executing hdiutil command"));
        QVERIFY(bench.delegate.onGuiThreadOnly);
    }

    void unmountAndRenameNeedNoTool()
    {
        Bench bench;
        bench.scan(infoWith({0, 2}));
        const int runs = bench.hdiutil.runCount();
        const KVVolumeItemPtr secret = bench.engine->mountedDiskImages().first();

        Q_EMIT bench.workspace.didRenameVolume({{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(SecretStuff + u'/')},
                                               {NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/Geheim/"))},
                                               {NSWorkspaceVolumeLocalizedNameKey, QStringLiteral("Geheim")}});
        QTRY_COMPARE_WITH_TIMEOUT(bench.listed(), (QStringList{"/Volumes/Geheim", Diaries}), Patience);
        QCOMPARE(bench.engine->mountedDiskImages().first(), secret);
        QCOMPARE(secret->name(), QStringLiteral("Geheim"));

        Q_EMIT bench.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/x/../Geheim"))}});
        QTRY_COMPARE_WITH_TIMEOUT(bench.listed(), QStringList{Diaries}, Patience);

        // Volumes that are not listed are no news.
        Q_EMIT bench.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/USB"))}});
        Q_EMIT bench.workspace.didRenameVolume({{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/USB"))},
                                               {NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(QStringLiteral("/Volumes/USB 2"))}});
        bench.settle();
        QCOMPARE(bench.delegate.changes.size(), 3);
        QCOMPARE(bench.hdiutil.runCount(), runs);
        QVERIFY(bench.delegate.listWasCurrent);
    }
};

QTEST_GUILESS_MAIN(TestKVDiskImageScan)
#include "tst_kvdiskimagescan.moc"
