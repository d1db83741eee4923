#include "KVTrayIcon.h"

#include "model/KVDisplayText.h"

#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

KVTrayIcon::KVTrayIcon(QObject *parent)
    : QObject(parent)
    , m_menu(std::make_unique<QMenu>())
    , m_icon(new QSystemTrayIcon(QIcon(QStringLiteral(":/icons/Korvelle.svg")), this))
{
    m_menu->setObjectName(QStringLiteral("trayMenu"));
    m_icon->setToolTip(QStringLiteral("Korvelle"));
    m_icon->setContextMenu(m_menu.get());
    // A click on the entry itself brings the window, as on most panels.
    connect(m_icon, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            Q_EMIT showWindowRequested();
    });
    rebuildMenu();
}

KVTrayIcon::~KVTrayIcon() = default;

bool KVTrayIcon::panelAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void KVTrayIcon::setVolumes(const QList<KVVolumeItemPtr> &volumes)
{
    m_volumes = volumes;
    rebuildMenu();
}

void KVTrayIcon::setShown(bool shown)
{
    m_icon->setVisible(shown);
}

bool KVTrayIcon::isShown() const
{
    return m_icon->isVisible();
}

void KVTrayIcon::rebuildMenu()
{
    // The volumes' submenus are the menu's children: clear() leaves them.
    qDeleteAll(m_menu->findChildren<QMenu *>(Qt::FindDirectChildrenOnly));
    m_menu->clear();
    if (m_volumes.isEmpty())
        m_menu->addAction(tr("No volumes mounted"))->setEnabled(false);
    for (const KVVolumeItemPtr &item : std::as_const(m_volumes)) {
        const QString icon = item->type() == KVVolumeKind::Disk ? QStringLiteral(":/icons/DiskIcon.svg")
                                                                : QStringLiteral(":/icons/DiskImageMountedIcon.svg");
        QMenu *volumeMenu = m_menu->addMenu(QIcon(icon), KVDisplayText::inMenu(item->name()));
        volumeMenu->setObjectName(QStringLiteral("trayVolumeMenu"));
        const std::weak_ptr<KVVolumeItem> weakItem = item;
        const auto send = [this, weakItem](void (KVTrayIcon::*request)(const KVVolumeItemPtr &)) {
            return [this, weakItem, request] {
                if (const KVVolumeItemPtr target = weakItem.lock())
                    Q_EMIT(this->*request)(target);
            };
        };
        connect(volumeMenu->addAction(tr("Open")), &QAction::triggered, this, send(&KVTrayIcon::openRequested));
        connect(volumeMenu->addAction(tr("Unmount")), &QAction::triggered, this, send(&KVTrayIcon::unmountRequested));
    }
    m_menu->addSeparator();
    QAction *unmountAll = m_menu->addAction(tr("Unmount All"));
    unmountAll->setEnabled(!m_volumes.isEmpty());
    connect(unmountAll, &QAction::triggered, this, &KVTrayIcon::unmountAllRequested);
    connect(m_menu->addAction(tr("Show Korvelle")), &QAction::triggered, this, &KVTrayIcon::showWindowRequested);
    m_menu->addSeparator();
    connect(m_menu->addAction(tr("Quit")), &QAction::triggered, this, &KVTrayIcon::quitRequested);
}
