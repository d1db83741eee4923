#pragma once

#include "KVToolProcess.h"
#include "model/KVAppError.h"

#include <QVariant>

#include <functional>
#include <optional>

// One run of a disk tool, and the rules by which its end is judged.
//
// An operation describes the run (tool, arguments, the title its errors carry
// and the text for an abnormal end), runs it in one of two modes, and lets its
// output handler record a recognised failure with fail(). Success is decided by
// the texts a tool prints, never by its exit status alone: a recognised message
// is an error whatever the status, and a zero status with nothing recognised is
// success. A non-zero status with nothing recognised becomes the abnormal-end
// error, with the status as its code.
class KVToolRun
{
public:
    KVToolRun(QString program, QStringList arguments, QString title, QString abnormalEndText);

    // hdiutil reads its password from standard input when "-stdinpass" is among
    // its arguments; the switch goes in at `index` (the third place, unless an
    // operation needs another).
    void passPassword(KVSecret password, qsizetype index = 2);
    // Standard input for runs that name their own switches (chpass, diskutil).
    void setStandardInput(KVSecret bytes);
    void setCaptureStandardError(bool capture);
    // Some operations report the abnormal end even over a message they recognised.
    void setAbnormalExitOverridesMessage(bool overrides);

    const QStringList &arguments() const { return m_invocation.arguments; }
    const QString &program() const { return m_invocation.program; }

    // Output handlers record what they recognised.
    void fail(QString message, KVAppErrorCode code);
    // A failure of the system rather than a recognised tool text: its code is
    // an error number or status, in NSCocoaErrorDomain.
    void failWithSystemError(QString message, int code);
    bool hasFailed() const { return m_message.has_value(); }

    // Decodes a property list; on failure records `notPropertyListText` (for
    // example "hdiutil output is not a property list.") and returns nothing.
    std::optional<QVariant> decodePropertyList(const QByteArray &output, const QString &notPropertyListText);

    using OutputHandler = std::function<void(const QByteArray &output)>;
    // `chunkFromLine` is the text that arrived with the line, from the line's start on.
    using LineHandler = std::function<void(const QString &line, QStringView chunkFromLine)>;

    // Reads all output, hands it to the handler, then judges the exit.
    KVOptionalError runWholeOutput(const OutputHandler &handler);
    // Hands on every complete line as it arrives; an unterminated last fragment
    // is never handed on.
    KVOptionalError runLineStream(const LineHandler &handler);

    const KVToolExit &exit() const { return m_exit; }

private:
    void record(QString message, int code, QString domain);
    KVOptionalError finish();
    void recordLaunchFailure();
    void recordReadFailure();

    KVToolInvocation m_invocation;
    QString m_title;
    QString m_abnormalEndText;
    bool m_abnormalExitOverridesMessage = false;
    KVToolExit m_exit;

    std::optional<QString> m_message;
    int m_code = 0;
    QString m_domain;
};
