#pragma once

#include <QObject>
#include <QString>

// Whether one desktop service (sleep, screen lock, notifications, the panel)
// is there to be used. It is unknown until the service first answers or fails
// to. Becoming unavailable writes one line to the system log, naming the
// feature that is off and why; further failures write nothing.
class KVServiceAvailability : public QObject
{
    Q_OBJECT

public:
    enum class State { Unknown, Available, Unavailable };

    explicit KVServiceAvailability(QString feature, QObject *parent = nullptr);

    State state() const { return m_state; }
    bool isUnavailable() const { return m_state == State::Unavailable; }
    const QString &feature() const { return m_feature; }

    void setAvailable();
    void setUnavailable(const QString &reason);

Q_SIGNALS:
    void changed(KVServiceAvailability::State state);

private:
    void setState(State state);

    QString m_feature;
    State m_state = State::Unknown;
    bool m_logged = false;
};
