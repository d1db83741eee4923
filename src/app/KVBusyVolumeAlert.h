#pragma once

#include "model/KVAppError.h"

#include <functional>

class QWidget;

// The alert of an unmount refused because the volume is busy: the error as
// every alert shows it, and as its details the processes that hold files on
// the volume, one "NAME (PID N)" a line, so that the user knows what to
// close. With `forceUnmount` it also offers "Force Unmount", which runs it.
namespace KVBusyVolumeAlert {

void show(QWidget *parent, const KVAppError &error, const QString &processes, std::function<void()> forceUnmount);

} // namespace KVBusyVolumeAlert
