#include "KVUserDefaults.h"

#include "KVSystemLog.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSettings>

#include <cmath>
#include <optional>

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

namespace {

// An INI file gives every value back as text: "true"/"false" and numbers come
// back as strings. Anything else (a word, a list, a group) is not a switch.
std::optional<bool> asBool(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    const QString text = value.typeId() == QMetaType::QString ? value.toString().trimmed() : QString();
    if (text.compare(u"true", Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(u"false", Qt::CaseInsensitive) == 0)
        return false;
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (isNumber && std::isfinite(number))
        return number != 0;
    return std::nullopt;
}

} // namespace

// A value of the wrong type in the settings file (edited by hand, or left by
// another version) reads as the registered default, never as "on".
bool KVUserDefaults::boolForKey(const QString &key) const
{
    if (const std::optional<bool> stored = asBool(m_settings->value(key)))
        return *stored;
    return m_registered.value(key).toBool();
}

double KVUserDefaults::doubleForKey(const QString &key) const
{
    bool isNumber = false;
    const double stored = m_settings->value(key).toDouble(&isNumber);
    return isNumber && std::isfinite(stored) ? stored : m_registered.value(key).toDouble();
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
