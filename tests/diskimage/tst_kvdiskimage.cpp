#include "KVDiskImageBench.h"

#include <QTest>

#include <functional>
#include <mutex>
#include <sys/stat.h>
#include <thread>

using namespace KVDiskImageTest;

using Operation = std::function<void(KVDiskImage &engine, const Outcome &outcome)>;

Q_DECLARE_METATYPE(Operation)

class TestKVDiskImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operationRunsExactly_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("standardInput"); // null: no pipe at all
        const QString password = QString::fromUtf8("pässwörd 🔑");
        const QByteArray passwordBytes("p\xc3\xa4ssw\xc3\xb6rd \xf0\x9f\x94\x91");
        const QString odd = QString::fromUtf8("-Tagebücher 2024 (copy).sparseimage");

        QTest::newRow("info") << Operation([](KVDiskImage &e, const Outcome &o) { e.updateMountedDiskImages(std::nullopt, o.errorBlock()); })
                              << QStringList{"info", "-plist"} << QByteArray();
        QTest::newRow("attach") << Operation([=](KVDiskImage &e, const Outcome &o) { e.mountDiskImage(SecretImage, password, false, QUrl(), false, o.errorBlock()); })
                                << QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", SecretImage} << passwordBytes;
        QTest::newRow("attach with every option")
            << Operation([](KVDiskImage &e, const Outcome &o) {
                   e.mountDiskImage(SecretImage, QStringLiteral("pw"), true, QUrl::fromLocalFile(QStringLiteral("/Volumes/My Mounts/")), true, o.errorBlock());
               })
            << QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", SecretImage, "-readonly", "-autoopen", "-mountroot", "/Volumes/My Mounts"}
            << QByteArray("pw");
        QTest::newRow("attach: empty mount root, empty password, odd path")
            << Operation([=](KVDiskImage &e, const Outcome &o) { e.mountDiskImage(odd, QString(), false, QUrl(QString()), false, o.errorBlock()); })
            << QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", odd} << QByteArray("");
        QTest::newRow("detach") << Operation([](KVDiskImage &e, const Outcome &o) { e.detach(QStringLiteral("/dev/disk4"), false, o.errorBlock()); })
                                << QStringList{"detach", "-verbose", "/dev/disk4"} << QByteArray();
        QTest::newRow("detach by force") << Operation([](KVDiskImage &e, const Outcome &o) { e.detach(SecretStuff, true, o.errorBlock()); })
                                         << QStringList{"detach", "-verbose", "-force", SecretStuff} << QByteArray();

        const auto create = [](const QString &location, std::optional<float> size, const QString &name, const QString &encryption, bool mount) {
            return Operation([=](KVDiskImage &e, const Outcome &o) {
                e.createDiskImage(QUrl::fromLocalFile(location), size, name, encryption, QStringLiteral("pw"), mount, o.progressBlock());
            });
        };
        const QStringList createHead{"create", "-verbose", "-stdinpass", "-puppetstrings", "-fs", "Journaled HFS+", "-type", "SPARSE"};
        QTest::newRow("create AES-128") << create(SecretImage, 1024.0f, "Secret Stuff", "AES-128", false)
                                        << createHead + QStringList{"-size", "1024m", "-volname", "Secret Stuff", "-encryption", "AES-128", "/Users/someone/Documents/Secret Stuff"}
                                        << QByteArray("pw");
        QTest::newRow("create aes-128 means AES-256") << create(SecretImage, std::nullopt, QString(), "aes-128", true)
                                                      << createHead + QStringList{"-encryption", "AES-256", "-attach", "/Users/someone/Documents/Secret Stuff"}
                                                      << QByteArray("pw");
        QTest::newRow("create without encryption means AES-256") << create("/tmp/a.b/plain", 1234.5677f, QString(), QString(), false)
                                                                 << createHead + QStringList{"-size", "1234.568m", "-encryption", "AES-256", "/tmp/a.b/plain"}
                                                                 << QByteArray("pw");
        QTest::newRow("create AES-256") << create("/tmp/" + odd, 20.0f, QString::fromUtf8("Tagebücher"), "AES-256", false)
                                        << createHead + QStringList{"-size", "20m", "-volname", QString::fromUtf8("Tagebücher"), "-encryption", "AES-256",
                                                                    QString::fromUtf8("/tmp/-Tagebücher 2024 (copy)")}
                                        << QByteArray("pw");

        const KVVolumeItemPtr item = imageItem();
        QTest::newRow("chpass") << Operation([=](KVDiskImage &e, const Outcome &o) { e.changePassword(item, QStringLiteral("a"), QStringLiteral("b"), o.errorBlock()); })
                                << QStringList{"chpass", "-oldstdinpass", "-newstdinpass", "-verbose", SecretImage} << QByteArray("a\0b", 3);
        QTest::newRow("chpass, not ASCII") << Operation([=](KVDiskImage &e, const Outcome &o) { e.changePassword(item, QString::fromUtf8("ä"), QString::fromUtf8("€"), o.errorBlock()); })
                                           << QStringList{"chpass", "-oldstdinpass", "-newstdinpass", "-verbose", SecretImage}
                                           << QByteArray("\xc3\xa4\0\xe2\x82\xac", 6);
        QTest::newRow("erasekeys") << Operation([=](KVDiskImage &e, const Outcome &o) { e.eraseKeys(odd, o.errorBlock()); })
                                   << QStringList{"erasekeys", odd} << QByteArray();
        QTest::newRow("limits") << Operation([=](KVDiskImage &e, const Outcome &o) { e.getLimits(item, password, o.limitsBlock()); })
                                << QStringList{"resize", "-limits", "-stdinpass", "-plist", SecretImage} << passwordBytes;
        QTest::newRow("resize") << Operation([](KVDiskImage &e, const Outcome &o) { e.resize(SecretImage, 2048.0f, QStringLiteral("pw"), o.errorBlock()); })
                                << QStringList{"resize", "-size", "-stdinpass", "2048m", SecretImage} << QByteArray("pw");
        QTest::newRow("resize without a size") << Operation([](KVDiskImage &e, const Outcome &o) { e.resize(SecretImage, std::nullopt, QStringLiteral("pw"), o.errorBlock()); })
                                               << QStringList{"resize", SecretImage, "-stdinpass"} << QByteArray("pw");
        QTest::newRow("compact") << Operation([=](KVDiskImage &e, const Outcome &o) { e.compact(SecretImage, password, o.errorBlock()); })
                                 << QStringList{"compact", "-stdinpass", "-batteryallowed", "-verbose", SecretImage} << passwordBytes;
    }

    void operationRunsExactly()
    {
        QFETCH(Operation, operation);
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, standardInput);
        Bench bench;
        operation(*bench.engine, bench.outcome);
        bench.settle();
        QCOMPARE(bench.hdiutil.runCount(), 1);
        QCOMPARE(bench.hdiutil.arguments(), arguments);
        QCOMPARE(bench.hdiutil.standardInputWasPipe(), !standardInput.isNull());
        QCOMPARE(bench.hdiutil.standardInput(), standardInput.isNull() ? QByteArray() : standardInput);
        QCOMPARE(bench.outcome.calls(), 1);
        QVERIFY(bench.outcome.wellBehaved());
    }

    void blocksCarryWhatTheRunFound()
    {
        Bench bench;
        bench.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/attach-wrong-password.txt"), 1);
        bench.engine->mountDiskImage(SecretImage, QStringLiteral("wrong"), false, QUrl(), false, bench.outcome.errorBlock());
        bench.settle();
        QVERIFY(bench.outcome.error());
        QVERIFY(bench.outcome.error()->is(KVAppErrorCode(10)));

        Outcome created;
        bench.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/create-file-exists.txt"), 1);
        bench.engine->createDiskImage(QUrl::fromLocalFile(SecretImage), 10.0f, QString(), QString(), QStringLiteral("pw"), false,
                                      created.progressBlock());
        bench.settle();
        QCOMPARE(created.calls(), 1);
        QVERIFY(created.wellBehaved());
        QCOMPARE(created.lines().size(), 11);
        QCOMPARE(created.lines().at(1), QString::fromUtf8("MESSAGE:Initializing\u2026"));
        QVERIFY(created.error()->is(KVAppErrorCode(25)));

        Outcome limits;
        bench.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/resize-limits.plist"));
        bench.engine->getLimits(imageItem(), QStringLiteral("pw"), limits.limitsBlock());
        bench.settle();
        QVERIFY(!limits.error());
        QVERIFY(limits.limits());
        QCOMPARE(limits.limits()->value(QStringLiteral("image-size")).toLongLong(), 1073741824);

        Outcome wrong;
        bench.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/resize-wrong-password.txt"), 1);
        bench.engine->getLimits(imageItem(), QStringLiteral("pw"), wrong.limitsBlock());
        bench.settle();
        QVERIFY(!wrong.limits());
        QVERIFY(wrong.error()->is(KVAppErrorCode(10)));
    }

    void createWithoutAPathRunsNothing()
    {
        Bench bench;
        bench.engine->createDiskImage(QUrl(), 10.0f, QString(), QString(), QStringLiteral("pw"), true, bench.outcome.progressBlock());
        bench.settle();
        QCOMPARE(bench.hdiutil.runCount(), 0);
        QCOMPARE(bench.outcome.calls(), 1);
        QVERIFY(bench.outcome.lines().isEmpty());
        QVERIFY(bench.outcome.wellBehaved());
        const KVOptionalError error = bench.outcome.error();
        QVERIFY(error && error->is(KVAppErrorCode(50)));
        QCOMPARE(error->localizedDescription(), QStringLiteral("Disk Image creation failed"));
        QCOMPARE(error->localizedFailureReason(), QStringLiteral("There is no path parameter"));
    }

    void unmountingAnImage_data()
    {
        QTest::addColumn<QByteArray>("deviceIdentifier");
        QTest::addColumn<bool>("force");
        QTest::addColumn<int>("firstStatus");
        QTest::addColumn<QList<QStringList>>("runs");
        QTest::addColumn<int>("code"); // 0: success
        const QByteArray failed("hdiutil: detach: result: 2\nhdiutil: detach failed - No such file or directory\n");
        QTest::newRow("on a slice of the image's device") << QByteArray("disk4s2") << false << 0
                                                          << QList<QStringList>{{"detach", "-verbose", "/dev/disk4"}} << 0;
        QTest::newRow("by force") << QByteArray("disk4s2") << true << 0 << QList<QStringList>{{"detach", "-verbose", "-force", "/dev/disk4"}} << 0;
        QTest::newRow("on another device: that first")
            << QByteArray("disk5s1") << true << 0
            << QList<QStringList>{{"detach", "-verbose", "-force", "disk5"}, {"detach", "-verbose", "-force", "/dev/disk4"}} << 0;
        QTest::newRow("no slice suffix is cut inside the word") << QByteArray("disk4") << false << 1
                                                                << QList<QStringList>{{"detach", "-verbose", "di"}} << 20;
    }

    void unmountingAnImage()
    {
        QFETCH(QByteArray, deviceIdentifier);
        QFETCH(bool, force);
        QFETCH(int, firstStatus);
        QFETCH(QList<QStringList>, runs);
        QFETCH(int, code);
        Bench bench;
        bench.hdiutil.setResponse(KVToolDouble::readFixture(QStringLiteral("hdiutil/detach-success.txt")));
        if (firstStatus != 0)
            bench.hdiutil.setResponse(1, KVToolDouble::readFixture(QStringLiteral("hdiutil/detach-no-such-device.txt")), firstStatus);
        bench.engine->unmountVolume(imageItem(deviceIdentifier), force, bench.outcome.errorBlock());
        bench.settle();
        QCOMPARE(bench.hdiutil.runCount(), runs.size());
        for (int run = 1; run <= runs.size(); ++run)
            QCOMPARE(bench.hdiutil.arguments(run), runs.at(run - 1));
        QCOMPARE(bench.outcome.calls(), 1);
        QVERIFY(bench.outcome.wellBehaved());
        QCOMPARE(bench.outcome.error() ? bench.outcome.error()->code() : 0, code);
    }

    void unmountingOtherVolumes()
    {
        Bench bench;
        bench.hdiutil.setResponseFromFile(QStringLiteral("hdiutil/detach-success.txt"));
        const auto disk = [](const QString &mountPoint) {
            return KVVolumeItem::create({{QStringLiteral("sysProfilerInfo"),
                                          QVariantMap{{QStringLiteral("mount_point"), mountPoint}, {QStringLiteral("volume_uuid"), QStringLiteral("U")}}}},
                                        nullptr);
        };
        bench.engine->unmountVolume(disk(QStringLiteral("/Volumes/Backup")), true, bench.outcome.errorBlock());
        bench.settle();
        QCOMPARE(bench.hdiutil.arguments(), (QStringList{"detach", "-verbose", "-force", "/Volumes/Backup"}));

        // Nothing to unmount: the answer comes at once, on the caller's thread.
        KVOptionalError error;
        int calls = 0;
        bench.engine->unmountVolume(disk(QString()), false, [&](const KVOptionalError &e) {
            error = e;
            ++calls;
        });
        QCOMPARE(calls, 1);
        QVERIFY(error && error->is(KVAppErrorCode(200)));
        QCOMPARE(error->localizedDescription(), QStringLiteral("Unmount failed"));
        QCOMPARE(error->localizedFailureReason(), QStringLiteral("Volume has no mount point"));
        bench.settle();
        QCOMPARE(bench.hdiutil.runCount(), 1);
    }

    void aDestroyedEngineHearsNothing()
    {
        Bench bench;
        bench.engine.reset();
        Q_EMIT bench.workspace.didMount({{NSDevicePath, Diaries}});
        Q_EMIT bench.workspace.didUnmount({{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(Diaries)}});
        QCoreApplication::processEvents();
        QCOMPARE(bench.hdiutil.runCount(), 0);
    }

    void aDestroyedDelegateIsNotCalled()
    {
        Bench bench;
        auto gone = std::make_unique<RecordingDelegate>();
        bench.engine->setDelegate(gone.get());
        QCOMPARE(bench.engine->delegate(), gone.get());
        gone.reset();
        QCOMPARE(bench.engine->delegate(), nullptr);
        bench.scan(infoWith({0}));
        QCOMPARE(bench.listed(), QStringList{SecretStuff});
    }

    void operationsOutliveTheirEngine()
    {
        Bench bench;
        const QByteArray gate = QFile::encodeName(bench.hdiutil.directory() + QStringLiteral("/gate"));
        QCOMPARE(mkfifo(gate.constData(), 0600), 0);
        bench.hdiutil.setResponse(1, infoWith({0}));
        bench.hdiutil.setScript("read go < \"$d/gate\"\n", 1);

        Outcome scan, mount, erase;
        bench.engine->updateMountedDiskImages(std::nullopt, scan.errorBlock());
        bench.engine->mountDiskImage(SecretImage, QStringLiteral("pw"), false, QUrl(), false, mount.errorBlock());
        bench.engine->eraseKeys(SecretImage, erase.errorBlock());
        QTRY_COMPARE_WITH_TIMEOUT(bench.hdiutil.runCount(), 1, Patience);
        bench.engine.reset();

        QFile opener(QFile::decodeName(gate));
        QVERIFY(opener.open(QIODevice::WriteOnly));
        opener.write("go\n");
        opener.close();
        // The running scan ends and reports; what it found has no engine to go to.
        QTRY_COMPARE_WITH_TIMEOUT(scan.calls(), 1, Patience);
        QVERIFY(!scan.error());
        QCoreApplication::processEvents();
        QVERIFY(bench.delegate.changes.isEmpty());
        QCOMPARE(bench.hdiutil.runCount(), 1);
        QCOMPARE(mount.calls() + erase.calls(), 0);
    }

    void operationsRunOneAtATimeInSubmissionOrder()
    {
        Bench bench;
        // A run that finds another one running leaves a mark.
        bench.hdiutil.setScript("mkdir \"$d/running\" 2>/dev/null || touch \"$d/overlap\"\n"
                                "trap 'rmdir \"$d/running\"' EXIT\n");
        constexpr int Threads = 4;
        constexpr int PerThread = 50;
        std::mutex submission;
        int next = 0;
        std::vector<std::thread> threads;
        for (int t = 0; t < Threads; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < PerThread; ++i) {
                    std::lock_guard lock(submission);
                    bench.engine->eraseKeys(QString::number(next++), bench.outcome.errorBlock());
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QTRY_COMPARE_WITH_TIMEOUT(bench.outcome.calls(), Threads * PerThread, 4 * Patience);
        QVERIFY(!QFile::exists(bench.hdiutil.directory() + QStringLiteral("/overlap")));
        QCOMPARE(bench.hdiutil.runCount(), Threads * PerThread);
        for (int run = 1; run <= Threads * PerThread; ++run)
            QCOMPARE(bench.hdiutil.arguments(run), (QStringList{"erasekeys", QString::number(run - 1)}));
    }
};

QTEST_GUILESS_MAIN(TestKVDiskImage)
#include "tst_kvdiskimage.moc"
