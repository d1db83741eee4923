// The decrypted view of an image file: byte compatibility with dm-crypt's
// aes-xts-plain64 and read-modify-write of partial sectors.

#include "KVPayloadFile.h"
#include "KVSectorCipher.h"

#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QTest>

#include <openssl/evp.h>
#include <unistd.h>

using namespace kvlinux;

namespace {

constexpr uint64_t dataOffset = 64 * 1024;
constexpr size_t sector = 4096;
constexpr uint64_t payloadSize = 16 * sector;
constexpr size_t maxRequest = 8 * sector;

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &c : bytes)
        c = char(QRandomGenerator::global()->bounded(256));
    return bytes;
}

// An independent aes-xts-plain64 decryption of one sector, straight from
// OpenSSL, with the tweak given as a sector number in 512-byte units.
QByteArray referenceDecrypt(const QByteArray &key, const QByteArray &ciphertext, uint64_t tweakUnits)
{
    uint8_t iv[16] = {};
    for (int i = 0; i < 8; ++i)
        iv[i] = uint8_t(tweakUnits >> (8 * i));
    EVP_CIPHER_CTX *ctx = EVP_CIPHER_CTX_new();
    const EVP_CIPHER *cipher = key.size() == 64 ? EVP_aes_256_xts() : EVP_aes_128_xts();
    QByteArray plain(ciphertext.size(), Qt::Uninitialized);
    int produced = 0;
    EVP_DecryptInit_ex(ctx, cipher, nullptr, reinterpret_cast<const uint8_t *>(key.constData()), iv);
    EVP_DecryptUpdate(ctx, reinterpret_cast<uint8_t *>(plain.data()), &produced,
                      reinterpret_cast<const uint8_t *>(ciphertext.constData()), int(ciphertext.size()));
    EVP_CIPHER_CTX_free(ctx);
    return plain;
}

} // namespace

class KVPayloadFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void ciphertextIsAesXtsPlain64_data();
    void ciphertextIsAesXtsPlain64();
    void partialWritesKeepTheirNeighbours_data();
    void partialWritesKeepTheirNeighbours();
    void zeroedRangeReadsAsZeros();
    void requestsStopAtTheEndOfThePayload();
    void payloadFollowsTheFileSize();

private:
    QByteArray readAll();
    QByteArray rawAt(uint64_t offset, qsizetype size);

    std::unique_ptr<QTemporaryFile> m_file;
    QByteArray m_key;
    std::unique_ptr<KVSectorCipher> m_cipher;
    std::mutex m_partialSectors;
    std::unique_ptr<KVPayloadFile> m_payload;
};

void KVPayloadFileTest::init()
{
    m_file = std::make_unique<QTemporaryFile>();
    QVERIFY(m_file->open());
    QVERIFY(m_file->resize(qint64(dataOffset + payloadSize)));
    m_key = randomBytes(64);
    m_cipher = std::make_unique<KVSectorCipher>(reinterpret_cast<const uint8_t *>(m_key.constData()),
                                                size_t(m_key.size()), sector);
    QVERIFY(m_cipher->isValid());
    m_payload = std::make_unique<KVPayloadFile>(m_file->handle(), dataOffset, *m_cipher, maxRequest, m_partialSectors);
}

void KVPayloadFileTest::cleanup()
{
    m_payload.reset();
    m_cipher.reset();
    m_file.reset();
}

QByteArray KVPayloadFileTest::readAll()
{
    QByteArray all;
    for (uint64_t offset = 0; offset < m_payload->size();) {
        const uint8_t *data = nullptr;
        const ssize_t n = m_payload->read(offset, maxRequest, &data);
        if (n <= 0)
            return {};
        all.append(reinterpret_cast<const char *>(data), n);
        offset += uint64_t(n);
    }
    return all;
}

QByteArray KVPayloadFileTest::rawAt(uint64_t offset, qsizetype size)
{
    QByteArray raw(size, Qt::Uninitialized);
    return pread(m_file->handle(), raw.data(), size_t(size), off_t(offset)) == size ? raw : QByteArray();
}

void KVPayloadFileTest::ciphertextIsAesXtsPlain64_data()
{
    QTest::addColumn<int>("keySize");
    QTest::newRow("AES-256-XTS") << 64;
    QTest::newRow("AES-128-XTS") << 32;
}

void KVPayloadFileTest::ciphertextIsAesXtsPlain64()
{
    QFETCH(int, keySize);
    m_key = randomBytes(keySize);
    m_cipher = std::make_unique<KVSectorCipher>(reinterpret_cast<const uint8_t *>(m_key.constData()),
                                                size_t(keySize), sector);
    m_payload = std::make_unique<KVPayloadFile>(m_file->handle(), dataOffset, *m_cipher, maxRequest, m_partialSectors);

    const QByteArray plain = randomBytes(2 * sector);
    const uint64_t at = 3 * sector;
    QCOMPARE(m_payload->write(at, reinterpret_cast<const uint8_t *>(plain.constData()), size_t(plain.size())),
             ssize_t(plain.size()));
    for (uint64_t i = 0; i < 2; ++i) {
        const QByteArray stored = rawAt(dataOffset + at + i * sector, sector);
        QVERIFY(stored != plain.mid(qsizetype(i * sector), sector));
        // The tweak counts 512-byte units from the start of the payload, also
        // for 4096-byte sectors, as dm-crypt does.
        const uint64_t units = (at + i * sector) / 512;
        QCOMPARE(referenceDecrypt(m_key, stored, units), plain.mid(qsizetype(i * sector), sector));
        QVERIFY(referenceDecrypt(m_key, stored, (at + i * sector) / sector) != plain.mid(qsizetype(i * sector), sector));
    }
}

void KVPayloadFileTest::partialWritesKeepTheirNeighbours_data()
{
    QTest::addColumn<quint64>("offset");
    QTest::addColumn<int>("length");
    QTest::newRow("first byte") << quint64(0) << 1;
    QTest::newRow("across a sector edge") << quint64(sector - 1) << 2;
    QTest::newRow("inside one sector") << quint64(sector + 100) << 200;
    QTest::newRow("ragged ends over three sectors") << quint64(2 * sector + 7) << int(2 * sector + 100);
    QTest::newRow("larger than one request") << quint64(13) << int(maxRequest + 3 * sector);
    QTest::newRow("last byte") << quint64(payloadSize - 1) << 1;
}

void KVPayloadFileTest::partialWritesKeepTheirNeighbours()
{
    QFETCH(quint64, offset);
    QFETCH(int, length);
    QByteArray model = randomBytes(qsizetype(payloadSize));
    QCOMPARE(m_payload->write(0, reinterpret_cast<const uint8_t *>(model.constData()), payloadSize),
             ssize_t(payloadSize));

    const QByteArray patch = randomBytes(length);
    QCOMPARE(m_payload->write(offset, reinterpret_cast<const uint8_t *>(patch.constData()), size_t(length)),
             ssize_t(length));
    model.replace(qsizetype(offset), length, patch);
    QCOMPARE(readAll(), model);
}

void KVPayloadFileTest::zeroedRangeReadsAsZeros()
{
    QByteArray model = randomBytes(qsizetype(payloadSize));
    m_payload->write(0, reinterpret_cast<const uint8_t *>(model.constData()), payloadSize);
    QCOMPARE(m_payload->zero(5000, 3 * sector), 0);
    model.replace(5000, 3 * sector, QByteArray(3 * sector, '\0'));
    QCOMPARE(readAll(), model);
    // Zeros are written encrypted, never as holes: the image stays readable
    // by any LUKS2 implementation.
    QVERIFY(rawAt(dataOffset + 2 * sector, sector) != QByteArray(sector, '\0'));
}

void KVPayloadFileTest::requestsStopAtTheEndOfThePayload()
{
    const uint8_t *data = nullptr;
    QCOMPARE(m_payload->read(payloadSize - 100, 1000, &data), ssize_t(100));
    QCOMPARE(m_payload->read(payloadSize, 10, &data), ssize_t(0));
    const QByteArray bytes(300, 'x');
    QCOMPARE(m_payload->write(payloadSize - 100, reinterpret_cast<const uint8_t *>(bytes.constData()), 300),
             ssize_t(100));
    QCOMPARE(m_payload->write(payloadSize, reinterpret_cast<const uint8_t *>(bytes.constData()), 300),
             ssize_t(-ENOSPC));
}

void KVPayloadFileTest::payloadFollowsTheFileSize()
{
    QCOMPARE(m_payload->size(), payloadSize);
    QVERIFY(m_file->resize(qint64(dataOffset + payloadSize + sector + 17)));
    QCOMPARE(m_payload->size(), payloadSize + sector); // whole sectors only
    QVERIFY(m_file->resize(qint64(dataOffset / 2)));
    QCOMPARE(m_payload->size(), uint64_t(0));
}

QTEST_GUILESS_MAIN(KVPayloadFileTest)
#include "tst_kvpayloadfile.moc"
