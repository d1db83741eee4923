#include "app/KVAlert.h"
#include "app/KVDetailPaneController.h"
#include "app/KVDetailPaneView.h"
#include "app/KVMainWindow.h"
#include "app/KVMountedCellView.h"
#include "app/KVOutlineView.h"
#include "app/KVSidebarModel.h"
#include "app/KVTrayIcon.h"
#include "controls/KVElidedLabel.h"
#include "model/KVDisplayText.h"
#include "platform/KVBookmark.h"

#include "KVMountFixture.h"
#include "KVOutlet.h"
#include "KVScreenshot.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QSignalSpy>

using namespace KVMountFixture;
using namespace Qt::StringLiterals;

namespace {

// Whether `text` reads as one line that cannot reorder what follows it: no
// control characters, no line separators, no directional formatting.
bool isSafeLine(const QString &text)
{
    for (const QChar c : text) {
        const char16_t code = c.unicode();
        if (code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x2028 || code == 0x2029
            || (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069))
            return false;
    }
    return true;
}

// An attached image named `name`, mounted in a folder of that name, whose
// file carries the name too.
KVVolumeItemPtr imageNamed(const QString &name)
{
    const QString mountPoint = u"/media/someone/"_s + name;
    QVariantMap entry = imageEntry(4, mountPoint);
    entry.insert(u"image-path"_s, QString(u"/srv/images/"_s + name + u".sparseimage"_s));
    return KVVolumeItem::create(
        {{u"hdiutilInfo"_s, entry}, {u"diskutilInfo"_s, diskutilInfo(4, mountPoint, 2000000000, 500000000)}}, nullptr);
}

template<typename T = QWidget>
T *outlet(QWidget *window, const char *name)
{
    return kvOutlet<T>(window, QString::fromLatin1(name));
}

} // namespace

class TestKVBadNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { useTestSettings(); }
    void init() { resetUserDefaults(); }
    void cleanup() { closeAlerts(); }

    void namesFromOutsideAreShownSafely_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("screenshot");

        QTest::newRow("NUL") << QString(u"Before\0After"_s) << u"bad-name-nul"_s;
        QTest::newRow("newline") << u"First line\nSecond line"_s << u"bad-name-newline"_s;
        QTest::newRow("CR LF and tab") << u"One\r\nTwo\tThree"_s << u"bad-name-crlf"_s;
        QTest::newRow("right-to-left override") << u"Invoice \u202Efdp.exe"_s << u"bad-name-override"_s;
        QTest::newRow("open isolates") << u"Open \u2067\u2068isolates"_s << u"bad-name-isolates"_s;
        QTest::newRow("4,000 characters") << QString(u"Start"_s + QString(3990, u'W') + u"Final"_s)
                                          << u"bad-name-long"_s;
        QTest::newRow("invalid UTF-8") << QString::fromUtf8("Caf\xC3 \xFF\xFE end") << u"bad-name-utf8"_s;
        QTest::newRow("escape sequence") << u"Red \x1b[31m text"_s << u"bad-name-escape"_s;
    }

    void namesFromOutsideAreShownSafely()
    {
        QFETCH(QString, name);
        QFETCH(QString, screenshot);
        const KVVolumeItemPtr volume = imageNamed(name);
        const QString stored = volume->name();

        KVMainWindow window;
        window.resize(900, 560);
        KVDetailPaneController detail(&window);
        window.reloadSidebar({}, {volume}, volume);
        detail.updateDetailView(volume);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTest::qWait(20);
        kvSaveScreenshot(&window, screenshot);

        // The sidebar row: one line, as high as any other volume's row.
        const KVSidebarModel *model = window.sidebarModel();
        const QModelIndex row = model->index(0, 0, model->sectionIndex(KVSidebarModel::MountedSection));
        QCOMPARE(model->volume(row), volume);
        QVERIFY(isSafeLine(row.data().toString()));
        QVERIFY(isSafeLine(row.data(Qt::ToolTipRole).toString()));
        QVERIFY(isSafeLine(KVMountedCellView(*volume).name()));
        const KVVolumeItemPtr plain = imageVolume(5, u"/media/someone/Plain"_s);
        window.reloadSidebar({}, {volume, plain}, volume);
        QCOMPARE(window.sidebar()->rowRect(model->index(0, 0, model->sectionIndex(KVSidebarModel::MountedSection))).height(),
                 window.sidebar()->rowRect(model->index(1, 0, model->sectionIndex(KVSidebarModel::MountedSection))).height());

        // The detail pane: the name fits its field, the paths are one line and
        // do not widen the window.
        auto *title = outlet<QLineEdit>(&window, "volumeName");
        QVERIFY(isSafeLine(title->text()));
        QVERIFY(title->fontMetrics().horizontalAdvance(title->text()) <= title->contentsRect().width());
        for (const char *label : {"mountPointInfo", "locationOrStatusInfo"}) {
            auto *shown = outlet<KVElidedLabel>(&window, label);
            QVERIFY2(isSafeLine(shown->text()), label);
            QCOMPARE(shown->textFormat(), Qt::PlainText);
            QVERIFY2(shown->fontMetrics().horizontalAdvance(shown->text()) <= shown->contentsRect().width(), label);
            // Cut in the middle: where it ends is still shown.
            QCOMPARE(shown->text().right(5), shown->fullText().right(5));
        }
        QVERIFY(window.minimumSizeHint().width() <= 900);

        // Renaming starts from the name on one line; leaving it as it is
        // renames nothing, although the title showed less of it.
        QSignalSpy renames(&detail, &KVDetailPaneController::renameRequested);
        window.detailPane()->beginRenaming();
        QVERIFY(isSafeLine(title->text()));
        QTest::keyClick(title, Qt::Key_Return);
        QCOMPARE(renames.count(), 0);

        // An alert that names the file.
        const KVOptionalError missing = KVBookmark::checkReachable(u"/nonexistent/"_s + name + u".sparseimage"_s);
        QVERIFY(missing);
        QMessageBox *alert = KVAlert::showError(&window, *missing);
        QVERIFY(isSafeLine(alert->informativeText()));
        QVERIFY(alert->informativeText().size() < 200);

        // The panel's menu.
        KVTrayIcon tray;
        tray.setVolumes({volume});
        const QString item = tray.menu()->actions().constFirst()->text();
        QVERIFY(isSafeLine(item));
        QVERIFY(item.size() <= KVDisplayText::MaximumLength + 2);
        // What the tools get back is the name as it came.
        QCOMPARE(volume->name(), stored);
    }

    void markupAndAmpersandsAreShownAsTyped()
    {
        const KVVolumeItemPtr volume = imageNamed(u"<i>Tom & Jerry"_s);
        KVTrayIcon tray;
        tray.setVolumes({volume});
        // A single "&" would underline the next letter and swallow itself.
        QCOMPARE(tray.menu()->actions().constFirst()->text(), u"<i>Tom && Jerry"_s);

        KVMainWindow window;
        KVDetailPaneController detail(&window);
        detail.updateDetailView(volume);
        QCOMPARE(outlet<QLabel>(&window, "mountPointInfo")->text(), u"/media/someone/<i>Tom & Jerry"_s);
        QCOMPARE(outlet<QLabel>(&window, "mountPointInfo")->textFormat(), Qt::PlainText);
    }
};

QTEST_MAIN(TestKVBadNames)
#include "tst_kvbadnames.moc"
