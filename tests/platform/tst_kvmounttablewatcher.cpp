#include "platform/KVMountTable.h"
#include "platform/KVMountTableWatcher.h"
#include "platform/KVWorkspaceNotifications.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <unistd.h>

namespace {

// A line of /proc/self/mountinfo as the kernel writes it.
QByteArray line(int id, const char *device, const char *mountPoint)
{
    return QByteArray::number(id) + " 27 " + device + " / " + mountPoint
         + " rw,relatime shared:1 - ext4 /dev/loop0 rw\n";
}

QByteArray table(std::initializer_list<QByteArray> lines)
{
    QByteArray joined;
    for (const QByteArray &l : lines)
        joined += l;
    return joined;
}

int run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    process.waitForFinished(60000);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool received(const QSignalSpy &spy, const QVariantMap &userInfo)
{
    for (const QList<QVariant> &arguments : spy) {
        if (arguments.first().toMap() == userInfo)
            return true;
    }
    return false;
}

// Mounts made by the test, undone even when it fails half-way.
struct Mounts
{
    ~Mounts()
    {
        for (auto it = points.crbegin(); it != points.crend(); ++it)
            run(QStringLiteral("umount"), {QStringLiteral("-l"), *it});
    }
    QStringList points;
};

} // namespace

class TestKVMountTableWatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pathsAreUnescaped()
    {
        const KVMountTable parsed = KVMountTable::parse(
            table({line(22, "0:21", "/proc"), line(40, "7:0", "/media/My\\040Disk\\011(tab)\\134x"),
                   line(41, "7:1", "/media/Tageb\xc3\xbc" "cher\\012"), "garbage\n", "\n", line(42, "7:2", "/media/a\\04")}));
        QCOMPARE(parsed.mounts().size(), 4);
        QCOMPARE(parsed.mounts().at(0).id, 22);
        QCOMPARE(parsed.mounts().at(0).device, QByteArray("0:21"));
        QCOMPARE(parsed.mounts().at(1).mountPoint, QStringLiteral("/media/My Disk\t(tab)\\x"));
        QCOMPARE(parsed.mounts().at(2).mountPoint, QString::fromUtf8("/media/Tagebücher\n"));
        // An escape cut short is taken as it stands.
        QCOMPARE(parsed.mounts().at(3).mountPoint, QStringLiteral("/media/a\\04"));
    }

    void changes_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QList<KVMountChange>>("changes");
        const QByteArray root = line(1, "8:1", "/");
        QTest::newRow("nothing") << root << root << QList<KVMountChange>{};
        QTest::newRow("mounted") << root << table({root, line(40, "7:0", "/mnt/a")}) << QList<KVMountChange>{{KVMountChange::Mounted, "/mnt/a", {}}};
        QTest::newRow("unmounted") << table({root, line(40, "7:0", "/mnt/a")}) << root << QList<KVMountChange>{{KVMountChange::Unmounted, "/mnt/a", {}}};
        QTest::newRow("moved") << table({root, line(40, "7:0", "/mnt/a")}) << table({root, line(40, "7:0", "/mnt/b\\040c")})
                               << QList<KVMountChange>{{KVMountChange::Moved, "/mnt/b c", "/mnt/a"}};
        QTest::newRow("ID reused by another device") << table({root, line(40, "7:0", "/mnt/a")}) << table({root, line(40, "7:1", "/mnt/b")})
                                                     << QList<KVMountChange>{{KVMountChange::Unmounted, "/mnt/a", {}},
                                                                             {KVMountChange::Mounted, "/mnt/b", {}}};
        QTest::newRow("remounted at the same place") << table({root, line(40, "7:0", "/mnt/a")}) << table({root, line(41, "7:0", "/mnt/a")})
                                                     << QList<KVMountChange>{{KVMountChange::Unmounted, "/mnt/a", {}},
                                                                             {KVMountChange::Mounted, "/mnt/a", {}}};
        QTest::newRow("unmounts come first") << table({root, line(40, "7:0", "/mnt/a"), line(41, "7:1", "/mnt/b")})
                                             << table({root, line(42, "7:2", "/mnt/c"), line(41, "7:1", "/mnt/d")})
                                             << QList<KVMountChange>{{KVMountChange::Unmounted, "/mnt/a", {}},
                                                                     {KVMountChange::Mounted, "/mnt/c", {}},
                                                                     {KVMountChange::Moved, "/mnt/d", "/mnt/b"}};
    }

    void changes()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QFETCH(QList<KVMountChange>, changes);
        QCOMPARE(KVMountTable::parse(after).changesSince(KVMountTable::parse(before)), changes);
    }

    // Mounts a small ext4 image for real, moves the mount and unmounts it.
    void followsRealMounts()
    {
        if (geteuid() != 0)
            QSKIP("Mounting needs root: run the tests as root to watch real mounts.");
        const QString mkfs = QStandardPaths::findExecutable(QStringLiteral("mkfs.ext4"), {"/usr/sbin", "/sbin"});
        if (mkfs.isEmpty())
            QSKIP("mkfs.ext4 (e2fsprogs) is not installed.");

        QTemporaryDir folder;
        Mounts mounts;
        const QString image = folder.filePath(QStringLiteral("volume.img"));
        const QString first = folder.filePath(QStringLiteral("first mount"));
        const QString moved = folder.filePath(QString::fromUtf8("moved hère"));
        QVERIFY(QDir(folder.path()).mkpath(first) && QDir(folder.path()).mkpath(moved));
        {
            QFile file(image);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(8 * 1024 * 1024));
        }
        QCOMPARE(run(mkfs, {QStringLiteral("-q"), QStringLiteral("-F"), image}), 0);
        // A mount beneath a shared one cannot be moved: give the folder a
        // private mount of its own.
        QCOMPARE(run(QStringLiteral("mount"), {QStringLiteral("--bind"), folder.path(), folder.path()}), 0);
        mounts.points << folder.path();
        QCOMPARE(run(QStringLiteral("mount"), {QStringLiteral("--make-private"), folder.path()}), 0);

        KVWorkspaceNotifications notifications;
        new KVMountTableWatcher(&notifications);
        QSignalSpy mounted(&notifications, &KVWorkspaceNotifications::didMount);
        QSignalSpy renamed(&notifications, &KVWorkspaceNotifications::didRenameVolume);
        QSignalSpy unmounted(&notifications, &KVWorkspaceNotifications::didUnmount);

        if (run(QStringLiteral("mount"), {QStringLiteral("-o"), QStringLiteral("loop"), image, first}) != 0)
            QSKIP("Loop devices are not available here.");
        mounts.points << first;
        QTRY_VERIFY_WITH_TIMEOUT(received(mounted, {{NSDevicePath, first}}), 20000);

        QCOMPARE(run(QStringLiteral("mount"), {QStringLiteral("--move"), first, moved}), 0);
        mounts.points.last() = moved;
        QTRY_VERIFY_WITH_TIMEOUT(received(renamed, {{NSWorkspaceVolumeOldURLKey, QUrl::fromLocalFile(first)},
                                                    {NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(moved)},
                                                    {NSWorkspaceVolumeLocalizedNameKey, QString::fromUtf8("moved hère")}}),
                                 20000);

        QCOMPARE(run(QStringLiteral("umount"), {moved}), 0);
        mounts.points.removeLast();
        QTRY_VERIFY_WITH_TIMEOUT(received(unmounted, {{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(moved)}}), 20000);
        // A move is not an unmount and a mount.
        QVERIFY(!received(unmounted, {{NSWorkspaceVolumeURLKey, QUrl::fromLocalFile(first)}}));
        QVERIFY(!received(mounted, {{NSDevicePath, moved}}));
    }
};

QTEST_GUILESS_MAIN(TestKVMountTableWatcher)
#include "tst_kvmounttablewatcher.moc"
