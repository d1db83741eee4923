// Conversions that meet trouble: two commands for one partition at once
// (exactly one goes ahead, the other is refused at once, nothing is harmed),
// and a disk that goes away while it is being encrypted (the converter stops
// and says why, nothing hangs or stays locked, and the conversion ends when
// the disk is back). While the volume is converted offline, the storage
// report gives the file system's own figures, not a full disk.

#include "KVDiskReports.h"
#include "KVDiskToolHarness.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <csignal>

using namespace kvlinux;
using namespace kvlinux::KVDiskReports;

namespace {

const QByteArray passphrase = QByteArrayLiteral("correct horse");
constexpr qint64 headerRoom = 32 << 20;

QStringList convertCommand(const KVDiskToolHarness &disk)
{
    return {QStringLiteral("cs"), QStringLiteral("convert"), disk.ext4Partition(), QStringLiteral("-stdinpassphrase")};
}

QStringList revertCommand(const QString &uuid)
{
    return {QStringLiteral("cs"), QStringLiteral("revert"), uuid, QStringLiteral("-stdinpassphrase")};
}

// A process that has ended but was not reaped yet counts as gone.
bool isRunning(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = stat.readAll();
    const qsizetype state = line.lastIndexOf(')') + 2;
    return state < line.size() && line.at(state) != 'Z' && line.at(state) != 'X';
}

bool endsWithin(qint64 pid, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (isRunning(pid)) {
        if (clock.elapsed() > milliseconds)
            return false;
        QThread::msleep(50);
    }
    return true;
}

} // namespace

class KVDiskutilConversionFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void twoCommandsAtOnceLeaveOneStanding_data();
    void twoCommandsAtOnceLeaveOneStanding();
    void aDiskThatGoesAwayMidConversionResumesWhenBack();
};

void KVDiskutilConversionFaultsTest::init()
{
    if (const QString why = KVDiskToolHarness::unavailable(); !why.isEmpty())
        QSKIP(qPrintable(why));
}

void KVDiskutilConversionFaultsTest::twoCommandsAtOnceLeaveOneStanding_data()
{
    QTest::addColumn<bool>("encryptFirst");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("refusal");
    QTest::addColumn<bool>("endsEncrypted");

    // Refused by the other's lock, or (when the other was quicker) by the
    // header it has written.
    const QString convertRefused = QStringLiteral("^Error converting disk to CoreStorage: "
                                                  "(The disk is being converted already \\(-69845\\)"
                                                  "|The target disk is already in use by Core Storage \\(-69753\\))$");
    const QString revertRefused = QStringLiteral("^Error: -69845: The volume is being converted already$");
    QTest::newRow("two encryptions") << false << "convert" << "convert" << convertRefused << true;
    QTest::newRow("two decryptions") << true << "revert" << "revert" << revertRefused << false;
    QTest::newRow("encryption during decryption")
        << true << "revert" << "convert"
        << QStringLiteral("^Error converting disk to CoreStorage: The target disk is already in use by Core Storage "
                          "\\(-69753\\)$")
        << false;
}

void KVDiskutilConversionFaultsTest::twoCommandsAtOnceLeaveOneStanding()
{
    QFETCH(bool, encryptFirst);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, refusal);
    QFETCH(bool, endsEncrypted);

    KVDiskToolHarness disk(QStringLiteral("150M"), QStringLiteral("32M"));
    QVERIFY(disk.isValid());
    const QString files = disk.fillWithFiles(60);
    QString uuid;
    if (encryptFirst) {
        QCOMPARE(disk.diskutil(convertCommand(disk), passphrase).exitCode, 0);
        followConversion(disk);
        uuid = logicalVolumeUuid(encryptedEntry(disk));
        QVERIFY(!uuid.isEmpty());
    }
    const auto command = [&](const QString &verb) {
        return verb == QLatin1String("convert") ? convertCommand(disk) : revertCommand(uuid);
    };
    const QList<KVDiskToolHarness::Run> runs = disk.diskutilTogether({command(first), command(second)}, passphrase);

    // One went ahead; the other said why not in diskutil's failure form.
    const qsizetype winners = std::count_if(runs.cbegin(), runs.cend(), [](const auto &run) {
        return run.exitCode == 0 && run.has(QStringLiteral("Finished CoreStorage operation"));
    });
    QVERIFY2(winners == 1, qPrintable(runs.first().output + runs.last().output));
    const auto &loser = runs.first().exitCode == 0 ? runs.last() : runs.first();
    QVERIFY(loser.exitCode != 0);
    const QRegularExpression refused(refusal, QRegularExpression::MultilineOption);
    QVERIFY2(refused.match(loser.output).hasMatch(), qPrintable(loser.output));

    // The one that went ahead ends as it would have alone, every file intact.
    followConversion(disk, endsEncrypted);
    const QVariantMap result = endsEncrypted ? encryptedEntry(disk) : storageEntry(disk, disk.ext4Partition());
    QVERIFY2(isMounted(result), qPrintable(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).output));
    QCOMPARE(disk.checksums(result.value(QStringLiteral("mount_point")).toString()), files);
    QCOMPARE(disk.shell(QStringLiteral("cryptsetup isLuks /dev/") + disk.ext4Partition()).exitCode == 0, endsEncrypted);
    QVERIFY(disk.conversionLocksAreFree());
}

void KVDiskutilConversionFaultsTest::aDiskThatGoesAwayMidConversionResumesWhenBack()
{
    KVDiskToolHarness disk(QStringLiteral("350M"), QStringLiteral("32M"), KVDiskToolHarness::Drive::Removable);
    QVERIFY(disk.isValid());
    const QString files = disk.fillWithFiles(200);
    const QVariantMap plain = storageEntry(disk, disk.ext4Partition());
    const auto converted = disk.diskutil(convertCommand(disk), passphrase);
    QVERIFY2(converted.exitCode == 0, qPrintable(converted.output));

    // Held still half way, so that the disk goes while there is work left.
    const qint64 converter = disk.busyConverter();
    QVERIFY(converter > 0);
    QCOMPARE(kill(pid_t(converter), SIGSTOP), 0);
    auto resumeOnFailure = qScopeGuard([&] { kill(pid_t(converter), SIGCONT); });

    // Offline, the volume shows the free space the shrunk file system had at
    // the start, never a full disk.
    const QVariantMap converting = encryptedEntry(disk);
    QCOMPARE(converting.value(QStringLiteral("mount_point")).toString(), QString());
    const qint64 free = converting.value(QStringLiteral("free_space_in_bytes")).toLongLong();
    const qint64 size = converting.value(QStringLiteral("size_in_bytes")).toLongLong();
    const qint64 plainFree = plain.value(QStringLiteral("free_space_in_bytes")).toLongLong();
    const qint64 plainSize = plain.value(QStringLiteral("size_in_bytes")).toLongLong();
    // The header's room came out of the free space; the rest is as it was.
    QVERIFY2(qAbs(free - (plainFree - headerRoom)) < (1 << 20), qPrintable(QString::number(free)));
    QVERIFY2(qAbs(size - (plainSize - headerRoom)) < (1 << 20), qPrintable(QString::number(size)));

    QVERIFY(disk.unplug());
    resumeOnFailure.dismiss();
    QCOMPARE(kill(pid_t(converter), SIGCONT), 0);
    QVERIFY2(endsWithin(converter, 30000), "the converter still runs 30 s after its disk went away");
    const QString log = disk.conversionLogs();
    qInfo().noquote() << "the converter said:" << log.trimmed();
    QVERIFY2(log.contains(QStringLiteral("The conversion stopped: the disk /dev/%1 could not be read or written")
                              .arg(disk.ext4Partition()))
                 && log.contains(QLatin1String("goes on when the disk is back")),
             qPrintable(log));
    QVERIFY(disk.conversionLocksAreFree());
    // The listings answer while the disk is gone, and start nothing.
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).exitCode, 0);
    QVERIFY(encryptedEntry(disk).isEmpty());
    QVERIFY(clock.elapsed() < 10000);

    // Back under another name, the conversion goes on from where it was.
    QVERIFY(disk.plugBackIn());
    QVERIFY(disk.diskutil({QStringLiteral("cs"), QStringLiteral("list")}).has(QStringLiteral("Converting (forward)")));
    followConversion(disk);
    const QVariantMap encrypted = encryptedEntry(disk);
    QCOMPARE(encrypted.value(QStringLiteral("com.apple.corestorage.lv")).toMap()
                 .value(QStringLiteral("com.apple.corestorage.lv.conversionState")).toString(), QStringLiteral("Complete"));
    QCOMPARE(disk.checksums(encrypted.value(QStringLiteral("mount_point")).toString()), files);
    QVERIFY(disk.conversionLocksAreFree());
    QCOMPARE(disk.conversionLogs(), QString());
}

QTEST_GUILESS_MAIN(KVDiskutilConversionFaultsTest)
#include "tst_diskutil_conversion_faults.moc"
