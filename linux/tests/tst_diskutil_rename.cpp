// "diskutil rename" for the volume of an attached image, as root on the
// kernel path: the header, the ext4 label and the volume's folder all follow
// the new name, and the failure forms are those of diskutil.

#include "KVImageToolHarness.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace kvlinux;

namespace {

const QByteArray password = QByteArrayLiteral("correct horse");

} // namespace

class KVDiskutilRenameTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString reason = KVImageToolHarness::kernelPathUnavailable(); !reason.isEmpty())
            QSKIP(qPrintable(reason));
    }

    void init()
    {
        h = std::make_unique<KVImageToolHarness>();
        QVERIFY(h->isValid());
        const auto created = h->create(QStringLiteral("Photos"), password, QStringLiteral("Photos"));
        QVERIFY2(created.exitCode == 0, qPrintable(created.output));
        const auto attached = h->attach(h->path(QStringLiteral("Photos.sparseimage")), password);
        QVERIFY2(attached.exitCode == 0, qPrintable(attached.output));
    }

    void cleanup()
    {
        if (h && !h->onlyMountPoint().isEmpty())
            h->detach(h->onlyMountPoint(), true);
        h.reset();
    }

    void renamedVolumeMovesAndKeepsItsNewName()
    {
        const QString oldMountPoint = h->onlyMountPoint();
        QCOMPARE(QFileInfo(oldMountPoint).fileName(), QStringLiteral("Photos"));
        const QString newName = QStringLiteral("Holiday Photos from the Seaside 2024 ✓");
        const auto renamed = h->diskutil({QStringLiteral("rename"), oldMountPoint, newName});
        QCOMPARE(renamed.exitCode, 0);
        QVERIFY2(renamed.output.startsWith(QStringLiteral("Volume on disk")), qPrintable(renamed.output));
        QVERIFY2(renamed.output.trimmed().endsWith(QStringLiteral("s1 renamed to ") + newName), qPrintable(renamed.output));

        // Moved to a folder of the new name beside the old one, which is gone.
        const QString newMountPoint = QDir(h->mountRoot()).filePath(newName);
        QCOMPARE(h->onlyMountPoint(), newMountPoint);
        QVERIFY(!QFileInfo::exists(oldMountPoint));
        QCOMPARE(h->diskutilInfo(newMountPoint).value(QStringLiteral("VolumeName")).toString(), newName);

        // ext4 holds 16 bytes of it, the kernel's mount the same.
        const QString device = h->shell(QStringLiteral("findmnt -n -o SOURCE \"$1\""), {newMountPoint}).output.trimmed();
        QCOMPARE(h->shell(QStringLiteral("PATH=$PATH:/usr/sbin:/sbin e2label \"$1\""), {device}).output.trimmed(), QStringLiteral("Holiday Photos f"));

        // The header keeps the whole name: attached again, the volume has it.
        QCOMPARE(h->detach(newMountPoint).exitCode, 0);
        const auto again = h->attach(h->path(QStringLiteral("Photos.sparseimage")), password);
        QVERIFY2(again.exitCode == 0, qPrintable(again.output));
        QCOMPARE(h->onlyMountPoint(), newMountPoint);
        QCOMPARE(h->diskutilInfo(newMountPoint).value(QStringLiteral("VolumeName")).toString(), newName);
    }

    void refusedNamesAndTargetsLeaveTheVolumeAlone_data()
    {
        QTest::addColumn<QString>("target"); // empty: the volume's mount point
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("answer");
        const QString invalid = QStringLiteral("does not appear to be a valid volume name for its file system");
        QTest::newRow("slash") << "" << "Tax/Returns" << invalid;
        QTest::newRow("empty") << "" << "" << invalid;
        QTest::newRow("blanks") << "" << "   " << invalid;
        QTest::newRow("300 characters") << "" << QString(300, u'x') << invalid;
        QTest::newRow("newline") << "" << "Two\nLines" << invalid;
        QTest::newRow("no volume") << "/nonexistent/Volume" << "Other" << "Could not find disk for /nonexistent/Volume";
        QTest::newRow("a plain folder") << "/tmp" << "Other" << "Could not find disk for /tmp";
    }

    void refusedNamesAndTargetsLeaveTheVolumeAlone()
    {
        QFETCH(QString, target);
        QFETCH(QString, name);
        QFETCH(QString, answer);
        const QString mountPoint = h->onlyMountPoint();
        const auto renamed = h->diskutil({QStringLiteral("rename"), target.isEmpty() ? mountPoint : target, name});
        QCOMPARE(renamed.exitCode, 1);
        QVERIFY2(renamed.output.contains(answer), qPrintable(renamed.output));
        QCOMPARE(h->onlyMountPoint(), mountPoint);
        QCOMPARE(h->diskutilInfo(mountPoint).value(QStringLiteral("VolumeName")).toString(), QStringLiteral("Photos"));
    }

private:
    std::unique_ptr<KVImageToolHarness> h;
};

QTEST_GUILESS_MAIN(KVDiskutilRenameTest)
#include "tst_diskutil_rename.moc"
