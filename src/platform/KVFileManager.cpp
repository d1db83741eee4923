#include "KVFileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QUrl>

KVFreedesktopFileManager::KVFreedesktopFileManager(OpenFolder openFolder)
    : m_openFolder(std::move(openFolder))
{
}

void KVFreedesktopFileManager::showItem(const QString &path)
{
    const QFileInfo item(path);
    const QString folder = item.isDir() ? item.absoluteFilePath() : item.absolutePath();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        m_openFolder(folder);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(item.absoluteFilePath()).toString()} << QString();
    // Asynchronous: a bus that activates a file manager may take seconds to
    // answer, and the interface must not wait for it.
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [openFolder = m_openFolder, folder](QDBusPendingCallWatcher *finished) {
                         if (QDBusPendingReply<>(*finished).isError())
                             openFolder(folder);
                         finished->deleteLater();
                     });
}
