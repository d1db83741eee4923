#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

// One Korvelle per user session. The first process takes a name on the session
// bus and offers the freedesktop Application interface there; a later launch
// hands its files (or just the wish to be shown) to it and ends. Without a
// session bus, a lock on a file in the user's runtime directory decides: the
// later launch cannot hand anything over then, and only ends.
class KVSingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit KVSingleInstance(QString serviceName, QObject *parent = nullptr);
    ~KVSingleInstance() override;

    // True when this process is the one that runs: it took the name, or the
    // lock when there is no session bus. False when another instance runs (and
    // took the files, if it could be asked).
    bool claim(const QStringList &files);

public Q_SLOTS:
    // The freedesktop Application interface.
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(const QString &actionName, const QVariantList &parameter,
                                     const QVariantMap &platformData);

Q_SIGNALS:
    void activated();
    void fileOpened(const QString &path);

private:
    QString objectPath() const;
    bool claimLock();

    QString m_serviceName;
    int m_lockFile = -1; // held open, and so locked, while this process runs
};
