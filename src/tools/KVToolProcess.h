#pragma once

#include "KVSecret.h"

#include <QByteArrayView>
#include <QStringList>

#include <functional>
#include <optional>

// What to run: the tool, its arguments and what waits on its standard input.
struct KVToolInvocation
{
    QString program;
    QStringList arguments;
    // Absent: the tool's standard input is /dev/null, so a tool that unexpectedly
    // asks for input gets end of file instead of waiting forever.
    std::optional<KVSecret> standardInput;
    // Standard output and standard error share one pipe, so the two streams
    // arrive interleaved as one text. When false, standard error is not captured.
    bool captureStandardError = true;
};

// How a run ended.
struct KVToolExit
{
    int launchError = 0; // errno when the tool could not be started, else 0
    int readError = 0;   // errno when reading its output failed, else 0
    int status = 0;      // exit status; 128 + the signal number when a signal ended it

    bool started() const { return launchError == 0; }
};

// Runs one tool as a child process on the calling thread.
//
// The password is in the standard-input pipe, and the pipe closed, before the
// tool is launched; its buffer is wiped right after. (A password larger than
// the pipe can hold is written on while the tool reads, so it cannot deadlock.)
// Output is handed on as it arrives. Once the tool has exited, what it left in
// the pipe is still read, and then reading stops: a background process that
// inherited the pipe cannot keep the run alive.
class KVToolProcess
{
public:
    using OutputHandler = std::function<void(QByteArrayView chunk)>;

    static KVToolExit run(KVToolInvocation &invocation, const OutputHandler &onOutput);
};
