#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

class KVToolRun;

// The texts by which hdiutil reports the end of each verb. Each function
// reads one run's output and records on the run the failure it recognises,
// in the order the checks are written; nothing recorded means success.
namespace KVHdiutilOutput {

// "info -plist" and "resize -limits -plist": the property list, when it decodes.
std::optional<QVariant> judgeInfo(KVToolRun &run, const QByteArray &output);
std::optional<QVariant> judgeLimits(KVToolRun &run, const QByteArray &output);

void judgeAttach(KVToolRun &run, const QByteArray &output);
void judgeDetach(KVToolRun &run, const QByteArray &output);
// One line of create's progress.
void judgeCreateLine(KVToolRun &run, const QString &line);
void judgeChangePassword(KVToolRun &run, const QByteArray &output);
void judgeEraseKeys(KVToolRun &run, const QByteArray &output);
void judgeResize(KVToolRun &run, const QByteArray &output);
void judgeCompact(KVToolRun &run, const QByteArray &output);

} // namespace KVHdiutilOutput
