#pragma once

#include "model/KVAppError.h"

#include <QList>

class QWidget;

// Alerts for the lists' background refreshes, which run again at every mount
// anywhere on the system: each failure is shown the first time only, so that a
// program that stays missing or broken is reported once and not at every retry.
// A failure with other texts is a new one and is shown.
class KVRefreshFailureAlert
{
public:
    explicit KVRefreshFailureAlert(QWidget *window) : m_window(window) {}

    void show(const KVAppError &error);

private:
    QWidget *m_window;
    QList<KVAppError> m_shown;
};
