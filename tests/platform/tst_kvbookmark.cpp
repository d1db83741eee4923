#include "platform/KVBookmark.h"

#include "KVToolDouble.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestKVBookmark : public QObject
{
    Q_OBJECT

private:
    static QString makeFile(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot create %s", qPrintable(path));
        file.write("sparse image");
        return path;
    }

    static KVBookmark::Resolution resolved(const QByteArray &bookmark)
    {
        auto result = KVBookmark::resolve(bookmark);
        if (!result)
            qFatal("not resolved: %s", qPrintable(result.error().debugDescription()));
        return result.value();
    }

private Q_SLOTS:
    void followsAFileThatMovesAndIsRenamed()
    {
        QTemporaryDir dir;
        QDir(dir.path()).mkpath(QStringLiteral("Documents/Images"));
        QDir(dir.path()).mkpath(QStringLiteral("Archive/2026"));
        const QString original = makeFile(dir.filePath(QStringLiteral("Documents/Images/Secret Stuff.sparseimage")));
        const QByteArray bookmark = KVBookmark::create(original).value();

        KVBookmark::Resolution found = resolved(bookmark);
        QCOMPARE(found.path, original);
        QVERIFY(!found.stale);

        const QString renamed = dir.filePath(QStringLiteral("Documents/Images/Ünïcode name.sparseimage"));
        QVERIFY(QFile::rename(original, renamed));
        found = resolved(bookmark);
        QCOMPARE(found.path, renamed);
        QVERIFY(found.stale);

        const QString moved = dir.filePath(QStringLiteral("Archive/2026/old.sparseimage"));
        QVERIFY(QFile::rename(renamed, moved));
        found = resolved(bookmark);
        QCOMPARE(found.path, moved);
        QVERIFY(found.stale);

        // A fresh bookmark of the new place is not stale.
        QVERIFY(!resolved(KVBookmark::create(moved).value()).stale);
    }

    void anotherFileAtTheOldPathIsNotTheBookmarkedOne()
    {
        QTemporaryDir dir;
        const QString path = makeFile(dir.filePath(QStringLiteral("a.sparseimage")));
        const QByteArray bookmark = KVBookmark::create(path).value();
        QVERIFY(QFile::rename(path, dir.filePath(QStringLiteral("b.sparseimage"))));
        makeFile(path);
        QCOMPARE(resolved(bookmark).path, dir.filePath(QStringLiteral("b.sparseimage")));
    }

    void aDeletedFileIsAClearError()
    {
        QTemporaryDir dir;
        const QString path = makeFile(dir.filePath(QStringLiteral("Gone.sparseimage")));
        const QByteArray bookmark = KVBookmark::create(path).value();
        QVERIFY(QFile::remove(path));
        auto result = KVBookmark::resolve(bookmark);
        QVERIFY(!result.hasValue());
        QVERIFY(result.error().localizedFailureReason().contains(u"Gone.sparseimage"));
        QVERIFY(KVBookmark::checkReachable(path));

        auto missing = KVBookmark::create(path);
        QVERIFY(!missing.hasValue());
        QVERIFY(!KVBookmark::resolve(QByteArray("garbage")).hasValue());
        QVERIFY(!KVBookmark::resolve(QByteArray()).hasValue());
    }

    void aPathWithANulIsADamagedBookmark()
    {
        // Cut at the NUL, the path would name another file.
        auto result = KVBookmark::resolve(KVToolDouble::readFixture(QStringLiteral("propertylist/bookmark-path-with-nul.bplist")));
        QVERIFY(!result.hasValue());
        QCOMPARE(result.error().code(), 259);
        QCOMPARE(result.error().localizedFailureReason(), QStringLiteral("The reference to the file is damaged."));
    }
};

QTEST_GUILESS_MAIN(TestKVBookmark)
#include "tst_kvbookmark.moc"
