// The change-password and resize dialogs against Korvelle's own Linux tools,
// with real encrypted images.
#include "wizards/KVChangePasswordController.h"
#include "wizards/KVResizeController.h"

#include "app/KVSheetReturnCode.h"
#include "controls/KVPasswordFieldView.h"
#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVWorkspaceNotifications.h"

#include "KVImageToolHarness.h"
#include "KVScreenshot.h"

#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <atomic>
#include <memory>

namespace {

const QString Password = QStringLiteral("correct horse");

// Waits for an engine's block; false when it did not come within a minute.
template<typename Start>
bool waitFor(Start start)
{
    auto done = std::make_shared<std::atomic<bool>>(false);
    start([done] { *done = true; });
    return QTest::qWaitFor([done] { return done->load(); }, 60000);
}

QString describe(const KVOptionalError &error)
{
    return error ? error->debugDescription() : QString();
}

// The size of the file system mounted at `mountPoint`, as df reports it, in bytes.
qint64 dfSize(const QString &mountPoint)
{
    QProcess df;
    df.start(QStringLiteral("df"), {QStringLiteral("--output=size"), QStringLiteral("-B1"), mountPoint});
    if (!df.waitForFinished(10000) || df.exitCode() != 0)
        return -1;
    return QString::fromUtf8(df.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts).value(1).trimmed().toLongLong();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

struct Session
{
    kvlinux::KVImageToolHarness harness;
    std::unique_ptr<KVDiskImage> di;

    bool start()
    {
        if (!harness.isValid())
            return false;
        // The tools keep what is attached in the runtime directory they are given.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(harness.runtimeDirectory()));
        di = std::make_unique<KVDiskImage>(
            KVToolPaths{QStringLiteral(KV_TEST_HDIUTIL), QStringLiteral(KV_TEST_DISKUTIL), QString()},
            KVWorkspaceNotifications::shared());
        return true;
    }

    KVOptionalError mount(const QString &image, const QString &password, bool readOnly = false)
    {
        KVOptionalError result = KVAppError(QStringLiteral("test"), -1, QStringLiteral("no answer"), QString());
        waitFor([&](auto done) {
            di->mountDiskImage(image, password, readOnly, QUrl::fromLocalFile(harness.mountRoot() + u'/'), false,
                               [&result, done](const KVOptionalError &error) {
                                   result = error;
                                   done();
                               });
        });
        return result;
    }

    // The engine's item for the image that is mounted now.
    KVVolumeItemPtr mountedItem()
    {
        waitFor([&](auto done) { di->updateMountedDiskImages(std::nullopt, [done](const KVOptionalError &) { done(); }); });
        QTest::qWait(0); // the list is replaced on the GUI thread
        if (!QTest::qWaitFor([this] { return di->mountedDiskImages().size() == 1; }, 5000))
            return nullptr;
        return di->mountedDiskImages().value(0);
    }

    std::optional<QVariantMap> limits(const KVVolumeItemPtr &item)
    {
        std::optional<QVariantMap> found;
        waitFor([&](auto done) {
            di->getLimits(item, Password, [&found, done](const std::optional<QVariantMap> &limits, const KVOptionalError &) {
                found = limits;
                done();
            });
        });
        return found;
    }

    void unmountAll()
    {
        if (const KVVolumeItemPtr item = mountedItem())
            waitFor([&](auto done) { di->unmountVolume(item, false, [done](const KVOptionalError &) { done(); }); });
    }
};

} // namespace

class TestKVLinuxImageDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString unavailable = kvlinux::KVImageToolHarness::kernelPathUnavailable();
        if (!unavailable.isEmpty())
            QSKIP(qPrintable(QStringLiteral("real images cannot be mounted here: ") + unavailable));
    }

    void changedPasswordIsTheOnlyOneThatOpens()
    {
        Session session;
        QVERIFY(session.start());
        kvlinux::KVImageToolHarness &harness = session.harness;
        const QString image = harness.path(QStringLiteral("Rekeyed.sparseimage"));
        QVERIFY(harness.create(QStringLiteral("Rekeyed"), Password.toUtf8(), QStringLiteral("Rekeyed")).exitCode == 0);
        KVOptionalError mounted = session.mount(image, Password);
        QVERIFY2(!mounted, qPrintable(describe(mounted)));
        const KVVolumeItemPtr item = session.mountedItem();
        QVERIFY(item);

        QWidget window;
        window.show();
        auto *dialog = new KVChangePasswordController(&window);
        dialog->setDi(session.di.get());
        QSignalSpy finished(dialog, &QDialog::finished);
        const QString newPassword = QStringLiteral("n\u00e9w \U0001F511 one");
        const auto fill = [dialog](const char *field, const QString &text) {
            auto *edit = dialog->findChild<KVPasswordFieldView *>(QString::fromLatin1(field));
            edit->clear();
            edit->insert(text);
        };

        // A wrong old password first: said in the sheet, nothing changes.
        dialog->setCurrentSelection(item);
        dialog->open();
        fill("oldPasswordField", QStringLiteral("not it"));
        fill("passwordField", newPassword);
        fill("confirmPasswordField", newPassword);
        dialog->findChild<QPushButton *>(QStringLiteral("changeButton"))->click();
        QLabel *line = dialog->findChild<QLabel *>(QStringLiteral("errorNotification"));
        QTRY_VERIFY_WITH_TIMEOUT(line->isVisible(), 60000);
        QCOMPARE(finished.size(), 0);

        fill("oldPasswordField", Password);
        dialog->findChild<QPushButton *>(QStringLiteral("changeButton"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 60000);
        QCOMPARE(finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Succeeded));

        session.unmountAll();
        QTRY_COMPARE_WITH_TIMEOUT(harness.leftovers(), QStringList(), 20000);
        mounted = session.mount(image, Password);
        QVERIFY(mounted);
        QCOMPARE(mounted->code(), 10);
        mounted = session.mount(image, newPassword);
        QVERIFY2(!mounted, qPrintable(describe(mounted)));
        session.unmountAll();
        QTRY_COMPARE_WITH_TIMEOUT(harness.leftovers(), QStringList(), 20000);
    }

    void resizeAMountedImageAndBack()
    {
        Session session;
        QVERIFY(session.start());
        kvlinux::KVImageToolHarness &harness = session.harness;
        const QString image = harness.path(QStringLiteral("Growing.sparseimage"));
        QVERIFY(harness.create(QStringLiteral("Growing"), Password.toUtf8(), QStringLiteral("Growing")).exitCode == 0);
        const KVOptionalError mounted = session.mount(image, Password);
        QVERIFY2(!mounted, qPrintable(describe(mounted)));
        KVVolumeItemPtr item = session.mountedItem();
        QVERIFY(item);
        const QString mountPoint = item->mountPoint();
        const QByteArray content = QByteArray("kept across resizes\n").repeated(1000);
        {
            QFile file(mountPoint + QStringLiteral("/notes.txt"));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        }
        const qint64 before = dfSize(mountPoint);
        QVERIFY2(before > 0 && before < 64000000, qPrintable(QString::number(before)));

        QWidget window;
        window.show();
        auto *dialog = new KVResizeController(&window);
        dialog->setDi(session.di.get());
        QSignalSpy finished(dialog, &QDialog::finished);

        // Grow from 64 MB to 200 MB.
        std::optional<QVariantMap> limits = session.limits(item);
        QVERIFY(limits);
        dialog->setDictFromLimits(*limits);
        dialog->setCurrentSelection(item);
        dialog->setVolumePassword(Password);
        dialog->open();
        QCOMPARE(float(dialog->sizeSliderValue()), float(64 * 1024 * 1024));
        dialog->setSizeSliderValue(200e6);
        kvSaveScreenshot(dialog, QStringLiteral("resize-dialog-real-image"));
        dialog->findChild<QPushButton *>(QStringLiteral("resizeButton"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 120000);
        QCOMPARE(finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Succeeded));
        QVERIFY(!dialog->hasVolumePassword());

        item = session.mountedItem();
        QVERIFY(item);
        QCOMPARE(item->mountPoint(), mountPoint);
        QCOMPARE(readFile(mountPoint + QStringLiteral("/notes.txt")), content);
        const qint64 grown = dfSize(mountPoint);
        QVERIFY2(grown > 150000000 && grown <= 200000000, qPrintable(QString::number(grown)));

        // And back to 100 MB, within the limits the image now has.
        limits = session.limits(item);
        QVERIFY(limits);
        dialog->setDictFromLimits(*limits);
        dialog->setCurrentSelection(item);
        dialog->setVolumePassword(Password);
        dialog->open();
        QVERIFY(dialog->minSize() <= 100e6);
        dialog->setSizeSliderValue(100e6);
        dialog->findChild<QPushButton *>(QStringLiteral("resizeButton"))->click();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, 120000);
        QCOMPARE(finished.at(1).at(0).toInt(), int(KVSheetReturnCode::Succeeded));

        item = session.mountedItem();
        QVERIFY(item);
        QCOMPARE(item->mountPoint(), mountPoint);
        QCOMPARE(readFile(mountPoint + QStringLiteral("/notes.txt")), content);
        const qint64 shrunk = dfSize(mountPoint);
        QVERIFY2(shrunk > 60000000 && shrunk <= 100000000, qPrintable(QString::number(shrunk)));

        session.unmountAll();
        QTRY_COMPARE_WITH_TIMEOUT(harness.leftovers(), QStringList(), 20000);
    }
};

QTEST_MAIN(TestKVLinuxImageDialogs)
#include "tst_kvlinuximagedialogs.moc"
