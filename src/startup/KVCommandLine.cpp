#include "KVCommandLine.h"

KVCommandLine::KVCommandLine(QStringList arguments)
    : m_arguments(std::move(arguments))
{
}

std::optional<QString> KVCommandLine::immediateAnswer() const
{
    // After "--" everything is a file name, even "--version".
    for (const QString &argument : m_arguments) {
        if (argument == QLatin1String("--"))
            break;
        if (argument == QLatin1String("--version"))
            return versionText();
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
            return helpText();
    }
    return std::nullopt;
}

QString KVCommandLine::versionText()
{
    return QStringLiteral("Korvelle " KORVELLE_VERSION "\n");
}

QString KVCommandLine::helpText()
{
    return QStringLiteral("Usage: korvelle [IMAGE.sparseimage...]\n"
                          "Keep your data in encrypted disk images and encrypted disks.\n"
                          "\n"
                          "  IMAGE.sparseimage  open the image's mount dialog (in the running Korvelle if there is one)\n"
                          "  --version          print the version and leave\n"
                          "  --help             print this text and leave\n");
}
