#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

namespace kvlinux {

// One hdiutil command line: the verb, its switches, its options with a value
// and its operands. The password switches (-stdinpass, -oldstdinpass,
// -newstdinpass) may stand anywhere, even between an option and its value:
// the application inserts "-stdinpass" at a fixed index ("resize -size
// -stdinpass 2048m PATH"), and hdiutil accepts that.
class KVHdiutilArguments
{
public:
    static KVHdiutilArguments parse(const QStringList &arguments);

    const QString &verb() const { return m_verb; }
    bool has(const QString &flag) const { return m_flags.contains(flag); }
    QString value(const QString &option) const { return m_values.value(option); }
    bool hasValue(const QString &option) const { return m_values.contains(option); }
    const QStringList &operands() const { return m_operands; }
    // An option that needs a value but came last; empty when all is well.
    const QString &incomplete() const { return m_incomplete; }

private:
    QString m_verb;
    QSet<QString> m_flags;
    QHash<QString, QString> m_values;
    QStringList m_operands;
    QString m_incomplete;
};

} // namespace kvlinux
