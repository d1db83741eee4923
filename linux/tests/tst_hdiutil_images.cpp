// The Linux hdiutil and diskutil driven with the application's own command
// lines, as root: real LUKS2 images, FUSE, loop devices and kernel ext4.

#include "KVImageTestFiles.h"
#include "KVImageToolHarness.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kvlinux;

using namespace KVImageTestFiles;

namespace {

const QByteArray password = QByteArrayLiteral("correct horse");
const QString unicodeName = QStringLiteral("Reisekasse Ünïcødé 2024 ✓");

} // namespace

class KVHdiutilImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void createAttachDetachAndReattachReadOnly_data();
    void createAttachDetachAndReattachReadOnly();
    void createWithAttachMountsAtOnce();
    void wrongOrEmptyPasswordLeavesNothingBehind();
    void changedPasswordOpensAndTheOldOneDoesNot();
    void erasedKeysLetNothingOpenTheImage();
    void secondCreateOnTheSamePathIsRefused();
    void busyVolumeDetachesOnlyWhenForced();
    void badInputGivesTheToolsFailureForms();
    void namesFromACraftedHeaderAreShownSafely_data();
    void namesFromACraftedHeaderAreShownSafely();

private:
    QString createImage(const QString &name, const QString &volumeName = QStringLiteral("Data"),
                        const QString &size = QStringLiteral("64m"));
    std::unique_ptr<KVImageToolHarness> h;
};

void KVHdiutilImagesTest::initTestCase()
{
    if (const QString reason = KVImageToolHarness::kernelPathUnavailable(); !reason.isEmpty())
        QSKIP(qPrintable(reason));
}

void KVHdiutilImagesTest::init()
{
    h = std::make_unique<KVImageToolHarness>();
    QVERIFY(h->isValid());
}

void KVHdiutilImagesTest::cleanup()
{
    h.reset();
}

QString KVHdiutilImagesTest::createImage(const QString &name, const QString &volumeName, const QString &size)
{
    const auto created = h->create(name, password, volumeName, QStringLiteral("AES-256"), size);
    if (created.exitCode != 0)
        qWarning() << created.output;
    return created.exitCode == 0 ? h->path(name + QStringLiteral(".sparseimage")) : QString();
}

void KVHdiutilImagesTest::createAttachDetachAndReattachReadOnly_data()
{
    QTest::addColumn<QString>("encryption");
    QTest::newRow("AES-256") << QStringLiteral("AES-256");
    QTest::newRow("AES-128") << QStringLiteral("AES-128");
}

void KVHdiutilImagesTest::createAttachDetachAndReattachReadOnly()
{
    QFETCH(QString, encryption);
    const auto created = h->create(QStringLiteral("Travel"), password, unicodeName, encryption);
    QCOMPARE(created.exitCode, 0);
    // The creation wizard counts "MESSAGE" lines, one per phase.
    QVERIFY2(created.output.count(QLatin1String("\nMESSAGE:")) + created.output.startsWith(QLatin1String("MESSAGE:")) >= 4,
             qPrintable(created.output));
    QVERIFY(created.has(QStringLiteral("PERCENT:")));
    QVERIFY(!created.has(QStringLiteral("DIHLDiskImageCreate() returned")));
    const QString image = h->path(QStringLiteral("Travel.sparseimage"));
    QVERIFY(created.has(QStringLiteral("created: ") + image));
    QCOMPARE(QFileInfo(image).size(), qint64(16 + 64) << 20);

    const auto attached = h->attach(image, password);
    QVERIFY2(attached.exitCode == 0, qPrintable(attached.output));
    QVERIFY(!attached.has(QStringLiteral("DIHLDiskImageAttach() returned")));

    const QVariantMap entry = onlyImage(h->info());
    QCOMPARE(entry.value(QStringLiteral("image-encrypted")).toBool(), true);
    QCOMPARE(entry.value(QStringLiteral("image-path")).toString(), image);
    const QVariantList entities = entry.value(QStringLiteral("system-entities")).toList();
    QCOMPARE(entities.size(), 2);
    QCOMPARE(entities[0].toMap().value(QStringLiteral("content-hint")).toString(),
             QStringLiteral("GUID_partition_scheme"));
    const QString disk = entities[0].toMap().value(QStringLiteral("dev-entry")).toString();
    QVERIFY(disk.startsWith(QLatin1String("/dev/disk")));
    QCOMPARE(entities[1].toMap().value(QStringLiteral("dev-entry")).toString(), disk + QStringLiteral("s1"));
    const QString mountPoint = entities[1].toMap().value(QStringLiteral("mount-point")).toString();
    QCOMPARE(mountPoint, h->mountRoot() + QLatin1Char('/') + unicodeName);

    // What the volume item reads, and what the detach logic derives from it.
    const QVariantMap volume = h->diskutilInfo(mountPoint);
    QCOMPARE(volume.value(QStringLiteral("VolumeName")).toString(), unicodeName);
    QCOMPARE(volume.value(QStringLiteral("MountPoint")).toString(), mountPoint);
    QCOMPARE(volume.value(QStringLiteral("Writable")).toBool(), true);
    const QString identifier = volume.value(QStringLiteral("DeviceIdentifier")).toString();
    QCOMPARE(QStringLiteral("/dev/") + identifier.left(identifier.lastIndexOf(QLatin1Char('s'))), disk);
    QVERIFY(volume.value(QStringLiteral("TotalSize")).toLongLong() > 50'000'000);
    QVERIFY(volume.value(QStringLiteral("FreeSpace")).toLongLong() <= volume.value(QStringLiteral("TotalSize")).toLongLong());
    QVERIFY(!volume.value(QStringLiteral("VolumeUUID")).toString().isEmpty());
    QVERIFY(!volume.value(QStringLiteral("FilesystemName")).toString().isEmpty());

    const QByteArray payload = randomBytes(3 << 20);
    QVERIFY(writeFile(mountPoint + QStringLiteral("/notes.txt"), "hello\n"));
    QVERIFY(writeFile(mountPoint + QStringLiteral("/random.bin"), payload));

    const auto detached = h->detach(disk);
    QCOMPARE(detached.exitCode, 0);
    const QString name = disk.mid(5);
    QVERIFY(detached.has(QStringLiteral("\"%1\" unmounted.").arg(name)));
    QVERIFY(detached.has(QStringLiteral("\"%1\" ejected.").arg(name)));
    QVERIFY(!h->info().contains(QStringLiteral("images")));
    QCOMPARE(h->leftovers(), QStringList());
    QVERIFY(!QFileInfo::exists(mountPoint));

    QCOMPARE(h->attach(image, password, {QStringLiteral("-readonly"), QStringLiteral("-autoopen")}).exitCode, 0);
    const QString again = h->onlyMountPoint();
    QCOMPARE(readFile(again + QStringLiteral("/notes.txt")), QByteArray("hello\n"));
    QCOMPARE(readFile(again + QStringLiteral("/random.bin")), payload);
    QVERIFY(!writeFile(again + QStringLiteral("/new.txt"), "no"));
    QCOMPARE(h->diskutilInfo(again).value(QStringLiteral("Writable")).toBool(), false);
    QCOMPARE(onlyImage(h->info()).value(QStringLiteral("writeable")).toBool(), false);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
    QCOMPARE(h->leftovers(), QStringList());
}

void KVHdiutilImagesTest::createWithAttachMountsAtOnce()
{
    // The wizard's "mount after creation": the volume goes to the default
    // place (/media/root for root), under a name no other run uses.
    const QString name = QFileInfo(h->path(QString())).fileName() + QStringLiteral(" attached");
    const auto created = h->hdiutil({QStringLiteral("create"), QStringLiteral("-verbose"), QStringLiteral("-stdinpass"),
                                     QStringLiteral("-puppetstrings"), QStringLiteral("-fs"), QStringLiteral("Journaled HFS+"),
                                     QStringLiteral("-type"), QStringLiteral("SPARSE"), QStringLiteral("-size"), QStringLiteral("32m"),
                                     QStringLiteral("-volname"), name, QStringLiteral("-encryption"), QStringLiteral("AES-128"),
                                     QStringLiteral("-attach"), h->path(QStringLiteral("Attached"))},
                                    password);
    QVERIFY2(created.exitCode == 0, qPrintable(created.output));
    QVERIFY(!created.has(QStringLiteral("failed")));
    const QString mountPoint = h->onlyMountPoint();
    QCOMPARE(QFileInfo(mountPoint).fileName(), name);
    QVERIFY(writeFile(mountPoint + QStringLiteral("/first.txt"), "first"));

    // Detached by its mount point, as for any volume with one.
    const auto detached = h->detach(mountPoint);
    QVERIFY2(detached.has(QStringLiteral("unmounted.")) && detached.has(QStringLiteral("ejected.")),
             qPrintable(detached.output));
    QVERIFY(!QFileInfo::exists(mountPoint));
}

void KVHdiutilImagesTest::wrongOrEmptyPasswordLeavesNothingBehind()
{
    const QString image = createImage(QStringLiteral("Locked"));
    QVERIFY(!image.isEmpty());
    for (const QByteArray &attempt : {QByteArrayLiteral("wrong"), QByteArray()}) {
        const auto attached = h->attach(image, attempt);
        QVERIFY(attached.exitCode != 0);
        QVERIFY2(attached.has(QStringLiteral("DIHLDiskImageAttach() returned 80")), qPrintable(attached.output));
        QVERIFY(!h->info().contains(QStringLiteral("images")));
        QCOMPARE(h->leftovers(), QStringList());
    }
}

void KVHdiutilImagesTest::changedPasswordOpensAndTheOldOneDoesNot()
{
    const QString image = createImage(QStringLiteral("Rekey"));
    QVERIFY(!image.isEmpty());
    const QStringList chpass = {QStringLiteral("chpass"), QStringLiteral("-oldstdinpass"),
                                QStringLiteral("-newstdinpass"), QStringLiteral("-verbose"), image};

    const auto wrongOld = h->hdiutil(chpass, QByteArrayLiteral("nope\0new secret"));
    QVERIFY(wrongOld.has(QStringLiteral("chpass failed")));
    QVERIFY(wrongOld.has(QStringLiteral("hdiutil: chpass: result: 80")));

    const auto changed = h->hdiutil(chpass, password + QByteArray(1, '\0') + QByteArrayLiteral("new sëcret"));
    QVERIFY2(changed.exitCode == 0, qPrintable(changed.output));
    QVERIFY(!changed.has(QStringLiteral("chpass failed")));

    QVERIFY(h->attach(image, password).has(QStringLiteral("DIHLDiskImageAttach() returned 80")));
    QCOMPARE(h->attach(image, QByteArrayLiteral("new sëcret")).exitCode, 0);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);

    const auto missing = h->hdiutil({QStringLiteral("chpass"), QStringLiteral("-oldstdinpass"),
                                     QStringLiteral("-newstdinpass"), QStringLiteral("-verbose"),
                                     h->path(QStringLiteral("absent.sparseimage"))},
                                    QByteArrayLiteral("a\0b"));
    QVERIFY(missing.has(QStringLiteral("chpass failed")));
    QVERIFY(missing.has(QStringLiteral("hdiutil: chpass: result: 2")));
}

void KVHdiutilImagesTest::erasedKeysLetNothingOpenTheImage()
{
    const QString image = createImage(QStringLiteral("Erased"));
    QVERIFY(!image.isEmpty());
    const auto erased = h->hdiutil({QStringLiteral("erasekeys"), image});
    QCOMPARE(erased.exitCode, 0);
    QVERIFY(!erased.has(QStringLiteral("erasekeys failed")));
    QVERIFY(h->attach(image, password).has(QStringLiteral("DIHLDiskImageAttach() returned 80")));
    QVERIFY(h->attach(image, QByteArray()).has(QStringLiteral("DIHLDiskImageAttach() returned 80")));

    const auto missing = h->hdiutil({QStringLiteral("erasekeys"), h->path(QStringLiteral("absent"))});
    QVERIFY(missing.has(QStringLiteral("erasekeys failed")));
    QVERIFY(missing.has(QStringLiteral("hdiutil: erasekeys: result: 2")));
}

void KVHdiutilImagesTest::secondCreateOnTheSamePathIsRefused()
{
    const QString image = createImage(QStringLiteral("Once"));
    QVERIFY(!image.isEmpty());
    const QByteArray before = checksum(image);
    for (const QString &name : {QStringLiteral("Once"), QStringLiteral("Once.sparseimage")}) {
        const auto again = h->create(name, "other", QStringLiteral("Other"));
        QVERIFY(again.exitCode != 0);
        QVERIFY2(again.has(QStringLiteral("DIHLDiskImageCreate() returned 17")), qPrintable(again.output));
        QVERIFY(again.has(QStringLiteral("create failed")));
    }
    QCOMPARE(checksum(image), before);
    // No half-made image under a temporary name either.
    QCOMPARE(QDir(h->path(QString())).entryList({QStringLiteral("*Once*")}, QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("Once.sparseimage")});
}

void KVHdiutilImagesTest::busyVolumeDetachesOnlyWhenForced()
{
    const QString image = createImage(QStringLiteral("Busy"));
    QVERIFY(!image.isEmpty());
    QCOMPARE(h->attach(image, password).exitCode, 0);
    const QString disk = wholeDisk(onlyImage(h->info()));
    const QString mountPoint = h->onlyMountPoint();

    auto held = std::make_unique<QFile>(mountPoint + QStringLiteral("/open.txt"));
    QVERIFY(held->open(QIODevice::ReadWrite));
    QVERIFY(held->write("still here") > 0 && held->flush());

    const auto refused = h->detach(disk);
    QVERIFY(refused.exitCode != 0);
    QVERIFY2(refused.has(QStringLiteral("hdiutil: couldn't unmount \"%1\"").arg(disk.mid(5))),
             qPrintable(refused.output));
    QVERIFY(!refused.has(QStringLiteral("unmounted.")));
    QCOMPARE(h->onlyMountPoint(), mountPoint);

    // A real process whose working folder is on the volume.
    QProcess resident;
    resident.setWorkingDirectory(mountPoint);
    resident.start(QStringLiteral("sleep"), {QStringLiteral("600")});
    QVERIFY(resident.waitForStarted());

    const auto forced = h->detach(disk, true);
    QCOMPARE(forced.exitCode, 0);
    QVERIFY(forced.has(QStringLiteral("unmounted.")) && forced.has(QStringLiteral("ejected.")));
    QVERIFY(!h->info().contains(QStringLiteral("images")));
    // The attachment has ended although the file and the folder are still in
    // use: no daemon, no FUSE mount, no volume folder; only the detached loop
    // device stays until its last user lets go. The image is free again, and
    // what was written before the detach is on it.
    for (const QString &left : h->leftovers())
        QVERIFY2(left.startsWith(QLatin1String("/dev/loop")), qPrintable(left));
    QCOMPARE(h->attach(image, password).exitCode, 0);
    QCOMPARE(readFile(h->onlyMountPoint() + QStringLiteral("/open.txt")), QByteArray("still here"));
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);

    held.reset();
    resident.kill();
    resident.waitForFinished();
    QTRY_COMPARE_WITH_TIMEOUT(h->leftovers(), QStringList(), 20000);
}

void KVHdiutilImagesTest::badInputGivesTheToolsFailureForms()
{
    const QString image = createImage(QStringLiteral("Good"));
    QVERIFY(!image.isEmpty());

    QVERIFY(h->attach(h->path(QStringLiteral("missing.sparseimage")), password)
                .has(QStringLiteral("DIHLDiskImageAttach() returned 2")));

    QVERIFY(writeFile(h->path(QStringLiteral("junk.sparseimage")), randomBytes(1 << 20)));
    const auto junk = h->attach(h->path(QStringLiteral("junk.sparseimage")), password);
    QVERIFY(junk.has(QStringLiteral("DIHLDiskImageAttach() returned")));
    QVERIFY(junk.output.trimmed().endsWith(QLatin1String("hdiutil: attach failed - image not recognized")));

    // A header cut short, and one whose two copies are both damaged.
    QVERIFY(writeFile(h->path(QStringLiteral("short.sparseimage")), readFile(image).left(8192)));
    QByteArray damaged = readFile(image);
    damaged[0] = 'X';
    damaged[16384] = 'X';
    QVERIFY(writeFile(h->path(QStringLiteral("damaged.sparseimage")), damaged));
    for (const QString &name : {QStringLiteral("short.sparseimage"), QStringLiteral("damaged.sparseimage")}) {
        const QByteArray before = checksum(h->path(name));
        const auto refused = h->attach(h->path(name), password);
        QVERIFY2(refused.has(QStringLiteral("attach failed - image not recognized")), qPrintable(refused.output));
        QCOMPARE(checksum(h->path(name)), before);
    }

    const auto badRoot = h->hdiutil({QStringLiteral("attach"), QStringLiteral("-verbose"), QStringLiteral("-stdinpass"),
                                     QStringLiteral("-puppetstrings"), image, QStringLiteral("-mountroot"),
                                     h->path(QStringLiteral("no/such/folder"))},
                                    password);
    QVERIFY(badRoot.has(QStringLiteral("DIHLDiskImageAttach() returned 112")));

    QCOMPARE(h->attach(image, password).exitCode, 0);
    QVERIFY(h->attach(image, password).has(QStringLiteral("DIHLDiskImageAttach() returned 16")));
    QCOMPARE(h->info().value(QStringLiteral("images")).toList().size(), 1);

    const auto noFolder = h->create(QStringLiteral("absent-folder/Image"), password, QStringLiteral("X"));
    QVERIFY(noFolder.has(QStringLiteral("DIHLDiskImageCreate() returned 2")));
    QVERIFY(noFolder.has(QStringLiteral("create failed")));

    QVERIFY(h->detach(QStringLiteral("/dev/disk99")).has(QStringLiteral("hdiutil: detach: result: 2")));
    const QVariantMap unknown = h->diskutilInfo(h->path(QString()));
    QVERIFY(unknown.value(QStringLiteral("ErrorMessage")).toString().startsWith(QLatin1String("Could not find disk")));

    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
    QCOMPARE(h->leftovers(), QStringList());
}

void KVHdiutilImagesTest::namesFromACraftedHeaderAreShownSafely_data()
{
    QTest::addColumn<QByteArray>("storedJson"); // the name as JSON text in the header's token
    QTest::addColumn<QString>("shown");
    QTest::newRow("NUL") << QByteArray("Evil\\u0000hidden") << QStringLiteral("Evil");
    QTest::newRow("newlines") << QByteArray("Two\\nLines") << QStringLiteral("Two Lines");
    QTest::newRow("4,000 characters") << QByteArray(4000, 'n') << QString(255, QLatin1Char('n'));
    QTest::newRow("right-to-left override") << QByteArray("abc\\u202egnp.exe") << QStringLiteral("abcgnp.exe");
}

// The header is rewritten with cryptsetup, as anybody could; the application
// then reads the listing and the volume's properties with its own decoder
// (libplist aborts on a NUL inside a string).
void KVHdiutilImagesTest::namesFromACraftedHeaderAreShownSafely()
{
    QFETCH(QByteArray, storedJson);
    QFETCH(QString, shown);
    const QString image = createImage(QStringLiteral("Crafted"), QStringLiteral("Plain"));
    QVERIFY(!image.isEmpty());
    const QByteArray token = "{\"type\":\"korvelle-volume\",\"keyslots\":[],\"volume_name\":\"" + storedJson + "\"}";
    QVERIFY(writeFile(h->path(QStringLiteral("token.json")), token));
    const auto crafted = h->shell(QStringLiteral("PATH=$PATH:/usr/sbin:/sbin; cryptsetup token remove --token-id 0 \"$1\" && "
                                                 "cryptsetup token import --json-file \"$2\" \"$1\""),
                                  {image, h->path(QStringLiteral("token.json"))});
    QVERIFY2(crafted.exitCode == 0, qPrintable(crafted.output));

    const auto attached = h->attach(image, password);
    QVERIFY2(attached.exitCode == 0, qPrintable(attached.output));
    QVERIFY(!attached.output.contains(QChar(0)));
    const QString mountPoint = h->onlyMountPoint();
    QCOMPARE(QFileInfo(mountPoint).fileName(), shown.left(240));
    const QVariantMap volume = h->diskutilInfo(mountPoint);
    QCOMPARE(volume.value(QStringLiteral("VolumeName")).toString(), shown);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
}

QTEST_GUILESS_MAIN(KVHdiutilImagesTest)
#include "tst_hdiutil_images.moc"
