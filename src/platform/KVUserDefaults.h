#pragma once

#include <QObject>
#include <QVariantMap>

#include <memory>

class QSettings;

// The application's user defaults: typed values by key, stored where the
// platform keeps them (QSettings in its native format: an INI file under
// ~/.config on Linux, the user defaults on macOS).
//
// Registered defaults apply only where the user has stored nothing and are
// never written. Nothing is cached here: every read asks the store. A store
// that cannot be written is reported once through writeFailed().
// Use on the GUI thread.
class KVUserDefaults : public QObject
{
    Q_OBJECT

public:
    // The application's own store.
    static KVUserDefaults &standard();
    // A store in the given INI file (tests and tools).
    explicit KVUserDefaults(const QString &iniFile, QObject *parent = nullptr);
    ~KVUserDefaults() override;

    void registerDefaults(const QVariantMap &defaults);

    QVariant object(const QString &key) const;
    bool boolForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    QByteArray dataForKey(const QString &key) const;

    void setObject(const QVariant &value, const QString &key);
    void setBool(bool value, const QString &key) { setObject(value, key); }
    void removeObject(const QString &key);

    QString fileName() const;

Q_SIGNALS:
    void writeFailed(const QString &fileName);
    // A value was set or removed here.
    void changed(const QString &key);

private:
    explicit KVUserDefaults(std::unique_ptr<QSettings> settings, QObject *parent = nullptr);
    void written();

    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
    bool m_writeFailureReported = false;
};
