#include "KVToolRun.h"

#include "KVLineSplitter.h"
#include "KVPropertyList.h"
#include "model/KVLocalization.h"
#include "platform/KVSystemLog.h"

#include <cerrno>
#include <cstring>

KVToolRun::KVToolRun(QString program, QStringList arguments, QString title, QString abnormalEndText)
    : m_title(std::move(title))
    , m_abnormalEndText(std::move(abnormalEndText))
{
    m_invocation.program = std::move(program);
    m_invocation.arguments = std::move(arguments);
}

void KVToolRun::passPassword(KVSecret password, qsizetype index)
{
    m_invocation.arguments.insert(std::clamp<qsizetype>(index, 0, m_invocation.arguments.size()),
                                  QStringLiteral("-stdinpass"));
    setStandardInput(std::move(password));
}

void KVToolRun::setStandardInput(KVSecret bytes)
{
    m_invocation.standardInput = std::move(bytes);
}

void KVToolRun::setCaptureStandardError(bool capture)
{
    m_invocation.captureStandardError = capture;
}

void KVToolRun::setAbnormalExitOverridesMessage(bool overrides)
{
    m_abnormalExitOverridesMessage = overrides;
}

void KVToolRun::fail(QString message, KVAppErrorCode code)
{
    record(std::move(message), static_cast<int>(code), KVAppErrorDomain);
}

void KVToolRun::failWithSystemError(QString message, int code)
{
    record(std::move(message), code, NSCocoaErrorDomain);
}

void KVToolRun::record(QString message, int code, QString domain)
{
    m_message = std::move(message);
    m_code = code;
    m_domain = std::move(domain);
}

std::optional<QVariant> KVToolRun::decodePropertyList(const QByteArray &output,
                                                      const QString &notPropertyListText)
{
    KVPropertyListError error;
    std::optional<QVariant> value = KVPropertyList::decode(output, &error);
    if (!value) {
        KVSystemLog::write(QStringLiteral("Plist deserialization error: %1")
                               .arg(KVAppError(NSCocoaErrorDomain, error.code, error.description,
                                               error.description)
                                        .debugDescription()));
        failWithSystemError(notPropertyListText, error.code);
    }
    return value;
}

KVOptionalError KVToolRun::runWholeOutput(const OutputHandler &handler)
{
    QByteArray output;
    m_exit = KVToolProcess::run(m_invocation, [&output](QByteArrayView chunk) { output.append(chunk); });
    if (!m_exit.started()) {
        recordLaunchFailure();
    } else if (m_exit.readError != 0) {
        recordReadFailure();
    } else {
        handler(output);
    }
    return finish();
}

KVOptionalError KVToolRun::runLineStream(const LineHandler &handler)
{
    KVLineSplitter lines(handler);
    m_exit = KVToolProcess::run(m_invocation, [&lines](QByteArrayView bytes) { lines.feed(bytes); });
    if (!m_exit.started()) {
        recordLaunchFailure();
    } else if (m_exit.readError != 0) {
        recordReadFailure();
    }
    return finish();
}

void KVToolRun::recordReadFailure()
{
    const QString reason = QString::fromLocal8Bit(std::strerror(m_exit.readError));
    KVSystemLog::write(QStringLiteral("FileHandle error: %1")
                           .arg(KVAppError(NSCocoaErrorDomain, m_exit.readError, m_title, reason)
                                    .debugDescription()));
    failWithSystemError(KVLocalization::tr("FileHandle error."), m_exit.readError);
}

void KVToolRun::recordLaunchFailure()
{
    // A program that is not there is the usual case (an installation with a
    // file removed): say that plainly rather than quote the system's words.
    const QString reason = m_exit.launchError == ENOENT
                               ? KVLocalization::tr("The program %1 is missing, so Korvelle cannot run it.")
                                     .arg(m_invocation.program)
                               : KVLocalization::tr("%1 could not be started (%2).")
                                     .arg(m_invocation.program,
                                          QString::fromLocal8Bit(std::strerror(m_exit.launchError)));
    failWithSystemError(reason, m_exit.launchError);
    KVSystemLog::write(QStringLiteral("Error: %1")
                           .arg(KVAppError(NSCocoaErrorDomain, m_exit.launchError, m_title, reason)
                                    .debugDescription()));
}

KVOptionalError KVToolRun::finish()
{
    if (m_exit.started() && m_exit.status != 0 && (!m_message || m_abnormalExitOverridesMessage)) {
        KVSystemLog::write(QStringLiteral("Task termination status: %1")
                               .arg(KVAppError(NSCocoaErrorDomain, m_exit.status, m_title, m_abnormalEndText)
                                        .debugDescription()));
        m_message = m_abnormalEndText;
        m_code = m_exit.status;
    }
    if (!m_message)
        return std::nullopt;
    return KVAppError(m_domain.isEmpty() ? NSCocoaErrorDomain : m_domain, m_code, m_title, *m_message);
}
