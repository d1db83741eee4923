#include "diskimage/KVHdiutil.h"
#include "tools/KVPropertyList.h"

#include "KVToolDouble.h"

#include <QTest>

namespace {

QByteArray fixture(const char *name)
{
    return KVToolDouble::readFixture(QStringLiteral("hdiutil/") + QLatin1String(name));
}

const QString Success; // an empty expected message: no error at all

// Runs one verb with fixed arguments; what counts here is how its output is judged.
KVOptionalError runVerb(const KVHdiutil &hdiutil, const QString &verb, QStringList *lines = nullptr)
{
    const QString image = QStringLiteral("/Users/someone/Secret.sparseimage");
    if (verb == u"attach")
        return hdiutil.attach(image, KVSecret(QStringLiteral("pw")), false, std::nullopt, false);
    if (verb == u"detach")
        return hdiutil.detach(QStringLiteral("/dev/disk4"), false);
    if (verb == u"create")
        return hdiutil.create(QStringLiteral("/Users/someone/Secret"), 100.0f, QString(), QString(), false,
                              KVSecret(QStringLiteral("pw")), [lines](const QString &line) {
                                  if (lines)
                                      lines->append(line);
                              });
    if (verb == u"chpass")
        return hdiutil.changePassword(image, KVHdiutil::passwordChange(QStringLiteral("a"), QStringLiteral("b")));
    if (verb == u"erasekeys")
        return hdiutil.eraseKeys(image);
    if (verb == u"limits")
        return hdiutil.limits(image, KVSecret(QStringLiteral("pw"))).error;
    if (verb == u"resize")
        return hdiutil.resize(image, 2048.0f, KVSecret(QStringLiteral("pw")));
    if (verb == u"compact")
        return hdiutil.compact(image, KVSecret(QStringLiteral("pw")));
    if (verb == u"info")
        return hdiutil.info().error;
    qFatal("no such verb");
}

QString titleOf(const QString &verb)
{
    static const QHash<QString, QString> titles{
        {QStringLiteral("attach"), QStringLiteral("Mounting Disk Image failed")},
        {QStringLiteral("detach"), QStringLiteral("Unmount failed")},
        {QStringLiteral("create"), QStringLiteral("Disk Image creation failed")},
        {QStringLiteral("chpass"), QStringLiteral("Changing password failed")},
        {QStringLiteral("erasekeys"), QStringLiteral("Erasing Keys failed")},
        {QStringLiteral("limits"), QStringLiteral("Acquiring limits information failed")},
        {QStringLiteral("resize"), QStringLiteral("Resizing failed")},
        {QStringLiteral("compact"), QStringLiteral("Compact failed")},
        {QStringLiteral("info"), QStringLiteral("Error executing hdiutil command")},
    };
    return titles.value(verb);
}

} // namespace

class TestKVHdiutil : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outputIsJudged_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        const QString app = KVAppErrorDomain;
        const QString cocoa = NSCocoaErrorDomain;
        const QString abnormal = QStringLiteral("hdiutil ended abnormally.");
        auto row = [](const char *name) -> QTestData & { return QTest::newRow(name); };

        // attach: only output that names the attach routine is looked at.
        row("attach: wrong password, status 1") << "attach" << fixture("attach-wrong-password.txt") << 1 << app << 10 << "Wrong Password";
        row("attach: wrong password, status 0") << "attach" << fixture("attach-wrong-password.txt") << 0 << app << 10 << "Wrong Password";
        row("attach: no such image") << "attach" << fixture("attach-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("attach: 22 begins with a 2") << "attach" << fixture("attach-invalid-argument.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("attach: nothing mountable") << "attach" << fixture("attach-no-mountable-file-systems.txt") << 1 << app << 30 << "Invalid Mount Path";
        row("attach: nothing mountable, in French") << "attach" << fixture("attach-no-mountable-file-systems-french.txt") << 1 << app << 30 << "Invalid Mount Path";
        row("attach: busy") << "attach" << fixture("attach-busy.txt") << 1 << app << 40 << "Resource busy, Disk Image may already be mounted.";
        row("attach: other code, last line") << "attach" << fixture("attach-temporarily-unavailable.txt") << 1 << app << 100
                                             << "hdiutil: attach failed - Resource temporarily unavailable";
        row("attach: other code, no final newline") << "attach" << QByteArray("DIHLDiskImageAttach() returned 35\nhdiutil: attach failed - Resource temporarily unavailable")
                                                    << 1 << app << 100 << "hdiutil: attach failed - Resource temporarily unavailable";
        row("attach: other code, empty last line kept") << "attach" << QByteArray("DIHLDiskImageAttach() returned 35\n\n") << 1 << app << 100 << "";
        row("attach: localized tail is the message") << "attach" << QByteArray("DIHLDiskImageAttach() returned 999\nhdiutil: attach failed - erreur interne\n")
                                                     << 1 << app << 100 << QString::fromUtf8("hdiutil: attach failed - erreur interne");
        row("attach: success") << "attach" << fixture("attach-success.txt") << 0 << "" << 0 << Success;
        row("attach: complaint without the routine, status 0") << "attach" << fixture("attach-nonverbose-busy.txt") << 0 << "" << 0 << Success;
        row("attach: complaint without the routine, status 1") << "attach" << fixture("attach-nonverbose-busy.txt") << 1 << cocoa << 1 << abnormal;

        // detach: success needs both words.
        row("detach: success") << "detach" << fixture("detach-success.txt") << 0 << "" << 0 << Success;
        row("detach: success words, status 1") << "detach" << fixture("detach-success.txt") << 1 << cocoa << 1 << abnormal;
        row("detach: only ejected") << "detach" << fixture("detach-ejected-only.txt") << 0 << app << 100 << "\"disk5\" ejected.";
        row("detach: no such device") << "detach" << fixture("detach-no-such-device.txt") << 1 << app << 20 << "Disk Volume point doesn't exist";
        row("detach: no such device wins over busy") << "detach" << QByteArray("hdiutil: couldn't unmount \"disk4\" - Resource busy\nhdiutil: detach: result: 2\n")
                                                     << 16 << app << 20 << "Disk Volume point doesn't exist";
        row("detach: eject busy, last line") << "detach" << fixture("detach-eject-busy.txt") << 16 << app << 100
                                             << "hdiutil: couldn't eject \"disk17\" - Resource busy";
        row("detach: unmount busy") << "detach" << fixture("detach-busy.txt") << 16 << app << 40 << "Resource busy, Volume may still be used.";
        row("detach: silent, status 0") << "detach" << QByteArray() << 0 << "" << 0 << Success;
        row("detach: silent, status 16") << "detach" << QByteArray() << 16 << cocoa << 16 << abnormal;

        // create: line by line.
        row("create: success") << "create" << fixture("create-success.txt") << 0 << "" << 0 << Success;
        row("create: file exists beats the summary") << "create" << fixture("create-file-exists.txt") << 1 << app << 25 << "File already exists.";
        row("create: no such folder") << "create" << fixture("create-no-such-directory.txt") << 1 << app << 20 << "File or directory doesn't exist";
        row("create: other result, summary line") << "create" << fixture("create-not-permitted.txt") << 1 << app << 100
                                                  << "hdiutil: create failed - Operation not permitted";
        row("create: summary only") << "create" << fixture("create-nonverbose-file-exists.txt") << 1 << app << 100
                                    << "hdiutil: create failed - File exists";
        row("create: first summary stays") << "create" << QByteArray("hdiutil: create failed - one\nhdiutil: create failed - two\n") << 1 << app << 100
                                           << "hdiutil: create failed - one";
        row("create: summary without newline is no line") << "create" << QByteArray("hdiutil: create failed - File exists") << 0 << "" << 0 << Success;
        row("create: nothing recognised, status 2") << "create" << QByteArray("PERCENT:-1.000000\n") << 2 << cocoa << 2 << abnormal;

        row("chpass: wrong password, status 0") << "chpass" << fixture("chpass-wrong-password.txt") << 0 << app << 10 << "Wrong Password";
        row("chpass: no such image") << "chpass" << fixture("chpass-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("chpass: 22 begins with a 2") << "chpass" << fixture("chpass-invalid-argument.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("chpass: other, last line") << "chpass" << fixture("chpass-not-permitted.txt") << 1 << app << 100
                                        << "hdiutil: chpass failed - Operation not permitted";
        row("chpass: success") << "chpass" << QByteArray() << 0 << "" << 0 << Success;
        row("chpass: unrecognised, status 1") << "chpass" << QByteArray("hdiutil: chpass: result: 80\n") << 1 << cocoa << 1 << abnormal;

        row("erasekeys: no such image") << "erasekeys" << fixture("erasekeys-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("erasekeys: other, last line") << "erasekeys" << fixture("erasekeys-not-permitted.txt") << 1 << app << 100
                                           << "hdiutil: erasekeys failed - Operation not permitted";
        row("erasekeys: success") << "erasekeys" << QByteArray() << 0 << "" << 0 << Success;

        // The limits and resize texts are trimmed before their ending is read.
        row("limits: wrong password") << "limits" << fixture("resize-wrong-password.txt") << 1 << app << 10 << "Wrong Password";
        row("limits: no such image") << "limits" << fixture("resize-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("limits: in use has no row of its own") << "limits" << fixture("resize-in-use.txt") << 1 << app << 100
                                                    << "hdiutil: resize: failed. Resource temporarily unavailable (35)";
        row("limits: not a property list") << "limits" << QByteArray("hdiutil: resize: done\n") << 0 << cocoa << 3840
                                           << "hdiutil output is not a property list.";
        row("limits: property list") << "limits" << fixture("resize-limits.plist") << 0 << "" << 0 << Success;

        row("resize: wrong password") << "resize" << fixture("resize-wrong-password.txt") << 1 << app << 10 << "Wrong Password";
        row("resize: no such image") << "resize" << fixture("resize-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("resize: in use") << "resize" << fixture("resize-in-use.txt") << 1 << app << 60 << "Disk Image is mounted";
        row("resize: other, whole trimmed text") << "resize" << QByteArray("  Resizing\u2026\nhdiutil: resize: failed. Invalid argument (22)\n\n")
                                                 << 1 << app << 100 << QString::fromUtf8("Resizing\u2026\nhdiutil: resize: failed. Invalid argument (22)");
        row("resize: success") << "resize" << QByteArray() << 0 << "" << 0 << Success;

        row("compact: success") << "compact" << fixture("compact-success.txt") << 0 << "" << 0 << Success;
        row("compact: wrong password") << "compact" << fixture("compact-wrong-password.txt") << 1 << app << 10 << "Wrong Password";
        row("compact: no such image") << "compact" << fixture("compact-no-such-file.txt") << 1 << app << 20 << "Disk Image doesn't exist";
        row("compact: no such image wins over in use") << "compact" << QByteArray("hdiutil: compact: result: 35\nhdiutil: compact: result: 2\nhdiutil: compact failed\n")
                                                       << 1 << app << 20 << "Disk Image doesn't exist";
        row("compact: in use") << "compact" << fixture("compact-in-use.txt") << 1 << app << 60 << "Disk Image is mounted";
        row("compact: other, last line") << "compact" << fixture("compact-not-permitted.txt") << 1 << app << 100
                                         << "hdiutil: compact failed - Operation not permitted";

        row("info: not a property list") << "info" << QByteArray("hdiutil: info: no such verb\n") << 0 << cocoa << 3840
                                         << "hdiutil output is not a property list.";
        row("info: property list, status 5") << "info" << fixture("info-nothing-attached.plist") << 5 << cocoa << 5 << abnormal;
    }

    void outputIsJudged()
    {
        QFETCH(QString, verb);
        QFETCH(QByteArray, output);
        QFETCH(int, status);
        QFETCH(QString, domain);
        QFETCH(int, code);
        QFETCH(QString, message);
        KVToolDouble tool;
        tool.setResponse(output, status);
        const KVOptionalError error = runVerb(KVHdiutil(tool.path()), verb);
        if (message.isNull()) {
            QVERIFY2(!error, error ? qPrintable(error->localizedFailureReason()) : "");
            return;
        }
        QVERIFY(error);
        QCOMPARE(error->domain(), domain);
        QCOMPARE(error->code(), code);
        QCOMPARE(error->localizedDescription(), titleOf(verb));
        QCOMPARE(error->localizedFailureReason(), message);
        QCOMPARE(error->localizedRecoverySuggestion(), message);
    }

    void createHandsOnEveryCompleteLine()
    {
        KVToolDouble tool;
        // Written in pieces that split lines, and ending in a fragment.
        tool.setScript("printf 'MESSAGE:Initializing\\342\\200'; printf '\\246\\nPERC'; printf 'ENT:-1.000000\\nPERCENT:12.5\\n'; "
                       "printf 'MESSAGE:Creating'");
        QStringList lines;
        QVERIFY(!runVerb(KVHdiutil(tool.path()), QStringLiteral("create"), &lines));
        QCOMPARE(lines, (QStringList{QString::fromUtf8("MESSAGE:Initializing\u2026"), "PERCENT:-1.000000", "PERCENT:12.5"}));

        KVToolDouble failing;
        failing.setResponseFromFile(QStringLiteral("hdiutil/create-file-exists.txt"), 1);
        lines.clear();
        QVERIFY(runVerb(KVHdiutil(failing.path()), QStringLiteral("create"), &lines));
        QCOMPARE(lines.size(), 11);
        QCOMPARE(lines.last(), QStringLiteral("hdiutil: create failed - File exists"));
    }

    void limitsAreDecoded()
    {
        KVToolDouble tool;
        tool.setResponseFromFile(QStringLiteral("hdiutil/resize-limits.plist"));
        const KVHdiutil::PropertyList limits = KVHdiutil(tool.path()).limits(QStringLiteral("/a"), KVSecret(QStringLiteral("pw")));
        QVERIFY(!limits.error);
        QVERIFY(limits.value);
        const QVariantMap entry = limits.value->toMap().value(QStringLiteral("subcontent-list")).toList().value(0).toMap();
        QCOMPARE(entry.value(QStringLiteral("content-min-length")).toLongLong(), 57344);
        QCOMPARE(entry.value(QStringLiteral("content-length")).toLongLong(), 2097152);

        tool.setResponseFromFile(QStringLiteral("hdiutil/resize-wrong-password.txt"), 1);
        QVERIFY(!KVHdiutil(tool.path()).limits(QStringLiteral("/a"), KVSecret(QStringLiteral("pw"))).value);
    }

    void aMissingToolIsAnError()
    {
        const KVOptionalError error = KVHdiutil(QStringLiteral("/nonexistent/hdiutil")).detach(QStringLiteral("/dev/disk4"), false);
        QVERIFY(error);
        QCOMPARE(error->domain(), NSCocoaErrorDomain);
        QCOMPARE(error->localizedDescription(), QStringLiteral("Unmount failed"));
    }

    void megabytes_data()
    {
        QTest::addColumn<float>("size");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 1024.0f << "1024m";
        QTest::newRow("single precision, seven digits") << 1234.5677f << "1234.568m";
        QTest::newRow("largest offered") << 100000.0f << "100000m";
        QTest::newRow("fraction") << 0.5f << "0.5m";
    }

    void megabytes()
    {
        QFETCH(float, size);
        QFETCH(QString, text);
        QCOMPARE(KVHdiutil::megabytes(size), text);
    }
};

QTEST_GUILESS_MAIN(TestKVHdiutil)
#include "tst_kvhdiutil.moc"
