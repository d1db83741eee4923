// Our images are standard LUKS2: cryptsetup reads their header, decrypts
// their payload offline (no device-mapper needed) to the ext4 we wrote, and
// an image that cryptsetup encrypted attaches with our tools.

#include "KVImageTestFiles.h"
#include "KVImageToolHarness.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <memory>

using namespace kvlinux;

using namespace KVImageTestFiles;

namespace {

const QByteArray password = QByteArrayLiteral("standard");

struct Result
{
    int exitCode = -1;
    QByteArray output;
};

Result run(const QString &program, const QStringList &arguments, const QByteArray &input = QByteArray())
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAll()};
}

QString sbin(const QString &name)
{
    return QStandardPaths::findExecutable(name, {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin"),
                                                 QStringLiteral("/usr/bin")});
}

// cryptsetup's options for a test keyslot: no benchmark, no Argon2.
const QStringList cheapKeyslot = {QStringLiteral("--pbkdf"), QStringLiteral("pbkdf2"),
                                  QStringLiteral("--pbkdf-force-iterations"), QStringLiteral("1000")};

} // namespace

class KVHdiutilCompatibilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void headerIsStandardLuks2_data();
    void headerIsStandardLuks2();
    void payloadDecryptsWithCryptsetup();
    void imageEncryptedByCryptsetupAttaches();

private:
    QString cryptsetup;
    QString debugfs;
    std::unique_ptr<KVImageToolHarness> h;
};

void KVHdiutilCompatibilityTest::initTestCase()
{
    if (const QString reason = KVImageToolHarness::kernelPathUnavailable(); !reason.isEmpty())
        QSKIP(qPrintable(reason));
    cryptsetup = sbin(QStringLiteral("cryptsetup"));
    debugfs = sbin(QStringLiteral("debugfs"));
    if (cryptsetup.isEmpty() || debugfs.isEmpty())
        QSKIP("cryptsetup (cryptsetup-bin) and debugfs (e2fsprogs) are needed to compare with");
}

void KVHdiutilCompatibilityTest::init()
{
    h = std::make_unique<KVImageToolHarness>();
    QVERIFY(h->isValid());
    QVERIFY(writeFile(h->path(QStringLiteral("password")), password));
}

void KVHdiutilCompatibilityTest::cleanup()
{
    h.reset();
}

void KVHdiutilCompatibilityTest::headerIsStandardLuks2_data()
{
    QTest::addColumn<QString>("encryption");
    QTest::addColumn<QString>("keyBits");
    QTest::newRow("AES-256") << QStringLiteral("AES-256") << QStringLiteral("512 bits");
    QTest::newRow("AES-128") << QStringLiteral("AES-128") << QStringLiteral("256 bits");
}

void KVHdiutilCompatibilityTest::headerIsStandardLuks2()
{
    QFETCH(QString, encryption);
    QFETCH(QString, keyBits);
    QCOMPARE(h->create(QStringLiteral("Dump"), password, QStringLiteral("Dump"), encryption).exitCode, 0);
    const auto dump = run(cryptsetup, {QStringLiteral("luksDump"), h->path(QStringLiteral("Dump.sparseimage"))});
    QCOMPARE(dump.exitCode, 0);
    const QString text = QString::fromUtf8(dump.output);
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("Version:\\s+2\\n"))));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("Flags:\\s+allow-discards"))));
    QVERIFY(text.contains(QStringLiteral("offset: 16777216 [bytes]")));
    QVERIFY(text.contains(QStringLiteral("cipher: aes-xts-plain64")));
    QVERIFY(text.contains(QStringLiteral("sector: 4096 [bytes]")));
    QVERIFY(text.contains(QRegularExpression(QStringLiteral("Key:\\s+") + keyBits)));
}

void KVHdiutilCompatibilityTest::payloadDecryptsWithCryptsetup()
{
    QCOMPARE(h->create(QStringLiteral("Ours"), password, QStringLiteral("Ours"), QStringLiteral("AES-256"),
                       QStringLiteral("32m"))
                 .exitCode,
             0);
    const QString image = h->path(QStringLiteral("Ours.sparseimage"));
    QCOMPARE(h->attach(image, password).exitCode, 0);
    const QByteArray random = randomBytes(2 << 20);
    QVERIFY(writeFile(h->onlyMountPoint() + QStringLiteral("/hello.txt"), "hello from korvelle\n"));
    QVERIFY(writeFile(h->onlyMountPoint() + QStringLiteral("/random.bin"), random));
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);

    // cryptsetup decrypts offline only with a detached header and the data
    // at offset 0: give it our payload alone, under a header that carries
    // the same volume key.
    const auto dump = run(cryptsetup, {QStringLiteral("luksDump"), QStringLiteral("--dump-volume-key"), QStringLiteral("-q"),
                                       QStringLiteral("--key-file"), h->path(QStringLiteral("password")), image});
    QCOMPARE(dump.exitCode, 0);
    const QByteArray hex = dump.output.mid(dump.output.indexOf("MK dump:") + 8).simplified().replace(' ', "");
    const QByteArray volumeKey = QByteArray::fromHex(hex);
    QCOMPARE(volumeKey.size(), 64);
    const QString data = h->path(QStringLiteral("payload.bin"));
    QVERIFY(writeFile(data, readFile(image).mid(16 << 20)));
    const QString header = h->path(QStringLiteral("header"));
    QCOMPARE(run(cryptsetup, QStringList{QStringLiteral("luksFormat"), QStringLiteral("-q"), QStringLiteral("--type"), QStringLiteral("luks2"),
                                        QStringLiteral("--header"), header, QStringLiteral("--offset"), QStringLiteral("0"),
                                        QStringLiteral("--cipher"), QStringLiteral("aes-xts-plain64"), QStringLiteral("--key-size"),
                                        QStringLiteral("512"), QStringLiteral("--sector-size"), QStringLiteral("4096"),
                                        QStringLiteral("--volume-key-file"), QStringLiteral("/dev/stdin"),
                                        QStringLiteral("--key-file"), h->path(QStringLiteral("password")), data}
                                     + cheapKeyslot,
                                 volumeKey)
                 .exitCode,
             0);
    const auto decrypted = run(cryptsetup, {QStringLiteral("reencrypt"), QStringLiteral("--decrypt"), QStringLiteral("-q"),
                                            QStringLiteral("--force-offline-reencrypt"), QStringLiteral("--header"), header,
                                            QStringLiteral("--key-file"), h->path(QStringLiteral("password")), data});
    QVERIFY2(decrypted.exitCode == 0, decrypted.output.constData());

    QCOMPARE(run(sbin(QStringLiteral("e2fsck")), {QStringLiteral("-fn"), data}).exitCode, 0);
    QVERIFY(run(debugfs, {QStringLiteral("-R"), QStringLiteral("cat /hello.txt"), data}).output.contains("hello from korvelle\n"));
    const QString dumped = h->path(QStringLiteral("random.out"));
    run(debugfs, {QStringLiteral("-R"), QStringLiteral("dump /random.bin ") + dumped, data});
    QCOMPARE(readFile(dumped), random);
}

void KVHdiutilCompatibilityTest::imageEncryptedByCryptsetupAttaches()
{
    // A plain ext4 of 16 MiB in a 48 MiB file, encrypted in place by
    // cryptsetup; its header takes the room that the file system leaves.
    const QString image = h->path(QStringLiteral("theirs.img"));
    QVERIFY(writeFile(h->path(QStringLiteral("note.txt")), "written before encryption\n"));
    QFile file(image);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(48 << 20));
    file.close();
    QCOMPARE(run(sbin(QStringLiteral("mkfs.ext4")), {QStringLiteral("-q"), QStringLiteral("-b"), QStringLiteral("4096"),
                                                     QStringLiteral("-L"), QStringLiteral("Theirs"), image,
                                                     QStringLiteral("4096")})
                 .exitCode,
             0);
    QCOMPARE(run(debugfs, {QStringLiteral("-w"), QStringLiteral("-R"),
                           QStringLiteral("write %1 note.txt").arg(h->path(QStringLiteral("note.txt"))), image})
                 .exitCode,
             0);
    const auto encrypted = run(cryptsetup, QStringList{QStringLiteral("reencrypt"), QStringLiteral("--encrypt"), QStringLiteral("-q"),
                                                       QStringLiteral("--type"), QStringLiteral("luks2"), QStringLiteral("--cipher"),
                                                       QStringLiteral("aes-xts-plain64"), QStringLiteral("--key-size"), QStringLiteral("256"),
                                                       QStringLiteral("--sector-size"), QStringLiteral("4096"),
                                                       QStringLiteral("--reduce-device-size"), QStringLiteral("32M"),
                                                       QStringLiteral("--force-offline-reencrypt"), QStringLiteral("--key-file"),
                                                       h->path(QStringLiteral("password")), image}
                                               + cheapKeyslot);
    QVERIFY2(encrypted.exitCode == 0, encrypted.output.constData());

    const auto attached = h->attach(image, password);
    QVERIFY2(attached.exitCode == 0, qPrintable(attached.output));
    const QString mountPoint = h->onlyMountPoint();
    QCOMPARE(readFile(mountPoint + QStringLiteral("/note.txt")), QByteArray("written before encryption\n"));
    QCOMPARE(h->diskutilInfo(mountPoint).value(QStringLiteral("VolumeName")).toString(), QStringLiteral("Theirs"));
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
}

QTEST_GUILESS_MAIN(KVHdiutilCompatibilityTest)
#include "tst_hdiutil_compatibility.moc"
