#include "KVSingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

KVSingleInstance::KVSingleInstance(QString serviceName, QObject *parent)
    : QObject(parent)
    , m_serviceName(std::move(serviceName))
{
}

KVSingleInstance::~KVSingleInstance()
{
    if (m_lockFile >= 0)
        ::close(m_lockFile);
}

QString KVSingleInstance::objectPath() const
{
    // The interface's convention: the service name with dots as slashes.
    return QLatin1Char('/') + QString(m_serviceName).replace(QLatin1Char('.'), QLatin1Char('/'));
}

bool KVSingleInstance::claim(const QStringList &files)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return claimLock();
    if (bus.registerService(m_serviceName)) {
        bus.registerObject(objectPath(), this, QDBusConnection::ExportScriptableSlots);
        return true;
    }

    QStringList uris;
    for (const QString &file : files)
        uris.append(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()).toString());
    const QString method = uris.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open");
    QDBusMessage call = QDBusMessage::createMethodCall(m_serviceName, objectPath(),
                                                       QStringLiteral("org.freedesktop.Application"), method);
    if (uris.isEmpty())
        call << QVariantMap();
    else
        call << uris << QVariantMap();
    const QDBusMessage reply = bus.call(call, QDBus::Block, 5000);
    // If the other instance does not answer, run on our own rather than not at all.
    return reply.type() == QDBusMessage::ErrorMessage;
}

bool KVSingleInstance::claimLock()
{
    if (m_lockFile >= 0)
        return true;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QByteArray path = QFile::encodeName(QDir(folder).filePath(m_serviceName + QStringLiteral(".lock")));
    const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    // A lock that cannot be made at all keeps no one from running.
    if (file < 0)
        return true;
    if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        ::close(file);
        qWarning("Korvelle is already running in this session.");
        return false;
    }
    m_lockFile = file;
    return true;
}

void KVSingleInstance::Activate(const QVariantMap &)
{
    Q_EMIT activated();
}

void KVSingleInstance::Open(const QStringList &uris, const QVariantMap &)
{
    Q_EMIT activated();
    for (const QString &uri : uris) {
        const QUrl url(uri);
        if (url.isLocalFile())
            Q_EMIT fileOpened(url.toLocalFile());
    }
}

void KVSingleInstance::ActivateAction(const QString &, const QVariantList &, const QVariantMap &)
{
    Q_EMIT activated();
}
