// The data path of an ordinary user: imagefs mounted through fusermount3 and
// the volume served by fuse2fs, no loop devices, no root. The tools run as
// the system's unprivileged account "nobody".

#include "KVImageTestFiles.h"
#include "KVImageToolHarness.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <memory>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kvlinux;

using namespace KVImageTestFiles;

namespace {

const QByteArray password = QByteArrayLiteral("ordinary");

bool isSetUidRoot(const QString &program)
{
    struct stat st;
    return !program.isEmpty() && stat(QFile::encodeName(program).constData(), &st) == 0
        && st.st_uid == 0 && (st.st_mode & S_ISUID);
}

} // namespace

class KVHdiutilUnprivilegedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void userCreatesAttachesAndDetaches();
    void userVolumeDetachesOnlyWhenForced();
    void userImageGrows();

private:
    QString sha256As(const QString &file) const;

    uid_t m_user = 0;
    gid_t m_group = 0;
    mode_t m_fuseMode = 0;
    std::unique_ptr<KVImageToolHarness> h;
};

void KVHdiutilUnprivilegedTest::initTestCase()
{
    if (geteuid() != 0)
        QSKIP("Running the tools as another user needs root");
    const passwd *nobody = getpwnam("nobody");
    if (!nobody || nobody->pw_uid == 0)
        QSKIP("This machine has no unprivileged account \"nobody\" to run the tools as");
    m_user = nobody->pw_uid;
    m_group = nobody->pw_gid;
    if (QStandardPaths::findExecutable(QStringLiteral("setpriv")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("fuse2fs")).isEmpty()
        || !isSetUidRoot(QStandardPaths::findExecutable(QStringLiteral("fusermount3"))))
        QSKIP("The unprivileged path needs setpriv, fuse2fs and a set-uid fusermount3");
    struct stat fuse;
    if (stat("/dev/fuse", &fuse) != 0)
        QSKIP("This machine has no /dev/fuse");
    // Every desktop opens /dev/fuse to all users (udev sets mode 0666);
    // machines without udev may not. Open it for the test, as udev would.
    m_fuseMode = fuse.st_mode & 07777;
    if ((m_fuseMode & 0666) != 0666)
        QCOMPARE(chmod("/dev/fuse", 0666), 0);
}

void KVHdiutilUnprivilegedTest::cleanupTestCase()
{
    if (m_fuseMode != 0 && (m_fuseMode & 0666) != 0666)
        chmod("/dev/fuse", m_fuseMode);
}

void KVHdiutilUnprivilegedTest::init()
{
    h = std::make_unique<KVImageToolHarness>(m_user, m_group);
    QVERIFY(h->isValid());
}

void KVHdiutilUnprivilegedTest::cleanup()
{
    h.reset();
}

// A FUSE mount is open to the user who mounted it only, root included.
QString KVHdiutilUnprivilegedTest::sha256As(const QString &file) const
{
    return h->shell(QStringLiteral("sha256sum < \"$1\""), {file}).output.section(QLatin1Char(' '), 0, 0);
}

void KVHdiutilUnprivilegedTest::userCreatesAttachesAndDetaches()
{
    const auto created = h->create(QStringLiteral("Mine"), password, QStringLiteral("Meine Daten"));
    QVERIFY2(created.exitCode == 0, qPrintable(created.output));
    const QString image = h->path(QStringLiteral("Mine.sparseimage"));
    QCOMPARE(QFileInfo(image).ownerId(), m_user);

    QVERIFY(h->attach(image, "wrong").has(QStringLiteral("DIHLDiskImageAttach() returned 80")));
    const auto attached = h->attach(image, password);
    QVERIFY2(attached.exitCode == 0, qPrintable(attached.output));
    const QString mountPoint = h->onlyMountPoint();
    QCOMPARE(mountPoint, h->mountRoot() + QStringLiteral("/Meine Daten"));
    const QVariantMap volume = h->diskutilInfo(mountPoint);
    QCOMPARE(volume.value(QStringLiteral("VolumeName")).toString(), QStringLiteral("Meine Daten"));
    QCOMPARE(volume.value(QStringLiteral("Writable")).toBool(), true);
    QVERIFY(volume.value(QStringLiteral("TotalSize")).toLongLong() > 50'000'000);

    const auto written = h->shell(QStringLiteral("head -c 3000000 /dev/urandom > \"$1/random.bin\" && sync"),
                                  {mountPoint});
    QCOMPARE(written.exitCode, 0);
    const QString sum = sha256As(mountPoint + QStringLiteral("/random.bin"));
    QCOMPARE(sum.size(), 64);
    // The daemon of an ordinary user keeps its key schedules in locked memory
    // too (its arena: 64 KiB), while it serves the volume.
    const qint64 daemon = onlyImage(h->info()).value(QStringLiteral("hdid-pid")).toLongLong();
    QVERIFY(daemon > 0);
    QFile status(QStringLiteral("/proc/%1/status").arg(daemon));
    QVERIFY(status.open(QIODevice::ReadOnly));
    const QString locked = QString::fromLatin1(status.readAll()).section(QStringLiteral("VmLck:"), 1).section(QLatin1Char('\n'), 0, 0);
    QVERIFY2(locked.trimmed().section(QLatin1Char(' '), 0, 0).toLongLong() >= 64, qPrintable(locked));

    const auto detached = h->detach(wholeDisk(onlyImage(h->info())));
    QVERIFY2(detached.has(QStringLiteral("unmounted.")) && detached.has(QStringLiteral("ejected.")),
             qPrintable(detached.output));
    QCOMPARE(h->leftovers(), QStringList());

    QCOMPARE(h->attach(image, password, {QStringLiteral("-readonly")}).exitCode, 0);
    const QString again = h->onlyMountPoint();
    QCOMPARE(sha256As(again + QStringLiteral("/random.bin")), sum);
    QVERIFY(h->shell(QStringLiteral("echo no > \"$1/new.txt\""), {again}).exitCode != 0);
    QCOMPARE(h->diskutilInfo(again).value(QStringLiteral("Writable")).toBool(), false);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);

    // An image the user may not write attaches read-only by itself.
    QVERIFY(QFile::setPermissions(image, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    QCOMPARE(h->attach(image, password).exitCode, 0);
    QCOMPARE(h->diskutilInfo(h->onlyMountPoint()).value(QStringLiteral("Writable")).toBool(), false);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
    QCOMPARE(h->leftovers(), QStringList());
}

void KVHdiutilUnprivilegedTest::userVolumeDetachesOnlyWhenForced()
{
    QCOMPARE(h->create(QStringLiteral("Held"), password, QStringLiteral("Held")).exitCode, 0);
    QCOMPARE(h->attach(h->path(QStringLiteral("Held.sparseimage")), password).exitCode, 0);
    const QString disk = wholeDisk(onlyImage(h->info()));

    // A process of the user sits in the volume.
    QProcess holder;
    holder.setEnvironment(h->environment());
    const QStringList sitIn = h->commandAsUser(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("cd \"$1\" && echo in && exec sleep 60"), QStringLiteral("sh"),
         h->onlyMountPoint()});
    holder.start(sitIn.first(), sitIn.mid(1));
    QVERIFY(holder.waitForReadyRead(10000));

    const auto refused = h->detach(disk);
    QVERIFY2(refused.has(QStringLiteral("hdiutil: couldn't unmount")), qPrintable(refused.output));
    QVERIFY(!h->onlyMountPoint().isEmpty());
    const auto forced = h->detach(disk, true);
    QVERIFY2(forced.has(QStringLiteral("unmounted.")) && forced.has(QStringLiteral("ejected.")), qPrintable(forced.output));
    // The sitting process has lost the volume: fuse2fs and the daemon are
    // gone, nothing is listed, and the image can be attached again at once.
    QCOMPARE(h->leftovers(), QStringList());
    QVERIFY(!h->info().contains(QStringLiteral("images")));
    QCOMPARE(h->attach(h->path(QStringLiteral("Held.sparseimage")), password).exitCode, 0);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);

    holder.kill();
    holder.waitForFinished();
    QTRY_COMPARE_WITH_TIMEOUT(h->leftovers(), QStringList(), 20000);
}

void KVHdiutilUnprivilegedTest::userImageGrows()
{
    QCOMPARE(h->create(QStringLiteral("Grow"), password, QStringLiteral("Grow")).exitCode, 0);
    const QString image = h->path(QStringLiteral("Grow.sparseimage"));
    const auto grown = h->hdiutil({QStringLiteral("resize"), QStringLiteral("-size"), QStringLiteral("-stdinpass"),
                                   QStringLiteral("96m"), image},
                                  password);
    QVERIFY2(grown.exitCode == 0, qPrintable(grown.output));
    QCOMPARE(QFileInfo(image).size(), qint64(16 + 96) << 20);
    QCOMPARE(h->attach(image, password).exitCode, 0);
    QVERIFY(h->diskutilInfo(h->onlyMountPoint()).value(QStringLiteral("TotalSize")).toLongLong() > 85'000'000);
    QCOMPARE(h->detach(wholeDisk(onlyImage(h->info()))).exitCode, 0);
}

QTEST_GUILESS_MAIN(KVHdiutilUnprivilegedTest)
#include "tst_hdiutil_unprivileged.moc"
