#include "KVHdiutil.h"

#include "KVAttachCommand.h"
#include "KVChpassCommand.h"
#include "KVCompactCommand.h"
#include "KVCreateCommand.h"
#include "KVDetachCommand.h"
#include "KVEraseKeysCommand.h"
#include "KVInfoCommand.h"
#include "KVResizeCommand.h"

#include <memory>

namespace kvlinux {

KVHdiutil::KVHdiutil(KVToolEnvironment environment)
    : m_environment(std::move(environment))
{
}

int KVHdiutil::run(const QStringList &arguments)
{
    const KVHdiutilArguments parsed = KVHdiutilArguments::parse(arguments);
    KVToolOutput out;
    out.setVerbose(parsed.has(QStringLiteral("-verbose")));
    out.setPuppetStrings(parsed.has(QStringLiteral("-puppetstrings")));

    const QString &verb = parsed.verb();
    std::unique_ptr<KVHdiutilCommand> command;
    if (verb == QLatin1String("attach") || verb == QLatin1String("mount"))
        command = std::make_unique<KVAttachCommand>(m_environment, out);
    else if (verb == QLatin1String("detach") || verb == QLatin1String("eject"))
        command = std::make_unique<KVDetachCommand>(m_environment, out);
    else if (verb == QLatin1String("info"))
        command = std::make_unique<KVInfoCommand>(m_environment, out);
    else if (verb == QLatin1String("create"))
        command = std::make_unique<KVCreateCommand>(m_environment, out);
    else if (verb == QLatin1String("chpass"))
        command = std::make_unique<KVChpassCommand>(m_environment, out);
    else if (verb == QLatin1String("erasekeys"))
        command = std::make_unique<KVEraseKeysCommand>(m_environment, out);
    else if (verb == QLatin1String("resize"))
        command = std::make_unique<KVResizeCommand>(m_environment, out);
    else if (verb == QLatin1String("compact"))
        command = std::make_unique<KVCompactCommand>(m_environment, out);

    if (!command) {
        out.error(QStringLiteral("Usage: hdiutil <verb> <options>\n"
                                 "<verb> is one of: attach detach info create chpass erasekeys resize compact"));
        return 1;
    }
    return command->run(parsed);
}

} // namespace kvlinux
