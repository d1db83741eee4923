#include "KVInstalledTree.h"
#include "KVImageToolHarness.h"
#include "tools/KVPropertyList.h"
#include "tools/KVToolPaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using kvlinux::KVImageToolHarness;

// Korvelle as installed: every file in its place below a prefix with spaces,
// the files that name the programs' folder naming the installed one, and the
// programs found where the application looks for them, doing real work.
class tst_InstalledKorvelle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyFileInPlace_data();
    void everyFileInPlace();
    void filesNameTheInstalledPrograms_data();
    void filesNameTheInstalledPrograms();
    void installedApplicationAnswersVersion();
    void secondInstallOverFirst();
    void imageLifecycleThroughInstalledHdiutil();

private:
    KVInstalledTree m_tree;
};

void tst_InstalledKorvelle::initTestCase()
{
    QVERIFY(m_tree.isValid());
    const QString failure = m_tree.install();
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
}

void tst_InstalledKorvelle::everyFileInPlace_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<bool>("executable");
    for (const auto &[relative, executable] : KVInstalledTree::expectedFiles())
        QTest::newRow(qPrintable(relative)) << relative << executable;
}

void tst_InstalledKorvelle::everyFileInPlace()
{
    QFETCH(QString, relative);
    QFETCH(bool, executable);
    const QFileInfo file(m_tree.path(relative));
    QVERIFY2(file.isFile(), qPrintable(file.filePath()));
    QVERIFY(file.size() > 0);
    QCOMPARE(file.isExecutable(), executable);
}

void tst_InstalledKorvelle::filesNameTheInstalledPrograms_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("mustName");
    QTest::newRow("policy") << QStringLiteral("share/polkit-1/actions/org.korvelle.Korvelle.policy")
                            << QStringLiteral(">%1/libexec/korvelle/diskutil</annotate>");
    QTest::newRow("korvelle(1)") << QStringLiteral("share/man/man1/korvelle.1.gz")
                                 << QStringLiteral(".IR %1/libexec/korvelle .");
    QTest::newRow("korvelle-hdiutil(1)") << QStringLiteral("share/man/man1/korvelle-hdiutil.1.gz")
                                         << QStringLiteral(".B %1/libexec/korvelle/hdiutil\n");
    QTest::newRow("korvelle-diskutil(8)") << QStringLiteral("share/man/man8/korvelle-diskutil.8.gz")
                                          << QStringLiteral(".B %1/libexec/korvelle/diskutil\n");
}

void tst_InstalledKorvelle::filesNameTheInstalledPrograms()
{
    QFETCH(QString, relative);
    QFETCH(QString, mustName);
    const QString file = m_tree.path(relative);
    QByteArray text;
    if (file.endsWith(QLatin1String(".gz"))) {
        const KVInstalledTree::Run unpacked = KVInstalledTree::run(QStringLiteral("gzip"), {QStringLiteral("-dc"), file});
        QCOMPARE(unpacked.exitCode, 0);
        text = unpacked.output;
    } else {
        QFile plain(file);
        QVERIFY(plain.open(QIODevice::ReadOnly));
        text = plain.readAll();
    }
    QVERIFY2(text.contains(mustName.arg(m_tree.prefix()).toUtf8()), text.constData());
    QVERIFY(!text.contains('@'));
}

void tst_InstalledKorvelle::installedApplicationAnswersVersion()
{
    const KVInstalledTree::Run version =
        KVInstalledTree::run(m_tree.path(QStringLiteral("bin/korvelle")), {QStringLiteral("--version")});
    QCOMPARE(version.exitCode, 0);
    QCOMPARE(version.output, QByteArray("Korvelle " KV_EXPECTED_VERSION "\n"));
}

void tst_InstalledKorvelle::secondInstallOverFirst()
{
    // An upgrade: the same files again, nothing lost, nothing doubled.
    const QString failure = m_tree.install();
    QVERIFY2(failure.isEmpty(), qPrintable(failure));
    for (const auto &[relative, executable] : KVInstalledTree::expectedFiles())
        QVERIFY2(QFileInfo(m_tree.path(relative)).isFile(), qPrintable(relative));
    QVERIFY(!QFile::exists(m_tree.path(QStringLiteral("share/man/man1/korvelle.1"))));
}

void tst_InstalledKorvelle::imageLifecycleThroughInstalledHdiutil()
{
    if (const QString why = KVImageToolHarness::kernelPathUnavailable(); !why.isEmpty())
        QSKIP(qPrintable(why));
    KVImageToolHarness harness;
    QVERIFY(harness.isValid());
    // Where the installed application runs its programs from.
    const KVToolPaths tools = KVToolPaths::besideApplicationIn(m_tree.path(QStringLiteral("bin")));
    QCOMPARE(tools.hdiutil, m_tree.path(QStringLiteral("libexec/korvelle/hdiutil")));
    const QByteArray password("installed tools");
    const QString image = harness.path(QStringLiteral("Installed.sparseimage"));
    auto hdiutil = [&](const QStringList &arguments, const QByteArray &input = {}) {
        return KVInstalledTree::run(tools.hdiutil, arguments, input, harness.environment());
    };

    const KVInstalledTree::Run created =
        hdiutil({QStringLiteral("create"), QStringLiteral("-size"), QStringLiteral("32m"), QStringLiteral("-encryption"),
                 QStringLiteral("AES-256"), QStringLiteral("-stdinpass"), QStringLiteral("-type"),
                 QStringLiteral("SPARSE"), QStringLiteral("-fs"), QStringLiteral("Journaled HFS+"),
                 QStringLiteral("-volname"), QStringLiteral("Installed"), image},
                password);
    QVERIFY2(created.exitCode == 0, created.output.constData());
    QVERIFY(QFile::exists(image));

    const KVInstalledTree::Run attached = hdiutil(
        {QStringLiteral("attach"), image, QStringLiteral("-stdinpass"), QStringLiteral("-mountroot"), harness.mountRoot()},
        password);
    QVERIFY2(attached.exitCode == 0, attached.output.constData());

    const KVInstalledTree::Run listed = hdiutil({QStringLiteral("info"), QStringLiteral("-plist")});
    QCOMPARE(listed.exitCode, 0);
    const QVariantList images =
        KVPropertyList::decode(listed.output).value_or(QVariant()).toMap().value(QStringLiteral("images")).toList();
    QCOMPARE(images.size(), 1);
    QCOMPARE(images.first().toMap().value(QStringLiteral("image-path")).toString(), image);
    const QString mountPoint = harness.onlyMountPoint();
    QCOMPARE(mountPoint, harness.mountRoot() + QStringLiteral("/Installed"));
    QFile note(mountPoint + QStringLiteral("/note.txt"));
    QVERIFY(note.open(QIODevice::WriteOnly));
    QCOMPARE(note.write("kept"), 4);
    note.close();

    const KVInstalledTree::Run detached = hdiutil({QStringLiteral("detach"), mountPoint});
    QVERIFY2(detached.exitCode == 0, detached.output.constData());
    const KVInstalledTree::Run after = hdiutil({QStringLiteral("info"), QStringLiteral("-plist")});
    QVERIFY(KVPropertyList::decode(after.output)
                .value_or(QVariant())
                .toMap()
                .value(QStringLiteral("images"))
                .toList()
                .isEmpty());
    QVERIFY2(harness.leftovers().isEmpty(), qPrintable(harness.leftovers().join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(tst_InstalledKorvelle)
#include "tst_installedkorvelle.moc"
