#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

// One Korvelle per user session. The first process takes a name on the session
// bus and offers the freedesktop Application interface there; a later launch
// hands its files (or just the wish to be shown) to it and ends.
class KVSingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit KVSingleInstance(QString serviceName, QObject *parent = nullptr);

    // True when this process is the one that runs: it took the name, or there
    // is no session bus to ask. False when another instance took the files.
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

    QString m_serviceName;
};
