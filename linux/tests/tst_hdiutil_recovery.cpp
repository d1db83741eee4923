// What is left when things go wrong: a tool killed half way through attach,
// a daemon that dies, a disk that fills up during create, records that no
// longer describe anything. The listing must show what is really there, and
// nothing may be left behind.

#include "KVImageTestFiles.h"
#include "KVImageToolHarness.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/mount.h>

using namespace kvlinux;

using namespace KVImageTestFiles;

namespace {

const QByteArray password = QByteArrayLiteral("recover");

} // namespace

class KVHdiutilRecoveryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void killedAttachLeavesNothingStray_data();
    void killedAttachLeavesNothingStray();
    void imageOfACrashedDaemonIsListedAndDetaches();
    void fullDiskDuringCreateLeavesNoImage_data();
    void fullDiskDuringCreateLeavesNoImage();
    void recordsThatDescribeNothingAreDropped();

private:
    std::unique_ptr<KVImageToolHarness> h;
};

void KVHdiutilRecoveryTest::initTestCase()
{
    if (const QString reason = KVImageToolHarness::kernelPathUnavailable(); !reason.isEmpty())
        QSKIP(qPrintable(reason));
}

void KVHdiutilRecoveryTest::init()
{
    h = std::make_unique<KVImageToolHarness>();
    QVERIFY(h->isValid());
}

void KVHdiutilRecoveryTest::cleanup()
{
    h.reset();
}

void KVHdiutilRecoveryTest::killedAttachLeavesNothingStray_data()
{
    QTest::addColumn<QString>("killAfter");
    QTest::newRow("while unlocking") << QStringLiteral("Attaching…");
    QTest::newRow("while mounting") << QStringLiteral("Mounting…");
}

void KVHdiutilRecoveryTest::killedAttachLeavesNothingStray()
{
    QFETCH(QString, killAfter);
    QCOMPARE(h->create(QStringLiteral("Killed"), password, QStringLiteral("Killed")).exitCode, 0);
    const QString image = h->path(QStringLiteral("Killed.sparseimage"));

    const QStringList command = h->hdiutilCommand(
        {QStringLiteral("attach"), QStringLiteral("-verbose"), QStringLiteral("-stdinpass"),
         QStringLiteral("-puppetstrings"), image, QStringLiteral("-mountroot"), h->mountRoot()});
    QProcess tool;
    tool.setProcessChannelMode(QProcess::MergedChannels);
    tool.setEnvironment(h->environment());
    tool.start(command.first(), command.mid(1));
    QVERIFY(tool.waitForStarted());
    tool.write(password);
    tool.closeWriteChannel();
    QByteArray output;
    QTRY_VERIFY_WITH_TIMEOUT((output += tool.readAll()).contains(killAfter.toUtf8())
                                 || tool.state() == QProcess::NotRunning,
                             20000);
    // A finished QProcess has no pid any more (0), and kill(0) would end this
    // whole process group, the test runner with it.
    if (const pid_t pid = pid_t(tool.processId()); pid > 0)
        kill(pid, SIGKILL);
    tool.waitForFinished();

    // Killed early, nothing is left; killed late, the image is attached and
    // listed like any other. Either way nothing is astray.
    QTRY_VERIFY_WITH_TIMEOUT(h->leftovers().isEmpty() || !h->onlyMountPoint().isEmpty(), 20000);
    if (!h->onlyMountPoint().isEmpty())
        QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
    QTRY_COMPARE_WITH_TIMEOUT(h->leftovers(), QStringList(), 20000);
    QVERIFY(!h->info().contains(QStringLiteral("images")));
    QCOMPARE(h->attach(image, password).exitCode, 0);
}

void KVHdiutilRecoveryTest::imageOfACrashedDaemonIsListedAndDetaches()
{
    QCOMPARE(h->create(QStringLiteral("Crash"), password, QStringLiteral("Crash")).exitCode, 0);
    const QString image = h->path(QStringLiteral("Crash.sparseimage"));
    QCOMPARE(h->attach(image, password).exitCode, 0);
    const QByteArray data = randomBytes(1 << 20);
    QVERIFY(writeFile(h->onlyMountPoint() + QStringLiteral("/safe.bin"), data));

    const QVariantMap listed = onlyImage(h->info());
    const pid_t daemon = pid_t(listed.value(QStringLiteral("hdid-pid")).toLongLong());
    QVERIFY(daemon > 0);
    QCOMPARE(kill(daemon, SIGKILL), 0);

    // The volume is still mounted (and failing): it stays listed so that it
    // can be detached.
    QTRY_VERIFY(!h->onlyMountPoint().isEmpty());
    const auto detached = h->detach(wholeDisk(onlyImage(h->info())));
    QVERIFY2(detached.has(QStringLiteral("ejected.")), qPrintable(detached.output));
    QTRY_COMPARE_WITH_TIMEOUT(h->leftovers(), QStringList(), 20000);

    QCOMPARE(h->attach(image, password).exitCode, 0);
    QCOMPARE(readFile(h->onlyMountPoint() + QStringLiteral("/safe.bin")), data);
}

void KVHdiutilRecoveryTest::fullDiskDuringCreateLeavesNoImage_data()
{
    QTest::addColumn<QByteArray>("room");
    QTest::newRow("while the header is written") << QByteArrayLiteral("size=200k");
    // The LUKS2 header (16 MiB) fits, the file system does not.
    QTest::newRow("while the file system is made") << QByteArrayLiteral("size=16640k");
}

void KVHdiutilRecoveryTest::fullDiskDuringCreateLeavesNoImage()
{
    QFETCH(QByteArray, room);
    const QString small = h->path(QStringLiteral("small"));
    QVERIFY(QDir().mkdir(small));
    QCOMPARE(mount("tmpfs", QFile::encodeName(small).constData(), "tmpfs", 0, room.constData()), 0);

    const auto created = h->create(QStringLiteral("small/Big"), password, QStringLiteral("Big"),
                                   QStringLiteral("AES-256"), QStringLiteral("1g"));
    QVERIFY(created.exitCode != 0);
    QVERIFY2(created.has(QStringLiteral("hdiutil: create failed - No space left on device")),
             qPrintable(created.output));
    QVERIFY(!created.has(QStringLiteral("DIHLDiskImageCreate() returned 2")));
    QCOMPARE(QDir(small).entryList(QDir::Files | QDir::Hidden), QStringList());
    QCOMPARE(h->leftovers(), QStringList{small});
    QCOMPARE(umount2(QFile::encodeName(small).constData(), MNT_DETACH), 0);
}

void KVHdiutilRecoveryTest::recordsThatDescribeNothingAreDropped()
{
    const QString records = h->runtimeDirectory() + QStringLiteral("/korvelle");
    QVERIFY(QDir().mkpath(records));
    QFile boot(QStringLiteral("/proc/sys/kernel/random/boot_id"));
    QVERIFY(boot.open(QIODevice::ReadOnly));
    const QString bootId = QString::fromLatin1(boot.readAll().trimmed());

    // One from an earlier boot, one whose daemon and mount are gone, and one
    // of an attach killed after it made the volume's folder.
    const QJsonObject stale{{QStringLiteral("number"), 7}, {QStringLiteral("stage"), QStringLiteral("attached")},
                            {QStringLiteral("bootId"), QStringLiteral("an-earlier-boot")},
                            {QStringLiteral("mountPoint"), h->mountRoot()}};
    QJsonObject vanished = stale;
    vanished[QStringLiteral("number")] = 8;
    vanished[QStringLiteral("bootId")] = bootId;
    vanished[QStringLiteral("daemon")] = QJsonObject{{QStringLiteral("pid"), 999999}, {QStringLiteral("start"), QStringLiteral("1")}};
    QJsonObject killed = vanished;
    killed[QStringLiteral("number")] = 9;
    killed[QStringLiteral("stage")] = QStringLiteral("attaching");
    killed[QStringLiteral("tool")] = QJsonObject{{QStringLiteral("pid"), 999998}, {QStringLiteral("start"), QStringLiteral("1")}};
    killed[QStringLiteral("mountPoint")] = QString(h->mountRoot() + QStringLiteral("/Killed"));
    killed[QStringLiteral("createdMountPoint")] = true;
    QVERIFY(QDir().mkdir(h->mountRoot() + QStringLiteral("/Killed")));
    QVERIFY(QDir().mkdir(h->mountRoot() + QStringLiteral("/Not ours")));
    for (const QJsonObject &record : {stale, vanished, killed})
        QVERIFY(writeFile(records + QStringLiteral("/disk%1.json").arg(record.value(QStringLiteral("number")).toInt()),
                          QJsonDocument(record).toJson()));

    QVERIFY(!h->info().contains(QStringLiteral("images")));
    QCOMPARE(QDir(records).entryList({QStringLiteral("*.json")}), QStringList());
    // The records' own folders go with them; a folder that no record made stays.
    QCOMPARE(h->leftovers(), QStringList{h->mountRoot() + QStringLiteral("/Not ours")});
    QVERIFY(h->detach(QStringLiteral("disk7")).has(QStringLiteral("hdiutil: detach: result: 2")));
}

QTEST_GUILESS_MAIN(KVHdiutilRecoveryTest)
#include "tst_hdiutil_recovery.moc"
