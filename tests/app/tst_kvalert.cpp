#include "app/KVAlert.h"

#include <QApplication>
#include <QFontMetrics>
#include <QMessageBox>
#include <QTest>
#include <QWidget>

class TestKVAlert : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QApplication::setApplicationDisplayName(QStringLiteral("Korvelle")); }

    void toolLinesLoseTheToolsName_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("shown");
        QTest::newRow("hdiutil") << "hdiutil: attach failed - image not recognized"
                                 << "Attach failed - image not recognized";
        QTest::newRow("diskutil") << "diskutil: did not find disk" << "Did not find disk";
        QTest::newRow("system_profiler") << "system_profiler:  no data" << "No data";
        QTest::newRow("our own message") << "Resource busy, Volume may still be used."
                                         << "Resource busy, Volume may still be used.";
        QTest::newRow("name inside the line") << "The image hdiutil: made" << "The image hdiutil: made";
        QTest::newRow("name alone") << "hdiutil:" << "hdiutil:";
        QTest::newRow("empty") << "" << "";
    }

    void toolLinesLoseTheToolsName()
    {
        QFETCH(QString, message);
        QFETCH(QString, shown);
        QCOMPARE(KVAlert::shownText(message), shown);
    }

    void theAlertShowsTheLineAndIsWideEnoughForItsTitle()
    {
        QWidget window;
        window.resize(200, 100);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        KVAlert::showError(&window, KVAppError(KVAppErrorCode::ToolMessage, QStringLiteral("Unmount failed"),
                                               QStringLiteral("hdiutil: busy")));
        auto *alert = window.findChild<QMessageBox *>(QStringLiteral("errorAlert"));
        QVERIFY(alert);
        QTRY_VERIFY(alert->isVisible());
        QCOMPARE(alert->informativeText(), QStringLiteral("Busy"));
        QCOMPARE(alert->text(), QStringLiteral("Unmount failed"));
        const QString title = alert->windowTitle() + QStringLiteral(" — Korvelle");
        const int needed = QFontMetrics(QApplication::font("QMdiSubWindowTitleBar")).horizontalAdvance(title);
        QVERIFY2(alert->width() > needed + 100, qPrintable(QString::number(alert->width())));
        alert->close();
    }
};

QTEST_MAIN(TestKVAlert)
#include "tst_kvalert.moc"
