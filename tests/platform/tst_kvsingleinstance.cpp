#include "platform/KVSingleInstance.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

// Without a session bus: the lock in the runtime directory decides. flock()
// locks belong to an open file, so two claims in one process contend as two
// processes would.
class TestKVSingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_runtime.isValid());
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/korvelle-test-bus");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime.path()));
    }

    void withoutABusTheLockKeepsASecondInstanceOut()
    {
        auto first = std::make_unique<KVSingleInstance>(QStringLiteral("org.korvelle.Test"));
        QVERIFY(first->claim({}));
        QVERIFY(first->claim({})); // claiming again is harmless
        const QFileInfo lock(m_runtime.filePath(QStringLiteral("org.korvelle.Test.lock")));
        QVERIFY(lock.exists());
        QCOMPARE(lock.permissions() & (QFile::ReadOther | QFile::WriteOther), QFile::Permissions());

        KVSingleInstance second(QStringLiteral("org.korvelle.Test"));
        QTest::ignoreMessage(QtWarningMsg, "Korvelle is already running in this session.");
        QVERIFY(!second.claim({QStringLiteral("/tmp/a.sparseimage")}));
        KVSingleInstance other(QStringLiteral("org.korvelle.Other"));
        QVERIFY(other.claim({}));

        // The lock ends with the instance that held it, as it does with a killed process.
        first.reset();
        KVSingleInstance third(QStringLiteral("org.korvelle.Test"));
        QVERIFY(third.claim({}));
    }

private:
    QTemporaryDir m_runtime;
};

QTEST_GUILESS_MAIN(TestKVSingleInstance)
#include "tst_kvsingleinstance.moc"
