// Reading a LUKS2 header without libcryptsetup (and so without its lock):
// it must say what libcryptsetup says about the same header, fall back to
// the second copy when the first is damaged, and never take a damaged or
// foreign file for a header.

#include "KVLuksHeaderSnapshot.h"
#include "KVLuksImage.h"
#include "KVLuksPartition.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace kvlinux;

namespace {

using Conversion = KVLuksPartition::Conversion;

KVSecureBytes secret(const char *text)
{
    return KVSecureBytes(text, qstrlen(text));
}

const KVKeyDerivation cheap = KVKeyDerivation::cheapForTests();

bool makeFile(const QString &path, qint64 size)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.resize(size);
}

bool overwrite(const QString &path, qint64 offset, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) && file.seek(offset) && file.write(bytes) == bytes.size();
}

void compareWithLibrary(const QString &device, const QString &detachedHeader, Conversion expected)
{
    KVLuksPartition library(device, detachedHeader);
    QVERIFY(!library.load());
    const auto snapshot = KVLuksHeaderSnapshot::read(detachedHeader.isEmpty() ? device : detachedHeader);
    QVERIFY(snapshot);
    QCOMPARE(snapshot->uuid, library.uuid());
    QCOMPARE(snapshot->label, library.label());
    QCOMPARE(library.conversion(), expected);
    QCOMPARE(snapshot->conversion, expected);
}

} // namespace

class KVLuksHeaderSnapshotTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void saysWhatTheLibrarySays();
    void damagedFirstCopyFallsBackToTheSecond_data();
    void damagedFirstCopyFallsBackToTheSecond();
    void foreignFilesAreNoHeaders_data();
    void foreignFilesAreNoHeaders();

private:
    QString plainHeader();

    std::unique_ptr<QTemporaryDir> m_dir;
};

void KVLuksHeaderSnapshotTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

QString KVLuksHeaderSnapshotTest::plainHeader()
{
    const QString path = m_dir->filePath(QStringLiteral("plain"));
    if (!makeFile(path, 20 << 20))
        return {};
    KVLuksImage image(path);
    KVLuksImage::Format format;
    format.volumeName = QStringLiteral("Plain Volume");
    return image.format(format, KVLuksImage::newVolumeKey(64), secret("pw"), cheap) ? QString() : path;
}

// A header at rest, one marked for encryption and one (in a file of its own)
// marked for decryption: the three states a listing tells apart.
void KVLuksHeaderSnapshotTest::saysWhatTheLibrarySays()
{
    const QString plain = plainHeader();
    QVERIFY(!plain.isEmpty());
    compareWithLibrary(plain, QString(), Conversion::None);

    const QString partition = m_dir->filePath(QStringLiteral("partition"));
    QVERIFY(makeFile(partition, 64 << 20));
    {
        KVLuksPartition header(partition);
        QVERIFY(!header.beginEncryption(secret("pw"), 4096, QStringLiteral("Data"), cheap,
                                        m_dir->filePath(QStringLiteral("scratch"))));
    }
    compareWithLibrary(partition, QString(), Conversion::Encrypting);

    const QString headerFile = m_dir->filePath(QStringLiteral("detached"));
    {
        KVLuksPartition header(plain);
        QVERIFY(!header.load());
        QVERIFY(!header.beginDecryption(secret("pw"), headerFile));
    }
    compareWithLibrary(plain, headerFile, Conversion::Decrypting);
}

void KVLuksHeaderSnapshotTest::damagedFirstCopyFallsBackToTheSecond_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("torn metadata") << qint64(4096 + 10) << QByteArray(64, 'x');
    QTest::newRow("changed label") << qint64(24) << QByteArray("Forged");
    QTest::newRow("binary header gone") << qint64(0) << QByteArray(4096, '\0');
}

void KVLuksHeaderSnapshotTest::damagedFirstCopyFallsBackToTheSecond()
{
    QFETCH(qint64, offset);
    QFETCH(QByteArray, bytes);
    const QString path = plainHeader();
    QVERIFY(!path.isEmpty());
    const auto whole = KVLuksHeaderSnapshot::read(path);
    QVERIFY(whole);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const qint64 secondCopy = qFromBigEndian<qint64>(file.read(16).constData() + 8);
    QVERIFY(overwrite(path, offset, bytes));
    const auto fallback = KVLuksHeaderSnapshot::read(path);
    QVERIFY(fallback);
    QCOMPARE(fallback->uuid, whole->uuid);
    QCOMPARE(fallback->label, whole->label);

    // With the second copy damaged as well, there is no header.
    QVERIFY(overwrite(path, secondCopy + 4096 + 10, QByteArray(64, 'x')));
    QVERIFY(!KVLuksHeaderSnapshot::read(path));
}

void KVLuksHeaderSnapshotTest::foreignFilesAreNoHeaders_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("magic only") << QByteArrayLiteral("LUKS\xba\xbe\x00\x02");
    QByteArray huge(4096, '\0');
    huge.replace(0, 8, QByteArrayLiteral("LUKS\xba\xbe\x00\x02"));
    huge.replace(8, 8, QByteArray("\x7f\xff\xff\xff\xff\xff\xff\xff", 8));
    QTest::newRow("absurd size") << huge;
    QByteArray luks1(4096, '\0');
    luks1.replace(0, 8, QByteArrayLiteral("LUKS\xba\xbe\x00\x01"));
    QTest::newRow("LUKS1") << luks1;
    QTest::newRow("zeros") << QByteArray(1 << 20, '\0');
}

void KVLuksHeaderSnapshotTest::foreignFilesAreNoHeaders()
{
    QFETCH(QByteArray, content);
    const QString path = m_dir->filePath(QStringLiteral("foreign"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    QVERIFY(!KVLuksHeaderSnapshot::read(path));
    QVERIFY(!KVLuksHeaderSnapshot::read(m_dir->filePath(QStringLiteral("missing"))));
}

QTEST_GUILESS_MAIN(KVLuksHeaderSnapshotTest)
#include "tst_kvluksheadersnapshot.moc"
