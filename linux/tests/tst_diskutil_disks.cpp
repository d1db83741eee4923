// The disk verbs on a real partitioned disk (a loop device over a file): an
// ext4 partition is found, encrypted in place, locked, unlocked, re-keyed,
// refused a second time and decrypted again; a conversion killed half way resumes; bad input
// answers in diskutil's failure texts.

#include "KVDiskReports.h"
#include "KVDiskToolHarness.h"
#include "tools/KVPropertyList.h"

#include <QDir>
#include <QFileInfo>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <csignal>

using namespace kvlinux;
using namespace kvlinux::KVDiskReports;

namespace {

const QByteArray passphrase = QByteArrayLiteral("correct horse");

} // namespace

class KVDiskutilDisksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void encryptsLocksUnlocksAndRekeysAPartition();
    void conversionKilledHalfWayResumes();
    void listingsDoNotWaitForTheHeaderLock();
    void badInputIsRefused_data();
    void badInputIsRefused();
    void anOrdinaryUserIsToldAtOnce();
    void anOrdinaryUserListsWhatItMayRead();
};

void KVDiskutilDisksTest::init()
{
    if (const QString why = KVDiskToolHarness::unavailable(); !why.isEmpty())
        QSKIP(qPrintable(why));
}

void KVDiskutilDisksTest::encryptsLocksUnlocksAndRekeysAPartition()
{
    KVDiskToolHarness disk(QStringLiteral("200M"), QStringLiteral("64M"));
    QVERIFY(disk.isValid());
    const QString files = disk.fillWithFiles(40);

    // Offered for encryption: "Journaled HFS+" on a disk that is not an image.
    const QVariantMap plain = storageEntry(disk, disk.ext4Partition());
    QCOMPARE(plain.value(QStringLiteral("file_system")).toString(), QStringLiteral("Journaled HFS+"));
    QCOMPARE(plain.value(QStringLiteral("mount_point")).toString(), disk.mountPoint());
    QVERIFY(plain.value(QStringLiteral("physical_drive")).toMap().value(QStringLiteral("protocol")) != QStringLiteral("Disk Image"));
    QVERIFY(!plain.contains(QStringLiteral("com.apple.corestorage.lv")));

    const auto converted = disk.diskutil({QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(),
                                          QStringLiteral("-stdinpassphrase")}, passphrase);
    QCOMPARE(converted.exitCode, 0);
    const QStringList lines = converted.output.split(QLatin1Char('\n'));
    for (const QString &stage : {QStringLiteral("Started"), QStringLiteral("Resizing"),
                                 QStringLiteral("Creating Core Storage"), QStringLiteral("Encryption in progress")})
        QVERIFY2(std::any_of(lines.cbegin(), lines.cend(), [&](const QString &l) { return l.startsWith(stage); }),
                 qPrintable(converted.output));
    QVERIFY(converted.has(QStringLiteral("Finished CoreStorage operation")));

    const QList<int> progress = followConversion(disk);
    QVERIFY(!progress.isEmpty());
    QVERIFY(std::is_sorted(progress.cbegin(), progress.cend()));

    // Encrypted, mounted again, every file intact.
    const QVariantMap encrypted = encryptedEntry(disk);
    const QVariantMap lv = encrypted.value(QStringLiteral("com.apple.corestorage.lv")).toMap();
    QCOMPARE(lv.value(QStringLiteral("com.apple.corestorage.lv.encrypted")).toString(), QStringLiteral("yes"));
    QCOMPARE(lv.value(QStringLiteral("com.apple.corestorage.lv.conversionState")).toString(), QStringLiteral("Complete"));
    QCOMPARE(encrypted.value(QStringLiteral("volume_uuid")), plain.value(QStringLiteral("volume_uuid")));
    const QString mountPoint = encrypted.value(QStringLiteral("mount_point")).toString();
    QCOMPARE(disk.checksums(mountPoint), files);
    QVERIFY(disk.shell(QStringLiteral("cryptsetup isLuks /dev/") + disk.ext4Partition()).exitCode == 0);

    // Ejected, it is locked and offered for mounting by its group's shape.
    const QString uuid = logicalVolumeUuid(encrypted);
    const QString device = encrypted.value(QStringLiteral("bsd_name")).toString();
    QCOMPARE(disk.diskutil({QStringLiteral("eject"), QStringLiteral("/dev/") + device}).output.trimmed(),
             QStringLiteral("Disk /dev/%1 ejected").arg(device));
    QVERIFY(encryptedEntry(disk).isEmpty());
    const QVariantMap listing = KVPropertyList::decode(
        disk.diskutil({QStringLiteral("cs"), QStringLiteral("list"), QStringLiteral("-plist")}).output.toUtf8()).value_or(QVariant()).toMap();
    const QVariantList groups = listing.value(QStringLiteral("CoreStorageLogicalVolumeGroups")).toList();
    QCOMPARE(groups.size(), 1);
    const QVariantMap group = groups.first().toMap();
    QCOMPARE(group.value(QStringLiteral("CoreStoragePhysicalVolumes")).toList().size(), 1);
    const QVariantList families = group.value(QStringLiteral("CoreStorageLogicalVolumeFamilies")).toList();
    QCOMPARE(families.size(), 1);
    const QVariantMap family = families.first().toMap();
    QCOMPARE(family.value(QStringLiteral("CoreStorageLogicalVolumes")).toList().first().toMap()
                 .value(QStringLiteral("CoreStorageUUID")).toString(), uuid);
    const QVariantMap familyInfo = KVPropertyList::decode(
        disk.diskutil({QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"),
                       family.value(QStringLiteral("CoreStorageUUID")).toString()}).output.toUtf8()).value_or(QVariant()).toMap();
    QCOMPARE(familyInfo.value(QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionType")).toString(), QStringLiteral("AES-XTS"));
    QCOMPARE(familyInfo.value(QStringLiteral("CoreStorageLogicalVolumeFamilyEncryptionStatus")).toString(), QStringLiteral("Locked"));
    const QVariantMap pvInfo = KVPropertyList::decode(
        disk.diskutil({QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"),
                       group.value(QStringLiteral("CoreStoragePhysicalVolumes")).toList().first().toMap()
                           .value(QStringLiteral("CoreStorageUUID")).toString()}).output.toUtf8()).value_or(QVariant()).toMap();
    QCOMPARE(pvInfo.value(QStringLiteral("DeviceIdentifier")).toString(), disk.ext4Partition());
    const QVariantMap pvDisk = KVPropertyList::decode(
        disk.diskutil({QStringLiteral("info"), QStringLiteral("-plist"), disk.ext4Partition()}).output.toUtf8()).value_or(QVariant()).toMap();
    QCOMPARE(pvDisk.value(QStringLiteral("MountPoint")).toString(), QString());

    // Unlocking: a wrong passphrase, then the right one.
    const auto unlock = [&](const QByteArray &secret) {
        return disk.diskutil({QStringLiteral("cs"), QStringLiteral("unlockVolume"), uuid, QStringLiteral("-stdinpassphrase")},
                             secret);
    };
    QVERIFY(unlock("wrong").has(QStringLiteral("-69749")));
    const auto unlocked = unlock(passphrase);
    QVERIFY2(unlocked.has(QStringLiteral("Finished CoreStorage operation")), qPrintable(unlocked.output));
    QVERIFY(unlock(passphrase).has(QStringLiteral("The target Core Storage volume is not locked")));
    const QString mounted = disk.diskutil({QStringLiteral("mount"), uuid}).output.trimmed();
    QVERIFY2(mounted.startsWith(QLatin1String("Volume")) && mounted.endsWith(QLatin1String("mounted")), qPrintable(mounted));
    QCOMPARE(disk.checksums(encryptedEntry(disk).value(QStringLiteral("mount_point")).toString()), files);

    // A new passphrase: only it unlocks afterwards.
    const auto changed = disk.diskutil({QStringLiteral("cs"), QStringLiteral("changeVolumePassphrase"), uuid,
                                        QStringLiteral("-stdinpassphrase")}, passphrase + "\nnew secret");
    QVERIFY2(changed.has(QStringLiteral("Finished CoreStorage operation")), qPrintable(changed.output));
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("changeVolumePassphrase"), uuid,
                           QStringLiteral("-stdinpassphrase")}, "not it\nother")
                .has(QStringLiteral("Unable to change the Core Storage passphrase")));
    const QString lvDevice = encryptedEntry(disk).value(QStringLiteral("bsd_name")).toString();
    QVERIFY(disk.diskutil({QStringLiteral("eject"), QStringLiteral("/dev/") + lvDevice}).has(QStringLiteral("ejected")));
    QVERIFY(unlock(passphrase).has(QStringLiteral("-69749")));
    // Asked for through pkexec, the volume is mounted for the asking user.
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("unlockVolume"), uuid, QStringLiteral("-stdinpassphrase")},
                          "new secret", {QStringLiteral("PKEXEC_UID=65534")})
                .has(QStringLiteral("Finished CoreStorage operation")));
    QVERIFY(encryptedEntry(disk).value(QStringLiteral("mount_point")).toString().startsWith(QLatin1String("/media/nobody/")));

    // Renamed, and encrypted already: a second conversion is refused.
    const QString renamed = disk.diskutil({QStringLiteral("rename"),
                                           encryptedEntry(disk).value(QStringLiteral("mount_point")).toString(),
                                           QStringLiteral("Holiday Photos")}).output;
    QVERIFY2(renamed.startsWith(QLatin1String("Volume on")) && renamed.contains(QLatin1String("renamed to")), qPrintable(renamed));
    QCOMPARE(encryptedEntry(disk).value(QStringLiteral("_name")).toString(), QStringLiteral("Holiday Photos"));
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(),
                           QStringLiteral("-stdinpassphrase")}, passphrase).has(QStringLiteral("(-69753)")));

    // Decrypted in place: plain ext4 again, its full size, every file intact.
    const auto revert = [&](const QByteArray &secret) {
        return disk.diskutil({QStringLiteral("cs"), QStringLiteral("revert"), uuid, QStringLiteral("-stdinpassphrase")},
                             secret);
    };
    QVERIFY(revert("wrong").has(QStringLiteral("Unable to unlock the Core Storage volume")));
    QVERIFY(isMounted(encryptedEntry(disk)));
    const auto reverted = revert("new secret");
    QVERIFY2(reverted.has(QStringLiteral("Finished CoreStorage operation")), qPrintable(reverted.output));
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).has(QStringLiteral("Converting (backward)")));
    QVERIFY(revert("new secret").has(QStringLiteral("being converted")));
    const QList<int> backward = followConversion(disk, false);
    QVERIFY(std::is_sorted(backward.cbegin(), backward.cend()));
    QVERIFY(disk.shell(QStringLiteral("cryptsetup isLuks /dev/") + disk.ext4Partition()).exitCode != 0);
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).has(QStringLiteral("No CoreStorage")));
    const QVariantMap decrypted = storageEntry(disk, disk.ext4Partition());
    QVERIFY(!decrypted.contains(QStringLiteral("com.apple.corestorage.lv")));
    QCOMPARE(decrypted.value(QStringLiteral("size_in_bytes")), plain.value(QStringLiteral("size_in_bytes")));
    QCOMPARE(decrypted.value(QStringLiteral("volume_uuid")), plain.value(QStringLiteral("volume_uuid")));
    QCOMPARE(disk.checksums(decrypted.value(QStringLiteral("mount_point")).toString()), files);
    QVERIFY(QDir(disk.stateDirectory() + QStringLiteral("/korvelle/disks")).isEmpty());
    QDir().rmdir(QStringLiteral("/media/nobody")); // made for the unlock above, empty again
}

void KVDiskutilDisksTest::conversionKilledHalfWayResumes()
{
    KVDiskToolHarness disk(QStringLiteral("350M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    const QString files = disk.fillWithFiles(200);
    const auto converted = disk.diskutil({QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(),
                                          QStringLiteral("-stdinpassphrase")}, passphrase);
    QVERIFY2(converted.exitCode == 0, qPrintable(converted.output));

    // The converter's record names it; kill it as soon as it has begun.
    const qint64 converter = disk.busyConverter();
    QVERIFY(converter > 0);
    QCOMPARE(kill(pid_t(converter), SIGKILL), 0);
    QThread::msleep(200);
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).has(QStringLiteral("Converting (forward)")));

    // The listing above started a new converter; it finishes the work.
    followConversion(disk);
    const QVariantMap encrypted = encryptedEntry(disk);
    QCOMPARE(encrypted.value(QStringLiteral("com.apple.corestorage.lv")).toMap()
                 .value(QStringLiteral("com.apple.corestorage.lv.conversionState")).toString(), QStringLiteral("Complete"));
    QCOMPARE(disk.checksums(encrypted.value(QStringLiteral("mount_point")).toString()), files);
}

// A converter holds libcryptsetup's lock on the header while it updates it,
// and may be stopped or stuck just then: the listings answer all the same.
void KVDiskutilDisksTest::listingsDoNotWaitForTheHeaderLock()
{
    KVDiskToolHarness disk(QStringLiteral("100M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    disk.fillWithFiles(10);
    QCOMPARE(disk.diskutil({QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(),
                            QStringLiteral("-stdinpassphrase")}, passphrase).exitCode, 0);
    followConversion(disk);
    const QString uuid = logicalVolumeUuid(encryptedEntry(disk));
    QVERIFY(!uuid.isEmpty());

    const QString number = disk.shell(QStringLiteral("stat -L -c '%t %T' /dev/") + disk.ext4Partition()).output;
    const QString lockFile = QStringLiteral("/run/cryptsetup/L_%1:%2")
                                 .arg(number.section(QLatin1Char(' '), 0, 0).toInt(nullptr, 16))
                                 .arg(number.section(QLatin1Char(' '), 1, 1).trimmed().toInt(nullptr, 16));
    QDir().mkpath(QStringLiteral("/run/cryptsetup"));
    QProcess holder; // ended when the test leaves, however it does
    holder.start(QStringLiteral("flock"), {QStringLiteral("-x"), lockFile, QStringLiteral("sleep"), QStringLiteral("60")});
    QVERIFY(holder.waitForStarted());
    QTRY_VERIFY(disk.shell(QStringLiteral("flock -n -s %1 true").arg(lockFile)).exitCode != 0);

    const QList<QStringList> listings{{QStringLiteral("cs"), QStringLiteral("list")},
                                      {QStringLiteral("cs"), QStringLiteral("list"), QStringLiteral("-plist")},
                                      {QStringLiteral("cs"), QStringLiteral("info"), QStringLiteral("-plist"), uuid},
                                      {QStringLiteral("info"), QStringLiteral("-plist"), uuid}};
    for (const QStringList &listing : listings) {
        QElapsedTimer clock;
        clock.start();
        const auto run = disk.diskutil(listing);
        QVERIFY2(clock.elapsed() < 10000, qPrintable(listing.join(QLatin1Char(' '))));
        QVERIFY2(run.exitCode == 0 && run.has(uuid), qPrintable(run.output));
    }
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(logicalVolumeUuid(encryptedEntry(disk)), uuid);
    QVERIFY(clock.elapsed() < 10000);
}

void KVDiskutilDisksTest::badInputIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("expected");

    const QString fat = QStringLiteral("FAT");
    QTest::newRow("unsupported file system") << QStringList{QStringLiteral("cs"), QStringLiteral("convert"), fat, QStringLiteral("-stdinpassphrase")}
                                             << passphrase << QStringLiteral("(-69756)");
    QTest::newRow("empty passphrase") << QStringList{QStringLiteral("cs"), QStringLiteral("convert"), QStringLiteral("EXT4"), QStringLiteral("-stdinpassphrase")}
                                      << QByteArray() << QStringLiteral("Error converting");
    QTest::newRow("too full to make room") << QStringList{QStringLiteral("cs"), QStringLiteral("convert"), QStringLiteral("EXT4"), QStringLiteral("-stdinpassphrase")}
                                           << passphrase << QStringLiteral("not enough free space");
    QTest::newRow("no such disk") << QStringList{QStringLiteral("cs"), QStringLiteral("convert"), QStringLiteral("nosuchdisk9")}
                                  << QByteArray() << QStringLiteral("Could not find disk");
    // Refused either way: a partition of the system's disk, or a whole disk.
    QTest::newRow("the system's disk") << QStringList{QStringLiteral("cs"), QStringLiteral("convert"), QStringLiteral("ROOT")}
                                       << passphrase << QStringLiteral("Error converting|Could not find disk");
    QTest::newRow("unlock names nothing") << QStringList{QStringLiteral("cs"), QStringLiteral("unlockVolume"),
                                                         QStringLiteral("01234567-89AB-CDEF-0123-456789ABCDEF"), QStringLiteral("-stdinpassphrase")}
                                          << passphrase << QStringLiteral("is not a CoreStorage Logical Volume UUID");
    QTest::newRow("mount names nothing") << QStringList{QStringLiteral("mount"), QStringLiteral("01234567-89AB-CDEF-0123-456789ABCDEF")}
                                         << QByteArray() << QStringLiteral("Unable to find disk");
    QTest::newRow("eject names nothing") << QStringList{QStringLiteral("eject"), QStringLiteral("/dev/nosuchdisk9")}
                                         << QByteArray() << QStringLiteral("Unable to find disk");
    QTest::newRow("revert names nothing") << QStringList{QStringLiteral("cs"), QStringLiteral("revert"),
                                                         QStringLiteral("01234567-89AB-CDEF-0123-456789ABCDEF"), QStringLiteral("-stdinpassphrase")}
                                          << passphrase << QStringLiteral("Unable to find disk");
    QTest::newRow("passphrase change names nothing")
        << QStringList{QStringLiteral("cs"), QStringLiteral("changeVolumePassphrase"), QStringLiteral("01234567-89AB-CDEF-0123-456789ABCDEF"),
                       QStringLiteral("-stdinpassphrase")}
        << QByteArray("a\nb") << QStringLiteral("is not a CoreStorage Logical Volume UUID");
}

void KVDiskutilDisksTest::badInputIsRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(QString, expected);
    KVDiskToolHarness disk(QStringLiteral("100M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    const QString files = disk.fillWithFiles(QTest::currentDataTag() == QLatin1String("too full to make room") ? 80 : 10);
    const QString root = disk.shell(QStringLiteral("findmnt -n -o SOURCE /")).output.trimmed();
    arguments.replaceInStrings(QStringLiteral("FAT"), disk.fatPartition());
    arguments.replaceInStrings(QStringLiteral("EXT4"), disk.ext4Partition());
    arguments.replaceInStrings(QStringLiteral("ROOT"), root.isEmpty() ? QStringLiteral("/dev/nosuchdisk9") : root);
    const auto run = disk.diskutil(arguments, input);
    QVERIFY2(run.output.contains(QRegularExpression(expected)), qPrintable(run.output));
    QVERIFY(run.exitCode != 0);
    // Nothing was touched: the ext4 partition is still plain and mounted.
    QVERIFY(disk.shell(QStringLiteral("cryptsetup isLuks /dev/") + disk.ext4Partition()).exitCode != 0);
    QCOMPARE(disk.checksums(disk.mountPoint()), files);
}

// Without pkexec (as here) one line says why; with it, pkexec answers (no
// agent, no session) at once. Either way nothing waits.
void KVDiskutilDisksTest::anOrdinaryUserIsToldAtOnce()
{
    KVDiskToolHarness disk(QStringLiteral("64M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    QElapsedTimer clock;
    clock.start();
    const auto run = disk.shell(QStringLiteral("printf secret | setpriv --reuid=65534 --regid=65534 --clear-groups '%1' "
                                               "cs convert %2 -stdinpassphrase")
                                    .arg(QStringLiteral(KV_TEST_DISK_DISKUTIL), disk.ext4Partition()));
    QVERIFY(clock.elapsed() < 20000);
    QVERIFY(run.exitCode != 0);
    QVERIFY2(!run.output.trimmed().isEmpty(), qPrintable(run.output));
    if (!run.output.contains(QLatin1String("pkexec")))
        QCOMPARE(run.output.trimmed().count(QLatin1Char('\n')), 0);
    QVERIFY(disk.shell(QStringLiteral("cryptsetup isLuks /dev/") + disk.ext4Partition()).exitCode != 0);
}

// An ordinary user's listings ask for nothing: they show what the user may
// read, say once in the text listing what they could not, and keep the
// property lists whole for the application.
void KVDiskutilDisksTest::anOrdinaryUserListsWhatItMayRead()
{
    KVDiskToolHarness disk(QStringLiteral("100M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    disk.fillWithFiles(10);
    QCOMPARE(disk.diskutil({QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(),
                            QStringLiteral("-stdinpassphrase")}, passphrase).exitCode, 0);
    followConversion(disk);
    const QString uuid = logicalVolumeUuid(encryptedEntry(disk));
    QVERIFY(disk.diskutil({QStringLiteral("eject"), QStringLiteral("/dev/") + disk.ext4Partition()}).has(QStringLiteral("ejected")));

    const auto asNobody = [&](const QString &program, const QString &arguments) {
        return disk.shell(QStringLiteral("setpriv --reuid=65534 --regid=65534 --clear-groups '%1' %2 2>&1; echo \"exit $?\"")
                              .arg(program, arguments));
    };
    const QString diskutil = QStringLiteral(KV_TEST_DISK_DISKUTIL);
    QElapsedTimer clock;
    clock.start();
    const auto text = asNobody(diskutil, QStringLiteral("cs list"));
    const auto plist = asNobody(diskutil, QStringLiteral("cs list -plist"));
    const auto report = asNobody(QStringLiteral(KV_TEST_SYSTEM_PROFILER), QStringLiteral("SPStorageDataType -xml"));
    QVERIFY(clock.elapsed() < 20000);
    for (const auto *run : {&text, &plist, &report})
        QVERIFY2(run->output.trimmed().endsWith(QLatin1String("exit 0")) && !run->has(QStringLiteral("pkexec")),
                 qPrintable(run->output));
    // Where udev describes the partition it is listed, locked; elsewhere the
    // text listing says why it is not.
    QVERIFY2(text.has(uuid) || text.has(QStringLiteral("could not be read without administrator rights")),
             qPrintable(text.output));
    QVERIFY(text.output.count(QStringLiteral("administrator rights")) <= 1);
    for (const auto *run : {&plist, &report}) {
        const QString xml = run->output.left(run->output.lastIndexOf(QLatin1String("exit 0")));
        QVERIFY2(KVPropertyList::decode(xml.toUtf8()).has_value(), qPrintable(run->output));
    }

    // udev's database, where it is kept (a stand-in here when the machine
    // has none), names the partition the user may not open.
    if (!QFileInfo::exists(QStringLiteral("/run/udev"))) {
        const QString entry = disk.shell(QStringLiteral("stat -L -c '/run/udev/data/b%t:%T' /dev/") + disk.ext4Partition())
                                  .output.trimmed();
        const QString database = QStringLiteral("printf 'E:ID_FS_TYPE=crypto_LUKS\\nE:ID_FS_VERSION=2\\n"
                                                "E:ID_FS_UUID=%1\\nE:ID_FS_LABEL_ENC=Data\\n'")
                                     .arg(disk.shell(QStringLiteral("cryptsetup luksUUID /dev/") + disk.ext4Partition())
                                              .output.trimmed());
        // stat gives the numbers in hex; udev names them in decimal.
        const QStringList numbers = entry.section(QLatin1Char('b'), -1).split(QLatin1Char(':'));
        const QString decimal = QStringLiteral("/run/udev/data/b%1:%2")
                                    .arg(numbers.value(0).toInt(nullptr, 16)).arg(numbers.value(1).toInt(nullptr, 16));
        QCOMPARE(disk.shell(QStringLiteral("mkdir -p /run/udev/data && %1 > %2").arg(database, decimal)).exitCode, 0);
        const auto described = asNobody(diskutil, QStringLiteral("cs list"));
        disk.shell(QStringLiteral("rm -rf /run/udev"));
        QVERIFY2(described.has(uuid) && described.has(QStringLiteral("Locked")), qPrintable(described.output.right(900)));
    }

    // A user who may read the partition (as the group "disk" may) sees the
    // volume itself.
    QCOMPARE(disk.shell(QStringLiteral("chmod o+r /dev/") + disk.ext4Partition()).exitCode, 0);
    const auto readable = asNobody(diskutil, QStringLiteral("cs list"));
    disk.shell(QStringLiteral("chmod o-r /dev/") + disk.ext4Partition());
    QVERIFY2(readable.has(uuid) && readable.has(QStringLiteral("Locked")), qPrintable(readable.output));
}

QTEST_GUILESS_MAIN(KVDiskutilDisksTest)
#include "tst_diskutil_disks.moc"
