// LUKS2 header work on a plain file, as an ordinary process: no root, no
// device-mapper. Keyslots use the cheap key derivation of the test build.

#include "KVLuksImage.h"
#include "KVSecureBytes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>

#include <libcryptsetup.h>

using namespace kvlinux;

namespace {

KVSecureBytes secret(const char *text)
{
    return KVSecureBytes(text, qstrlen(text));
}

const KVKeyDerivation cheap = KVKeyDerivation::cheapForTests();

} // namespace

class KVLuksImageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void formattedImageUnlocksWithItsPassword();
    void wrongPasswordIsAnAuthenticationError();
    void changedPasswordKeepsTheVolumeKey();
    void erasedKeysOpenWithNothing();
    void fullVolumeNameSurvivesTheShortLabel();
    void renamedVolumeKeepsOneNameAndItsKey();
    void namesFromTheHeaderAreOneSafeLine_data();
    void namesFromTheHeaderAreOneSafeLine();
    void labelThatIsNotUtf8IsShownReplaced();
    void filesThatAreNoImagesAreRecognisedAsSuch();
    void imageCutShortOfItsPayloadIsNotRecognised();
    void damagedKeyslotIsNotAWrongPassword();

private:
    QString makeImage(int keySize = 64, const QString &name = QStringLiteral("Data"));

    std::unique_ptr<QTemporaryDir> m_dir;
    KVSecureBytes m_volumeKey;
};

void KVLuksImageTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

QString KVLuksImageTest::makeImage(int keySize, const QString &name)
{
    const QString path = m_dir->filePath(QStringLiteral("image"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(20 << 20))
        return {};
    file.close();
    m_volumeKey = KVLuksImage::newVolumeKey(keySize);
    KVLuksImage image(path);
    KVLuksImage::Format format;
    format.volumeKeySize = keySize;
    format.volumeName = name;
    return image.format(format, m_volumeKey, secret("pw"), cheap) ? QString() : path;
}

void KVLuksImageTest::formattedImageUnlocksWithItsPassword()
{
    for (int keySize : {32, 64}) {
        const QString path = makeImage(keySize);
        QVERIFY(!path.isEmpty());
        KVLuksImage image(path);
        QVERIFY(!image.load());
        const KVImageGeometry geometry = image.geometry();
        QCOMPARE(geometry.dataOffset, quint64(16 << 20));
        QCOMPARE(geometry.sectorSize, quint32(4096));
        QCOMPARE(geometry.volumeKeySize, keySize);
        KVSecureBytes key;
        QVERIFY(!image.unlock(secret("pw"), key));
        QCOMPARE(key.view(), m_volumeKey.view());
    }
}

void KVLuksImageTest::wrongPasswordIsAnAuthenticationError()
{
    KVLuksImage image(makeImage());
    QVERIFY(!image.load());
    KVSecureBytes key;
    for (const char *attempt : {"PW", "pw ", ""}) {
        const auto error = image.unlock(secret(attempt), key);
        QVERIFY(error);
        QCOMPARE(error->code(), int(KVImageError::Authentication));
        QCOMPARE(error->reason(), QStringLiteral("Authentication error"));
    }
    QVERIFY(key.isEmpty());
}

void KVLuksImageTest::changedPasswordKeepsTheVolumeKey()
{
    const QString path = makeImage();
    {
        KVLuksImage image(path);
        QVERIFY(!image.load());
        QCOMPARE(image.changePassword(secret("nope"), secret("new"), cheap)->code(),
                 int(KVImageError::Authentication));
        QVERIFY(!image.changePassword(secret("pw"), secret("new"), cheap));
    }
    KVLuksImage reloaded(path);
    QVERIFY(!reloaded.load());
    KVSecureBytes key;
    QVERIFY(reloaded.unlock(secret("pw"), key));
    QVERIFY(!reloaded.unlock(secret("new"), key));
    QCOMPARE(key.view(), m_volumeKey.view());
}

void KVLuksImageTest::erasedKeysOpenWithNothing()
{
    const QString path = makeImage();
    {
        KVLuksImage image(path);
        QVERIFY(!image.load());
        QVERIFY(!image.eraseKeys());
    }
    KVLuksImage reloaded(path);
    QVERIFY(!reloaded.load());
    KVSecureBytes key;
    for (const char *attempt : {"pw", ""})
        QCOMPARE(reloaded.unlock(secret(attempt), key)->code(), int(KVImageError::Authentication));
}

void KVLuksImageTest::fullVolumeNameSurvivesTheShortLabel()
{
    const QString name = QStringLiteral("Steuerunterlagen der Familie Müller-Lüdenscheidt 2019–2024 🗂");
    KVLuksImage image(makeImage(64, name));
    QVERIFY(!image.load());
    QCOMPARE(image.volumeName(), name);
    QVERIFY(!image.uuid().isEmpty());
}

// Renaming replaces the name (never adds a second one) and leaves the
// keyslots alone; a header without a name gets one.
void KVLuksImageTest::renamedVolumeKeepsOneNameAndItsKey()
{
    for (const QString &original : {QStringLiteral("Photos"), QString()}) {
        const QString path = makeImage(64, original);
        const QString longName = QStringLiteral("Holiday Photos from the Seaside, Summer of 2024 and the Autumn After ✓");
        for (const QString &name : {QStringLiteral("Holiday"), longName}) {
            KVLuksImage image(path);
            QVERIFY(!image.load());
            QVERIFY(!image.setVolumeName(name));
        }
        KVLuksImage reread(path);
        QVERIFY(!reread.load());
        QCOMPARE(reread.volumeName(), longName);
        KVSecureBytes key;
        QVERIFY(!reread.unlock(secret("pw"), key));
        QCOMPARE(key.size(), m_volumeKey.size());
        QVERIFY(std::memcmp(key.data(), m_volumeKey.data(), key.size()) == 0);
        QFile::remove(path);
    }
}

void KVLuksImageTest::filesThatAreNoImagesAreRecognisedAsSuch()
{
    KVLuksImage missing(m_dir->filePath(QStringLiteral("absent")));
    QCOMPARE(missing.load()->code(), int(KVImageError::NoSuchFile));

    KVLuksImage folder(m_dir->path());
    QCOMPARE(folder.load()->code(), int(KVImageError::ImageNotRecognized));

    QFile junk(m_dir->filePath(QStringLiteral("junk")));
    QVERIFY(junk.open(QIODevice::WriteOnly) && junk.write(QByteArray(1 << 16, 'j')) > 0);
    junk.close();
    KVLuksImage notAnImage(junk.fileName());
    const auto error = notAnImage.load();
    QCOMPARE(error->code(), int(KVImageError::ImageNotRecognized));
    QCOMPARE(error->reason(), QStringLiteral("image not recognized"));
}

void KVLuksImageTest::imageCutShortOfItsPayloadIsNotRecognised()
{
    const QString path = makeImage();
    QVERIFY(!path.isEmpty());
    QVERIFY(QFile::resize(path, 12 << 20)); // the header says the payload starts at 16 MiB
    KVLuksImage image(path);
    const auto refused = image.load();
    QVERIFY(refused);
    QCOMPARE(refused->code(), int(KVImageError::ImageNotRecognized));
}

void KVLuksImageTest::damagedKeyslotIsNotAWrongPassword()
{
    const QString path = makeImage();
    QVERIFY(!path.isEmpty());
    uint64_t offset = 0;
    uint64_t length = 0;
    {
        crypt_device *cd = nullptr;
        QCOMPARE(crypt_init(&cd, QFile::encodeName(path).constData()), 0);
        QCOMPARE(crypt_load(cd, CRYPT_LUKS2, nullptr), 0);
        QCOMPARE(crypt_keyslot_area(cd, 0, &offset, &length), 0);
        crypt_free(cd);
    }
    // A block of the key material lost, as a hole in a sparse file reads.
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(qint64(offset + 8192)));
    QCOMPARE(file.write(QByteArray(4096, '\0')), 4096);
    file.close();

    KVLuksImage image(path);
    QVERIFY(!image.load());
    KVSecureBytes key;
    for (const char *attempt : {"pw", "wrong"}) {
        const auto refused = image.unlock(secret(attempt), key);
        QVERIFY(refused);
        QCOMPARE(refused->code(), int(KVImageError::Damaged));
        QVERIFY(refused->reason().contains(QLatin1String("damaged")));
    }
    const auto unchanged = image.changePassword(secret("pw"), secret("new"), cheap);
    QVERIFY(unchanged);
    QCOMPARE(unchanged->code(), int(KVImageError::Damaged));
}

// A crafted header can say anything in its name token; what the tools keep
// and print is one line of text without NUL, of a bounded length.
void KVLuksImageTest::namesFromTheHeaderAreOneSafeLine_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("NUL ends the name") << QString::fromUtf8("Evil\0hidden", 11) << QStringLiteral("Evil");
    QTest::newRow("newlines and tabs") << QStringLiteral("Two\nLines\tTab\r") << QStringLiteral("Two Lines Tab ");
    QTest::newRow("4,000 characters") << QString(4000, QLatin1Char('x')) << QString(255, QLatin1Char('x'));
    QTest::newRow("no character cut in two")
        << QString(254, QLatin1Char('x')) + QStringLiteral("\U0001F600") << QString(254, QLatin1Char('x'));
    QTest::newRow("override dropped") << QStringLiteral("abc\u202Egnp.exe") << QStringLiteral("abcgnp.exe");
    QTest::newRow("isolate dropped") << QStringLiteral("\u2067Name\u2069") << QStringLiteral("Name");
    QTest::newRow("right-to-left mark kept") << QStringLiteral("\u200F\u05E9\u05DC\u05D5\u05DD")
                                             << QStringLiteral("\u200F\u05E9\u05DC\u05D5\u05DD");
    QTest::newRow("lone surrogate") << QString(QChar(0xD800)) + QStringLiteral("x") << QStringLiteral("\uFFFDx");
    QTest::newRow("escape sequence") << QStringLiteral("\x1B[31mRed") << QStringLiteral(" [31mRed");
}

void KVLuksImageTest::namesFromTheHeaderAreOneSafeLine()
{
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    const QString path = makeImage(64, stored);
    QVERIFY(!path.isEmpty());
    KVLuksImage image(path);
    QVERIFY(!image.load());
    QCOMPARE(image.volumeName(), shown);
}

void KVLuksImageTest::labelThatIsNotUtf8IsShownReplaced()
{
    const QString path = makeImage(64, QString());
    QVERIFY(!path.isEmpty());
    crypt_device *cd = nullptr;
    QCOMPARE(crypt_init(&cd, QFile::encodeName(path).constData()), 0);
    QCOMPARE(crypt_load(cd, CRYPT_LUKS2, nullptr), 0);
    QCOMPARE(crypt_set_label(cd, "Bad\xff\xfe\nname", nullptr), 0);
    crypt_free(cd);
    KVLuksImage image(path);
    QVERIFY(!image.load());
    QCOMPARE(image.volumeName(), QStringLiteral("Bad\uFFFD\uFFFD name"));
}

QTEST_GUILESS_MAIN(KVLuksImageTest)
#include "tst_kvluksimage.moc"
