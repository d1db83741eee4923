#include "KVExternalCommand.h"

#include <QProcess>
#include <QStandardPaths>

namespace kvlinux {

QString KVExternalCommand::locate(const QString &program)
{
    QString found = QStandardPaths::findExecutable(program);
    if (found.isEmpty())
        found = QStandardPaths::findExecutable(
            program, {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin"), QStringLiteral("/usr/bin")});
    return found;
}

KVExternalCommand::Result KVExternalCommand::run(const QString &program, const QStringList &arguments)
{
    Result result;
    const QString path = locate(program);
    if (path.isEmpty())
        return result;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    // The messages we parse are the English ones.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.start(path, arguments);
    if (!process.waitForStarted())
        return result;
    result.started = true;
    process.waitForFinished(-1);
    result.output = process.readAll();
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return result;
}

} // namespace kvlinux
