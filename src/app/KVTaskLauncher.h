#pragma once

#include "KVSheetReturnCode.h"

#include <QObject>
#include <QPointer>

#include <functional>

class KVCreateImageWizardController;
class KVDisk;
class KVDiskImage;
class KVEncryptDiskWizardController;
class KVMountDiskController;
class QWidget;

// Opens the task wizards as sheets over the main window. Each wizard is made
// on first use and kept, so that every later showing reuses it; each resets
// itself when it closes.
//
// createDiskImage() first asks where the new image goes, in a save panel
// sheet, then shows the create-image wizard for that file. The wizard's end
// is reported with the file, for the shell to note it as a recent document.
// encryptDisk() and mountDisk() show their wizards at once and let them load
// their lists of disks.
class KVTaskLauncher : public QObject
{
    Q_OBJECT

public:
    using CreateImageDidEnd = std::function<void(KVSheetReturnCode returnCode, const QString &imagePath)>;

    KVTaskLauncher(QWidget *window, KVDiskImage *di, KVDisk *disks, CreateImageDidEnd createImageDidEnd,
                   QObject *parent = nullptr);
    ~KVTaskLauncher() override;

    // The wizard, once it has been shown (tests look at it).
    KVCreateImageWizardController *createImageWizard() const;
    KVEncryptDiskWizardController *encryptDiskWizard() const;
    KVMountDiskController *mountDiskController() const;

public Q_SLOTS:
    void createDiskImage();
    // The create-image wizard for a chosen file, without the save panel.
    void createDiskImageAt(const QString &imagePath);
    // The partition list is asked for as the sheet opens; the spinner turns until it is in.
    void encryptDisk();
    void mountDisk();

private:
    QPointer<QWidget> m_window;
    QPointer<KVDiskImage> m_di;
    QPointer<KVDisk> m_disks;
    CreateImageDidEnd m_createImageDidEnd;
    // Children of the window.
    QPointer<KVCreateImageWizardController> m_createImageWizard;
    QPointer<KVEncryptDiskWizardController> m_encryptDiskWizard;
    QPointer<KVMountDiskController> m_mountDiskController;
};
