// imagefs's command line: what hdiutil sends is taken, anything else refused
// before a value is used.

#include "KVImagefsOptions.h"

#include <QTest>

using namespace kvlinux;

namespace {

std::vector<std::string> valid()
{
    return {"--image", "/i.sparseimage", "--offset", "16777216", "--key-size", "64", "--sector-size", "4096",
            "--mountpoint", "/run/k/disk2", "--name", "korvelle:disk2", "--control-fd", "3"};
}

std::vector<std::string> with(const std::string &option, const std::string &value)
{
    std::vector<std::string> arguments = valid();
    for (size_t i = 0; i + 1 < arguments.size(); i += 2)
        if (arguments[i] == option)
            arguments[i + 1] = value;
    return arguments;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<std::string>)

class KVImagefsOptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatHdiutilSendsIsTaken();
    void badValuesAreRefused_data();
    void badValuesAreRefused();
};

void KVImagefsOptionsTest::whatHdiutilSendsIsTaken()
{
    std::vector<std::string> arguments = valid();
    arguments.push_back("--read-only");
    const auto options = KVImagefsOptions::parse(arguments);
    QVERIFY(options);
    QCOMPARE(options->offset, uint64_t(16777216));
    QCOMPARE(options->keySize, size_t(64));
    QCOMPARE(options->sectorSize, size_t(4096));
    QCOMPARE(options->controlFd, 3);
    QCOMPARE(options->name, std::string("korvelle:disk2"));
    QVERIFY(options->readOnly);
    QVERIFY(!options->directIo);
}

void KVImagefsOptionsTest::badValuesAreRefused_data()
{
    QTest::addColumn<std::vector<std::string>>("arguments");
    QTest::newRow("nothing") << std::vector<std::string>();
    // A key size the cipher does not know once made imagefs ask for all of
    // memory and abort.
    QTest::newRow("huge key size") << with("--key-size", "18446744073709551615");
    QTest::newRow("key size 48") << with("--key-size", "48");
    QTest::newRow("sector size 0") << with("--sector-size", "0");
    QTest::newRow("sector size 3000") << with("--sector-size", "3000");
    QTest::newRow("sector size 8192") << with("--sector-size", "8192");
    QTest::newRow("offset inside a sector") << with("--offset", "16777217");
    QTest::newRow("offset beyond any file") << with("--offset", "9223372036854775808");
    QTest::newRow("negative offset") << with("--offset", "-4096");
    QTest::newRow("number with junk") << with("--offset", "4096x");
    QTest::newRow("number too large") << with("--control-fd", "99999999999");
    QTest::newRow("standard stream as control") << with("--control-fd", "1");
    QTest::newRow("options hidden in the name") << with("--name", "x,allow_other");
    QTest::newRow("empty image") << with("--image", "");
    std::vector<std::string> missing = valid();
    missing.resize(missing.size() - 2);
    QTest::newRow("control missing") << missing;
    std::vector<std::string> twice = valid();
    twice.insert(twice.end(), {"--offset", "0"});
    QTest::newRow("option twice") << twice;
    std::vector<std::string> unknown = valid();
    unknown.insert(unknown.end(), {"--allow-other", "1"});
    QTest::newRow("unknown option") << unknown;
    std::vector<std::string> dangling = valid();
    dangling.push_back("--offset");
    QTest::newRow("option without value") << dangling;
    std::vector<std::string> operand = valid();
    operand.push_back("stray");
    QTest::newRow("stray operand") << operand;
}

void KVImagefsOptionsTest::badValuesAreRefused()
{
    QFETCH(std::vector<std::string>, arguments);
    QVERIFY(!KVImagefsOptions::parse(arguments));
}

QTEST_GUILESS_MAIN(KVImagefsOptionsTest)
#include "tst_kvimagefsoptions.moc"
