#include "platform/KVProcessHardening.h"

#include <QTest>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

class TestKVProcessHardening : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Dumpable again at the end: LeakSanitizer's check at exit needs it.
    void cleanupTestCase() { ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0); }

    void noCoreDumpsAndNotDumpable()
    {
        QVERIFY(!KVProcessHardening::apply());
        QCOMPARE(::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0), 0);
        rlimit core{};
        QCOMPARE(::getrlimit(RLIMIT_CORE, &core), 0);
        QCOMPARE(core.rlim_cur, rlim_t(0));
        // The hard limit too, so that nothing later can raise the soft one again.
        QCOMPARE(core.rlim_max, rlim_t(0));
    }

    void aCrashLeavesNoCore()
    {
        // A child that aborts after the hardening: the kernel reports no core.
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            KVProcessHardening::apply();
            ::abort();
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGABRT);
        QVERIFY(!WCOREDUMP(status));
    }
};

QTEST_GUILESS_MAIN(TestKVProcessHardening)
#include "tst_kvprocesshardening.moc"
