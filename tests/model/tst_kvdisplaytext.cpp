#include "model/KVDisplayText.h"
#include "tools/KVPropertyList.h"

#include <QTest>
#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace {

const QString Fffd{QChar(QChar::ReplacementCharacter)};

// How many characters the user counts in `text`.
qsizetype graphemes(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0)
        ++count;
    return count;
}

} // namespace

class TestKVDisplayText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void singleLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");

        QTest::newRow("normal name") << u"Secrets 2024"_s << u"Secrets 2024"_s;
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("emoji and combining marks") << u"Fotos 👩‍👩‍👧 Ame\u0301lie"_s << u"Fotos 👩‍👩‍👧 Ame\u0301lie"_s;
        QTest::newRow("right to left letters") << u"גיבוי 2"_s << u"גיבוי 2"_s;
        QTest::newRow("NUL") << QString(u"a\0b"_s) << QString(u"a"_s + Fffd + u"b"_s);
        QTest::newRow("newline") << u"first\nsecond"_s << u"first second"_s;
        QTest::newRow("CR LF is one gap") << u"first\r\nsecond"_s << u"first second"_s;
        QTest::newRow("tab") << u"a\tb"_s << u"a b"_s;
        QTest::newRow("unicode line separators") << u"a\u2028b\u0085c"_s << u"a b c"_s;
        QTest::newRow("escape and C1 controls") << u"a\x1b[31mb\u009bc"_s << QString(u"a"_s + Fffd + u"[31mb"_s + Fffd + u"c"_s);
        QTest::newRow("override with text after it") << u"photo\u202Egpj.exe"_s << u"photogpj.exe"_s;
        QTest::newRow("unpaired isolate") << u"x\u2067y"_s << u"xy"_s;
        QTest::newRow("paired isolate") << u"a\u2068b\u2069c"_s << u"abc"_s;
        QTest::newRow("embedding closed by PDF") << u"\u202Bab\u202C"_s << u"ab"_s;
    }

    void singleLine()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        QCOMPARE(KVDisplayText::singleLine(name), shown);
        QCOMPARE(KVDisplayText::shortened(name), shown);
    }

    void shortened_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qsizetype>("maximum");
        QTest::addColumn<QString>("shown");

        QTest::newRow("at the limit") << u"abcdef"_s << qsizetype(6) << u"abcdef"_s;
        QTest::newRow("one over") << u"abcdefg"_s << qsizetype(6) << u"abc…fg"_s;
        QTest::newRow("4,000 characters")
            << QString(u"s"_s + QString(3998, u'x') + u"e"_s) << qsizetype(9) << u"sxxx…xxxe"_s;
        QTest::newRow("emoji are not split") << u"👩‍👩‍👧👩‍👩‍👧👩‍👩‍👧👩‍👩‍👧"_s << qsizetype(3) << u"👩‍👩‍👧…👩‍👩‍👧"_s;
        QTest::newRow("accent stays on its letter") << u"e\u0301e\u0301e\u0301e\u0301"_s << qsizetype(3)
                                                    << u"e\u0301…e\u0301"_s;
        QTest::newRow("cut after the controls are gone") << u"a\u202E\u202E\u202Eb"_s << qsizetype(2) << u"ab"_s;
    }

    void shortened()
    {
        QFETCH(QString, name);
        QFETCH(qsizetype, maximum);
        QFETCH(QString, shown);
        QCOMPARE(KVDisplayText::shortened(name, maximum), shown);
        QVERIFY(graphemes(shown) <= maximum);
    }

    void longNamesAreBoundedByDefault()
    {
        const QString shown = KVDisplayText::shortened(QString(4000, u'n'));
        QCOMPARE(graphemes(shown), KVDisplayText::MaximumLength);
        QVERIFY(shown.contains(u'…'));
    }

    void inSentence_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");

        QTest::newRow("left to right is left alone") << u"Backup"_s << u"Backup"_s;
        QTest::newRow("right to left is isolated") << u"גיבוי 2"_s << u"\u2068גיבוי 2\u2069"_s;
        QTest::newRow("an override is dropped, not isolated") << u"\u202Eabc"_s << u"abc"_s;
        QTest::newRow("a forged isolate cannot close ours") << u"א\u2069b"_s << u"\u2068אb\u2069"_s;
    }

    void inSentence()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        QCOMPARE(KVDisplayText::inSentence(name), shown);
    }

    // A volume name arrives as the bytes of hdiutil's property list: bytes
    // that are not UTF-8 become U+FFFD there, and escaped controls arrive as they are.
    void bytesFromTheToolsAreDecodedSafely_data()
    {
        QTest::addColumn<QByteArray>("nameBytes");
        QTest::addColumn<QString>("shown");

        QTest::newRow("lone continuation byte") << QByteArray("a\x80z") << QString(u"a"_s + Fffd + u"z"_s);
        QTest::newRow("truncated sequence") << QByteArray("a\xE2\x82z") << QString(u"a"_s + Fffd + Fffd + u"z"_s);
        QTest::newRow("overlong slash") << QByteArray("a\xC0\xAFz") << QString(u"a"_s + Fffd + Fffd + u"z"_s);
        QTest::newRow("escaped newline and escape") << QByteArray("b&#10;c&#27;d") << QString(u"b c"_s + Fffd + u"d"_s);
    }

    void bytesFromTheToolsAreDecodedSafely()
    {
        QFETCH(QByteArray, nameBytes);
        QFETCH(QString, shown);
        const QByteArray plist = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                                 "<key>volume-name</key><string>"
                                 + nameBytes + "</string></dict></plist>";
        const std::optional<QVariant> decoded = KVPropertyList::decode(plist);
        QVERIFY(decoded);
        const QString name = decoded->toMap().value(u"volume-name"_s).toString();
        QCOMPARE(KVDisplayText::singleLine(name), shown);
    }
};

QTEST_GUILESS_MAIN(TestKVDisplayText)
#include "tst_kvdisplaytext.moc"
