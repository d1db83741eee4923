#include "startup/KVCommandLine.h"

#include <QProcess>
#include <QTest>

class tst_KVCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void installedVersionNeedsNoDisplay();
};

void tst_KVCommandLine::answers_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("answer"); // "version", "help" or "" (start the application)

    QTest::newRow("nothing") << QStringList{} << QString();
    QTest::newRow("an image") << QStringList{QStringLiteral("/tmp/a.sparseimage")} << QString();
    QTest::newRow("version") << QStringList{QStringLiteral("--version")} << QStringLiteral("version");
    QTest::newRow("version after an image")
        << QStringList{QStringLiteral("a.sparseimage"), QStringLiteral("--version")} << QStringLiteral("version");
    QTest::newRow("help") << QStringList{QStringLiteral("--help")} << QStringLiteral("help");
    QTest::newRow("short help") << QStringList{QStringLiteral("-h")} << QStringLiteral("help");
    QTest::newRow("first option wins")
        << QStringList{QStringLiteral("--help"), QStringLiteral("--version")} << QStringLiteral("help");
    QTest::newRow("a file named --version after --")
        << QStringList{QStringLiteral("--"), QStringLiteral("--version")} << QString();
    QTest::newRow("an option-like image name") << QStringList{QStringLiteral("--versions.sparseimage")} << QString();
}

void tst_KVCommandLine::answers()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, answer);
    const std::optional<QString> text = KVCommandLine(arguments).immediateAnswer();
    if (answer.isEmpty()) {
        QVERIFY(!text);
        return;
    }
    QVERIFY(text);
    QCOMPARE(*text, answer == QLatin1String("version") ? KVCommandLine::versionText() : KVCommandLine::helpText());
}

void tst_KVCommandLine::installedVersionNeedsNoDisplay()
{
    // Run as a packager's smoke test would: no display, no platform chosen.
    QProcess korvelle;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    korvelle.setProcessEnvironment(environment);
    korvelle.start(QStringLiteral(KV_KORVELLE), {QStringLiteral("--version")});
    QVERIFY(korvelle.waitForFinished(10000));
    QCOMPARE(korvelle.exitStatus(), QProcess::NormalExit);
    QCOMPARE(korvelle.exitCode(), 0);
    QCOMPARE(korvelle.readAllStandardOutput(), QByteArray("Korvelle " KV_EXPECTED_VERSION "\n"));
    QCOMPARE(korvelle.readAllStandardError(), QByteArray());
}

QTEST_GUILESS_MAIN(tst_KVCommandLine)
#include "tst_kvcommandline.moc"
