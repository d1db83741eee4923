#include "platform/KVRecentDocuments.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

class TestKVRecentDocuments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsImagesInTheDesktopList()
    {
        QTemporaryDir dir;
        const KVRecentDocuments recent(dir.filePath(QStringLiteral("share/recently-used.xbel")));
        const QString image = dir.filePath(QStringLiteral("My Secrets.sparseimage"));
        recent.noteNewRecentDocumentURL(image);
        recent.noteNewRecentDocumentURL(dir.filePath(QStringLiteral("other.sparseimage")));
        recent.noteNewRecentDocumentURL(image);

        QFile file(recent.fileName());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray xbel = file.readAll();
        QVERIFY(xbel.contains(QUrl::fromLocalFile(image).toEncoded()));
        QCOMPARE(xbel.count("<bookmark "), 2);
        QVERIFY(xbel.contains("application/x-apple-diskimage-sparse"));
        QVERIFY(xbel.contains("name=\"tst_kvrecentdocuments\""));
    }

    void aDamagedListIsLeftAlone()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("recently-used.xbel"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<xbel><bookmark");
        file.close();
        KVRecentDocuments(path).noteNewRecentDocumentURL(QStringLiteral("/tmp/a.sparseimage"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("<xbel><bookmark"));
    }
};

QTEST_GUILESS_MAIN(TestKVRecentDocuments)
#include "tst_kvrecentdocuments.moc"
