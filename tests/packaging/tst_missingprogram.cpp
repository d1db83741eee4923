#include "KVInstalledTree.h"
#include "KVScreenshot.h"
#include "app/KVAppDelegate.h"
#include "app/KVMainWindow.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVWorkspaceNotifications.h"

#include <QCoreApplication>
#include <QFile>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTest>

// An installed Korvelle whose hdiutil has been removed: the application runs
// the programs from the installed paths, says once which one is missing, in a
// sentence a person understands, and keeps running while the system's mounts
// make it look at the list again and again.
class tst_MissingProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void missingProgramIsNamedOnce();

private:
    QList<QMessageBox *> alerts(const KVAppDelegate &delegate) const
    {
        return delegate.mainWindow()->findChildren<QMessageBox *>(QStringLiteral("errorAlert"));
    }
    // Waits until the image engine has run everything queued so far.
    static bool engineIdle(KVDiskImage *engine);

    KVInstalledTree m_tree;
};

bool tst_MissingProgram::engineIdle(KVDiskImage *engine)
{
    const auto drained = std::make_shared<std::atomic<bool>>(false);
    engine->processingQueue().addOperation([drained] { *drained = true; });
    return QTest::qWaitFor([&] { return drained->load(); }, 10000);
}

void tst_MissingProgram::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
    QVERIFY(m_tree.isValid());
    const QString failure = m_tree.install();
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    QVERIFY(QFile::remove(m_tree.path(QStringLiteral("libexec/korvelle/hdiutil"))));
    // Without system_profiler the disk features are simply absent: the disk
    // engine then never looks at this machine's own disks from a test.
    QVERIFY(QFile::remove(m_tree.path(QStringLiteral("libexec/korvelle/system_profiler"))));
}

void tst_MissingProgram::missingProgramIsNamedOnce()
{
    KVWorkspaceNotifications workspace;
    QTemporaryDir recent;
    KVAppDelegate delegate(KVAppDelegate::Services{KVToolPaths::besideApplicationIn(m_tree.path(QStringLiteral("bin"))),
                                                   &workspace,
                                                   KVRecentDocuments(recent.filePath(QStringLiteral("recent.xbel")))});
    delegate.applicationDidFinishLaunching();
    QTRY_COMPARE_WITH_TIMEOUT(alerts(delegate).size(), 1, 10000);

    QMessageBox *alert = alerts(delegate).first();
    QCOMPARE(alert->text(), QStringLiteral("Error executing hdiutil command"));
    QCOMPARE(alert->informativeText(),
             QStringLiteral("The program %1 is missing, so Korvelle cannot run it.")
                 .arg(m_tree.path(QStringLiteral("libexec/korvelle/hdiutil"))));
    kvSaveScreenshot(alert, QStringLiteral("missing-program-alert"));
    alert->close();
    QTRY_VERIFY(alerts(delegate).isEmpty());

    // Every mount on the system makes the image list look again; each look
    // fails the same way and stays silent.
    for (int mount = 0; mount < 3; ++mount) {
        Q_EMIT workspace.didMount({{NSDevicePath, QStringLiteral("/media/usb%1").arg(mount)}});
        QTest::qWait(300);
        QVERIFY(engineIdle(delegate.di()));
    }
    delegate.reloadMountedList();
    QVERIFY(engineIdle(delegate.di()));
    QTest::qWait(100); // the engine's answers reach the window through the event loop
    QVERIFY(alerts(delegate).isEmpty());
    QVERIFY(delegate.unifiedVolumes().isEmpty());
}

QTEST_MAIN(tst_MissingProgram)
#include "tst_missingprogram.moc"
