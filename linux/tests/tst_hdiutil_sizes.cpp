// Size limits, resizing and compacting with the application's command lines.

#include "KVImageTestFiles.h"
#include "KVImageToolHarness.h"

#include "tools/KVPropertyList.h"

#include <QFileInfo>
#include <QTest>

#include <memory>

using namespace kvlinux;

using namespace KVImageTestFiles;

namespace {

const QByteArray password = QByteArrayLiteral("sizes");
constexpr qint64 headerSize = 16 << 20;

} // namespace

class KVHdiutilSizesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void limitsGrowAndShrinkKeepTheData();
    void resizeRefusesWhatWouldHurt();
    void compactGivesFreeBlocksBack();

private:
    KVImageToolHarness::Run limits(const QString &image, const QByteArray &pw = password) const;
    KVImageToolHarness::Run resize(const QString &image, const QString &megabytes,
                                   const QByteArray &pw = password) const;
    KVImageToolHarness::Run compact(const QString &image, const QByteArray &pw = password) const;
    QString attachAndMount(const QString &image) const;
    bool detachAll() const;

    std::unique_ptr<KVImageToolHarness> h;
};

void KVHdiutilSizesTest::initTestCase()
{
    if (const QString reason = KVImageToolHarness::kernelPathUnavailable(); !reason.isEmpty())
        QSKIP(qPrintable(reason));
}

void KVHdiutilSizesTest::init()
{
    h = std::make_unique<KVImageToolHarness>();
    QVERIFY(h->isValid());
}

void KVHdiutilSizesTest::cleanup()
{
    h.reset();
}

// The argument orders the application uses, "-stdinpass" included.
KVImageToolHarness::Run KVHdiutilSizesTest::limits(const QString &image, const QByteArray &pw) const
{
    return h->hdiutil({QStringLiteral("resize"), QStringLiteral("-limits"), QStringLiteral("-stdinpass"),
                       QStringLiteral("-plist"), image},
                      pw);
}

KVImageToolHarness::Run KVHdiutilSizesTest::resize(const QString &image, const QString &megabytes,
                                                   const QByteArray &pw) const
{
    return h->hdiutil({QStringLiteral("resize"), QStringLiteral("-size"), QStringLiteral("-stdinpass"),
                       megabytes + QLatin1Char('m'), image},
                      pw);
}

KVImageToolHarness::Run KVHdiutilSizesTest::compact(const QString &image, const QByteArray &pw) const
{
    return h->hdiutil({QStringLiteral("compact"), QStringLiteral("-stdinpass"),
                       QStringLiteral("-batteryallowed"), QStringLiteral("-verbose"), image},
                      pw);
}

QString KVHdiutilSizesTest::attachAndMount(const QString &image) const
{
    return h->attach(image, password).exitCode == 0 ? h->onlyMountPoint() : QString();
}

bool KVHdiutilSizesTest::detachAll() const
{
    return h->detach(wholeDisk(onlyImage(h->info()))).exitCode == 0;
}

void KVHdiutilSizesTest::limitsGrowAndShrinkKeepTheData()
{
    QCOMPARE(h->create(QStringLiteral("Grow"), password, QStringLiteral("Grow")).exitCode, 0);
    const QString image = h->path(QStringLiteral("Grow.sparseimage"));
    QString volume = attachAndMount(image);
    QVERIFY(!volume.isEmpty());
    const QByteArray data = randomBytes(12 << 20);
    QVERIFY(writeFile(volume + QStringLiteral("/data.bin"), data));

    // The resize dialog asks for the limits while the image is mounted.
    const auto asked = limits(image);
    QVERIFY2(asked.exitCode == 0, qPrintable(asked.output));
    const QVariantMap volumeLimits = KVPropertyList::decode(asked.output.toUtf8())
                                         .value_or(QVariant()).toMap()
                                         .value(QStringLiteral("subcontent-list"))
                                         .toList()
                                         .value(0)
                                         .toMap();
    const qint64 current = volumeLimits.value(QStringLiteral("content-length")).toLongLong();
    const qint64 minimum = volumeLimits.value(QStringLiteral("content-min-length")).toLongLong();
    QCOMPARE(current, qint64(64 << 20) / 512);
    QVERIFY2(minimum > (12 << 20) / 512 && minimum < current, qPrintable(QString::number(minimum)));
    QVERIFY(volumeLimits.value(QStringLiteral("content-max-length")).toLongLong() > current);

    const auto whileMounted = resize(image, QStringLiteral("128"));
    QVERIFY(whileMounted.has(QStringLiteral("resize: failed")));
    QVERIFY2(whileMounted.output.trimmed().endsWith(QLatin1String("(35)")), qPrintable(whileMounted.output));
    QVERIFY(detachAll());

    const auto grown = resize(image, QStringLiteral("128"));
    QVERIFY2(grown.exitCode == 0 && !grown.has(QStringLiteral("failed")), qPrintable(grown.output));
    QCOMPARE(QFileInfo(image).size(), headerSize + (128 << 20));
    volume = attachAndMount(image);
    QVERIFY(h->diskutilInfo(volume).value(QStringLiteral("TotalSize")).toLongLong() > 110'000'000);
    QCOMPARE(readFile(volume + QStringLiteral("/data.bin")), data);
    QVERIFY(detachAll());

    const auto shrunk = resize(image, QStringLiteral("32"));
    QVERIFY2(shrunk.exitCode == 0, qPrintable(shrunk.output));
    QCOMPARE(QFileInfo(image).size(), headerSize + (32 << 20));
    volume = attachAndMount(image);
    const qint64 total = h->diskutilInfo(volume).value(QStringLiteral("TotalSize")).toLongLong();
    QVERIFY(total > 20'000'000 && total <= 32 << 20);
    QCOMPARE(readFile(volume + QStringLiteral("/data.bin")), data);
    QVERIFY(detachAll());
    QCOMPARE(h->leftovers(), QStringList());
}

void KVHdiutilSizesTest::resizeRefusesWhatWouldHurt()
{
    QCOMPARE(h->create(QStringLiteral("Full"), password, QStringLiteral("Full")).exitCode, 0);
    const QString image = h->path(QStringLiteral("Full.sparseimage"));
    const QString volume = attachAndMount(image);
    const QByteArray data = randomBytes(24 << 20);
    QVERIFY(writeFile(volume + QStringLiteral("/data.bin"), data));
    QVERIFY(detachAll());
    const QByteArray before = checksum(image);

    const auto tooSmall = resize(image, QStringLiteral("8"));
    QVERIFY(tooSmall.has(QStringLiteral("resize: failed")));
    QCOMPARE(checksum(image), before);

    const auto wrong = resize(image, QStringLiteral("100"), "wrong");
    QVERIFY(wrong.output.trimmed().endsWith(QLatin1String("(80)")));
    QVERIFY(limits(image, "wrong").output.trimmed().endsWith(QLatin1String("(80)")));
    QVERIFY(resize(h->path(QStringLiteral("absent")), QStringLiteral("100")).output.trimmed().endsWith(QLatin1String("(2)")));
    QCOMPARE(QFileInfo(image).size(), headerSize + (64 << 20));

    QCOMPARE(readFile(attachAndMount(image) + QStringLiteral("/data.bin")), data);
    QVERIFY(detachAll());
}

void KVHdiutilSizesTest::compactGivesFreeBlocksBack()
{
    QCOMPARE(h->create(QStringLiteral("Compact"), password, QStringLiteral("Compact"), QStringLiteral("AES-256"),
                       QStringLiteral("256m"))
                 .exitCode,
             0);
    const QString image = h->path(QStringLiteral("Compact.sparseimage"));
    QString volume = attachAndMount(image);
    const QByteArray keep = randomBytes(1 << 20);
    QVERIFY(writeFile(volume + QStringLiteral("/keep.bin"), keep));
    QVERIFY(writeFile(volume + QStringLiteral("/big.bin"), randomBytes(96 << 20)));

    const auto whileMounted = compact(image);
    QVERIFY(whileMounted.has(QStringLiteral("compact failed")));
    QVERIFY(whileMounted.has(QStringLiteral("hdiutil: compact: result: 35")));

    QVERIFY(QFile::remove(volume + QStringLiteral("/big.bin")));
    QVERIFY(detachAll());
    const qint64 before = allocatedBytes(image);
    QVERIFY(before > 96 << 20);

    const auto wrong = compact(image, "wrong");
    QVERIFY(wrong.has(QStringLiteral("compact failed")) && wrong.has(QStringLiteral("hdiutil: compact: result: 80")));

    const auto compacted = compact(image);
    QVERIFY2(compacted.exitCode == 0 && !compacted.has(QStringLiteral("compact failed")), qPrintable(compacted.output));
    QVERIFY(compacted.has(QStringLiteral("Reclaimed")));
    const qint64 after = allocatedBytes(image);
    QVERIFY2(after < before - (80 << 20), qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));

    volume = attachAndMount(image);
    QCOMPARE(readFile(volume + QStringLiteral("/keep.bin")), keep);
    QVERIFY(writeFile(volume + QStringLiteral("/again.bin"), keep));
    QVERIFY(detachAll());
    QCOMPARE(h->leftovers(), QStringList());
}

QTEST_GUILESS_MAIN(KVHdiutilSizesTest)
#include "tst_hdiutil_sizes.moc"
