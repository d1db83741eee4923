#pragma once

#include <QWidget>

#include <memory>

class KVServiceAvailability;

namespace Ui {
class Preferences;
}

// What the desktop offers, for the preferences window; a null entry counts as present.
struct KVDesktopServices
{
    KVServiceAvailability *sleep = nullptr;
    KVServiceAvailability *screenLock = nullptr;
    KVServiceAvailability *panel = nullptr;
    KVServiceAvailability *notifications = nullptr;
};

// The preferences window: six check boxes about mounting and unmounting, and a
// second group about the desktop (automatic unmounting, the panel entry,
// notifications); each setting is saved the moment it is changed through
// KVPreferences. A desktop feature whose service this desktop lacks is shown
// disabled, and a note beneath the group says what is missing.
class KVPreferencesController : public QWidget
{
    Q_OBJECT

public:
    using DesktopServices = KVDesktopServices;

    explicit KVPreferencesController(QWidget *parent = nullptr, DesktopServices services = {});
    ~KVPreferencesController() override;

    void showWindow();

    // What every preference is until the user changes it, favourites included.
    static QVariantMap registeredDefaults();

private:
    // The window shows what is stored when it loads; later changes made
    // elsewhere show at the next start.
    void reloadFromPreferences();
    void connectDesktopGroup();
    void showServiceAvailability();

    std::unique_ptr<Ui::Preferences> m_ui;
    DesktopServices m_services;
};
