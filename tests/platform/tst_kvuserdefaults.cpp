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
