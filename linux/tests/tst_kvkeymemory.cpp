// The cipher contexts' key schedules live in the locked arena, and a full
// arena makes a cipher invalid rather than put a key in ordinary memory.

#include "KVKeyMemory.h"
#include "KVSectorCipher.h"

#include <QTest>

#include <memory>
#include <vector>

using namespace kvlinux;

namespace {

constexpr size_t arenaSize = 64 * 1024;
// XTS refuses a key whose two halves are equal.
const std::vector<uint8_t> key = [] {
    std::vector<uint8_t> bytes(64);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = uint8_t(i * 7 + 1);
    return bytes;
}();

} // namespace

class KVKeyMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keySchedulesLiveInTheArena();
    void fullArenaRefusesKeys();
};

void KVKeyMemoryTest::keySchedulesLiveInTheArena()
{
    const size_t before = KVKeyMemory::used();
    {
        KVSectorCipher cipher(key.data(), key.size(), 4096);
        QVERIFY(cipher.isValid());
        const size_t one = KVKeyMemory::used() - before;
        QVERIFY(one > 0);
        const std::unique_ptr<KVSectorCipher> copy = cipher.clone();
        QVERIFY(copy->isValid());
        QVERIFY(KVKeyMemory::used() - before >= 2 * one);
        qInfo("one cipher (two contexts) takes %zu bytes of the arena", one);

        std::vector<uint8_t> sector(4096, 7);
        const std::vector<uint8_t> plain = sector;
        QVERIFY(cipher.encrypt(sector.data(), sector.data(), sector.size(), 8192));
        QVERIFY(sector != plain);
        QVERIFY(copy->decrypt(sector.data(), sector.data(), sector.size(), 8192));
        QVERIFY(sector == plain);
    }
    QCOMPARE(KVKeyMemory::used(), before);
}

void KVKeyMemoryTest::fullArenaRefusesKeys()
{
    std::vector<std::unique_ptr<KVSectorCipher>> ciphers;
    for (int i = 0; i < 1000; ++i) {
        ciphers.push_back(std::make_unique<KVSectorCipher>(key.data(), key.size(), 4096));
        if (!ciphers.back()->isValid())
            break;
    }
    QVERIFY(!ciphers.back()->isValid());
    QVERIFY(KVKeyMemory::used() <= arenaSize);
    ciphers.clear();
    QVERIFY(KVSectorCipher(key.data(), key.size(), 4096).isValid());
}

int main(int argc, char **argv)
{
    if (!KVKeyMemory::install(arenaSize)) {
        qWarning("The key arena could not be locked (RLIMIT_MEMLOCK too small?)");
        return 1;
    }
    KVKeyMemoryTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_kvkeymemory.moc"
