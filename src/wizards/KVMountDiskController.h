#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"
#include "wizards/KVDiskListWizard.h"

#include <memory>

namespace Ui {
class MountDisk;
}

// The sheet that mounts an encrypted volume that is present but not mounted:
// step one lists the candidates, step two asks for the passphrase of a locked
// one.
//
// The shell hands it the disk engine (setDisks), calls updateTable() and shows
// it. A volume that is unlocked already is mounted straight from step one
// ("Mount"); a locked one is unlocked with the passphrase, then mounted. A
// wrong passphrase is said in the sheet, with the typed passphrase kept; any
// other failure is an alert and ends the sheet. The sheet ends with
// KVSheetReturnCode::Succeeded after a mount and Cancelled otherwise; every end
// resets it and empties the engine's list of candidates.
class KVMountDiskController : public KVDiskListWizard
{
    Q_OBJECT

public:
    explicit KVMountDiskController(QWidget *parent = nullptr);
    ~KVMountDiskController() override;

    // "Locked" or "Unlocked".
    static QString statusText(const KVVolumeItem &item);

public Q_SLOTS:
    void reset() override;

protected:
    void updateButtons() override;
    void performAction(const QString &identifier) override;

private:
    void disableButtons();
    void enableButtons();
    void mount();
    void unlockDidEnd(const KVVolumeItemPtr &item, const KVOptionalError &error);
    void mountVolume(const KVVolumeItemPtr &item);
    void mountDidEnd(const KVOptionalError &error);
    void cleanPasswords();

    std::unique_ptr<Ui::MountDisk> m_ui;
};
