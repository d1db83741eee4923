#include "KVDiskTestSupport.h"

#include "model/KVVolumeItem.h"

namespace {

const QString VolumeUUID = QStringLiteral("9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65");
using Passphrase = std::optional<QString>;

KVVolumeItemPtr volume(const QString &diskIdentifier = QStringLiteral("disk6"),
                       const QString &mountPoint = QStringLiteral("/Volumes/Vault"))
{
    const QVariantMap entry{
        {QStringLiteral("_name"), QStringLiteral("Vault")},
        {QStringLiteral("bsd_name"), diskIdentifier},
        {QStringLiteral("mount_point"), mountPoint},
        {QStringLiteral("com.apple.corestorage.lv"), QVariantMap{{QStringLiteral("com.apple.corestorage.lv.uuid"), VolumeUUID}}},
    };
    return KVVolumeItem::create({{QStringLiteral("sysProfilerInfo"), entry}}, nullptr);
}

enum class Operation { Decrypt, Unlock, Mount, Eject, Rename, ChangePassword };

void start(KVDisk &disk, Operation operation, BlockRecord &record, const Passphrase &first = std::nullopt,
           const Passphrase &second = std::nullopt)
{
    switch (operation) {
    case Operation::Decrypt:
        return disk.decrypt(volume(), first, record.errorBlock());
    case Operation::Unlock:
        return disk.unlockVolume(volume(), first, record.errorBlock());
    case Operation::Mount:
        return disk.mountDisk(volume(), record.errorBlock());
    case Operation::Eject:
        return disk.ejectDisk(volume(), record.errorBlock());
    case Operation::Rename:
        return disk.renameVolume(volume(), QStringLiteral("Holiday Photos"), record.errorBlock());
    case Operation::ChangePassword:
        return disk.changePassword(volume(), first, second, record.errorBlock());
    }
}

QByteArray fixture(const char *name)
{
    return KVToolDouble::readFixture(QStringLiteral("diskutil/") + QString::fromUtf8(name));
}

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(Passphrase)

class TestKVDiskOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandLinesAndStandardInput_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<Passphrase>("first");
        QTest::addColumn<Passphrase>("second");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("standardInputIsPipe");
        QTest::addColumn<QByteArray>("standardInput");

        const QStringList revert{"cs", "revert", VolumeUUID};
        QTest::newRow("decrypt") << Operation::Decrypt << Passphrase(QStringLiteral("pässwörd")) << Passphrase()
                                 << revert + QStringList{"-stdinpassphrase"} << true << QByteArray("p\xc3\xa4ssw\xc3\xb6rd");
        QTest::newRow("decrypt, empty passphrase") << Operation::Decrypt << Passphrase(QString()) << Passphrase()
                                                   << revert + QStringList{"-stdinpassphrase"} << true << QByteArray();
        QTest::newRow("decrypt, no passphrase") << Operation::Decrypt << Passphrase() << Passphrase() << revert << false << QByteArray();

        const QStringList unlock{"cs", "unlockVolume", VolumeUUID};
        QTest::newRow("unlock") << Operation::Unlock << Passphrase(QStringLiteral("secret")) << Passphrase()
                                << unlock + QStringList{"-stdinpassphrase"} << true << QByteArray("secret");
        QTest::newRow("unlock, empty passphrase") << Operation::Unlock << Passphrase(QString()) << Passphrase()
                                                  << unlock + QStringList{"-stdinpassphrase"} << true << QByteArray();
        QTest::newRow("unlock, no passphrase") << Operation::Unlock << Passphrase() << Passphrase() << unlock << false << QByteArray();

        QTest::newRow("mount") << Operation::Mount << Passphrase() << Passphrase() << QStringList{"mount", VolumeUUID} << false << QByteArray();
        QTest::newRow("eject") << Operation::Eject << Passphrase() << Passphrase() << QStringList{"eject", "/dev/disk6"} << false << QByteArray();
        QTest::newRow("rename") << Operation::Rename << Passphrase() << Passphrase()
                                << QStringList{"rename", "/Volumes/Vault", "Holiday Photos"} << false << QByteArray();

        const QStringList change{"cs", "changeVolumePassphrase", VolumeUUID};
        QTest::newRow("change passphrase") << Operation::ChangePassword << Passphrase(QStringLiteral("old one"))
                                           << Passphrase(QStringLiteral("néw")) << change + QStringList{"-stdinpassphrase"}
                                           << true << QByteArray("old one\nn\xc3\xa9w");
        QTest::newRow("change passphrase, both empty") << Operation::ChangePassword << Passphrase(QString()) << Passphrase(QString())
                                                       << change + QStringList{"-stdinpassphrase"} << true << QByteArray("\n");
        QTest::newRow("change passphrase, no old one") << Operation::ChangePassword << Passphrase() << Passphrase(QStringLiteral("new"))
                                                       << change << false << QByteArray();
        QTest::newRow("change passphrase, no new one") << Operation::ChangePassword << Passphrase(QStringLiteral("old")) << Passphrase()
                                                       << change << false << QByteArray();
    }

    void commandLinesAndStandardInput()
    {
        QFETCH(Operation, operation);
        QFETCH(Passphrase, first);
        QFETCH(Passphrase, second);
        QFETCH(QStringList, arguments);
        QFETCH(bool, standardInputIsPipe);
        QFETCH(QByteArray, standardInput);

        DiskWithDoubles d;
        BlockRecord done;
        start(d.disk, operation, done, first, second);
        QVERIFY(done.wait());
        QVERIFY(d.waitForQueue());
        QCOMPARE(done.calls(), 1);
        QVERIFY(done.calledOffTheGuiThread());
        QCOMPARE(d.diskutil.runCount(), 1);
        QCOMPARE(d.diskutil.arguments(), arguments);
        QCOMPARE(d.diskutil.standardInputWasPipe(), standardInputIsPipe);
        QCOMPARE(d.diskutil.standardInput(), standardInput);
        QVERIFY(d.delegate.changes.isEmpty());
        QVERIFY(d.disk.mountedDisks().isEmpty());
    }

    void outputTables_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("code"); // 0: success
        QTest::addColumn<QString>("message");

        const auto row = [](const char *name, Operation operation, const QByteArray &output, int code,
                            const QString &message = QString(), int status = 0) {
            QTest::newRow(name) << operation << output << status << code << message;
        };

        row("decrypt: finished", Operation::Decrypt, fixture("revert-success.txt"), 0);
        row("decrypt: finished despite a warning", Operation::Decrypt,
            "Started CoreStorage operation on disk3 Backup\nWarning: the volume will be unmounted\nFinished CoreStorage operation on disk3 Backup\n", 0);
        row("decrypt: wrong passphrase", Operation::Decrypt, "Started CoreStorage operation\nError: -69749: Unable to unlock the Core Storage volume\n",
            10, "Wrong Password", 1);
        row("decrypt: no passphrase", Operation::Decrypt, "Error: no passphrase specified\n", 10, "Wrong Password");
        row("decrypt: no such disk", Operation::Decrypt, "Unable to find disk for 9C83AC99-9AF0-427C-8BEB-D3B6BB50AA65\n", 150, "Disk doesn't exist");
        row("decrypt: anything else", Operation::Decrypt, "Error: -69745: This operation can only be performed if there is exactly one Core Storage logical volume present in the group\n",
            100, "Error: -69745: This operation can only be performed if there is exactly one Core Storage logical volume present in the group\n", 1);
        row("decrypt: nothing printed", Operation::Decrypt, QByteArray(), 100, QString());

        row("unlock: finished", Operation::Unlock, fixture("unlock-success.txt"), 0);
        row("unlock: wrong passphrase", Operation::Unlock, "Started CoreStorage operation\nError: -69749: Unable to unlock Core Storage volume\n",
            10, "Wrong Password", 1);
        row("unlock: wrong passphrase before not locked", Operation::Unlock,
            "-69749\nThe target Core Storage volume is not locked\n", 10, "Wrong Password");
        row("unlock: no such volume", Operation::Unlock, "The given UUID is not a CoreStorage Logical Volume UUID\n", 150, "Disk doesn't exist");
        row("unlock: not locked", Operation::Unlock, "Error: -69748: The target Core Storage volume is not locked\n", 30, "The Disk is not locked");
        row("unlock: mount failed", Operation::Unlock, fixture("unlock-mount-failed.txt"), 100,
            QString::fromUtf8(fixture("unlock-mount-failed.txt")), 1);

        row("mount: mounted, blank lines around", Operation::Mount, fixture("mount-success.txt"), 0);
        row("mount: ends in 'mounted' whatever came before", Operation::Mount, "Volume EFI on disk0s1 unmounted\n", 0);
        row("mount: more after the line", Operation::Mount, "Volume Vault on disk6 mounted\nJournal replayed\n", 100,
            "Volume Vault on disk6 mounted\nJournal replayed");
        row("mount: no such disk", Operation::Mount, "Unable to find disk for 9C83AC99\n", 150, "Disk doesn't exist", 1);
        row("mount: anything else", Operation::Mount, "\n  Volume on disk6 failed to mount\n  \n", 100, "Volume on disk6 failed to mount", 1);

        row("eject: ejected", Operation::Eject, fixture("eject-success.txt"), 0);
        row("eject: no such disk", Operation::Eject, "Unable to find disk /dev/disk6\n", 150, "Disk doesn't exist", 1);
        row("eject: anything else", Operation::Eject, "Disk /dev/disk6 failed to eject: dissented by PID 442\n", 100,
            "Disk /dev/disk6 failed to eject: dissented by PID 442", 1);

        row("rename: renamed", Operation::Rename, fixture("rename-success.txt"), 0);
        row("rename: not at the start", Operation::Rename, "\nVolume on disk6 renamed to Holiday Photos\n", 100,
            "\nVolume on disk6 renamed to Holiday Photos\n");
        row("rename: no such disk", Operation::Rename, "Could not find disk for /Volumes/Vault\n", 150, "Disk doesn't exist", 1);
        row("rename: refused name", Operation::Rename, "Holiday:Photos does not appear to be a valid volume name for its file system\n",
            180, "This is not a valid volume name", 1);
        row("rename: anything else", Operation::Rename, "Renaming failed\n", 100, "Renaming failed\n", 1);

        row("change passphrase: finished", Operation::ChangePassword, "Started CoreStorage operation\nFinished CoreStorage operation\n", 0);
        row("change passphrase: wrong passphrase", Operation::ChangePassword,
            "Started CoreStorage operation\nError: -69749: Unable to change the Core Storage passphrase\n", 10, "Wrong Password", 1);
        row("change passphrase: no such volume", Operation::ChangePassword,
            "The given UUID is not a CoreStorage Logical Volume UUID\n", 150, "Disk doesn't exist", 1);
        row("change passphrase: not locked", Operation::ChangePassword,
            "The target Core Storage volume is not locked\n", 30, "The Disk is not locked", 1);
        row("change passphrase: the unlock's number alone", Operation::ChangePassword, "Error: -69749\n", 100, "Error: -69749\n", 1);
    }

    void outputTables()
    {
        QFETCH(Operation, operation);
        QFETCH(QByteArray, output);
        QFETCH(int, status);
        QFETCH(int, code);
        QFETCH(QString, message);

        DiskWithDoubles d;
        d.diskutil.setResponse(output, status);
        BlockRecord done;
        start(d.disk, operation, done, QStringLiteral("pw"), QStringLiteral("new"));
        QVERIFY(done.wait());
        if (code == 0) {
            QVERIFY2(!done.error(), qPrintable(done.error() ? done.error()->localizedFailureReason() : QString()));
            return;
        }
        QVERIFY(done.error());
        QCOMPARE(done.error()->domain(), KVAppErrorDomain);
        QCOMPARE(done.error()->code(), code);
        QCOMPARE(done.error()->localizedFailureReason(), message);
        QCOMPARE(done.error()->localizedRecoverySuggestion(), message);
    }

    void titles_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<QString>("title");
        QTest::newRow("decrypt") << Operation::Decrypt << "Decrypting failed";
        QTest::newRow("unlock") << Operation::Unlock << "Unlocking Disk failed";
        QTest::newRow("mount") << Operation::Mount << "Mounting Disk failed";
        QTest::newRow("eject") << Operation::Eject << "Unmounting (eject) Disk failed";
        QTest::newRow("rename") << Operation::Rename << "Renaming Volume failed";
        QTest::newRow("change passphrase") << Operation::ChangePassword << "Changing password failed";
    }

    void titles()
    {
        QFETCH(Operation, operation);
        QFETCH(QString, title);
        DiskWithDoubles d;
        d.diskutil.setResponse("Something unexpected\n", 0);
        BlockRecord done;
        start(d.disk, operation, done, QStringLiteral("pw"), QStringLiteral("new"));
        QVERIFY(done.wait());
        QCOMPARE(done.error()->localizedDescription(), title);
        // A zero exit status alone never makes success.
        QCOMPARE(done.error()->code(), 100);
    }

    void identifiersAndNamesAreSingleArguments()
    {
        DiskWithDoubles d;
        const QString oddName = QStringLiteral("-new \"name\"; rm -rf ~\n$(x)");
        BlockRecord renamed;
        d.disk.renameVolume(volume(QStringLiteral("disk6"), QStringLiteral("/Volumes/My Vault 'one'")), oddName, renamed.errorBlock());
        BlockRecord ejected;
        d.disk.ejectDisk(volume(QStringLiteral("disk6 s2; reboot")), ejected.errorBlock());
        BlockRecord encrypted;
        d.disk.encryptDisk(QStringLiteral("-disk2s2 *"), std::nullopt, encrypted.progressBlock());
        QVERIFY(renamed.wait() && ejected.wait() && encrypted.wait());
        QCOMPARE(d.diskutil.arguments(1), (QStringList{"rename", "/Volumes/My Vault 'one'", oddName}));
        QCOMPARE(d.diskutil.arguments(2), (QStringList{"eject", "/dev/disk6 s2; reboot"}));
        QCOMPARE(d.diskutil.arguments(3), (QStringList{"cs", "convert", "-disk2s2 *"}));
    }

    void operationsRunOneAtATimeInOrder()
    {
        DiskWithDoubles d;
        d.diskutil.setScript("sleep 0.1\n", 1);
        BlockRecord first, second, third;
        d.disk.mountDisk(volume(), first.errorBlock());
        d.disk.ejectDisk(volume(), second.errorBlock());
        d.disk.updateDisksToEncrypt(third.errorBlock());
        QVERIFY(first.wait() && second.wait() && third.wait());
        QCOMPARE(d.diskutil.arguments(1).first(), QStringLiteral("mount"));
        QCOMPARE(d.diskutil.arguments(2).first(), QStringLiteral("eject"));
        QCOMPARE(first.thread(), second.thread());
        QCOMPARE(second.thread(), third.thread());
        QVERIFY(first.calledOffTheGuiThread());
    }

    void encryptHandsOnEveryLine()
    {
        DiskWithDoubles d;
        d.diskutil.setResponse(fixture("convert-success.txt"));
        BlockRecord done;
        d.disk.encryptDisk(QStringLiteral("disk2s2"), QStringLiteral("pässwörd"), done.progressBlock());
        QVERIFY(done.wait());
        QVERIFY(d.waitForQueue());

        QCOMPARE(d.diskutil.arguments(), (QStringList{"cs", "convert", "disk2s2", "-stdinpassphrase"}));
        QCOMPARE(d.diskutil.standardInput(), QByteArray("p\xc3\xa4ssw\xc3\xb6rd"));
        QVERIFY(!done.error());
        QList<std::optional<QString>> expected;
        for (const QString &line : QString::fromUtf8(fixture("convert-success.txt")).split(u'\n', Qt::SkipEmptyParts))
            expected.append(line);
        expected.append(std::nullopt);
        QCOMPARE(done.lines(), expected);
        QList<bool> finished(expected.size() - 1, false);
        finished.append(true);
        QCOMPARE(done.finishedFlags(), finished);
        QCOMPARE(done.calls(), 1);
        QVERIFY(done.allOnOneWorkerThread());
        QVERIFY(!done.errorBeforeEnd());
    }

    void encryptPassphrase_data()
    {
        QTest::addColumn<Passphrase>("passphrase");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("standardInputIsPipe");
        QTest::newRow("none") << Passphrase() << QStringList{"cs", "convert", "disk2s2"} << false;
        QTest::newRow("empty") << Passphrase(QString()) << QStringList{"cs", "convert", "disk2s2", "-stdinpassphrase"} << true;
    }

    void encryptPassphrase()
    {
        QFETCH(Passphrase, passphrase);
        QFETCH(QStringList, arguments);
        QFETCH(bool, standardInputIsPipe);
        DiskWithDoubles d;
        BlockRecord done;
        d.disk.encryptDisk(QStringLiteral("disk2s2"), passphrase, done.progressBlock());
        QVERIFY(done.wait());
        QCOMPARE(d.diskutil.arguments(), arguments);
        QCOMPARE(d.diskutil.standardInputWasPipe(), standardInputIsPipe);
        QCOMPARE(d.diskutil.standardInput(), QByteArray());
        QCOMPARE(done.lines(), QList<std::optional<QString>>{std::nullopt});
    }

    void encryptFailures_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<QString>("message");

        QTest::newRow("no such disk") << QByteArray("printf 'Could not find disk: disk9s9\\n'") << 1 << 150 << KVAppErrorDomain
                                      << "Could not find disk";
        QTest::newRow("file system not supported")
            << QByteArray("printf 'Started CoreStorage operation on disk2s1 STICK\\nError converting disk to Core Storage: "
                          "The given file system is not supported on Core Storage (-69756)\\n'")
            << 1 << 160 << KVAppErrorDomain << "The given file system is not supported on Core Storage";
        QTest::newRow("error number on the next line of the same chunk")
            << QByteArray("printf 'Error converting disk to Core Storage\\nThe given file system is not supported (-69756)\\n'")
            << 1 << 160 << KVAppErrorDomain << "The given file system is not supported on Core Storage";
        QTest::newRow("already in use")
            << QByteArray("printf 'Error converting disk to Core Storage: The target disk is already in use by Core Storage (-69753)\\n'")
            << 1 << 170 << KVAppErrorDomain << "The target disk is already in use by Core Storage";
        QTest::newRow("other conversion error: the rest of the chunk")
            << QByteArray("printf 'Started CoreStorage operation\\nError converting disk to Core Storage: Busy\\nUnmount failed\\n'")
            << 1 << 100 << KVAppErrorDomain << "Error converting disk to Core Storage: Busy\nUnmount failed\n";
        QTest::newRow("error number in a later chunk")
            << QByteArray("printf 'Error converting disk to Core Storage\\n'; sleep 0.2; printf '(-69756)\\n'")
            << 1 << 100 << KVAppErrorDomain << "Error converting disk to Core Storage\n";
        QTest::newRow("the last failure counts")
            << QByteArray("printf 'Could not find disk: disk9\\n'; sleep 0.1; printf 'Error converting disk (-69753)\\n'")
            << 0 << 170 << KVAppErrorDomain << "The target disk is already in use by Core Storage";
        QTest::newRow("abnormal end") << QByteArray("printf 'Started CoreStorage operation\\n'") << 4 << 4 << NSCocoaErrorDomain
                                      << "diskutil cs ended abnormally.";
    }

    void encryptFailures()
    {
        QFETCH(QByteArray, script);
        QFETCH(int, status);
        QFETCH(int, code);
        QFETCH(QString, domain);
        QFETCH(QString, message);
        DiskWithDoubles d;
        d.diskutil.setResponse(QByteArray(), status);
        d.diskutil.setScript(script + '\n');
        BlockRecord done;
        d.disk.encryptDisk(QStringLiteral("disk2s2"), QStringLiteral("pw"), done.progressBlock());
        QVERIFY(done.wait());
        QVERIFY(done.error());
        QCOMPARE(done.error()->domain(), domain);
        QCOMPARE(done.error()->code(), code);
        QCOMPARE(done.error()->localizedDescription(), QStringLiteral("Encrypting Disk failed"));
        QCOMPARE(done.error()->localizedFailureReason(), message);
        // Error lines are handed on too; the error comes only with the end.
        QVERIFY(done.lines().size() > 1);
        QVERIFY(!done.errorBeforeEnd());
    }
};

QTEST_GUILESS_MAIN(TestKVDiskOperations)
#include "tst_kvdiskoperations.moc"
