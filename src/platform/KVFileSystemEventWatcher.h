#pragma once

#include <QObject>
#include <QString>

// Tells when something changes in a folder (a volume's mount point).
//
// All watchers share one system watcher: every listed volume has one, and a
// system watcher of its own per volume would soon exhaust the per-user limit of
// inotify instances. Use on the GUI thread.
class KVFileSystemEventWatcher : public QObject
{
    Q_OBJECT

public:
    explicit KVFileSystemEventWatcher(const QString &path, QObject *parent = nullptr);
    ~KVFileSystemEventWatcher() override;

    const QString &path() const { return m_path; }

Q_SIGNALS:
    void eventOccurred(const QString &path);

private:
    QString m_path;
};
