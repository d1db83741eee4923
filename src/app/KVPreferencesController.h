#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class Preferences;
}

// The preferences window: six check boxes, each saved the moment it is clicked
// through KVPreferences.
class KVPreferencesController : public QWidget
{
    Q_OBJECT

public:
    explicit KVPreferencesController(QWidget *parent = nullptr);
    ~KVPreferencesController() override;

    void showWindow();

    // What every preference is until the user changes it, favourites included.
    static QVariantMap registeredDefaults();

private:
    // The window shows what is stored when it loads; later changes made
    // elsewhere show at the next start.
    void reloadFromPreferences();

    std::unique_ptr<Ui::Preferences> m_ui;
};
