#include "KVHdiutilArguments.h"

namespace kvlinux {

namespace {

const QSet<QString> passwordSwitches = {QStringLiteral("-stdinpass"), QStringLiteral("-oldstdinpass"),
                                        QStringLiteral("-newstdinpass")};
const QSet<QString> optionsWithValue = {
    QStringLiteral("-size"), QStringLiteral("-volname"),    QStringLiteral("-fs"),
    QStringLiteral("-type"), QStringLiteral("-encryption"), QStringLiteral("-mountroot"),
};

} // namespace

KVHdiutilArguments KVHdiutilArguments::parse(const QStringList &arguments)
{
    KVHdiutilArguments parsed;
    QStringList rest;
    for (const QString &argument : arguments) {
        if (passwordSwitches.contains(argument))
            parsed.m_flags.insert(argument);
        else
            rest.append(argument);
    }
    if (rest.isEmpty())
        return parsed;
    parsed.m_verb = rest.takeFirst();
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const QString &argument = rest[i];
        if (optionsWithValue.contains(argument)) {
            if (i + 1 < rest.size())
                parsed.m_values.insert(argument, rest[++i]);
            else
                parsed.m_incomplete = argument;
        } else if (argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            parsed.m_flags.insert(argument);
        } else {
            parsed.m_operands.append(argument);
        }
    }
    return parsed;
}

} // namespace kvlinux
