#include "KVFileSystemEventWatcher.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QPointer>

namespace {

// The one system watcher, and which of our watchers listen to each path.
class SharedWatcher
{
public:
    static SharedWatcher &instance()
    {
        // Never destroyed: watchers may outlive the application object at exit.
        static SharedWatcher *shared = new SharedWatcher;
        return *shared;
    }

    void add(KVFileSystemEventWatcher *watcher)
    {
        QList<KVFileSystemEventWatcher *> &listeners = m_listeners[watcher->path()];
        if (listeners.isEmpty())
            m_watcher.addPath(watcher->path());
        listeners.append(watcher);
    }

    void remove(KVFileSystemEventWatcher *watcher)
    {
        auto it = m_listeners.find(watcher->path());
        if (it == m_listeners.end())
            return;
        it->removeOne(watcher);
        if (it->isEmpty()) {
            m_listeners.erase(it);
            m_watcher.removePath(watcher->path());
        }
    }

private:
    SharedWatcher()
    {
        QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_watcher,
                         [this](const QString &path) { notify(path); });
    }

    void notify(const QString &path)
    {
        // A listener may be destroyed by another listener's reaction.
        QList<QPointer<KVFileSystemEventWatcher>> listeners;
        for (KVFileSystemEventWatcher *listener : m_listeners.value(path))
            listeners.append(listener);
        for (const QPointer<KVFileSystemEventWatcher> &listener : std::as_const(listeners)) {
            if (listener)
                Q_EMIT listener->eventOccurred(path);
        }
    }

    QFileSystemWatcher m_watcher;
    QHash<QString, QList<KVFileSystemEventWatcher *>> m_listeners;
};

} // namespace

KVFileSystemEventWatcher::KVFileSystemEventWatcher(const QString &path, QObject *parent)
    : QObject(parent)
    , m_path(path)
{
    if (!m_path.isEmpty())
        SharedWatcher::instance().add(this);
}

KVFileSystemEventWatcher::~KVFileSystemEventWatcher()
{
    if (!m_path.isEmpty())
        SharedWatcher::instance().remove(this);
}
