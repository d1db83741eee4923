// The pieces of hdiutil's dialect that need no image: command-line parsing,
// sizes, property lists, failure numbers, and the system's own listings.

#include "KVExt4.h"
#include "KVHdiutilArguments.h"
#include "KVSizeArgument.h"
#include "KVToolOutput.h"
#include "KVVolumeFolder.h"

#include "platform/KVMountTable.h"
#include "tools/KVPropertyList.h"

#include <QTest>
#include <QtEndian>

using namespace kvlinux;

class KVHdiutilDialectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applicationCommandLinesParse();
    void sizesFollowMkfileUnits_data();
    void sizesFollowMkfileUnits();
    void ambiguousNumbersBecomeInternalErrors_data();
    void ambiguousNumbersBecomeInternalErrors();
    void propertyListsUseApplesLayout();
    void propertyListsRoundTrip();
    void mountTableDecodesEscapes();
    void freeExtentsComeFromGroupLines();
    void superblockFieldsAreChecked_data();
    void superblockFieldsAreChecked();
    void superblockCountsWhatIsFree_data();
    void superblockCountsWhatIsFree();
    void namesFitLabelsAndFolders();
};

void KVHdiutilDialectTest::applicationCommandLinesParse()
{
    // "-stdinpass" is inserted at index 2, even between "-size" and its value.
    const auto resize = KVHdiutilArguments::parse({QStringLiteral("resize"), QStringLiteral("-size"),
                                                   QStringLiteral("-stdinpass"), QStringLiteral("2048m"),
                                                   QStringLiteral("/i.sparseimage")});
    QCOMPARE(resize.verb(), QStringLiteral("resize"));
    QVERIFY(resize.has(QStringLiteral("-stdinpass")));
    QCOMPARE(resize.value(QStringLiteral("-size")), QStringLiteral("2048m"));
    QCOMPARE(resize.operands(), QStringList{QStringLiteral("/i.sparseimage")});

    const auto compact = KVHdiutilArguments::parse({QStringLiteral("compact"), QStringLiteral("-stdinpass"),
                                                    QStringLiteral("-batteryallowed"), QStringLiteral("-verbose"),
                                                    QStringLiteral("/i.sparseimage")});
    QVERIFY(compact.has(QStringLiteral("-batteryallowed")) && compact.has(QStringLiteral("-verbose")));
    QCOMPARE(compact.operands().size(), 1);

    const auto create = KVHdiutilArguments::parse(
        {QStringLiteral("create"), QStringLiteral("-verbose"), QStringLiteral("-stdinpass"),
         QStringLiteral("-puppetstrings"), QStringLiteral("-fs"), QStringLiteral("Journaled HFS+"),
         QStringLiteral("-type"), QStringLiteral("SPARSE"), QStringLiteral("-size"), QStringLiteral("1.5m"),
         QStringLiteral("-volname"), QStringLiteral("My -Volume"), QStringLiteral("-encryption"),
         QStringLiteral("AES-128"), QStringLiteral("-attach"), QStringLiteral("/home/u/New")});
    QCOMPARE(create.value(QStringLiteral("-fs")), QStringLiteral("Journaled HFS+"));
    QCOMPARE(create.value(QStringLiteral("-volname")), QStringLiteral("My -Volume"));
    QCOMPARE(create.value(QStringLiteral("-encryption")), QStringLiteral("AES-128"));
    QVERIFY(create.has(QStringLiteral("-attach")) && create.has(QStringLiteral("-puppetstrings")));
    QCOMPARE(create.operands(), QStringList{QStringLiteral("/home/u/New")});

    const auto chpass = KVHdiutilArguments::parse({QStringLiteral("chpass"), QStringLiteral("-oldstdinpass"),
                                                   QStringLiteral("-newstdinpass"), QStringLiteral("-verbose"),
                                                   QStringLiteral("/i")});
    QVERIFY(chpass.has(QStringLiteral("-oldstdinpass")) && chpass.has(QStringLiteral("-newstdinpass")));

    const auto cut = KVHdiutilArguments::parse({QStringLiteral("attach"), QStringLiteral("/i"),
                                                QStringLiteral("-mountroot")});
    QCOMPARE(cut.incomplete(), QStringLiteral("-mountroot"));
}

void KVHdiutilDialectTest::sizesFollowMkfileUnits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("bytes");
    QTest::newRow("megabytes") << QStringLiteral("100m") << qint64(100) * 1024 * 1024;
    QTest::newRow("fraction") << QStringLiteral("1.5m") << qint64(1572864);
    QTest::newRow("gigabytes") << QStringLiteral("2g") << qint64(2) * 1024 * 1024 * 1024;
    QTest::newRow("upper case") << QStringLiteral("10K") << qint64(10240);
    QTest::newRow("bare number counts sectors") << QStringLiteral("2048") << qint64(1048576);
    QTest::newRow("sectors") << QStringLiteral("8b") << qint64(4096);
    QTest::newRow("zero") << QStringLiteral("0m") << qint64(-1);
    QTest::newRow("less than a byte") << QStringLiteral("0.0001") << qint64(-1);
    QTest::newRow("small fraction of a unit") << QStringLiteral("0.0001m") << qint64(104);
    QTest::newRow("not a number") << QStringLiteral("nanm") << qint64(-1);
    QTest::newRow("negative") << QStringLiteral("-5m") << qint64(-1);
    QTest::newRow("unknown unit") << QStringLiteral("3x") << qint64(-1);
    QTest::newRow("empty") << QString() << qint64(-1);
}

void KVHdiutilDialectTest::sizesFollowMkfileUnits()
{
    QFETCH(QString, text);
    QFETCH(qint64, bytes);
    const auto parsed = KVSizeArgument::parse(text);
    QCOMPARE(parsed ? qint64(*parsed) : qint64(-1), bytes);
}

void KVHdiutilDialectTest::ambiguousNumbersBecomeInternalErrors_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("printed");
    QTest::newRow("wrong password") << 80 << 80;
    QTest::newRow("no such file") << 2 << 2;
    QTest::newRow("no space reads like 2") << 28 << 999;
    QTest::newRow("invalid argument reads like 2") << 22 << 999;
    QTest::newRow("busy") << 16 << 16;
    QTest::newRow("mount path") << 112 << 112;
    QTest::newRow("input/output") << 5 << 5;
    QTest::newRow("not recognised") << 1000 << 1000;
}

void KVHdiutilDialectTest::ambiguousNumbersBecomeInternalErrors()
{
    QFETCH(int, code);
    QFETCH(int, printed);
    QCOMPARE(KVToolOutput::unambiguousCode(code, {80, 2, 112, 16}), printed);
}

void KVHdiutilDialectTest::propertyListsUseApplesLayout()
{
    const QByteArray xml = KVPropertyList::encodeXml(QVariantMap{
        {QStringLiteral("b"), QVariantList{true, 7}},
        {QStringLiteral("a"), QStringLiteral("x & <y>")},
    });
    QCOMPARE(xml, QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                             "<plist version=\"1.0\">\n"
                             "<dict>\n"
                             "\t<key>a</key>\n"
                             "\t<string>x &amp; &lt;y&gt;</string>\n"
                             "\t<key>b</key>\n"
                             "\t<array>\n"
                             "\t\t<true/>\n"
                             "\t\t<integer>7</integer>\n"
                             "\t</array>\n"
                             "</dict>\n"
                             "</plist>\n"));
}

void KVHdiutilDialectTest::propertyListsRoundTrip()
{
    const QVariantMap value{
        {QStringLiteral("images"), QVariantList{QVariantMap{{QStringLiteral("image-encrypted"), true},
                                                            {QStringLiteral("image-path"), QStringLiteral("/ü/x y")},
                                                            {QStringLiteral("blockcount"), qint64(1) << 40}}}},
        {QStringLiteral("empty"), QString()},
    };
    QCOMPARE(KVPropertyList::decode(KVPropertyList::encodeXml(value)).value_or(QVariant()), QVariant(value));
}

void KVHdiutilDialectTest::mountTableDecodesEscapes()
{
    const QByteArray mountinfo =
        "22 1 254:0 / / rw,relatime shared:1 - ext4 /dev/vda rw\n"
        "90 22 7:3 / /media/root/My\\040Files rw,nosuid shared:50 - ext4 /dev/loop3 rw\n"
        "91 22 0:77 / /tmp/k/disk2 ro,nosuid,nodev shared:51 - fuse.korvelle korvelle:disk2 ro\n"
        "92 90 0:78 / /media/root/My\\040Files rw shared:52 - fuse.fuse2fs /tmp/k/disk3/payload rw\n";
    const KVMountTable table = KVMountTable::parse(mountinfo);
    QCOMPARE(table.mounts().size(), 4);
    const auto volume = table.at(QStringLiteral("/media/root/My Files"));
    QVERIFY(volume);
    QCOMPARE(volume->source, QStringLiteral("/tmp/k/disk3/payload")); // the later mount hides the earlier
    QCOMPARE(table.at(QStringLiteral("/tmp/k/disk2"))->fileSystemType, QStringLiteral("fuse.korvelle"));
    QCOMPARE(table.mounts()[1].source, QStringLiteral("/dev/loop3"));
    QVERIFY(!table.at(QStringLiteral("/media")));
}

void KVHdiutilDialectTest::freeExtentsComeFromGroupLines()
{
    const QByteArray dump =
        "Free blocks:              12345\n"
        "Group 0: (Blocks 0-32767) csum 0x1234 [ITABLE_ZEROED]\n"
        "  Free blocks: 1537-2047, 4096, 8193-32767\n"
        "  Free inodes: 12-8192\n"
        "Group 1: (Blocks 32768-65535) [INODE_UNINIT, BLOCK_UNINIT]\n"
        "  Free blocks: \n";
    const QList<KVExt4::Extent> expected = {{1537, 511}, {4096, 1}, {8193, 24575}};
    QCOMPARE(KVExt4::parseFreeExtents(dump, 65536), std::optional(expected));
    // A listed block outside the file system means the bitmaps are damaged.
    QCOMPARE(KVExt4::parseFreeExtents(dump, 32767), std::nullopt);
    QCOMPARE(KVExt4::parseFreeExtents("  Free blocks: 5-3\n", 65536), std::nullopt);
    QCOMPARE(KVExt4::parseFreeExtents("  Free blocks: 18446744073709551615\n", 65536), std::nullopt);
    QCOMPARE(KVExt4::parseFreeExtents("  Free blocks: 1-2-3\n", 65536), std::nullopt);
}

void KVHdiutilDialectTest::superblockFieldsAreChecked_data()
{
    QTest::addColumn<quint32>("logBlockSize");
    QTest::addColumn<quint32>("blockCount");
    QTest::addColumn<quint32>("blockCountHigh");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("4 KiB blocks") << 2u << 16384u << 0u << true;
    QTest::newRow("64 KiB blocks") << 6u << 16u << 0u << true;
    QTest::newRow("shift of 40") << 40u << 16384u << 0u << false;
    QTest::newRow("shift of 7") << 7u << 16384u << 0u << false;
    QTest::newRow("no blocks") << 2u << 0u << 0u << false;
    QTest::newRow("more bytes than a file can have") << 6u << 0u << 0x80000000u << false;
}

void KVHdiutilDialectTest::superblockFieldsAreChecked()
{
    QFETCH(quint32, logBlockSize);
    QFETCH(quint32, blockCount);
    QFETCH(quint32, blockCountHigh);
    QFETCH(bool, accepted);
    QByteArray sb(1024, '\0');
    const auto put32 = [&sb](int at, quint32 value) { qToLittleEndian(value, sb.data() + at); };
    put32(0x04, blockCount);
    put32(0x18, logBlockSize);
    sb[0x38] = char(0x53);
    sb[0x39] = char(0xEF);
    put32(0x60, 0x80); // 64-bit block numbers
    put32(0x150, blockCountHigh);
    const auto superblock = KVExt4::parseSuperblock(sb);
    QCOMPARE(superblock.has_value(), accepted);
    if (accepted)
        QCOMPARE(superblock->blockSize, 1024u << logBlockSize);
    QVERIFY(!KVExt4::parseSuperblock(sb.left(512)));
}

void KVHdiutilDialectTest::superblockCountsWhatIsFree_data()
{
    QTest::addColumn<quint64>("blockCount");
    QTest::addColumn<quint64>("freeBlocks");
    QTest::addColumn<quint64>("reservedBlocks");
    QTest::addColumn<quint64>("available"); // bytes, 4 KiB blocks
    QTest::newRow("some reserved for root") << 16384ull << 1000ull << 100ull << 900ull * 4096;
    QTest::newRow("counts beyond 32 bits") << (3ull << 32) << (1ull << 32) + 5 << (1ull << 32) << 5ull * 4096;
    QTest::newRow("less free than reserved") << 16384ull << 50ull << 100ull << 0ull;
    QTest::newRow("more free than there are blocks") << 16384ull << 20000ull << 0ull << 0ull;
}

void KVHdiutilDialectTest::superblockCountsWhatIsFree()
{
    QFETCH(quint64, blockCount);
    QFETCH(quint64, freeBlocks);
    QFETCH(quint64, reservedBlocks);
    QFETCH(quint64, available);
    QByteArray sb(1024, '\0');
    const auto put64 = [&sb](int low, int high, quint64 value) {
        qToLittleEndian(quint32(value), sb.data() + low);
        qToLittleEndian(quint32(value >> 32), sb.data() + high);
    };
    put64(0x04, 0x150, blockCount);
    put64(0x08, 0x154, reservedBlocks);
    put64(0x0C, 0x158, freeBlocks);
    qToLittleEndian(quint32(2), sb.data() + 0x18);
    qToLittleEndian(quint16(0xEF53), sb.data() + 0x38);
    qToLittleEndian(quint32(0x80), sb.data() + 0x60); // 64-bit block numbers
    const auto superblock = KVExt4::parseSuperblock(sb);
    QVERIFY(superblock);
    QCOMPARE(superblock->availableBytes(), available);
}

void KVHdiutilDialectTest::namesFitLabelsAndFolders()
{
    // ext4 labels hold 16 bytes; a character is never cut in two.
    QCOMPARE(KVExt4::labelFor(QStringLiteral("Short")), QStringLiteral("Short"));
    QCOMPARE(KVExt4::labelFor(QStringLiteral("ÄÄÄÄÄÄÄÄÄ")), QStringLiteral("ÄÄÄÄÄÄÄÄ"));
    QCOMPARE(KVVolumeFolder::folderName(QStringLiteral("a/b")), QStringLiteral("a:b"));
    QCOMPARE(KVVolumeFolder::folderName(QString()), QStringLiteral("Untitled"));
    QCOMPARE(KVVolumeFolder::folderName(QStringLiteral("..")), QStringLiteral("Untitled"));
    QVERIFY(KVVolumeFolder::folderName(QString(300, QLatin1Char('x'))).size() <= 240);
}

QTEST_GUILESS_MAIN(KVHdiutilDialectTest)
#include "tst_kvhdiutildialect.moc"
