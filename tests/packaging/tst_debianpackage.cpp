#include "KVInstalledTree.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

// The Debian package made from this build tree: what its control file says,
// what it carries, and what Debian's own checkers make of it and of the
// desktop files.
class tst_DebianPackage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void control_data();
    void control();
    void carriesEveryFile_data();
    void carriesEveryFile();
    void nothingOutsideUsr();
    void lintianFindsNothing();
    void maintainerScripts();
    void desktopFilesValidate_data();
    void desktopFilesValidate();

private:
    QString field(const QString &name) const;

    QTemporaryDir m_output;
    QString m_package;
    QString m_control;
    QStringList m_contents;
    QHash<QString, QString> m_modes;
};

namespace {

bool available(const char *program)
{
    return !QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty();
}

} // namespace

void tst_DebianPackage::initTestCase()
{
    for (const char *program : {"cpack", "dpkg-deb", "dpkg-shlibdeps"})
        if (!available(program))
            QSKIP(qPrintable(QStringLiteral("%1 is needed to build the package").arg(QString::fromLatin1(program))));
    const KVInstalledTree::Run packed = KVInstalledTree::run(
        QStringLiteral(KV_CPACK), {QStringLiteral("--config"), QStringLiteral(KV_BUILD_DIR "/CPackConfig.cmake"),
                                   QStringLiteral("-B"), m_output.path()});
    QVERIFY2(packed.exitCode == 0, packed.output.constData());
    const QStringList debs = QDir(m_output.path()).entryList({QStringLiteral("korvelle_*.deb")});
    QCOMPARE(debs.size(), 1);
    m_package = m_output.filePath(debs.first());

    const KVInstalledTree::Run info = KVInstalledTree::run(QStringLiteral("dpkg-deb"), {QStringLiteral("--info"), m_package});
    QCOMPARE(info.exitCode, 0);
    m_control = QString::fromUtf8(info.output);
    const KVInstalledTree::Run contents =
        KVInstalledTree::run(QStringLiteral("dpkg-deb"), {QStringLiteral("--contents"), m_package});
    QCOMPARE(contents.exitCode, 0);
    // "-rwxr-xr-x root/root 12345 2026-11-22 12:00 ./usr/bin/korvelle"
    static const QRegularExpression entry(QStringLiteral("^(\\S+) +(\\S+) +\\d+ +\\S+ +\\S+ +(\\S.*)$"));
    for (const QString &line : QString::fromUtf8(contents.output).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = entry.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QCOMPARE(match.captured(2), QStringLiteral("root/root"));
        m_contents.append(match.captured(3));
        m_modes.insert(match.captured(3), match.captured(1));
    }
}

QString tst_DebianPackage::field(const QString &name) const
{
    const QRegularExpression line(QStringLiteral("^ %1: (.*)$").arg(name), QRegularExpression::MultilineOption);
    return line.match(m_control).captured(1).trimmed();
}

void tst_DebianPackage::control_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("mustHold");

    QTest::newRow("name") << QStringLiteral("Package") << QStringList{QStringLiteral("korvelle")};
    QTest::newRow("version") << QStringLiteral("Version") << QStringList{QStringLiteral(KV_EXPECTED_VERSION)};
    // From dpkg-shlibdeps: the libraries the programs are linked with.
    QTest::newRow("linked libraries")
        << QStringLiteral("Depends")
        << QStringList{QStringLiteral("libc6"), QStringLiteral("libqt6widgets6"), QStringLiteral("libqt6dbus6"),
                       QStringLiteral("libcryptsetup12"), QStringLiteral("libfuse3-3"), QStringLiteral("libssl3"),
                       QStringLiteral("libplist3"), QStringLiteral("libzxcvbn0")};
    // The programs run by name and the plugins Qt loads.
    QTest::newRow("run by name")
        << QStringLiteral("Depends")
        << QStringList{QStringLiteral("fuse3"), QStringLiteral("fuse2fs"), QStringLiteral("e2fsprogs"),
                       QStringLiteral("qt6-qpa-plugins"), QStringLiteral("libqt6svg6")};
    QTest::newRow("recommended") << QStringLiteral("Recommends")
                                 << QStringList{QStringLiteral("pkexec"), QStringLiteral("xdg-utils")};
}

void tst_DebianPackage::control()
{
    QFETCH(QString, name);
    QFETCH(QStringList, mustHold);
    const QString value = field(name);
    QVERIFY2(!value.isEmpty(), qPrintable(m_control));
    const QStringList names = value.split(QRegularExpression(QStringLiteral("\\s*[,|]\\s*")));
    for (const QString &wanted : mustHold) {
        const bool listed = std::any_of(names.begin(), names.end(), [&](const QString &entry) {
            return entry == wanted || entry.startsWith(wanted + QLatin1Char(' '));
        });
        QVERIFY2(listed, qPrintable(wanted + QStringLiteral(" missing from ") + value));
    }
}

void tst_DebianPackage::carriesEveryFile_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<bool>("executable");
    for (const auto &[relative, executable] : KVInstalledTree::expectedFiles())
        QTest::newRow(qPrintable(relative)) << relative << executable;
    QTest::newRow("changelog") << QStringLiteral("share/doc/korvelle/changelog.gz") << false;
}

void tst_DebianPackage::carriesEveryFile()
{
    QFETCH(QString, relative);
    QFETCH(bool, executable);
    const QString entry = QStringLiteral("./usr/") + relative;
    QVERIFY2(m_contents.contains(entry), qPrintable(m_contents.join(QLatin1Char('\n'))));
    QCOMPARE(m_modes.value(entry), executable ? QStringLiteral("-rwxr-xr-x") : QStringLiteral("-rw-r--r--"));
}

void tst_DebianPackage::nothingOutsideUsr()
{
    // Nothing in /etc or a home folder: an upgrade cannot touch the user's
    // settings and favourites, which live in ~/.config.
    for (const QString &path : std::as_const(m_contents)) {
        QVERIFY2(path == QLatin1String("./") || path.startsWith(QLatin1String("./usr/")), qPrintable(path));
    }
    QVERIFY(!m_control.contains(QStringLiteral("conffiles")));
}

void tst_DebianPackage::lintianFindsNothing()
{
    if (!available("lintian"))
        QSKIP("lintian is not installed");
    // Errors and warnings; lintian's informational notes are not failures.
    const KVInstalledTree::Run lintian = KVInstalledTree::run(
        QStringLiteral("lintian"), {QStringLiteral("--tag-display-limit"), QStringLiteral("0"),
                                    QStringLiteral("--display-level"), QStringLiteral(">=warning"), m_package});
    QCOMPARE(lintian.exitCode, 0);
    static const QRegularExpression finding(QStringLiteral("^[EW]: "), QRegularExpression::MultilineOption);
    QVERIFY2(!finding.match(QString::fromUtf8(lintian.output)).hasMatch(), lintian.output.constData());
}

void tst_DebianPackage::maintainerScripts()
{
    for (const char *script : {" postinst ", " postrm "})
        QVERIFY2(m_control.contains(QLatin1String(script)), qPrintable(m_control));
}

void tst_DebianPackage::desktopFilesValidate_data()
{
    QTest::addColumn<QString>("validator");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("silent"); // not even a hint
    QTest::newRow("desktop entry") << QStringLiteral("desktop-file-validate")
                                   << QStringList{QStringLiteral(KV_SOURCE_DIR "/resources/org.korvelle.Korvelle.desktop")}
                                   << true;
    // Its pedantic note on the capitals in the component id stays: the id is
    // also the desktop entry's and the single-instance bus name.
    QTest::newRow("AppStream metainfo")
        << QStringLiteral("appstreamcli")
        << QStringList{QStringLiteral("validate"), QStringLiteral("--no-net"), QStringLiteral("--pedantic"),
                       QStringLiteral(KV_SOURCE_DIR "/resources/org.korvelle.Korvelle.metainfo.xml")}
        << false;
}

void tst_DebianPackage::desktopFilesValidate()
{
    QFETCH(QString, validator);
    QFETCH(QStringList, arguments);
    QFETCH(bool, silent);
    if (QStandardPaths::findExecutable(validator).isEmpty())
        QSKIP(qPrintable(validator + QStringLiteral(" is not installed")));
    const KVInstalledTree::Run validated = KVInstalledTree::run(validator, arguments);
    QVERIFY2(validated.exitCode == 0, validated.output.constData());
    if (silent)
        QVERIFY2(validated.output.trimmed().isEmpty(), validated.output.constData());
}

QTEST_GUILESS_MAIN(tst_DebianPackage)
#include "tst_debianpackage.moc"
