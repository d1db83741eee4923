#include "diskimage/KVDiskImage.h"
#include "diskimage/KVDiskImageDelegate.h"
#include "platform/KVMainQueue.h"
#include "platform/KVWorkspaceNotifications.h"
#include "tools/KVPropertyList.h"

#include "KVToolDouble.h"

#include <QElapsedTimer>
#include <QTest>

#include <mutex>
#include <sys/stat.h>
#include <thread>

namespace {

// Waits are generous: the machine may be busy.
constexpr int Patience = 30000;

const QString SecretStuff = QStringLiteral("/Volumes/Secret Stuff");
const QString Diaries = QString::fromUtf8("/Volumes/Tagebücher");
const QString NoPath = QStringLiteral("/Volumes/No Path");
const QString SecretImage = QStringLiteral("/Users/someone/Documents/Secret Stuff.sparseimage");

// The images of the fixture, in its order: 0 encrypted at SecretStuff, 1 not
// encrypted, 2 encrypted at Diaries, 3 encrypted but not mounted, 4 without
// devices, 5 without a path (at NoPath), 6 without the encryption flag.
QVariantMap infoFixture()
{
    return KVPropertyList::decode(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-several-images.plist")))->toMap();
}

QVariantMap fixtureImage(int index)
{
    return infoFixture().value(QStringLiteral("images")).toList().at(index).toMap();
}

QByteArray infoOf(const QVariantList &images)
{
    QVariantMap info = infoFixture();
    info.insert(QStringLiteral("images"), images);
    return KVPropertyList::encodeXml(info);
}

QByteArray infoWith(std::initializer_list<int> indexes)
{
    QVariantList images;
    for (int index : indexes)
        images.append(fixtureImage(index));
    return infoOf(images);
}

QStringList mountPoints(const QList<KVVolumeItemPtr> &volumes)
{
    QStringList points;
    for (const KVVolumeItemPtr &volume : volumes)
        points.append(volume->mountPoint());
    return points;
}

// A diskutil that describes whatever volume it is asked about: the volume's
// UUID is its mount point, so images at different places are different items.
void answerForAnyVolume(KVToolDouble &diskutil, const QByteArray &deviceIdentifier = "disk4s2")
{
    diskutil.setScript("sed -e \"s|/Volumes/Secret Stuff|$3|\" -e \"s|5C2E3B2A-6D1F-3A44-9B0E-7F1D2C3B4A59|$3|\" "
                       "-e \"s|<string>disk4s2</string>|<string>" + deviceIdentifier + "</string>|\" '"
                       KV_TEST_FIXTURES "/diskutil/info-image-volume.plist'\n");
}

// What the engine's blocks received. They are called on the worker thread.
class Outcome
{
private:
    struct State
    {
        template<typename F>
        auto locked(F f) const
        {
            std::lock_guard lock(mutex);
            return f(*this);
        }
        void finish(const KVOptionalError &e, bool withLine = false)
        {
            std::lock_guard lock(mutex);
            ++calls;
            error = e;
            wellBehaved = wellBehaved && !KVMainQueue::isMainThread() && !withLine;
        }
        void addLine(const QString &line, bool withError)
        {
            std::lock_guard lock(mutex);
            lines.append(line);
            wellBehaved = wellBehaved && !KVMainQueue::isMainThread() && !withError && calls == 0;
        }
        void setLimits(const std::optional<QVariantMap> &value)
        {
            std::lock_guard lock(mutex);
            limits = value;
        }

        mutable std::mutex mutex;
        int calls = 0;
        KVOptionalError error;
        QStringList lines;
        std::optional<QVariantMap> limits;
        bool wellBehaved = true;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();

public:
    KVDiskImage::ErrorBlock errorBlock() const
    {
        return [state = m_state](const KVOptionalError &error) { state->finish(error); };
    }
    KVDiskImage::ProgressBlock progressBlock() const
    {
        return [state = m_state](const std::optional<QString> &line, bool finished, const KVOptionalError &error) {
            if (finished)
                state->finish(error, line.has_value());
            else
                state->addLine(line.value_or(QStringLiteral("(no line)")), error.has_value());
        };
    }
    KVDiskImage::LimitsBlock limitsBlock() const
    {
        return [state = m_state](const std::optional<QVariantMap> &limits, const KVOptionalError &error) {
            state->setLimits(limits);
            state->finish(error);
        };
    }

    int calls() const { return m_state->locked([](const State &s) { return s.calls; }); }
    KVOptionalError error() const { return m_state->locked([](const State &s) { return s.error; }); }
    QStringList lines() const { return m_state->locked([](const State &s) { return s.lines; }); }
    std::optional<QVariantMap> limits() const { return m_state->locked([](const State &s) { return s.limits; }); }
    // Every call came on a worker thread, and came well formed.
    bool wellBehaved() const { return m_state->locked([](const State &s) { return s.wellBehaved; }); }
};

class RecordingDelegate : public KVDiskImageDelegate
{
public:
    void mountedDiskImagesDidChange(KVDiskImage *engine, const QList<KVVolumeItemPtr> &volumes) override
    {
        onGuiThreadOnly = onGuiThreadOnly && KVMainQueue::isMainThread();
        listWasCurrent = listWasCurrent && kvSameVolumes(volumes, engine->mountedDiskImages());
        changes.append(mountPoints(volumes));
    }
    void mountedDiskImagesUpdateDidFail(KVDiskImage *, const KVAppError &error) override
    {
        onGuiThreadOnly = onGuiThreadOnly && KVMainQueue::isMainThread();
        failures.append(error);
    }

    QList<QStringList> changes;
    QList<KVAppError> failures;
    bool onGuiThreadOnly = true;
    bool listWasCurrent = true;
};

// An engine with doubles of both tools, listening to notifications of its own.
struct Bench
{
    Bench()
    {
        answerForAnyVolume(diskutil);
        engine = std::make_unique<KVDiskImage>(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace);
        engine->setDelegate(&delegate);
    }

    // Waits until everything queued so far has run, and what it posted to the
    // GUI thread has been done.
    void settle()
    {
        auto done = std::make_shared<std::atomic_bool>(false);
        engine->processingQueue().addOperation([done] { KVMainQueue::post([done] { *done = true; }); });
        QVERIFY(QTest::qWaitFor([&] { return done->load(); }, Patience));
    }

    void scan(const QByteArray &info, const std::optional<QString> &filter = std::nullopt)
    {
        hdiutil.setResponse(info);
        engine->updateMountedDiskImages(filter, outcome.errorBlock());
        settle();
    }

    QStringList listed() const { return mountPoints(engine->mountedDiskImages()); }

    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVWorkspaceNotifications workspace;
    RecordingDelegate delegate;
    std::unique_ptr<KVDiskImage> engine;
    Outcome outcome;
};

// An item of a mounted image, as a scan would have made it.
KVVolumeItemPtr imageItem(const QByteArray &deviceIdentifier = "disk4s2")
{
    KVToolDouble diskutil;
    answerForAnyVolume(diskutil, deviceIdentifier);
    return KVVolumeItem::create({{QStringLiteral("hdiutilInfo"), fixtureImage(0)}}, nullptr,
                                KVToolPaths{QString(), diskutil.path(), QString()});
}

using Operation = std::function<void(KVDiskImage &engine, const Outcome &outcome)>;

} // namespace

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
