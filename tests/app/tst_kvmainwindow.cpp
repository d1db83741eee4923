#include "app/KVMainWindow.h"

#include "KVScreenshot.h"

#include <QAbstractItemModel>
#include <QTest>
#include <QTreeView>

class TestKVMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTitleAndSections()
    {
        KVMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        QCOMPARE(window.windowTitle(), QStringLiteral("Korvelle"));
        const QAbstractItemModel *model = window.sidebar()->model();
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(model->index(0, 0).data().toString(), QStringLiteral("Favorites"));
        QCOMPARE(model->index(1, 0).data().toString(), QStringLiteral("Mounted"));
        kvSaveScreenshot(&window, QStringLiteral("main-window-empty"));
    }
};

QTEST_MAIN(TestKVMainWindow)
#include "tst_kvmainwindow.moc"
