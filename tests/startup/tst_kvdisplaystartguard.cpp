#include "startup/KVDisplayStartGuard.h"

#include <QDir>
#include <QProcess>
#include <QTest>

class tst_KVDisplayStartGuard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void meansNoDisplay_data();
    void meansNoDisplay();
    void withoutDisplayOneSentence_data();
    void withoutDisplayOneSentence();
    void otherFailuresKeepQtsWords();
};

void tst_KVDisplayStartGuard::meansNoDisplay_data()
{
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<bool>("displayNamed");
    QTest::addColumn<bool>("noDisplay");

    QTest::newRow("nothing named") << QStringList{} << false << true;
    QTest::newRow("X server not answering")
        << QStringList{QStringLiteral("could not connect to display :77")} << true << true;
    QTest::newRow("Wayland socket gone") << QStringList{QStringLiteral("Failed to create wl_display (No such file)")}
                                         << true << true;
    QTest::newRow("plugin missing, display named")
        << QStringList{QStringLiteral("Could not find the Qt platform plugin \"nosuch\" in \"\"")} << true << false;
}

void tst_KVDisplayStartGuard::meansNoDisplay()
{
    QFETCH(QStringList, messages);
    QFETCH(bool, displayNamed);
    QFETCH(bool, noDisplay);
    QCOMPARE(KVDisplayStartGuard::meansNoDisplay(messages, displayNamed), noDisplay);
}

namespace {

struct Outcome
{
    int exitCode = -1;
    QByteArray output;
};

Outcome startKorvelle(const QList<std::pair<QString, QString>> &settings)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QString::fromLatin1(name));
    for (const auto &[name, value] : settings)
        environment.insert(name, value);
    // A private runtime folder: no running Korvelle answers in its place.
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QDir::tempPath());
    QProcess korvelle;
    korvelle.setProcessEnvironment(environment);
    korvelle.setProcessChannelMode(QProcess::MergedChannels);
    korvelle.start(QStringLiteral(KV_KORVELLE), {});
    if (!korvelle.waitForFinished(20000)) {
        korvelle.kill();
        korvelle.waitForFinished();
        return {};
    }
    return {korvelle.exitStatus() == QProcess::NormalExit ? korvelle.exitCode() : -1, korvelle.readAll()};
}

} // namespace

void tst_KVDisplayStartGuard::withoutDisplayOneSentence_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");

    QTest::newRow("no display named") << QString() << QString();
    QTest::newRow("X display that nobody serves") << QStringLiteral("DISPLAY") << QStringLiteral(":77");
    QTest::newRow("Wayland display that nobody serves")
        << QStringLiteral("WAYLAND_DISPLAY") << QStringLiteral("korvelle-test-nowhere");
}

void tst_KVDisplayStartGuard::withoutDisplayOneSentence()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QList<std::pair<QString, QString>> settings;
    if (!variable.isEmpty())
        settings.append({variable, value});
    const Outcome outcome = startKorvelle(settings);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, KVDisplayStartGuard::noDisplaySentence().toUtf8() + '\n');
}

void tst_KVDisplayStartGuard::otherFailuresKeepQtsWords()
{
    const Outcome outcome = startKorvelle({{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nosuchplatform")}});
    QVERIFY(outcome.exitCode != 0);
    QVERIFY2(outcome.output.contains("nosuchplatform"), outcome.output.constData());
    QVERIFY(!outcome.output.contains(KVDisplayStartGuard::noDisplaySentence().toUtf8()));
}

QTEST_GUILESS_MAIN(tst_KVDisplayStartGuard)
#include "tst_kvdisplaystartguard.moc"
