#include "KVPrivilege.h"

#include "KVExternalCommand.h"
#include "KVToolOutput.h"

#include <QFile>

#include <unistd.h>
#include <vector>

namespace kvlinux {

int KVPrivilege::runAsAdministrator(const QString &program, const QStringList &arguments, const KVToolOutput &out)
{
    const QString pkexec = KVExternalCommand::locate(QStringLiteral("pkexec"));
    if (pkexec.isEmpty() || !QFile::exists(QStringLiteral("/usr/share/polkit-1"))) {
        out.error(QStringLiteral("This operation needs administrator rights, and there is no pkexec to ask for them."));
        return 1;
    }
    std::vector<QByteArray> args = {QFile::encodeName(pkexec), QFile::encodeName(program)};
    for (const QString &argument : arguments)
        args.push_back(argument.toUtf8());
    std::vector<char *> argv;
    for (QByteArray &arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    out.error(QStringLiteral("This operation needs administrator rights, and pkexec could not be started."));
    return 1;
}

} // namespace kvlinux
