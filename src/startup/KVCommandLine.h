#pragma once

#include <QStringList>

#include <optional>

// The few options Korvelle answers before it opens a window, so that they work
// without a display: "--version" and "--help". Every other argument is a file
// to open and is left to the application.
class KVCommandLine
{
public:
    explicit KVCommandLine(QStringList arguments);

    // The text to print and leave with status 0, or nothing when the
    // application is to start.
    std::optional<QString> immediateAnswer() const;

    static QString versionText();
    static QString helpText();

private:
    QStringList m_arguments;
};
