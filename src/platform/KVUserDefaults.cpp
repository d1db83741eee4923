#include "KVUserDefaults.h"

#include "KVSystemLog.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSettings>

KVUserDefaults &KVUserDefaults::standard()
{
    // Lives as long as the application object.
    static QPointer<KVUserDefaults> defaults;
    if (!defaults) {
        defaults = new KVUserDefaults(std::make_unique<QSettings>(), QCoreApplication::instance());
    }
    return *defaults;
}

KVUserDefaults::KVUserDefaults(const QString &iniFile, QObject *parent)
    : KVUserDefaults(std::make_unique<QSettings>(iniFile, QSettings::IniFormat), parent)
{
}

KVUserDefaults::KVUserDefaults(std::unique_ptr<QSettings> settings, QObject *parent)
    : QObject(parent)
    , m_settings(std::move(settings))
{
}

KVUserDefaults::~KVUserDefaults() = default;

void KVUserDefaults::registerDefaults(const QVariantMap &defaults)
{
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it)
        m_registered.insert(it.key(), it.value());
}

QVariant KVUserDefaults::object(const QString &key) const
{
    const QVariant stored = m_settings->value(key);
    return stored.isValid() ? stored : m_registered.value(key);
}

bool KVUserDefaults::boolForKey(const QString &key) const
{
    // An INI file gives every value back as text: "true"/"false" come back
    // as strings, which QVariant converts.
    return object(key).toBool();
}

double KVUserDefaults::doubleForKey(const QString &key) const
{
    return object(key).toDouble();
}

QByteArray KVUserDefaults::dataForKey(const QString &key) const
{
    return object(key).toByteArray();
}

void KVUserDefaults::setObject(const QVariant &value, const QString &key)
{
    m_settings->setValue(key, value);
    written();
    Q_EMIT changed(key);
}

void KVUserDefaults::removeObject(const QString &key)
{
    m_settings->remove(key);
    written();
    Q_EMIT changed(key);
}

QString KVUserDefaults::fileName() const
{
    return m_settings->fileName();
}

void KVUserDefaults::written()
{
    m_settings->sync();
    if (m_settings->status() != QSettings::AccessError || m_writeFailureReported)
        return;
    m_writeFailureReported = true;
    KVSystemLog::write(QStringLiteral("Error: the preferences cannot be saved in %1").arg(fileName()));
    Q_EMIT writeFailed(fileName());
}
