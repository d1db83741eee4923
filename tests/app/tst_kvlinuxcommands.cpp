// The commands of the detail pane against Korvelle's own Linux tools, with
// real encrypted images mounted through the application: each one checked on
// the file system afterwards.
#include "app/KVCommandAlert.h"
#include "controls/KVPasswordFieldView.h"
#include "platform/KVUserDefaults.h"
#include "settings/KVPreferenceKeys.h"
#include "settings/KVPreferences.h"

#include "KVLinuxSession.h"
#include "KVScreenshot.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QToolButton>

#include <sys/stat.h>

namespace {

const QByteArray password = QByteArrayLiteral("correct horse");

QMessageBox *visibleAlert(const QString &objectName)
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(widget);
        if (box && box->isVisible() && box->objectName() == objectName)
            return box;
    }
    return nullptr;
}

qint64 allocatedBytes(const QString &path)
{
    struct stat st{};
    return stat(QFile::encodeName(path).constData(), &st) == 0 ? qint64(st.st_blocks) * 512 : -1;
}

// A session with one image of the given volume name, mounted and selected.
struct MountedImage
{
    KVLinuxSession session;
    QString image;

    bool start(const QString &volumeName, const QString &size = QStringLiteral("64m"))
    {
        if (!session.start())
            return false;
        const auto created = session.harness.create(volumeName, password, volumeName, QStringLiteral("AES-256"), size);
        if (created.exitCode != 0) {
            qWarning() << created.output;
            return false;
        }
        image = session.harness.path(volumeName + QStringLiteral(".sparseimage"));
        if (const KVOptionalError error = session.mount(image)) {
            qWarning() << error->debugDescription();
            return false;
        }
        if (!QTest::qWaitFor([this] { return delegate().unifiedVolumes().size() == 1; }, 30000))
            return false;
        select();
        return true;
    }

    KVAppDelegate &delegate() { return *session.delegate; }
    KVVolumeItemPtr volume() { return delegate().unifiedVolumes().value(0); }
    void select() { delegate().setCurrentSelection(volume()); }
    template<typename T>
    T *outlet(const char *name) { return delegate().mainWindow()->findChild<T *>(QString::fromLatin1(name)); }

    void cleanUp()
    {
        if (!session.harness.onlyMountPoint().isEmpty())
            session.harness.detach(session.harness.onlyMountPoint(), true);
    }
};

} // namespace

class TestKVLinuxCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString unavailable = KVLinuxSession::prepareTestCase(); !unavailable.isEmpty())
            QSKIP(qPrintable(unavailable));
        KVPreferences::setPrefForceUnmount(false);
    }

    // Renamed in the pane: the header, the label and the folder follow, and
    // the list changes in place.
    void renameInThePane()
    {
        MountedImage mounted;
        QVERIFY(mounted.start(QStringLiteral("Photos")));
        const QString oldMountPoint = mounted.volume()->mountPoint();
        mounted.outlet<QToolButton>("renameButton")->click();
        auto *name = mounted.outlet<QLineEdit>("volumeName");
        QVERIFY(!name->isReadOnly());
        name->selectAll();
        QTest::keyClicks(name, QStringLiteral("Holiday"));
        QTest::keyClick(name, Qt::Key_Return);

        QTRY_COMPARE_WITH_TIMEOUT(mounted.volume() ? mounted.volume()->name() : QString(), QStringLiteral("Holiday"), 30000);
        const QString newMountPoint = QDir(mounted.session.harness.mountRoot()).filePath(QStringLiteral("Holiday"));
        QCOMPARE(mounted.volume()->mountPoint(), newMountPoint);
        QCOMPARE(mounted.session.harness.onlyMountPoint(), newMountPoint);
        QVERIFY(!QFileInfo::exists(oldMountPoint));
        const QString device =
            mounted.session.harness.shell(QStringLiteral("findmnt -n -o SOURCE \"$1\""), {newMountPoint}).output.trimmed();
        QCOMPARE(mounted.session.harness.shell(QStringLiteral("PATH=$PATH:/usr/sbin:/sbin e2label \"$1\""), {device}).output.trimmed(),
                 QStringLiteral("Holiday"));
        QTRY_COMPARE(name->text(), QStringLiteral("Holiday"));
        QVERIFY(!visibleAlert(QStringLiteral("errorAlert")));
        mounted.cleanUp();
    }

    // Compacted: the freed space leaves the file, and the volume is back.
    void compactThroughTheActionMenu()
    {
        MountedImage mounted;
        QVERIFY(mounted.start(QStringLiteral("Archive"), QStringLiteral("256m")));
        const QString mountPoint = mounted.volume()->mountPoint();
        const QString filler = QDir(mountPoint).filePath(QStringLiteral("filler"));
        const auto written = mounted.session.harness.shell(
            QStringLiteral("head -c 120000000 /dev/urandom > \"$1\" && sync && rm \"$1\" && sync"), {filler});
        QVERIFY2(written.exitCode == 0, qPrintable(written.output));
        const qint64 before = allocatedBytes(mounted.image);

        auto *compact = mounted.outlet<QPushButton>("amButton3");
        QCOMPARE(compact->text(), QStringLiteral("Compact"));
        compact->click();
        auto *alert = qobject_cast<KVCommandAlert *>(visibleAlert(QStringLiteral("compactAlert")));
        QVERIFY(alert);
        QTest::keyClicks(alert->passwordField(), QString::fromUtf8(password));
        alert->confirmButton()->click();

        // Detached, compacted, and attached again in the same folder.
        QTRY_VERIFY_WITH_TIMEOUT(mounted.delegate().unifiedVolumes().isEmpty(), 30000);
        QTRY_COMPARE_WITH_TIMEOUT(mounted.delegate().unifiedVolumes().size(), 1, 60000);
        QCOMPARE(mounted.volume()->mountPoint(), mountPoint);
        const qint64 after = allocatedBytes(mounted.image);
        QVERIFY2(after < before - 100000000, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
        QVERIFY(!visibleAlert(QStringLiteral("errorAlert")));
        mounted.cleanUp();
    }

    // A process sits in the volume: the alert says who, and forcing works.
    void busyUnmountNamesTheProcess()
    {
        MountedImage mounted;
        QVERIFY(mounted.start(QStringLiteral("Busy")));
        QProcess resident;
        resident.setWorkingDirectory(mounted.volume()->mountPoint());
        resident.start(QStringLiteral("sleep"), {QStringLiteral("600")});
        QVERIFY(resident.waitForStarted());

        mounted.delegate().unmountVolume(mounted.volume());
        QTRY_VERIFY_WITH_TIMEOUT(visibleAlert(QStringLiteral("busyVolumeAlert")), 30000);
        QMessageBox *alert = visibleAlert(QStringLiteral("busyVolumeAlert"));
        QVERIFY2(alert->detailedText().contains(QStringLiteral("sleep (PID %1)").arg(resident.processId())),
                 qPrintable(alert->detailedText()));
        QCOMPARE(mounted.delegate().unifiedVolumes().size(), 1);
        kvSaveScreenshot(alert, QStringLiteral("busy-unmount-alert-real"));

        alert->findChild<QPushButton *>(QStringLiteral("forceUnmountButton"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(mounted.delegate().unifiedVolumes().isEmpty(), 30000);
        resident.kill();
        resident.waitForFinished();
        QTRY_COMPARE_WITH_TIMEOUT(mounted.session.harness.leftovers(), QStringList(), 30000);
    }

    // Keys erased: the volume goes and no password opens the image again.
    void eraseKeyThroughTheActionMenu()
    {
        MountedImage mounted;
        QVERIFY(mounted.start(QStringLiteral("Secrets")));
        auto *eraseKey = mounted.outlet<QPushButton>("amButton1");
        QCOMPARE(eraseKey->text(), QStringLiteral("Erase Key"));
        eraseKey->click();
        auto *alert = qobject_cast<KVCommandAlert *>(visibleAlert(QStringLiteral("eraseKeyAlert")));
        QVERIFY(alert);
        alert->confirmButton()->click();

        QTRY_VERIFY_WITH_TIMEOUT(mounted.delegate().unifiedVolumes().isEmpty(), 30000);
        // The erase follows once the detach has reported: then the header
        // has no keyslot left.
        const auto keyslots = [&] {
            return mounted.session.harness
                .shell(QStringLiteral("PATH=$PATH:/usr/sbin:/sbin cryptsetup luksDump \"$1\" | "
                                      "sed -n '/^Keyslots:/,/^Tokens:/p' | grep -c ': luks2'"),
                       {mounted.image})
                .output.trimmed();
        };
        QTRY_COMPARE_WITH_TIMEOUT(keyslots(), QStringLiteral("0"), 30000);
        QVERIFY(!mounted.session.harness.info().contains(QStringLiteral("images")));
        const auto attached = mounted.session.harness.attach(mounted.image, password);
        QVERIFY2(attached.has(QStringLiteral("DIHLDiskImageAttach() returned 80")), qPrintable(attached.output));
        QVERIFY(!visibleAlert(QStringLiteral("errorAlert")));
        QTRY_COMPARE_WITH_TIMEOUT(mounted.session.harness.leftovers(), QStringList(), 30000);
    }
};

QTEST_MAIN(TestKVLinuxCommands)
#include "tst_kvlinuxcommands.moc"
