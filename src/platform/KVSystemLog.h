#pragma once

#include <QString>

// The system log (syslog, which journald collects on Linux). One line per
// failure; never a password.
namespace KVSystemLog {

void write(const QString &line);

} // namespace KVSystemLog
