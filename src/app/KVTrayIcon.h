#pragma once

#include "model/KVVolumeItem.h"

#include <QObject>

#include <memory>

class QMenu;
class QSystemTrayIcon;

// Korvelle's entry in the desktop's panel: its menu lists the mounted
// volumes, each with "Unmount" and "Open", then "Unmount All", "Show
// Korvelle" and "Quit". It only sends the user's choice on; the shell acts.
class KVTrayIcon : public QObject
{
    Q_OBJECT

public:
    explicit KVTrayIcon(QObject *parent = nullptr);
    ~KVTrayIcon() override;

    // Whether the desktop has a panel that takes the entry.
    static bool panelAvailable();

    void setVolumes(const QList<KVVolumeItemPtr> &volumes);
    void setShown(bool shown);
    bool isShown() const;
    QMenu *menu() const { return m_menu.get(); }

Q_SIGNALS:
    void unmountRequested(const KVVolumeItemPtr &item);
    void openRequested(const KVVolumeItemPtr &item);
    void unmountAllRequested();
    void showWindowRequested();
    void quitRequested();

private:
    void rebuildMenu();

    std::unique_ptr<QMenu> m_menu;
    QSystemTrayIcon *m_icon; // a child
    QList<KVVolumeItemPtr> m_volumes;
};
