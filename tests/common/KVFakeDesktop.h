#pragma once

// Fake desktop services on a private bus, driven by the test: logind with its
// sleep announcements, inhibitor locks and session lock, a screen saver, and a
// notification service that records what it was shown.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QHash>
#include <QMutex>
#include <QUuid>

#include <functional>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// One service: a name on the bus and objects that answer methods by name.
// Qt hands calls to it on its bus thread: what the handlers record is read
// by the test under `m_mutex`.
class KVFakeService : public QDBusVirtualObject
{
public:
    using Handler = std::function<QVariantList(const QDBusMessage &call)>;

    KVFakeService(const QString &address, const QString &serviceName)
        : m_connectionName(QUuid::createUuid().toString())
        , m_bus(QDBusConnection::connectToBus(address, m_connectionName))
        , m_serviceName(serviceName)
    {
        if (!m_bus.isConnected() || !m_bus.registerService(serviceName))
            qFatal("cannot register %s", qPrintable(serviceName));
    }

    ~KVFakeService() override
    {
        m_bus.unregisterService(m_serviceName);
        QDBusConnection::disconnectFromBus(m_connectionName);
    }

    void addObject(const QString &path)
    {
        if (!m_bus.registerVirtualObject(path, this))
            qFatal("cannot register %s", qPrintable(path));
    }

    // A method answers with what `handler` returns; any other is refused.
    void on(const QString &method, Handler handler) { m_handlers.insert(method, std::move(handler)); }

    void emitSignal(const QString &path, const QString &interface, const QString &name, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createSignal(path, interface, name);
        message.setArguments(arguments);
        m_bus.send(message);
    }

    // The service leaves the bus, as a crashed or stopped daemon would.
    void leaveBus() { m_bus.unregisterService(m_serviceName); }

    QList<QDBusMessage> calls(const QString &method) const
    {
        const QMutexLocker locker(&m_mutex);
        QList<QDBusMessage> found;
        for (const QDBusMessage &call : m_calls) {
            if (call.member() == method)
                found.append(call);
        }
        return found;
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QMutexLocker locker(&m_mutex);
        m_calls.append(message);
        const auto handler = m_handlers.constFind(message.member());
        if (handler == m_handlers.constEnd())
            connection.send(message.createErrorReply(QDBusError::UnknownMethod, message.member()));
        else
            connection.send(message.createReply((*handler)(message)));
        return true;
    }

    QString introspect(const QString &) const override { return QString(); }

protected:
    mutable QMutex m_mutex;

private:
    QString m_connectionName;
    QDBusConnection m_bus;
    QString m_serviceName;
    QHash<QString, Handler> m_handlers;
    QList<QDBusMessage> m_calls;
};

// logind: each inhibitor lock is the write end of a pipe, whose read end the
// fake keeps; the lock is released once every copy of the write end is closed.
class KVFakeLogind : public KVFakeService
{
public:
    static inline const QString SessionPath = QStringLiteral("/org/freedesktop/login1/session/_1");

    explicit KVFakeLogind(const QString &address)
        : KVFakeService(address, QStringLiteral("org.freedesktop.login1"))
    {
        addObject(QStringLiteral("/org/freedesktop/login1"));
        on(QStringLiteral("Inhibit"), [this](const QDBusMessage &) {
            int ends[2];
            if (pipe2(ends, O_CLOEXEC) != 0)
                qFatal("pipe2");
            m_locks.append(ends[0]);
            const QDBusUnixFileDescriptor lock(ends[1]); // a copy
            close(ends[1]);
            return QVariantList{QVariant::fromValue(lock)};
        });
        on(QStringLiteral("GetSessionByPID"),
           [](const QDBusMessage &) { return QVariantList{QVariant::fromValue(QDBusObjectPath(SessionPath))}; });
    }

    ~KVFakeLogind() override
    {
        const QMutexLocker locker(&m_mutex);
        for (const int end : m_locks)
            close(end);
    }

    void prepareForSleep(bool start)
    {
        emitSignal(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                   QStringLiteral("PrepareForSleep"), {start});
    }

    void lockSession()
    {
        emitSignal(SessionPath, QStringLiteral("org.freedesktop.login1.Session"), QStringLiteral("Lock"), {});
    }

    int locksTaken() const
    {
        const QMutexLocker locker(&m_mutex);
        return int(m_locks.size());
    }

    // Locks whose holder has not closed them yet.
    int locksHeld() const
    {
        const QMutexLocker locker(&m_mutex);
        int held = 0;
        for (const int end : m_locks) {
            pollfd descriptor{end, POLLIN, 0};
            if (poll(&descriptor, 1, 0) == 0)
                ++held;
        }
        return held;
    }

private:
    QList<int> m_locks;
};

class KVFakeScreenSaver : public KVFakeService
{
public:
    explicit KVFakeScreenSaver(const QString &address)
        : KVFakeService(address, QStringLiteral("org.freedesktop.ScreenSaver"))
    {
        addObject(QStringLiteral("/org/freedesktop/ScreenSaver"));
    }

    void setActive(bool active)
    {
        emitSignal(QStringLiteral("/org/freedesktop/ScreenSaver"), QStringLiteral("org.freedesktop.ScreenSaver"),
                   QStringLiteral("ActiveChanged"), {active});
    }
};

class KVFakeNotifications : public KVFakeService
{
public:
    struct Shown
    {
        QString summary;
        QString body;
    };

    explicit KVFakeNotifications(const QString &address)
        : KVFakeService(address, QStringLiteral("org.freedesktop.Notifications"))
    {
        addObject(QStringLiteral("/org/freedesktop/Notifications"));
        on(QStringLiteral("GetServerInformation"), [](const QDBusMessage &) {
            return QVariantList{QStringLiteral("fake"), QStringLiteral("tests"), QStringLiteral("1"), QStringLiteral("1.2")};
        });
        on(QStringLiteral("Notify"), [this](const QDBusMessage &call) {
            m_shown.append({call.arguments().value(3).toString(), call.arguments().value(4).toString()});
            return QVariantList{QVariant::fromValue(uint(m_shown.size()))};
        });
    }

    QList<Shown> shown() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_shown;
    }

private:
    QList<Shown> m_shown;
};
