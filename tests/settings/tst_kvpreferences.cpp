#include "settings/KVPreferenceKeys.h"
#include "settings/KVPreferences.h"
#include "platform/KVUserDefaults.h"

#include <QStandardPaths>
#include <QTest>

// The preferences read the store on every call: a change made anywhere counts at once.
class TestKVPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_kvpreferences"));
    }

    void eachPreferenceHasItsKey_data()
    {
        using Getter = bool (*)();
        using Setter = void (*)(bool);
        QTest::addColumn<QString>("key");
        QTest::addColumn<quintptr>("getter");
        QTest::addColumn<quintptr>("setter");
        const auto row = [](const char *name, const QString &key, Getter get, Setter set) {
            QTest::newRow(name) << key << quintptr(get) << quintptr(set);
        };
        row("auto unmount", KVAutoUnmountVolumesKey, &KVPreferences::prefAutoUnmountVolumes,
            &KVPreferences::setPrefAutoUnmountVolumes);
        row("force at quit", KVForceAutoUnmountKey, &KVPreferences::prefForceAutoUnmount,
            &KVPreferences::setPrefForceAutoUnmount);
        row("force", KVForceUnmountKey, &KVPreferences::prefForceUnmount, &KVPreferences::setPrefForceUnmount);
        row("mount after creation", KVMountDiskImageAfterCreationKey, &KVPreferences::prefMountDiskImageAfterCreation,
            &KVPreferences::setPrefMountDiskImageAfterCreation);
        row("open after mount", KVOpenFinderAfterMountKey, &KVPreferences::prefOpenFinderAfterMount,
            &KVPreferences::setPrefOpenFinderAfterMount);
        row("recent documents", KVSaveOpenRecentKey, &KVPreferences::prefSaveOpenRecent,
            &KVPreferences::setPrefSaveOpenRecent);
        row("before sleep", KVUnmountBeforeSleepKey, &KVPreferences::prefUnmountBeforeSleep,
            &KVPreferences::setPrefUnmountBeforeSleep);
        row("screen lock", KVUnmountOnScreenLockKey, &KVPreferences::prefUnmountOnScreenLock,
            &KVPreferences::setPrefUnmountOnScreenLock);
        row("idle", KVUnmountWhenIdleKey, &KVPreferences::prefUnmountWhenIdle, &KVPreferences::setPrefUnmountWhenIdle);
        row("panel", KVShowInPanelKey, &KVPreferences::prefShowInPanel, &KVPreferences::setPrefShowInPanel);
        row("notifications", KVDesktopNotificationsKey, &KVPreferences::prefDesktopNotifications,
            &KVPreferences::setPrefDesktopNotifications);
    }

    void eachPreferenceHasItsKey()
    {
        QFETCH(QString, key);
        QFETCH(quintptr, getter);
        QFETCH(quintptr, setter);
        const auto get = reinterpret_cast<bool (*)()>(getter);
        const auto set = reinterpret_cast<void (*)(bool)>(setter);
        KVUserDefaults &defaults = KVUserDefaults::standard();
        for (bool value : {true, false}) {
            set(value);
            QCOMPARE(defaults.boolForKey(key), value);
            QCOMPARE(get(), value);
        }
        // Written elsewhere: read at once, nothing cached.
        defaults.setBool(true, key);
        QVERIFY(get());
        defaults.removeObject(key);
    }
};

QTEST_GUILESS_MAIN(TestKVPreferences)
#include "tst_kvpreferences.moc"
