#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Korvelle installed from this build tree with "cmake --install" into a
// temporary prefix whose name has spaces in it, as a user or a packager
// would install it.
class KVInstalledTree
{
public:
    KVInstalledTree();

    // Installs (again) over whatever is there; empty on success, else why not.
    QString install() const;
    QString prefix() const { return m_prefix; }
    QString path(const QString &relative) const { return m_prefix + QLatin1Char('/') + relative; }
    bool isValid() const { return m_directory.isValid(); }

    // The files an installation must have: (path below the prefix, executable).
    static QList<std::pair<QString, bool>> expectedFiles();

    struct Run
    {
        int exitCode = -1;
        QByteArray output;
    };
    // Runs a program, its standard input given and closed; a password never
    // travels any other way.
    static Run run(const QString &program, const QStringList &arguments, const QByteArray &input = {},
                   const QStringList &environment = {});

private:
    QTemporaryDir m_directory;
    QString m_prefix;
};
