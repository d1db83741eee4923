#include "KVInstalledTree.h"

KVInstalledTree::KVInstalledTree()
    : m_prefix(m_directory.path() + QStringLiteral("/Korvelle prefix with spaces"))
{
}

QString KVInstalledTree::install() const
{
    const Run installed = run(QStringLiteral(KV_CMAKE),
                              {QStringLiteral("--install"), QStringLiteral(KV_BUILD_DIR), QStringLiteral("--prefix"),
                               m_prefix});
    return installed.exitCode == 0 ? QString() : QString::fromUtf8(installed.output);
}

QList<std::pair<QString, bool>> KVInstalledTree::expectedFiles()
{
    return {
        {QStringLiteral("bin/korvelle"), true},
        {QStringLiteral("libexec/korvelle/hdiutil"), true},
        {QStringLiteral("libexec/korvelle/diskutil"), true},
        {QStringLiteral("libexec/korvelle/system_profiler"), true},
        {QStringLiteral("libexec/korvelle/imagefs"), true},
        {QStringLiteral("libexec/korvelle/diskconvert"), true},
        {QStringLiteral("share/applications/org.korvelle.Korvelle.desktop"), false},
        {QStringLiteral("share/mime/packages/org.korvelle.Korvelle.xml"), false},
        {QStringLiteral("share/icons/hicolor/scalable/apps/org.korvelle.Korvelle.svg"), false},
        {QStringLiteral("share/metainfo/org.korvelle.Korvelle.metainfo.xml"), false},
        {QStringLiteral("share/polkit-1/actions/org.korvelle.Korvelle.policy"), false},
        {QStringLiteral("share/man/man1/korvelle.1.gz"), false},
        {QStringLiteral("share/man/man1/korvelle-hdiutil.1.gz"), false},
        {QStringLiteral("share/man/man8/korvelle-diskutil.8.gz"), false},
        {QStringLiteral("share/doc/korvelle/copyright"), false},
        {QStringLiteral("share/korvelle/translations/korvelle_de.qm"), false},
        {QStringLiteral("share/korvelle/translations/korvelle_fr.qm"), false},
    };
}

KVInstalledTree::Run KVInstalledTree::run(const QString &program, const QStringList &arguments,
                                          const QByteArray &input, const QStringList &environment)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (!environment.isEmpty())
        process.setEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForStarted(10000))
        return {-1, process.errorString().toUtf8()};
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        return {-1, "timed out: " + process.readAll()};
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAll()};
}
