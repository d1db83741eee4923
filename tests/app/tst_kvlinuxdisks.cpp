// The application against Korvelle's own Linux disk tools, with a real
// partition (a loop device over a file): what a person sees while a disk is
// encrypted, once it is, and when it is locked.
#include "app/KVAppDelegate.h"
#include "app/KVCommand.h"
#include "app/KVDetailPaneView.h"
#include "app/KVMainWindow.h"
#include "disk/KVDisk.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"
#include "wizards/KVDiskTable.h"
#include "wizards/KVEncryptDiskWizardController.h"
#include "wizards/KVMountDiskController.h"

#include "KVDiskToolHarness.h"
#include "KVScreenshot.h"

#include <QStandardPaths>
#include <QTest>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <optional>

namespace {

const QString passphrase = QStringLiteral("correct horse");

// Waits for an engine operation's one call of its block.
struct Outcome
{
    std::atomic<bool> done{false};
    KVOptionalError error;

    KVDisk::ErrorBlock block()
    {
        return [this](const KVOptionalError &e) {
            error = e;
            done = true;
        };
    }
    bool wait() { return QTest::qWaitFor([this] { return done.load(); }, 60000); }
};

// Holds the background converter still while the listings are looked at,
// and lets it go on however the test leaves the scope.
class FrozenProcess
{
public:
    explicit FrozenProcess(qint64 pid) : m_pid(pid_t(pid)) { m_frozen = m_pid > 0 && kill(m_pid, SIGSTOP) == 0; }
    ~FrozenProcess()
    {
        if (m_frozen)
            kill(m_pid, SIGCONT);
    }
    FrozenProcess(const FrozenProcess &) = delete;
    FrozenProcess &operator=(const FrozenProcess &) = delete;
    bool isFrozen() const { return m_frozen; }

private:
    pid_t m_pid;
    bool m_frozen = false;
};

bool lists(const KVDiskTable *table, const std::function<bool(const KVVolumeItem &)> &matches)
{
    return table && std::any_of(table->items().cbegin(), table->items().cend(),
                                [&](const KVVolumeItemPtr &item) { return matches(*item); });
}

KVVolumeItemPtr onlyDisk(const KVAppDelegate &delegate)
{
    for (const KVVolumeItemPtr &volume : delegate.unifiedVolumes())
        if (volume->type() == KVVolumeKind::Disk)
            return volume;
    return nullptr;
}

} // namespace

class TestKVLinuxDisks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString why = kvlinux::KVDiskToolHarness::unavailable(); !why.isEmpty())
            QSKIP(qPrintable(why));
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
        KVUserDefaults::standard().removeObject(KVFavouritesKey);
    }

    void aDiskIsShownWhileItIsEncryptedAndWhenLocked()
    {
        kvlinux::KVDiskToolHarness disk(QStringLiteral("350M"), QStringLiteral("32M"));
        QVERIFY(disk.isValid());
        disk.fillWithFiles(120);
        // The tools keep their records where the harness says.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(disk.runtimeDirectory()));
        qputenv("XDG_STATE_HOME", QFile::encodeName(disk.stateDirectory()));
        QTemporaryDir recent;
        KVAppDelegate delegate(KVAppDelegate::Services{
            KVToolPaths{QStringLiteral(KV_TEST_HDIUTIL), QStringLiteral(KV_TEST_DISK_DISKUTIL), QStringLiteral(KV_TEST_SYSTEM_PROFILER)},
            KVWorkspaceNotifications::shared(), KVRecentDocuments(recent.filePath(QStringLiteral("recent.xbel")))});
        delegate.applicationDidFinishLaunching();
        delegate.mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowExposed(delegate.mainWindow()));
        KVDisk &engine = *delegate.disks();

        // Offered for encryption in the encrypt-disk wizard's list.
        delegate.performCommand(KVCommand::EncryptDisk);
        auto *wizard = delegate.mainWindow()->findChild<KVEncryptDiskWizardController *>();
        QVERIFY(wizard);
        QTRY_VERIFY_WITH_TIMEOUT(lists(wizard->diskTable(), [&](const KVVolumeItem &item) {
                                     return item.diskIdentifier() == disk.ext4Partition();
                                 }), 30000);
        QTest::qWait(200);
        kvSaveScreenshot(wizard, QStringLiteral("encrypt-disk-wizard-partitions"));
        wizard->reject();

        std::atomic<bool> started{false};
        KVOptionalError encryptError;
        engine.encryptDisk(disk.ext4Partition(), passphrase,
                           [&](const std::optional<QString> &, bool finished, const KVOptionalError &error) {
                               if (finished) {
                                   encryptError = error;
                                   started = true;
                               }
                           });
        QTRY_VERIFY_WITH_TIMEOUT(started.load(), 60000);
        QVERIFY2(!encryptError, qPrintable(encryptError ? encryptError->debugDescription() : QString()));

        // Held half way, the conversion is listed with its progress.
        std::optional<FrozenProcess> converter(std::in_place, disk.busyConverter());
        QVERIFY(converter->isFrozen());
        Outcome refreshed;
        engine.updateMountedDisks(refreshed.block());
        QVERIFY(refreshed.wait());
        QTRY_VERIFY_WITH_TIMEOUT(onlyDisk(delegate) && onlyDisk(delegate)->converting(), 30000);
        const KVVolumeItemPtr converting = onlyDisk(delegate);
        QCOMPARE(converting->statusVisible(), QStringLiteral("Encrypting"));
        QVERIFY(converting->conversionProgress() > 0 && converting->conversionProgress() < 100);
        delegate.setCurrentSelection(converting);
        QTest::qWait(200);
        kvSaveScreenshot(delegate.mainWindow(), QStringLiteral("main-window-encrypting-disk"));
        converter.reset();

        // Done: mounted again and no longer converting.
        QTRY_VERIFY_WITH_TIMEOUT(onlyDisk(delegate) && !onlyDisk(delegate)->converting()
                                     && !onlyDisk(delegate)->mountPoint().isEmpty(), 90000);
        delegate.setCurrentSelection(onlyDisk(delegate));
        QTest::qWait(200);
        kvSaveScreenshot(delegate.mainWindow(), QStringLiteral("main-window-encrypted-disk"));

        // Ejected, it is locked and offered for mounting.
        Outcome ejected;
        engine.ejectDisk(onlyDisk(delegate), ejected.block());
        QVERIFY(ejected.wait());
        QVERIFY2(!ejected.error, qPrintable(ejected.error ? ejected.error->debugDescription() : QString()));
        QTRY_VERIFY_WITH_TIMEOUT(!onlyDisk(delegate), 30000);
        Outcome scanned;
        engine.updateDisksToMount(scanned.block());
        QVERIFY(scanned.wait());
        QTRY_COMPARE(engine.disksToMount().size(), 1);
        QCOMPARE(engine.disksToMount().first()->name(), QStringLiteral("Data"));
        QVERIFY(engine.disksToMount().first()->locked());

        // The mount-disk sheet lists it as locked.
        delegate.performCommand(KVCommand::MountDisk);
        auto *sheet = delegate.mainWindow()->findChild<KVMountDiskController *>();
        QVERIFY(sheet);
        QTRY_VERIFY_WITH_TIMEOUT(lists(sheet->diskTable(), [](const KVVolumeItem &item) {
                                     return item.name() == QLatin1String("Data")
                                         && KVMountDiskController::statusText(item) == QLatin1String("Locked");
                                 }), 30000);
        QTest::qWait(200);
        kvSaveScreenshot(sheet, QStringLiteral("mount-disk-sheet-locked"));
        sheet->reject();
        qunsetenv("XDG_STATE_HOME");
        qunsetenv("XDG_RUNTIME_DIR");
    }
};

QTEST_MAIN(TestKVLinuxDisks)
#include "tst_kvlinuxdisks.moc"
