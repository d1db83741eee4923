#include "platform/KVUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestKVUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registeredValuesApplyWhereNothingIsStored()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("defaults.conf"));
        {
            KVUserDefaults defaults(file);
            defaults.registerDefaults({{QStringLiteral("KVMountDiskImageAfterCreation"), true},
                                       {QStringLiteral("KVForceUnmount"), false},
                                       {QStringLiteral("animationDurationMultiplier"), 1.0}});
            QVERIFY(defaults.boolForKey(QStringLiteral("KVMountDiskImageAfterCreation")));
            QCOMPARE(defaults.doubleForKey(QStringLiteral("animationDurationMultiplier")), 1.0);
            QVERIFY(!defaults.boolForKey(QStringLiteral("unknown")));

            defaults.setBool(false, QStringLiteral("KVMountDiskImageAfterCreation"));
            defaults.setBool(true, QStringLiteral("KVForceUnmount"));
            defaults.setObject(0.5, QStringLiteral("animationDurationMultiplier"));
            defaults.setObject(QByteArray("\0bplist\xff", 8), QStringLiteral("favourites"));
            QVERIFY(!defaults.boolForKey(QStringLiteral("KVMountDiskImageAfterCreation")));
        }

        // A new store over the same file: stored values win over registered ones,
        // and registered ones were never written.
        KVUserDefaults reopened(file);
        reopened.registerDefaults({{QStringLiteral("KVMountDiskImageAfterCreation"), true},
                                   {QStringLiteral("showWelcomeHelp"), true}});
        QVERIFY(!reopened.boolForKey(QStringLiteral("KVMountDiskImageAfterCreation")));
        QVERIFY(reopened.boolForKey(QStringLiteral("KVForceUnmount")));
        QCOMPARE(reopened.doubleForKey(QStringLiteral("animationDurationMultiplier")), 0.5);
        QCOMPARE(reopened.dataForKey(QStringLiteral("favourites")), QByteArray("\0bplist\xff", 8));
        QFile raw(file);
        QVERIFY(raw.open(QIODevice::ReadOnly));
        QVERIFY(!raw.readAll().contains("showWelcomeHelp"));
    }

    // Values as a settings file edited by hand may hold them.
    void wrongTypesReadAsTheDefault_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<bool>("switchOn");
        QTest::addColumn<double>("multiplier");

        QTest::newRow("true and a number") << QByteArray("KVForceUnmount=true\nm=0.5") << true << 0.5;
        QTest::newRow("FALSE and an integer") << QByteArray("KVForceUnmount=FALSE\nm=2") << false << 2.0;
        QTest::newRow("a number as a switch") << QByteArray("KVForceUnmount=0\nm=1") << false << 1.0;
        QTest::newRow("a word") << QByteArray("KVForceUnmount=banana\nm=fast") << false << 1.5;
        QTest::newRow("a list") << QByteArray("KVForceUnmount=a, b\nm=1, 2") << false << 1.5;
        QTest::newRow("empty") << QByteArray("KVForceUnmount=\nm=") << false << 1.5;
        QTest::newRow("not a finite number") << QByteArray("KVForceUnmount=nan\nm=inf") << false << 1.5;
        QTest::newRow("a group") << QByteArray("[KVForceUnmount]\nx=1\n[m]\ny=2") << false << 1.5;
    }

    void wrongTypesReadAsTheDefault()
    {
        QFETCH(QByteArray, line);
        QFETCH(bool, switchOn);
        QFETCH(double, multiplier);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("defaults.conf"));
        QFile raw(file);
        QVERIFY(raw.open(QIODevice::WriteOnly));
        raw.write(line.startsWith('[') ? line : "[General]\n" + line + "\n");
        raw.close();
        KVUserDefaults defaults(file);
        defaults.registerDefaults({{QStringLiteral("KVForceUnmount"), false}, {QStringLiteral("m"), 1.5}});
        QCOMPARE(defaults.boolForKey(QStringLiteral("KVForceUnmount")), switchOn);
        QCOMPARE(defaults.doubleForKey(QStringLiteral("m")), multiplier);
    }

    void everyReadAsksTheStore()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("defaults.conf"));
        KVUserDefaults first(file);
        KVUserDefaults second(file);
        QVERIFY(!second.boolForKey(QStringLiteral("KVSaveOpenRecent")));
        first.setBool(true, QStringLiteral("KVSaveOpenRecent"));
        second.setBool(false, QStringLiteral("unrelated")); // the second store syncs with the file
        QVERIFY(second.boolForKey(QStringLiteral("KVSaveOpenRecent")));
    }

    void aStoreThatCannotBeWrittenIsReportedOnce()
    {
        // A folder where the settings file should be: no one can write that,
        // root included.
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("defaults.conf"));
        QVERIFY(QDir().mkdir(file));
        KVUserDefaults defaults(file);
        QSignalSpy failures(&defaults, &KVUserDefaults::writeFailed);
        defaults.setBool(true, QStringLiteral("KVForceUnmount"));
        defaults.setBool(false, QStringLiteral("KVForceUnmount"));
        QCOMPARE(failures.count(), 1);
        QCOMPARE(failures.first().first().toString(), file);
    }
};

QTEST_GUILESS_MAIN(TestKVUserDefaults)
#include "tst_kvuserdefaults.moc"
