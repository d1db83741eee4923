#pragma once

#include "model/KVAppError.h"
#include "model/KVVolumeItem.h"

#include <QDialog>
#include <QPointer>

#include <memory>

class KVDisk;
class KVDiskImage;
class KVNewPasswordForm;

namespace Ui {
class ChangePassword;
}

// The sheet that gives one volume a new password: an encrypted disk image
// (through the image engine) or an encrypted disk (through the disk engine).
//
// The shell hands it both engines and the volume, and opens it. "Change" is
// enabled while the new password is not empty and equals its confirmation;
// the old one is the engine's to judge. A wrong old password is said in the
// sheet, with the focus back on the old password and the typed texts kept;
// any other failure is an alert. The sheet ends itself with
// KVSheetReturnCode::Succeeded or Cancelled, and every end forgets the volume
// and all typed text.
class KVChangePasswordController : public QDialog
{
    Q_OBJECT

public:
    static inline const QString DiskIconName = QStringLiteral("DiskIcon");
    static inline const QString DiskImageIconName = QStringLiteral("DiskImageIcon");

    explicit KVChangePasswordController(QWidget *parent = nullptr);
    ~KVChangePasswordController() override;

    void setDi(KVDiskImage *di);
    void setDisks(KVDisk *disks);
    const KVVolumeItemPtr &currentSelection() const { return m_currentSelection; }
    void setCurrentSelection(const KVVolumeItemPtr &item);
    // The name of the picture `thumbImg` shows: DiskIconName or DiskImageIconName.
    QString thumbImageName() const;

    KVNewPasswordForm *newPasswordForm() const;

public Q_SLOTS:
    // By the button's identifier: "change", "cancel" or "exit".
    void buttons(const QString &identifier);
    // Buttons as on opening, no failure line, no volume, no text.
    void reset();
    void reject() override;

private:
    void windowDidLoad();
    void enableButtons();
    void disableButtons();
    void changePassword();
    void changeDidEnd(const KVOptionalError &error);
    void endSheet(int returnCode);

    std::unique_ptr<Ui::ChangePassword> m_ui;
    QPointer<KVDiskImage> m_di;
    QPointer<KVDisk> m_disks;
    KVVolumeItemPtr m_currentSelection;
};
