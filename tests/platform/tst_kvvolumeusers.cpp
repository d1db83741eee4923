// Finding the processes that keep a volume busy, on a /proc of our own making
// (links into a folder that stands for the volume, or elsewhere) and on the
// real one.
#include "platform/KVVolumeUsers.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A process of the made-up /proc: its comm, and its links by name ("cwd",
// "fd/3", ...) with their targets; "maps" lines are written as given.
struct FakeProcess
{
    QString pid;
    QByteArray comm;
    QList<QPair<QString, QString>> links;
    QByteArray maps;
};

void make(const QDir &proc, const FakeProcess &process)
{
    const QDir dir(proc.filePath(process.pid));
    QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("fd"))));
    QFile comm(dir.filePath(QStringLiteral("comm")));
    QVERIFY(comm.open(QIODevice::WriteOnly));
    comm.write(process.comm);
    comm.close();
    for (const auto &[name, target] : process.links)
        QVERIFY(QFile::link(target, dir.filePath(name)));
    if (!process.maps.isEmpty()) {
        QFile maps(dir.filePath(QStringLiteral("maps")));
        QVERIFY(maps.open(QIODevice::WriteOnly));
        maps.write(process.maps);
    }
}

} // namespace

class TestKVVolumeUsers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatLinksOntoTheVolume()
    {
        // The volume is the temporary folder's file system; /proc itself
        // always is another one.
        QTemporaryDir volume;
        QTemporaryDir procRoot(QDir::tempPath() + QStringLiteral("/fake-proc-XXXXXX"));
        QVERIFY(QDir(volume.path()).mkpath(QStringLiteral("Documents")));
        QFile open(volume.filePath(QStringLiteral("Documents/letter.txt")));
        QVERIFY(open.open(QIODevice::WriteOnly));
        open.close();
        const QDir proc(procRoot.path());
        const QString inside = volume.filePath(QStringLiteral("Documents"));
        const QString elsewhere = QStringLiteral("/proc");
        make(proc, {QStringLiteral("4242"), "bash\n", {{QStringLiteral("cwd"), inside}}, {}});
        make(proc, {QStringLiteral("17"), "editor\n",
                    {{QStringLiteral("cwd"), elsewhere}, {QStringLiteral("fd/3"), open.fileName()}}, {}});
        make(proc, {QStringLiteral("900"), "player\n", {{QStringLiteral("cwd"), elsewhere}},
                    "7f00-7f10 r-xp 00000000 08:01 12 /usr/lib/libc.so.6\n"
                    "7f10-7f20 r--p 00000000 00:2a 99 " + QFile::encodeName(open.fileName()) + "\n"});
        make(proc, {QStringLiteral("31"), "idle\n", {{QStringLiteral("cwd"), elsewhere}}, {}});
        // Not processes, or gone: no comm, dangling links.
        make(proc, {QStringLiteral("self"), "self\n", {{QStringLiteral("cwd"), inside}}, {}});
        make(proc, {QStringLiteral("55"), "gone\n", {{QStringLiteral("cwd"), volume.filePath(QStringLiteral("nothing"))}}, {}});
        // A name with a control character stays one line.
        make(proc, {QStringLiteral("8"), "odd\tname\n", {{QStringLiteral("root"), inside}}, {}});

        const QList<KVVolumeUsers::Process> found = KVVolumeUsers::processesUsing(volume.path(), proc.path());
        const QList<KVVolumeUsers::Process> expected{
            {8, QStringLiteral("odd name")}, {17, QStringLiteral("editor")},
            {900, QStringLiteral("player")}, {4242, QStringLiteral("bash")}};
        QCOMPARE(found, expected);
        QCOMPARE(KVVolumeUsers::describe(found),
                 QStringLiteral("odd name (PID 8)\neditor (PID 17)\nplayer (PID 900)\nbash (PID 4242)"));
    }

    void nothingForAMissingMountPoint()
    {
        QCOMPARE(KVVolumeUsers::processesUsing(QStringLiteral("/nonexistent/volume")), {});
        QCOMPARE(KVVolumeUsers::processesUsing(QString()), {});
        QCOMPARE(KVVolumeUsers::describe({}), QString());
    }

    // The real /proc: a child sitting in a folder of another file system.
    void findsAChildOnTheRealSystem()
    {
        QTemporaryDir volume(QStringLiteral("/dev/shm/korvelle-users-XXXXXX"));
        if (!volume.isValid())
            QSKIP("no /dev/shm here");
        QProcess child;
        child.setWorkingDirectory(volume.path());
        child.start(QStringLiteral("sleep"), {QStringLiteral("30")});
        QVERIFY(child.waitForStarted());
        // Started may be reported before the child has changed its folder.
        const KVVolumeUsers::Process sleeper{pid_t(child.processId()), QStringLiteral("sleep")};
        QTRY_VERIFY(KVVolumeUsers::processesUsing(volume.path()).contains(sleeper));
        child.kill();
        child.waitForFinished();
        QTRY_VERIFY(!KVVolumeUsers::processesUsing(volume.path()).contains(sleeper));
    }
};

QTEST_GUILESS_MAIN(TestKVVolumeUsers)
#include "tst_kvvolumeusers.moc"
