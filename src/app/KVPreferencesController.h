#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class Preferences;
}

// The preferences window: six check boxes, each saved the moment it is clicked.
// The class also carries the accessors through which everything else reads the
// preferences; they ask the store on every call, nothing is cached.
class KVPreferencesController : public QWidget
{
    Q_OBJECT

public:
    explicit KVPreferencesController(QWidget *parent = nullptr);
    ~KVPreferencesController() override;

    void showWindow();

    static bool prefAutoUnmountVolumes();
    static void setPrefAutoUnmountVolumes(bool value);
    static bool prefForceAutoUnmount();
    static void setPrefForceAutoUnmount(bool value);
    static bool prefForceUnmount();
    static void setPrefForceUnmount(bool value);
    static bool prefMountDiskImageAfterCreation();
    static void setPrefMountDiskImageAfterCreation(bool value);
    static bool prefOpenFinderAfterMount();
    static void setPrefOpenFinderAfterMount(bool value);
    static bool prefSaveOpenRecent();
    static void setPrefSaveOpenRecent(bool value);

private:
    // The window shows what is stored when it loads; later changes made
    // elsewhere show at the next start.
    void reloadFromPreferences();

    std::unique_ptr<Ui::Preferences> m_ui;
};
