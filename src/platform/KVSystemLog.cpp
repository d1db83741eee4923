#include "KVSystemLog.h"

#include <QLoggingCategory>

#include <mutex>
#include <syslog.h>

Q_LOGGING_CATEGORY(lcSystemLog, "korvelle.log")

namespace KVSystemLog {

void write(const QString &line)
{
    static std::once_flag opened;
    std::call_once(opened, [] { openlog("korvelle", LOG_PID, LOG_USER); });
    syslog(LOG_ERR, "%s", line.toUtf8().constData());
    // The same line on the console, where a developer or a test can see it.
    qCWarning(lcSystemLog).noquote() << line;
}

} // namespace KVSystemLog
