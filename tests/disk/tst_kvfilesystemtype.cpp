#include "disk/KVMountedVolumeLookup.h"
#include "platform/KVFileSystemType.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

// The disk engine refreshes its list only after HFS+ volumes are mounted, and
// asks for them by the name macOS uses.
class TestKVFileSystemType : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        QTest::addColumn<qint64>("magic");
        QTest::addColumn<QString>("mountType");
        QTest::addColumn<QString>("name");
        QTest::newRow("HFS+") << qint64(0x482b) << "hfsplus" << "hfs";
        QTest::newRow("case-sensitive HFS+") << qint64(0x4858) << "hfsplus" << "hfs";
        QTest::newRow("HFS+ through another driver") << qint64(0x65735546) << "hfsplus" << "hfs";
        QTest::newRow("ext4, as the Linux disk tools present it") << qint64(0xEF53) << "ext4" << "hfs";
        QTest::newRow("ext3 on the ext4 driver") << qint64(0xEF53) << "ext3" << "ext3";
        QTest::newRow("FUSE") << qint64(0x65735546) << "fuse.imagefs" << "fuse.imagefs";
    }

    void names()
    {
        QFETCH(qint64, magic);
        QFETCH(QString, mountType);
        QFETCH(QString, name);
        QCOMPARE(KVFileSystemType::name(magic, mountType), name);
    }

    void ofPath()
    {
        QTemporaryDir folder;
        const std::optional<QString> type = KVFileSystemType::ofPath(folder.path());
        QVERIFY(type);
        QVERIFY(!type->isEmpty());
        QCOMPARE(KVFileSystemType::ofPath(folder.filePath(QStringLiteral("missing"))), std::nullopt);
        QCOMPARE(KVFileSystemType::ofPath(QString()), std::nullopt);
    }

    void theSystemsLookup()
    {
        const KVMountedVolumeLookup lookup = KVMountedVolumeLookup::system();
        QVERIFY(lookup.mountedVolumePaths().contains(QStringLiteral("/")));
        QVERIFY(lookup.fileSystemType(QStringLiteral("/")));
    }
};

QTEST_GUILESS_MAIN(TestKVFileSystemType)
#include "tst_kvfilesystemtype.moc"
