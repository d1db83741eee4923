#include "KVRefreshFailureAlert.h"

#include "KVAlert.h"

void KVRefreshFailureAlert::show(const KVAppError &error)
{
    if (m_shown.contains(error))
        return;
    m_shown.append(error);
    KVAlert::showError(m_window, error);
}
