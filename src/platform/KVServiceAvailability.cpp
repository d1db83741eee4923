#include "KVServiceAvailability.h"

#include "KVSystemLog.h"

KVServiceAvailability::KVServiceAvailability(QString feature, QObject *parent)
    : QObject(parent)
    , m_feature(std::move(feature))
{
}

void KVServiceAvailability::setAvailable()
{
    setState(State::Available);
}

void KVServiceAvailability::setUnavailable(const QString &reason)
{
    if (!m_logged) {
        m_logged = true;
        KVSystemLog::write(QStringLiteral("%1 disabled: %2").arg(m_feature, reason));
    }
    setState(State::Unavailable);
}

void KVServiceAvailability::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT changed(state);
}
