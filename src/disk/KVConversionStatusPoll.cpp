#include "KVConversionStatusPoll.h"

#include "model/KVAppError.h"
#include "platform/KVSystemLog.h"
#include "tools/KVToolProcess.h"

#include <cstring>

namespace {

QString describe(int code, const char *reason)
{
    const QString text = QString::fromLocal8Bit(reason);
    return KVAppError(NSCocoaErrorDomain, code, text, text).debugDescription();
}

} // namespace

KVConversionStatusPoll KVConversionStatusPoll::run(const QString &diskutil)
{
    KVToolInvocation invocation{diskutil, {QStringLiteral("cs"), QStringLiteral("list")}, std::nullopt, true};
    QByteArray output;
    const KVToolExit exit = KVToolProcess::run(invocation, [&output](QByteArrayView chunk) { output.append(chunk); });

    KVConversionStatusPoll poll;
    if (!exit.started()) {
        KVSystemLog::write(QStringLiteral("Error (update Disk status): %1")
                               .arg(describe(exit.launchError, std::strerror(exit.launchError))));
        poll.failed = true;
        return poll;
    }
    if (exit.readError != 0) {
        KVSystemLog::write(QStringLiteral("FileHandle error (update Disk status): %1")
                               .arg(describe(exit.readError, std::strerror(exit.readError))));
        poll.failed = true;
        return poll;
    }
    poll.statuses = KVConversionStatusParser::parse(QString::fromUtf8(output));
    if (exit.status != 0) {
        KVSystemLog::write(QStringLiteral("Task termination status (update Disk status): %1")
                               .arg(describe(exit.status, "diskutil cs list ended abnormally.")));
        poll.failed = true;
    }
    return poll;
}
