// udev's database as an ordinary user's listing reads it: only "E:" lines
// count, the first "=" splits, and labels come back from their escapes.

#include "KVUdevProperties.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/sysmacros.h>

using namespace kvlinux;

class KVUdevPropertiesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheDevicesEntry()
    {
        QTemporaryDir database;
        QFile entry(database.filePath(QStringLiteral("b259:3")));
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write("S:disk/by-uuid/5d0e\nI:12345\nE:ID_FS_TYPE=crypto_LUKS\nE:ID_FS_VERSION=2\n"
                    "E:ID_FS_UUID=5d0e1f2a-0000-4000-8000-00000000abcd\nE:ID_FS_LABEL_ENC=Holiday\\x20Photos\n"
                    "E:WITH_EQUALS=a=b\nG:systemd\nE:\nbroken line\n");
        entry.close();
        const KVUdevProperties udev(database.path());
        const auto properties = udev.of(makedev(259, 3));
        QCOMPARE(properties.value(QStringLiteral("ID_FS_TYPE")), QStringLiteral("crypto_LUKS"));
        QCOMPARE(properties.value(QStringLiteral("ID_FS_VERSION")), QStringLiteral("2"));
        QCOMPARE(properties.value(QStringLiteral("WITH_EQUALS")), QStringLiteral("a=b"));
        QCOMPARE(properties.size(), 5);
        QVERIFY(udev.of(makedev(259, 4)).isEmpty());
        QVERIFY(KVUdevProperties(database.filePath(QStringLiteral("missing"))).of(makedev(259, 3)).isEmpty());
    }

    void labelsComeBackFromTheirEscapes_data()
    {
        QTest::addColumn<QString>("encoded");
        QTest::addColumn<QString>("label");
        QTest::newRow("blank") << QStringLiteral("Holiday\\x20Photos") << QStringLiteral("Holiday Photos");
        QTest::newRow("UTF-8 bytes") << QStringLiteral("Gr\\xc3\\xbc\\xc3\\x9fe") << QStringLiteral("Grüße");
        QTest::newRow("escape at the end") << QStringLiteral("a\\x2f") << QStringLiteral("a/");
        QTest::newRow("cut short") << QStringLiteral("a\\x2") << QStringLiteral("a\\x2");
        QTest::newRow("not hex") << QStringLiteral("\\xzz") << QStringLiteral("\\xzz");
        QTest::newRow("plain") << QStringLiteral("Data") << QStringLiteral("Data");
    }

    void labelsComeBackFromTheirEscapes()
    {
        QFETCH(QString, encoded);
        QFETCH(QString, label);
        QCOMPARE(KVUdevProperties::decodeEscapes(encoded), label);
    }
};

QTEST_GUILESS_MAIN(KVUdevPropertiesTest)
#include "tst_kvudevproperties.moc"
