#include "app/KVTaskLauncher.h"

#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVWorkspaceNotifications.h"
#include "wizards/KVCreateImageWizardController.h"
#include "wizards/KVEncryptDiskWizardController.h"
#include "wizards/KVMountDiskController.h"

#include "KVToolDouble.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>

namespace {

struct Launcher
{
    Launcher()
        : di(KVToolPaths{hdiutil.path(), diskutil.path(), systemProfiler.path()}, &workspace)
        , disks(KVToolPaths{hdiutil.path(), diskutil.path(), systemProfiler.path()}, &workspace)
        , launcher(&window, &di, &disks, [this](KVSheetReturnCode code, const QString &path) {
            ends.append({code, path});
        })
    {
        window.show();
    }

    KVToolDouble hdiutil{QStringLiteral("hdiutil")};
    KVToolDouble diskutil{QStringLiteral("diskutil")};
    KVToolDouble systemProfiler{QStringLiteral("system_profiler")};
    KVWorkspaceNotifications workspace;
    KVDiskImage di;
    KVDisk disks;
    QWidget window;
    QList<QPair<KVSheetReturnCode, QString>> ends;
    KVTaskLauncher launcher;
};

QFileDialog *openPanel(QWidget *window)
{
    for (auto *panel : window->findChildren<QFileDialog *>()) {
        if (panel->isVisible())
            return panel;
    }
    return nullptr;
}

} // namespace

class TestKVTaskLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    // The save panel first, then the wizard for the chosen file, reused for the next one.
    void createAsksWhereThenShowsTheWizard()
    {
        Launcher l;
        QTemporaryDir folder;
        l.launcher.createDiskImage();
        QFileDialog *panel = openPanel(&l.window);
        QVERIFY(panel);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Choose Disk Image location:"));
        QCOMPARE(panel->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(panel->defaultSuffix(), QStringLiteral("sparseimage"));
        QVERIFY(!l.launcher.createImageWizard());
        const QString file = folder.filePath(QStringLiteral("Letters.sparseimage"));
        Q_EMIT panel->fileSelected(file);
        KVCreateImageWizardController *wizard = l.launcher.createImageWizard();
        QVERIFY(wizard);
        QVERIFY(wizard->isVisible());
        QCOMPARE(wizard->di(), &l.di);
        QCOMPARE(wizard->findChild<QLineEdit *>(QStringLiteral("imageName"))->text(), QStringLiteral("Letters"));

        wizard->findChild<QPushButton *>(QStringLiteral("cancelButton"))->click();
        QCOMPARE(l.ends.size(), 1);
        QCOMPARE(l.ends.first().first, KVSheetReturnCode::Cancelled);
        QCOMPARE(l.ends.first().second, file);

        l.launcher.createDiskImageAt(folder.filePath(QStringLiteral("Photos.sparseimage")));
        QCOMPARE(l.launcher.createImageWizard(), wizard);
        QCOMPARE(wizard->findChild<QLineEdit *>(QStringLiteral("imageName"))->text(), QStringLiteral("Photos"));
    }

    void diskWizardsOpenWithTheDiskEngineAndAskForTheirLists()
    {
        Launcher l;
        l.launcher.encryptDisk();
        QVERIFY(l.launcher.encryptDiskWizard()->isVisible());
        QCOMPARE(l.launcher.encryptDiskWizard()->disks(), &l.disks);
        QTRY_COMPARE(l.systemProfiler.runCount(), 1);
        l.launcher.encryptDiskWizard()->reject();

        l.launcher.mountDisk();
        QVERIFY(l.launcher.mountDiskController()->isVisible());
        QCOMPARE(l.launcher.mountDiskController()->disks(), &l.disks);
        QTRY_VERIFY(l.diskutil.runCount() >= 1);
        QCOMPARE(l.diskutil.arguments(1), (QStringList{"cs", "list", "-plist"}));
    }
};

QTEST_MAIN(TestKVTaskLauncher)
#include "tst_kvtasklauncher.moc"
