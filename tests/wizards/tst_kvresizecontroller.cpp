#include "wizards/KVResizeController.h"

#include "app/KVSheetReturnCode.h"
#include "controls/KVSpaceIndicatorView.h"
#include "controls/LogarithmicSlider.h"

#include "../app/KVMountFixture.h"
#include "KVScreenshot.h"

#include <QEnterEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

#include <atomic>

using namespace KVMountFixture;

namespace {

// hdiutil for the resize sequence: detach, resize and attach succeed unless a
// file "<verb>-fails" exists in the double's folder, then they print what
// hdiutil prints when it fails.
constexpr char ResizeScript[] = R"sh(case "$1" in
info) cat "$d/info.plist"; exit 0;;
detach) if [ -f "$d/detach-fails" ]; then cat "$d/detach-busy.txt"; exit 1; fi
  printf '"disk3" unmounted.\n"disk3" ejected.\n'; exit 0;;
resize) if [ -f "$d/resize-fails" ]; then cat "$d/resize-in-use.txt"; exit 1; fi; exit 0;;
attach) if [ -f "$d/attach-fails" ]; then cat "$d/attach-failure.txt"; exit 1; fi
  cat "$d/attach-success.txt"; exit 0;;
esac
)sh";

QVariantMap limits(double minSectors, double currentSectors)
{
    return {{QStringLiteral("subcontent-list"),
             QVariantList{QVariantMap{{QStringLiteral("content-min-length"), minSectors},
                                      {QStringLiteral("content-length"), currentSectors},
                                      {QStringLiteral("content-max-length"), 1e12}}}}};
}

KVVolumeItemPtr image(qint64 total, qint64 free, bool readOnly = false)
{
    const QString mountPoint = QStringLiteral("/media/someone/Secret");
    QVariantMap info = diskutilInfo(3, mountPoint, total, free);
    info[QStringLiteral("Writable")] = !readOnly;
    return KVVolumeItem::create(
        {{QStringLiteral("hdiutilInfo"), imageEntry(3, mountPoint)}, {QStringLiteral("diskutilInfo"), info}}, nullptr);
}

template<typename T>
T *part(QWidget *dialog, const char *name)
{
    auto *found = dialog->findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

int openAlerts()
{
    int count = 0;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
            ++count;
    }
    return count;
}

} // namespace

class TestKVResizeController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { closeAlerts(); }

    void sizesFromLimits_data();
    void sizesFromLimits();
    void missingLimitsOfferNothing_data();
    void missingLimitsOfferNothing();
    void sliderStaysWithinLimits();
    void usedShare_data();
    void usedShare();
    void settersBeforeAndAfterFirstShow();
    void spaceIndicatorLabelsFollowTheBar();
    void outletsAndIdentifiers();
    void cancelEndsAndWipes();
    void resizeSequence_data();
    void resizeSequence();
};

void TestKVResizeController::sizesFromLimits_data()
{
    QTest::addColumn<double>("minSectors");
    QTest::addColumn<double>("currentSectors");
    QTest::addColumn<double>("minSize");
    QTest::addColumn<double>("openSize");
    QTest::addColumn<QString>("mid1");
    QTest::addColumn<QString>("mid2");

    // 10^8 bytes with a minimum of 10^5: the scale's thirds are 10^7 and 10^9.
    QTest::newRow("even thirds") << 1e5 / 512 << 1e8 / 512 << 1e5 << 1e8 << u"10.0 MB"_qs << u"1.0 GB"_qs;
    QTest::newRow("no minimum means the current size")
        << 0.0 << 1e8 / 512 << 1e8 << 1e8 << u"1.0 GB"_qs << u"10.0 GB"_qs;
    QTest::newRow("minimum above the current size opens at the minimum")
        << 2e8 / 512 << 1e8 / 512 << 2e8 << 2e8 << u"1.6 GB"_qs << u"12.6 GB"_qs;
    QTest::newRow("64 MB image") << 40960.0 << 131072.0 << 20971520.0 << 67108864.0 << u"353.0 MB"_qs
                                 << u"5.9 GB"_qs;
}

void TestKVResizeController::sizesFromLimits()
{
    QFETCH(double, minSectors);
    QFETCH(double, currentSectors);
    QFETCH(double, minSize);
    QFETCH(double, openSize);
    QFETCH(QString, mid1);
    QFETCH(QString, mid2);

    KVResizeController dialog;
    dialog.setDictFromLimits(limits(minSectors, currentSectors));
    dialog.show();
    QCOMPARE(dialog.minSize(), minSize);
    QCOMPARE(dialog.sizeSliderValue(), openSize);
    QCOMPARE(dialog.maxSizeSliderValue(), 11.0);
    QCOMPARE(part<QLabel>(&dialog, "mid1SizeLabel")->text(), mid1);
    QCOMPARE(part<QLabel>(&dialog, "mid2SizeLabel")->text(), mid2);
    QCOMPARE(part<QLabel>(&dialog, "maxSizeLabel")->text(), u"100 GB"_qs);
    auto *slider = part<LogarithmicSlider>(&dialog, "resizeSlider");
    QCOMPARE(slider->minimum(), LogarithmicSlider::valueForPosition(float(std::log10(minSize))));
    QCOMPARE(slider->maximum(), 1100);
    QVERIFY(part<QPushButton>(&dialog, "resizeButton")->isEnabled());
}

void TestKVResizeController::missingLimitsOfferNothing_data()
{
    QTest::addColumn<QVariantMap>("limits");
    QTest::newRow("no subcontent-list") << QVariantMap{{QStringLiteral("size-max"), 1}};
    QTest::newRow("empty subcontent-list") << QVariantMap{{QStringLiteral("subcontent-list"), QVariantList{}}};
    QTest::newRow("entry without sizes")
        << QVariantMap{{QStringLiteral("subcontent-list"), QVariantList{QVariantMap{}}}};
}

void TestKVResizeController::missingLimitsOfferNothing()
{
    QFETCH(QVariantMap, limits);
    KVResizeController dialog;
    dialog.setDictFromLimits(limits);
    dialog.show();
    QVERIFY(!part<QPushButton>(&dialog, "resizeButton")->isEnabled());
    QVERIFY(part<QPushButton>(&dialog, "cancelButton")->isEnabled());
    QVERIFY(part<QLabel>(&dialog, "newSizeLabel")->text().contains(u"could not be read"));
    dialog.reset();
    QVERIFY(!part<QPushButton>(&dialog, "resizeButton")->isEnabled());
}

void TestKVResizeController::sliderStaysWithinLimits()
{
    KVResizeController dialog;
    dialog.setDictFromLimits(limits(1e8 / 512, 2e8 / 512));
    dialog.show();
    auto *slider = part<LogarithmicSlider>(&dialog, "resizeSlider");
    slider->setValue(0);
    QCOMPARE(dialog.sizeSliderValue(), 1e8);
    slider->triggerAction(QAbstractSlider::SliderToMinimum);
    QVERIFY(dialog.sizeSliderValue() >= 1e8);
    slider->triggerAction(QAbstractSlider::SliderToMaximum);
    QCOMPARE(float(dialog.sizeSliderValue()), 1e11f);
}

void TestKVResizeController::usedShare_data()
{
    QTest::addColumn<qint64>("used");
    QTest::addColumn<double>("size");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty volume") << qint64(0) << 1e8 << u"0 %"_qs;
    QTest::newRow("truncated") << qint64(37990000) << 1e8 << u"37 %"_qs;
    QTest::newRow("full") << qint64(100000000) << 1e8 << u"100 %"_qs;
    QTest::newRow("no size yet") << qint64(5) << 0.0 << u"0 %"_qs;
}

void TestKVResizeController::usedShare()
{
    QFETCH(qint64, used);
    QFETCH(double, size);
    QFETCH(QString, text);
    QCOMPARE(KVResizeController::usedSpacePercentageText(used, size), text);
}

void TestKVResizeController::settersBeforeAndAfterFirstShow()
{
    // The shell sets everything before the first show...
    KVResizeController dialog;
    dialog.setDictFromLimits(limits(1e7 / 512, 1e8 / 512));
    dialog.setCurrentSelection(image(100000000, 75000000, true));
    QCOMPARE(dialog.usedSpace(), 0); // kept aside until the window exists
    dialog.show();
    QCOMPARE(dialog.usedSpace(), 25000000);
    QCOMPARE(dialog.usedSpacePercentage(), u"25 %"_qs);
    QCOMPARE(part<QLabel>(&dialog, "usedSpacePercentageLabel")->text(), u"25 %"_qs);
    QCOMPARE(dialog.volumeLocation(), u"/home/someone/3.sparseimage"_qs);
    QVERIFY(dialog.volumeReadOnly());
    QCOMPARE(dialog.volumeMountPath(), QUrl::fromLocalFile(u"/media/someone/"_qs));

    // ...and again for the next image, after it.
    dialog.setCurrentSelection(image(400000000, 300000000));
    dialog.setDictFromLimits(limits(1e8 / 512, 4e8 / 512));
    QCOMPARE(dialog.usedSpace(), 100000000);
    QCOMPARE(dialog.usedSpacePercentage(), u"25 %"_qs);
    QVERIFY(!dialog.volumeReadOnly());
    QCOMPARE(dialog.minSize(), 1e8);
    QCOMPARE(dialog.sizeSliderValue(), 4e8);
    auto *slider = part<LogarithmicSlider>(&dialog, "resizeSlider");
    slider->setPosition(9.0f);
    QCOMPARE(dialog.usedSpacePercentage(), u"10 %"_qs);
}

void TestKVResizeController::spaceIndicatorLabelsFollowTheBar()
{
    KVResizeController dialog;
    dialog.setDictFromLimits(limits(1e7 / 512, 1e8 / 512));
    dialog.setCurrentSelection(image(100000000, 60000000));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto *indicator = part<KVSpaceIndicatorView>(&dialog, "spaceIndicator");
    QCOMPARE(indicator->customProgressIndicatorHeight(), 6.0);
    QCOMPARE(indicator->height(), 6);
    QCOMPARE(indicator->valuePercent(), 0.4f);
    auto *used = part<QLabel>(&dialog, "usedSpaceField");
    QVERIFY(!used->isVisible());
    const int barEnd = indicator->mapTo(&dialog, QPoint(qRound(indicator->shapes().barEnd), 0)).x();
    QVERIFY(qAbs(used->geometry().center().x() - barEnd) <= 1);
    QVERIFY(used->y() > indicator->mapTo(&dialog, QPoint(0, indicator->height())).y());
    QCOMPARE(used->text(), u"40.0 MB used"_qs);

    // The two fields show only while the pointer is over the bar.
    QEnterEvent enter(QPointF(2, 2), QPointF(2, 2), indicator->mapToGlobal(QPointF(2, 2)));
    QApplication::sendEvent(indicator, &enter);
    QVERIFY(used->isVisible());
    QVERIFY(part<QLabel>(&dialog, "freeSpaceField")->isVisible());
    kvSaveScreenshot(&dialog, u"resize-dialog-pointer-over-used-space"_qs);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(indicator, &leave);
    QVERIFY(!used->isVisible());
}

void TestKVResizeController::outletsAndIdentifiers()
{
    KVResizeController dialog;
    for (const char *name : {"resizeSlider", "minSizeLabel", "mid1SizeLabel", "mid2SizeLabel", "maxSizeLabel",
                             "spaceIndicator", "resizeButton", "cancelButton"})
        QVERIFY2(dialog.findChild<QWidget *>(QString::fromLatin1(name)), name);
    QCOMPARE(part<QPushButton>(&dialog, "resizeButton")->property("identifier").toString(), u"resize"_qs);
    QCOMPARE(part<QPushButton>(&dialog, "cancelButton")->property("identifier").toString(), u"cancel"_qs);
}

void TestKVResizeController::cancelEndsAndWipes()
{
    QWidget window;
    auto *dialog = new KVResizeController(&window);
    dialog->setDictFromLimits(limits(1e7 / 512, 1e8 / 512));
    dialog->setVolumePassword(u"secret"_qs);
    QSignalSpy finished(dialog, &QDialog::finished);
    window.show();
    dialog->open();
    QTest::keyClick(dialog, Qt::Key_Escape);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), int(KVSheetReturnCode::Cancelled));
    QVERIFY(!dialog->hasVolumePassword());
}

void TestKVResizeController::resizeSequence_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<QStringList>("verbs");
    QTest::addColumn<int>("alerts");
    QTest::addColumn<int>("returnCode");

    const int succeeded = int(KVSheetReturnCode::Succeeded);
    const int cancelled = int(KVSheetReturnCode::Cancelled);
    const QStringList all{u"detach"_qs, u"resize"_qs, u"attach"_qs};
    QTest::newRow("all succeed") << QString() << false << all << 0 << succeeded;
    QTest::newRow("read-only image") << QString() << true << all << 0 << succeeded;
    // The volume comes back although the image kept its size.
    QTest::newRow("resize fails") << u"resize"_qs << true << all << 1 << cancelled;
    QTest::newRow("unmount fails") << u"detach"_qs << false << QStringList{u"detach"_qs} << 1 << cancelled;
    QTest::newRow("remount fails") << u"attach"_qs << false << all << 1 << cancelled;
}

void TestKVResizeController::resizeSequence()
{
    QFETCH(QString, failing);
    QFETCH(bool, readOnly);
    QFETCH(QStringList, verbs);
    QFETCH(int, alerts);
    QFETCH(int, returnCode);

    KVToolDouble hdiutil(u"hdiutil"_qs);
    KVToolDouble diskutil(u"diskutil"_qs);
    hdiutil.setScript(ResizeScript);
    hdiutil.addFile(u"info.plist"_qs, KVPropertyList::encodeXml(QVariantMap{{u"images"_qs, QVariantList{}}}));
    for (const char *fixture : {"detach-busy.txt", "resize-in-use.txt", "attach-success.txt"})
        hdiutil.addFile(QString::fromLatin1(fixture), KVToolDouble::readFixture(u"hdiutil/"_qs + QString::fromLatin1(fixture)));
    hdiutil.addFile(u"attach-failure.txt"_qs, KVToolDouble::readFixture(u"hdiutil/attach-no-mountable-file-systems.txt"_qs));
    if (!failing.isEmpty())
        hdiutil.addFile(failing + u"-fails"_qs, QByteArray());
    KVWorkspaceNotifications workspace;
    KVDiskImage di(KVToolPaths{hdiutil.path(), diskutil.path(), QString()}, &workspace);

    QWidget window;
    auto *dialog = new KVResizeController(&window);
    dialog->setDi(&di);
    dialog->setDictFromLimits(limits(40960, 131072));
    dialog->setCurrentSelection(image(67108864, 60000000, readOnly));
    QString password = u"pass wörd"_qs;
    dialog->setVolumePassword(password);
    QSignalSpy finished(dialog, &QDialog::finished);
    window.show();
    dialog->open();
    dialog->setSizeSliderValue(2e8);
    kvSaveScreenshot(dialog, u"resize-dialog"_qs);

    part<QPushButton>(dialog, "resizeButton")->click();
    QVERIFY(!part<QPushButton>(dialog, "resizeButton")->isEnabled());
    QVERIFY(!part<QPushButton>(dialog, "cancelButton")->isEnabled());
    QTRY_COMPARE(finished.size(), 1);
    // Whatever is still queued has run, and nothing ended the sheet twice.
    const auto drained = std::make_shared<std::atomic<bool>>(false);
    di.processingQueue().addOperation([drained] { *drained = true; });
    QTRY_VERIFY(drained->load());
    QTest::qWait(50);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), returnCode);
    QTRY_COMPARE(openAlerts(), alerts);

    // The engine detaches the volume's disk and then the image's device: one unmount.
    QStringList ran;
    QList<int> runOf;
    for (int run = 1; run <= hdiutil.runCount(); ++run) {
        const QString verb = hdiutil.arguments(run).value(0);
        if (ran.isEmpty() || ran.last() != verb) {
            ran << verb;
            runOf << run;
        }
    }
    QCOMPARE(ran, verbs);
    if (verbs.contains(u"resize"_qs)) {
        QCOMPARE(hdiutil.arguments(runOf.at(1)),
                 (QStringList{u"resize"_qs, u"-size"_qs, u"-stdinpass"_qs, u"200m"_qs, u"/home/someone/3.sparseimage"_qs}));
        QCOMPARE(hdiutil.standardInput(runOf.at(1)), password.toUtf8());
    }
    if (verbs.contains(u"attach"_qs)) {
        const QStringList attach = hdiutil.arguments(runOf.at(2));
        QVERIFY2(attach.contains(u"/home/someone/3.sparseimage"_qs), qPrintable(attach.join(u' ')));
        QCOMPARE(attach.contains(u"-readonly"_qs), readOnly);
        QCOMPARE(attach.value(attach.indexOf(u"-mountroot"_qs) + 1), u"/media/someone"_qs);
        QCOMPARE(hdiutil.standardInput(runOf.at(2)), password.toUtf8());
    }
    QVERIFY(!dialog->hasVolumePassword());
    QVERIFY(part<QPushButton>(dialog, "cancelButton")->isEnabled());
}

QTEST_MAIN(TestKVResizeController)
#include "tst_kvresizecontroller.moc"
