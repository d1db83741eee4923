#include "disk/KVConversionStatusParser.h"

#include "KVToolDouble.h"

#include <QTest>

using Statuses = QList<KVConversionStatus>;

namespace {

KVConversionStatus status(const char *uuid, const char *status, const char *direction, const char *progress)
{
    return {QString::fromUtf8(uuid), QString::fromUtf8(status), QString::fromUtf8(direction), QString::fromUtf8(progress)};
}

Statuses parseFixture(const char *name)
{
    return KVConversionStatusParser::parse(
        QString::fromUtf8(KVToolDouble::readFixture(QStringLiteral("diskutil/") + QString::fromUtf8(name))));
}

} // namespace

namespace QTest {
template <>
char *toString(const KVConversionStatus &s)
{
    return qstrdup(QStringLiteral("{%1, %2, %3, %4}").arg(s.lvUUID, s.status, s.conversionDirection, s.conversionProgress).toUtf8().constData());
}
} // namespace QTest

class TestKVConversionStatusParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listingsOfSeveralSystems_data()
    {
        QTest::addColumn<QString>("fixture");
        QTest::addColumn<Statuses>("expected");

        QTest::newRow("direction in parentheses, percent progress")
            << "cs-list-converting-forward.txt"
            << Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "Converting", "forward", "91")};
        QTest::newRow("decrypting")
            << "cs-list-converting-backward.txt"
            << Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "Converting", "backward", "37")};
        QTest::newRow("conversion complete")
            << "cs-list-complete.txt"
            << Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "Complete", "", "Complete")};
        QTest::newRow("older layout: direction on a line of its own")
            << "cs-list-older-layout-converting.txt"
            << Statuses{status("9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65", "Converting", "forward", "35")};
        QTest::newRow("older layout, fusion drive without conversion")
            << "cs-list-fusion-no-conversion.txt"
            << Statuses{status("352C52AB-6A80-46F4-BE52-EDBABEBF93BB", "NoConversion", "-none-", "-none-")};
        QTest::newRow("two groups, the first with tree columns")
            << "cs-list-two-groups.txt"
            << Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "Complete", "", "Complete"),
                        status("9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65", "Converting", "backward", "12")};
        QTest::newRow("never encrypted: no conversion lines at all")
            << "cs-list-unencrypted.txt"
            << Statuses{status("598EDC9A-C9A1-47FD-B154-B2B7720D484C", "", "", "")};
        QTest::newRow("no groups") << "cs-list-no-groups.txt" << Statuses{};
    }

    void listingsOfSeveralSystems()
    {
        QFETCH(QString, fixture);
        QFETCH(Statuses, expected);
        QCOMPARE(parseFixture(fixture.toUtf8().constData()), expected);
    }

    void parenthesesWinOverTheDirectionLine()
    {
        const QString listing = QStringLiteral("+-> Logical Volume 1D1AEEDF-2794-4459-9D1A-D7E328B726BF\n"
                                               "    Conversion Status:       Converting (backward)\n"
                                               "    Conversion Direction:    forward\n"
                                               "    Conversion Progress:     7%\n");
        QCOMPARE(KVConversionStatusParser::parse(listing),
                 Statuses{status("1D1AEEDF-2794-4459-9D1A-D7E328B726BF", "Converting", "backward", "7")});
    }

    void onlyTheFirstVolumeOfAGroupCounts()
    {
        // Two volumes in one family are one piece of the listing: the first is taken.
        const QString listing = QStringLiteral("+-- Logical Volume Group G\n"
                                               "    +-> Logical Volume Family F\n"
                                               "        Conversion Status:       Complete\n"
                                               "        +-> Logical Volume AAAA\n"
                                               "            Conversion Progress:   Complete\n"
                                               "        +-> Logical Volume BBBB\n"
                                               "            Conversion Progress:   Complete\n");
        QCOMPARE(KVConversionStatusParser::parse(listing), Statuses{status("AAAA", "Complete", "", "Complete")});
    }

    void badInput_data()
    {
        QTest::addColumn<QString>("listing");
        QTest::newRow("empty") << QString();
        QTest::newRow("prose") << QStringLiteral("diskutil: did not recognize coreStorage verb \"list\"\n");
        QTest::newRow("a family is not a volume")
            << QStringLiteral("+-> Logical Volume Family 9B778F8F-AA0E-4D30-B9BD-E466BDD251F5\n"
                              "    Conversion Status:       Converting (forward)\n");
        QTest::newRow("a one-letter UUID") << QStringLiteral("+-> Logical Volume X\nConversion Status: Converting\n");
        QTest::newRow("no UUID") << QStringLiteral("+-> Logical Volume \nConversion Status: Converting\n");
        QTest::newRow("separators only") << QStringLiteral("|\n+--|\n+--|\n+--");
        QTest::newRow("binary") << QString::fromLatin1("\x01\xff\xfe|\n+-->\x00+->", 14);
    }

    void badInput()
    {
        QFETCH(QString, listing);
        QCOMPARE(KVConversionStatusParser::parse(listing), Statuses{});
    }

    void anyLineBreakEndsAValue()
    {
        const QString listing = QStringLiteral("+-> Logical Volume 5C2678FC-47C8-498A-8C9C-6B1D80A07AF4\r\n"
                                               "Conversion Direction: forward\u2028\n");
        QCOMPARE(KVConversionStatusParser::parse(listing),
                 Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "", "forward", "")});
    }

    void valuesCutShort()
    {
        // The status and progress patterns want a line feed after the value.
        const QString listing = QStringLiteral("+-> Logical Volume 5C2678FC-47C8-498A-8C9C-6B1D80A07AF4\n"
                                               "Conversion Progress: 40%\n"
                                               "Conversion Status: Converting (forward)");
        QCOMPARE(KVConversionStatusParser::parse(listing),
                 Statuses{status("5C2678FC-47C8-498A-8C9C-6B1D80A07AF4", "", "", "40")});
    }
};

QTEST_GUILESS_MAIN(TestKVConversionStatusParser)
#include "tst_kvconversionstatusparser.moc"
