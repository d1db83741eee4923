#include "tools/KVPropertyList.h"
#include "tools/KVValue.h"

#include "KVToolDouble.h"

#include <QTest>

class TestKVPropertyList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesToolOutput()
    {
        const std::optional<QVariant> info =
            KVPropertyList::decode(KVToolDouble::readFixture(QStringLiteral("hdiutil/info-encrypted-images.plist")));
        QVERIFY(info);
        const QVariantList images = KVValue::array(KVValue::dictionary(*info).value(QStringLiteral("images")));
        QCOMPARE(images.size(), 3);
        const QVariantMap first = KVValue::dictionary(images.first());
        QCOMPARE(first.value(QStringLiteral("image-encrypted")), QVariant(true));
        QCOMPARE(first.value(QStringLiteral("blockcount")), QVariant(qint64(204800)));
        QCOMPARE(KVValue::array(first.value(QStringLiteral("system-entities"))).size(), 3);
    }

    void binaryRoundTripKeepsEveryType()
    {
        const QVariantMap original{
            {QStringLiteral("string"), QStringLiteral("Ünïcode ✓")},
            {QStringLiteral("integer"), qint64(1) << 40},
            {QStringLiteral("real"), 2.5},
            {QStringLiteral("bool"), false},
            {QStringLiteral("data"), QByteArray("\0\1\2", 3)},
            {QStringLiteral("uid"), QVariant::fromValue(KVPropertyListUid{7})},
            {QStringLiteral("array"), QVariantList{QStringLiteral("a"), qint64(1)}},
        };
        for (const QByteArray &encoded : {KVPropertyList::encodeBinary(original), KVPropertyList::encodeXml(original)}) {
            const std::optional<QVariant> decoded = KVPropertyList::decode(encoded);
            QVERIFY(decoded);
            QCOMPARE(decoded->toMap(), original);
        }
        QVERIFY(KVPropertyList::encodeBinary(original).startsWith("bplist00"));
    }

    void stringsAreReadWithTheirLength()
    {
        // A UTF-16 string with a NUL inside, as a crafted image's name may be.
        const std::optional<QVariant> decoded =
            KVPropertyList::decode(KVToolDouble::readFixture(QStringLiteral("propertylist/utf16-string-with-nul.bplist")));
        QVERIFY(decoded);
        QCOMPARE(decoded->toMap().value(QStringLiteral("VolumeName")).toString(), QStringLiteral("Wörk\u0000shop"));
    }

    void namesAndPaths_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("path");
        QTest::newRow("plain") << QVariant(QStringLiteral("/media/Wörk")) << QStringLiteral("/media/Wörk")
                               << QStringLiteral("/media/Wörk");
        QTest::newRow("a NUL inside") << QVariant(QStringLiteral("/media/Wörk\u0000shop"))
                                      << QStringLiteral("/media/Wörk") << QString();
        QTest::newRow("a NUL first") << QVariant(QStringLiteral("\u0000x")) << QString() << QString();
        QTest::newRow("a number") << QVariant(qint64(7)) << QStringLiteral("7") << QStringLiteral("7");
        QTest::newRow("data") << QVariant(QByteArray("x")) << QString() << QString();
    }

    void namesAndPaths()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, name);
        QFETCH(QString, path);
        QCOMPARE(KVValue::nameValue(value), name);
        QCOMPARE(KVValue::pathValue(value), path);
    }

    void refusesWhatIsNotAPropertyList_data()
    {
        QTest::addColumn<QByteArray>("data");
        const QByteArray xml = KVToolDouble::readFixture(QStringLiteral("hdiutil/info-encrypted-images.plist"));
        const QByteArray binary = KVPropertyList::encodeBinary(QVariantMap{{QStringLiteral("images"), QVariantList{1, 2, 3}}});
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("hdiutil: info failed - Device not configured\n");
        QTest::newRow("truncated xml") << xml.left(xml.size() / 2);
        QTest::newRow("truncated binary") << binary.left(binary.size() - 9);
        QTest::newRow("binary garbage") << QByteArray("bplist00\xff\xff\xff\xff\x00\x01garbage", 22);
        // libplist hands keys out as C strings (and aborts on a UTF-16 one with a NUL).
        QTest::newRow("UTF-16 key with a NUL") << KVToolDouble::readFixture(QStringLiteral("propertylist/utf16-key-with-nul.bplist"));
        QTest::newRow("ASCII key with a NUL") << KVToolDouble::readFixture(QStringLiteral("propertylist/ascii-key-with-nul.bplist"));
        // libplist takes objects from anywhere before the offset table and
        // reads only the last eight bytes of a wider offset or reference.
        QTest::newRow("key inside the magic with a NUL")
            << KVToolDouble::readFixture(QStringLiteral("propertylist/key-inside-magic-with-nul.bplist"));
        QTest::newRow("nine-byte references, key with a NUL")
            << KVToolDouble::readFixture(QStringLiteral("propertylist/wide-references-key-with-nul.bplist"));
    }

    void refusesWhatIsNotAPropertyList()
    {
        QFETCH(QByteArray, data);
        KVPropertyListError error;
        QVERIFY(!KVPropertyList::decode(data, &error));
        QCOMPARE(error.code, KVPropertyList::ReadCorruptError);
        QVERIFY(!error.description.isEmpty());
    }

    void boolValueOfStrings_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("expected");
        QTest::newRow("yes") << QVariant(QStringLiteral("yes")) << true;
        QTest::newRow("no") << QVariant(QStringLiteral("no")) << false;
        QTest::newRow("True") << QVariant(QStringLiteral("True")) << true;
        QTest::newRow("blanks, sign, zeros then 7") << QVariant(QStringLiteral("  -007")) << true;
        QTest::newRow("zeros only") << QVariant(QStringLiteral("000")) << false;
        QTest::newRow("empty") << QVariant(QString()) << false;
        QTest::newRow("absent") << QVariant() << false;
        QTest::newRow("number 2") << QVariant(qint64(2)) << true;
        QTest::newRow("bool") << QVariant(true) << true;
        QTest::newRow("dictionary") << QVariant(QVariantMap{{QStringLiteral("a"), 1}}) << false;
    }

    void boolValueOfStrings()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, expected);
        QCOMPARE(KVValue::boolValue(value), expected);
    }

    void integerValue_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("percent") << QVariant(QStringLiteral("91%")) << qint64(91);
        QTest::newRow("blank and sign") << QVariant(QStringLiteral(" -12abc")) << qint64(-12);
        QTest::newRow("no digits") << QVariant(QStringLiteral("-none-")) << qint64(0);
        QTest::newRow("Complete") << QVariant(QStringLiteral("Complete")) << qint64(0);
        QTest::newRow("overflow") << QVariant(QStringLiteral("99999999999999999999")) << std::numeric_limits<qint64>::max();
        QTest::newRow("overflow past 2^64 in one step") << QVariant(QStringLiteral("19000000000000000000"))
                                                        << std::numeric_limits<qint64>::max();
        QTest::newRow("negative overflow") << QVariant(QStringLiteral("-19000000000000000000"))
                                           << std::numeric_limits<qint64>::min();
        QTest::newRow("largest") << QVariant(QStringLiteral("9223372036854775807")) << std::numeric_limits<qint64>::max();
        QTest::newRow("one past the largest") << QVariant(QStringLiteral("9223372036854775808"))
                                              << std::numeric_limits<qint64>::max();
        QTest::newRow("number") << QVariant(qint64(42949672960)) << qint64(42949672960);
        QTest::newRow("real") << QVariant(3.9) << qint64(3);
        QTest::newRow("absent") << QVariant() << qint64(0);
    }

    void integerValue()
    {
        QFETCH(QVariant, value);
        QFETCH(qint64, expected);
        QCOMPARE(KVValue::integerValue(value), expected);
    }
};

QTEST_GUILESS_MAIN(TestKVPropertyList)
#include "tst_kvpropertylist.moc"
