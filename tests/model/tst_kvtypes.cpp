// The small value types every layer shares: error codes, volume kinds,
// results, and the way back to the GUI thread.
#include "model/KVAppError.h"
#include "model/KVResult.h"
#include "model/KVVolumeKind.h"
#include "platform/KVMainQueue.h"

#include <QTest>
#include <QThread>

class TestKVTypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void errorCodesKeepTheirValues()
    {
        const QList<std::pair<KVAppErrorCode, int>> codes{
            {KVAppErrorCode::WrongPassword, 10},       {KVAppErrorCode::NotFound, 20},
            {KVAppErrorCode::FileExists, 25},          {KVAppErrorCode::InvalidMountPath, 30},
            {KVAppErrorCode::VolumeNotLocked, 30},     {KVAppErrorCode::ResourceBusy, 40},
            {KVAppErrorCode::NoPath, 50},              {KVAppErrorCode::ImageMounted, 60},
            {KVAppErrorCode::ToolMessage, 100},        {KVAppErrorCode::DiskNotFound, 150},
            {KVAppErrorCode::FileSystemNotSupported, 160}, {KVAppErrorCode::DiskInUseByCoreStorage, 170},
            {KVAppErrorCode::InvalidVolumeName, 180},  {KVAppErrorCode::NotAValidVolume, 190},
            {KVAppErrorCode::NoMountPoint, 200},
        };
        for (const auto &[code, value] : codes) {
            const KVAppError error(code, QStringLiteral("Title"), QStringLiteral("Message"));
            QCOMPARE(error.code(), value);
            QCOMPARE(error.domain(), KVAppErrorDomain);
            QVERIFY(error.is(code));
        }
        // The same number in another domain is not the application's code.
        QVERIFY(!KVAppError(NSCocoaErrorDomain, 10, QString(), QString()).is(KVAppErrorCode::WrongPassword));
    }

    void volumeKindsReadAndWriteTheirText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("kind");
        QTest::newRow("image") << "diskImage" << int(KVVolumeKind::DiskImage);
        QTest::newRow("disk") << "disk" << int(KVVolumeKind::Disk);
        QTest::newRow("locked disk") << "notMountedDisk" << int(KVVolumeKind::NotMountedDisk);
        QTest::newRow("none") << "none" << int(KVVolumeKind::None);
    }

    void volumeKindsReadAndWriteTheirText()
    {
        QFETCH(QString, text);
        QFETCH(int, kind);
        QCOMPARE(int(kvVolumeKindFromText(text)), kind);
        QCOMPARE(kvVolumeKindText(KVVolumeKind(kind)), text);
    }

    void unknownKindTextsReadAsNone()
    {
        for (const QString &text : {QString(), QStringLiteral("DiskImage"), QStringLiteral("disk "),
                                    QStringLiteral("diskImage\u0000")})
            QCOMPARE(int(kvVolumeKindFromText(text)), int(KVVolumeKind::None));
    }

    void aResultHoldsAValueOrAnError()
    {
        const KVResult<QString> value(QStringLiteral("/images/Tax.sparseimage"));
        QVERIFY(value && value.hasValue());
        QCOMPARE(value.value(), QStringLiteral("/images/Tax.sparseimage"));
        const KVResult<QString> failure(KVAppError(KVAppErrorCode::NotFound, QStringLiteral("Open"), QStringLiteral("gone")));
        QVERIFY(!failure);
        QVERIFY(failure.error().is(KVAppErrorCode::NotFound));
    }

    void postedCallsWhoseContextIsGoneAreDropped()
    {
        QStringList ran;
        auto *kept = new QObject(this);
        auto *gone = new QObject(this);
        KVMainQueue::post(kept, [&] { ran << QStringLiteral("kept"); });
        KVMainQueue::post(gone, [&] { ran << QStringLiteral("gone"); });
        // From a worker thread, with the pointer the work was made with.
        QThread *worker = QThread::create([&, guard = QPointer<QObject>(gone)] {
            KVMainQueue::post(guard, [&] { ran << QStringLiteral("gone from a worker"); });
            KVMainQueue::post([&] { ran << QStringLiteral("unbound"); });
        });
        worker->start();
        QVERIFY(worker->wait(5000));
        delete worker;
        delete gone;
        QTRY_COMPARE(ran, (QStringList{"kept", "unbound"}));
        QTest::qWait(50);
        QCOMPARE(ran, (QStringList{"kept", "unbound"}));
        delete kept;
    }
};

QTEST_GUILESS_MAIN(TestKVTypes)
#include "tst_kvtypes.moc"
