#include "tools/KVToolRun.h"

#include "KVToolDouble.h"

#include <QElapsedTimer>
#include <csignal>
#include <QTest>

namespace {

const QString Title = QStringLiteral("Mounting Disk Image failed");
const QString AbnormalEnd = QStringLiteral("hdiutil ended abnormally.");

KVToolRun attachRun(const KVToolDouble &tool, const QStringList &arguments = {})
{
    return KVToolRun(tool.path(),
                     arguments.isEmpty() ? QStringList{QStringLiteral("attach"), QStringLiteral("-verbose"),
                                                       QStringLiteral("-puppetstrings"), QStringLiteral("/img.sparseimage")}
                                         : arguments,
                     Title, AbnormalEnd);
}

// An attach handler of the kind the engines have: one recognised message.
KVToolRun::OutputHandler recognisingWrongPassword(KVToolRun &run)
{
    return [&run](const QByteArray &output) {
        if (QString::fromUtf8(output).contains(u"DIHLDiskImageAttach() returned 80"))
            run.fail(QStringLiteral("Wrong Password"), KVAppErrorCode::WrongPassword);
    };
}

struct Lines
{
    QStringList lines;
    QStringList chunks;
    KVToolRun::LineHandler handler()
    {
        return [this](const QString &line, QStringView chunk) {
            lines.append(line);
            chunks.append(chunk.toString());
        };
    }
};

} // namespace

class TestKVToolRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void passwordGoesInAtItsIndex_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("index");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("attach") << QStringList{"attach", "-verbose", "-puppetstrings", "/a"} << 2
                                << QStringList{"attach", "-verbose", "-stdinpass", "-puppetstrings", "/a"};
        QTest::newRow("resize with size") << QStringList{"resize", "-size", "2048m", "/a"} << 2
                                          << QStringList{"resize", "-size", "-stdinpass", "2048m", "/a"};
        QTest::newRow("resize without size") << QStringList{"resize", "/a"} << 2
                                             << QStringList{"resize", "/a", "-stdinpass"};
        QTest::newRow("compact") << QStringList{"compact", "-batteryallowed", "-verbose", "/a"} << 1
                                 << QStringList{"compact", "-stdinpass", "-batteryallowed", "-verbose", "/a"};
    }

    void passwordGoesInAtItsIndex()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, index);
        QFETCH(QStringList, expected);
        KVToolDouble tool;
        KVToolRun run = attachRun(tool, arguments);
        run.passPassword(KVSecret(QStringLiteral("secret")), index);
        QVERIFY(!run.runWholeOutput([](const QByteArray &) {}));
        QCOMPARE(tool.arguments(), expected);
        QCOMPARE(tool.standardInput(), QByteArray("secret"));
    }

    void standardInputBytes_data()
    {
        QTest::addColumn<bool>("present");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("ascii") << true << QStringLiteral("hunter2") << QByteArray("hunter2");
        QTest::newRow("non-ascii, utf-8, no terminator")
            << true << QStringLiteral("päss wörd 🔑") << QByteArray("p\xc3\xa4ss w\xc3\xb6rd \xf0\x9f\x94\x91");
        QTest::newRow("empty") << true << QString() << QByteArray();
    }

    void standardInputBytes()
    {
        QFETCH(bool, present);
        QFETCH(QString, password);
        QFETCH(QByteArray, bytes);
        KVToolDouble tool;
        KVToolRun run = attachRun(tool);
        if (present)
            run.passPassword(KVSecret(password));
        QVERIFY(!run.runWholeOutput([](const QByteArray &) {}));
        QCOMPARE(tool.standardInput(), bytes);
        QVERIFY(tool.standardInputWasPipe());
        QVERIFY(tool.arguments().contains(u"-stdinpass"_qs));
    }

    void absentPasswordSetsNoStandardInput()
    {
        KVToolDouble tool;
        KVToolRun run = attachRun(tool);
        QVERIFY(!run.runWholeOutput([](const QByteArray &) {}));
        QVERIFY(!tool.standardInputWasPipe());
        QVERIFY(!tool.arguments().contains(u"-stdinpass"_qs));
    }

    void twoPasswordsAreJoined()
    {
        KVToolDouble tool;
        KVToolRun run(tool.path(), {"chpass", "-oldstdinpass", "-newstdinpass", "-verbose", "/a"}, Title, AbnormalEnd);
        run.setStandardInput(KVSecret::joined(QStringLiteral("a"), '\0', QStringLiteral("b")));
        QVERIFY(!run.runWholeOutput([](const QByteArray &) {}));
        QCOMPARE(tool.standardInput(), QByteArray("a\0b", 3));
    }

    void secretIsWipedAfterTheRun()
    {
        KVToolDouble tool;
        KVToolInvocation invocation{tool.path(), {}, KVSecret(QStringLiteral("secret")), true};
        KVToolProcess::run(invocation, [](QByteArrayView) {});
        QVERIFY(invocation.standardInput->isEmpty());
        QCOMPARE(tool.standardInput(), QByteArray("secret"));
    }

    void passwordLargerThanThePipe()
    {
        const QString password(3 * 1024 * 1024, u'x');
        KVToolDouble reader;
        KVToolRun run = attachRun(reader);
        run.passPassword(KVSecret(password));
        QVERIFY(!run.runWholeOutput([](const QByteArray &) {}));
        QCOMPARE(reader.standardInput().size(), password.size());

        // A tool that never reads its input ends the run all the same.
        KVToolRun ignoring(QStringLiteral("/bin/true"), {}, Title, AbnormalEnd);
        ignoring.passPassword(KVSecret(password));
        QVERIFY(!ignoring.runWholeOutput([](const QByteArray &) {}));
    }

    void judgingTheEnd_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("failed");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("reason");
        const QByteArray wrong = "hdiutil: attach: DIHLDiskImageAttach() returned 80\nhdiutil: attach failed - Authentication error\n";
        QTest::newRow("recognised, status 1") << wrong << 1 << true << KVAppErrorDomain << 10 << "Wrong Password";
        QTest::newRow("recognised, status 0") << wrong << 0 << true << KVAppErrorDomain << 10 << "Wrong Password";
        QTest::newRow("unrecognised, status 0 is success") << QByteArray("hdiutil: warning: odd\n") << 0 << false
                                                           << QString() << 0 << QString();
        QTest::newRow("unrecognised, status 3") << QByteArray("hdiutil: something\n") << 3 << true << NSCocoaErrorDomain
                                                << 3 << AbnormalEnd;
        QTest::newRow("empty output, status 1") << QByteArray() << 1 << true << NSCocoaErrorDomain << 1 << AbnormalEnd;
    }

    void judgingTheEnd()
    {
        QFETCH(QByteArray, output);
        QFETCH(int, status);
        QFETCH(bool, failed);
        QFETCH(QString, domain);
        QFETCH(int, code);
        QFETCH(QString, reason);
        KVToolDouble tool;
        tool.setResponse(output, status);
        KVToolRun run = attachRun(tool);
        const KVOptionalError error = run.runWholeOutput(recognisingWrongPassword(run));
        QCOMPARE(error.has_value(), failed);
        if (!error)
            return;
        QCOMPARE(error->domain(), domain);
        QCOMPARE(error->code(), code);
        QCOMPARE(error->localizedDescription(), Title);
        QCOMPARE(error->localizedFailureReason(), reason);
        QCOMPARE(error->localizedRecoverySuggestion(), reason);
    }

    void abnormalExitCanOverrideTheMessage()
    {
        KVToolDouble tool;
        tool.setResponse("DIHLDiskImageAttach() returned 80\n", 4);
        KVToolRun run = attachRun(tool);
        run.setAbnormalExitOverridesMessage(true);
        const KVOptionalError error = run.runWholeOutput(recognisingWrongPassword(run));
        QVERIFY(error);
        QCOMPARE(error->code(), 4);
        QCOMPARE(error->localizedFailureReason(), AbnormalEnd);
    }

    void outputIsAPropertyListOrAnError()
    {
        KVToolDouble tool;
        tool.setResponse("hdiutil: info: not now\n");
        KVToolRun run(tool.path(), {"info", "-plist"}, QStringLiteral("Error executing hdiutil command"), AbnormalEnd);
        bool decoded = true;
        const KVOptionalError error = run.runWholeOutput([&](const QByteArray &output) {
            decoded = run.decodePropertyList(output, QStringLiteral("hdiutil output is not a property list.")).has_value();
        });
        QVERIFY(!decoded);
        QVERIFY(error);
        QCOMPARE(error->domain(), NSCocoaErrorDomain);
        QCOMPARE(error->code(), 3840);
        QCOMPARE(error->localizedFailureReason(), QStringLiteral("hdiutil output is not a property list."));
    }

    void lineStream_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QStringList>("chunks");
        QTest::newRow("pieces make lines, an unended tail is dropped")
            << QByteArray("printf 'PERCENT:'; sleep 0.1; printf '12.5\\nMESS'; sleep 0.1; printf 'AGE:Finishing\\n\\ntail'\n")
            << QStringList{"PERCENT:12.5", "MESSAGE:Finishing", ""}
            << QStringList{"12.5\nMESS", "AGE:Finishing\n\ntail", "\ntail"};
        QTest::newRow("a line sees the rest of its chunk")
            << QByteArray("printf 'Error converting disk\\n(-69756)\\n'\n")
            << QStringList{"Error converting disk", "(-69756)"}
            << QStringList{"Error converting disk\n(-69756)\n", "(-69756)\n"};
        QTest::newRow("a character split between chunks")
            << QByteArray("printf '\\303'; sleep 0.1; printf '\\251t\\303\\251\\n'\n")
            << QStringList{QStringLiteral("été")} << QStringList{QStringLiteral("\u00e9t\u00e9\n")};
        QTest::newRow("a line end right after a broken character at a chunk's end")
            << QByteArray("printf 'a\\342\\200'; sleep 0.1; printf '\\nb\\n'\n")
            << QStringList{QStringLiteral("a\uFFFD\uFFFD"), QStringLiteral("b")}
            << QStringList{QStringLiteral("\uFFFD\uFFFD\nb\n"), QStringLiteral("b\n")};
    }

    void lineStream()
    {
        QFETCH(QByteArray, script);
        QFETCH(QStringList, lines);
        QFETCH(QStringList, chunks);
        KVToolDouble tool;
        tool.setScript(script);
        KVToolRun run = attachRun(tool);
        Lines received;
        QVERIFY(!run.runLineStream(received.handler()));
        QCOMPARE(received.lines, lines);
        QCOMPARE(received.chunks, chunks);
    }

    void invalidUtf8DoesNoHarm()
    {
        KVToolDouble tool;
        tool.setResponse("\xff\xfe garbage \x80\nDIHLDiskImageAttach() returned 80\n");
        KVToolRun lineRun = attachRun(tool);
        Lines received;
        QVERIFY(!lineRun.runLineStream(received.handler()));
        QCOMPARE(received.lines.size(), 2);
        QVERIFY(received.lines.first().contains(QChar::ReplacementCharacter));

        KVToolRun wholeRun = attachRun(tool);
        const KVOptionalError error = wholeRun.runWholeOutput(recognisingWrongPassword(wholeRun));
        QVERIFY(error && error->is(KVAppErrorCode(10)));
    }

    void outputAfterTheExitIsNotRead()
    {
        KVToolDouble tool;
        tool.setScript("echo first; (sleep 3; echo late) &\n");
        QElapsedTimer clock;
        clock.start();
        KVToolRun lineRun = attachRun(tool);
        Lines received;
        QVERIFY(!lineRun.runLineStream(received.handler()));
        QCOMPARE(received.lines, QStringList{QStringLiteral("first")});

        KVToolRun wholeRun = attachRun(tool);
        QByteArray output;
        QVERIFY(!wholeRun.runWholeOutput([&output](const QByteArray &bytes) { output = bytes; }));
        QCOMPARE(output, QByteArray("first\n"));
        QVERIFY2(clock.elapsed() < 2500, "a background process kept the run waiting");
    }

    void toolThatCannotBeStarted_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::newRow("missing") << false;
        QTest::newRow("not executable") << true;
    }

    void toolThatCannotBeStarted()
    {
        QFETCH(bool, exists);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("hdiutil"));
        if (exists) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("#!/bin/sh\n");
        }
        for (bool lineMode : {false, true}) {
            KVToolRun run(path, {"info"}, Title, AbnormalEnd);
            run.passPassword(KVSecret(QStringLiteral("secret")));
            Lines received;
            const KVOptionalError error = lineMode ? run.runLineStream(received.handler())
                                                   : run.runWholeOutput([](const QByteArray &) { QFAIL("no output"); });
            QVERIFY(error);
            QCOMPARE(error->domain(), NSCocoaErrorDomain);
            QCOMPARE(error->localizedDescription(), Title);
            QVERIFY(error->localizedFailureReason().contains(path));
            QVERIFY(received.lines.isEmpty());
        }
    }

    void deathBySignalIsAnAbnormalEnd()
    {
        KVToolDouble tool;
        tool.setScript("kill -KILL $$\n");
        KVToolRun run = attachRun(tool);
        const KVOptionalError error = run.runWholeOutput([](const QByteArray &) {});
        QVERIFY(error);
        QCOMPARE(error->code(), 128 + SIGKILL);
        QCOMPARE(error->localizedFailureReason(), AbnormalEnd);
    }

    void largeOutput()
    {
        KVToolDouble tool;
        tool.setScript("head -c 50000000 /dev/zero | tr '\\0' 'x'; seq 1 200000\n");
        KVToolRun wholeRun = attachRun(tool);
        qsizetype size = 0;
        QVERIFY(!wholeRun.runWholeOutput([&size](const QByteArray &output) { size = output.size(); }));
        QCOMPARE(size, qsizetype(50000000 + 1288895)); // the x's, then "1\n" to "200000\n"

        KVToolRun lineRun = attachRun(tool);
        qsizetype lines = 0;
        QString last;
        QVERIFY(!lineRun.runLineStream([&](const QString &line, QStringView) { ++lines; last = line; }));
        QCOMPARE(lines, 200000);
        QCOMPARE(last, QStringLiteral("200000"));
    }
};

QTEST_GUILESS_MAIN(TestKVToolRun)
#include "tst_kvtoolrun.moc"
