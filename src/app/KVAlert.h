#pragma once

#include "model/KVAppError.h"

class QMessageBox;
class QWidget;

// Alerts built from error values: the description is the headline and the
// recovery suggestion stands beneath it. They are modal to their window but do
// not block the event loop, so engines and timers keep running behind them.
namespace KVAlert {

// The alert is returned so that a caller can wait for it to be answered
// (finished()); it deletes itself once closed.
QMessageBox *showError(QWidget *parent, const KVAppError &error);

// A message as the alert shows it: a tool's line without the tool's name.
QString shownText(const QString &message);

} // namespace KVAlert
