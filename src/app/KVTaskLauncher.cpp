#include "KVTaskLauncher.h"

#include "disk/KVDisk.h"
#include "diskimage/KVDiskImage.h"
#include "wizards/KVCreateImageWizardController.h"
#include "wizards/KVEncryptDiskWizardController.h"
#include "wizards/KVMountDiskController.h"

#include <QFileDialog>
#include <QUrl>

KVTaskLauncher::KVTaskLauncher(QWidget *window, KVDiskImage *di, KVDisk *disks, CreateImageDidEnd createImageDidEnd,
                               QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_di(di)
    , m_disks(disks)
    , m_createImageDidEnd(std::move(createImageDidEnd))
{
}

KVTaskLauncher::~KVTaskLauncher() = default;

KVCreateImageWizardController *KVTaskLauncher::createImageWizard() const
{
    return m_createImageWizard;
}

KVEncryptDiskWizardController *KVTaskLauncher::encryptDiskWizard() const
{
    return m_encryptDiskWizard;
}

KVMountDiskController *KVTaskLauncher::mountDiskController() const
{
    return m_mountDiskController;
}

void KVTaskLauncher::createDiskImage()
{
    auto *panel = new QFileDialog(m_window, tr("Choose Disk Image location:"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(tr("Disk images (*.sparseimage)"));
    panel->setDefaultSuffix(QStringLiteral("sparseimage"));
    panel->setWindowModality(Qt::WindowModal);
    connect(panel, &QFileDialog::fileSelected, this, &KVTaskLauncher::createDiskImageAt);
    panel->open();
}

void KVTaskLauncher::createDiskImageAt(const QString &imagePath)
{
    if (!m_createImageWizard) {
        m_createImageWizard = new KVCreateImageWizardController(m_window);
        connect(m_createImageWizard, &QDialog::finished, this, [this](int result) {
            if (m_createImageDidEnd)
                m_createImageDidEnd(KVSheetReturnCode(result), m_createImageWizard->imagePath().toLocalFile());
        });
    }
    m_createImageWizard->setDi(m_di);
    m_createImageWizard->setImagePath(QUrl::fromLocalFile(imagePath));
    m_createImageWizard->open();
}

void KVTaskLauncher::encryptDisk()
{
    if (!m_encryptDiskWizard)
        m_encryptDiskWizard = new KVEncryptDiskWizardController(m_window);
    m_encryptDiskWizard->setDisks(m_disks);
    m_encryptDiskWizard->updateTable();
    m_encryptDiskWizard->open();
}

void KVTaskLauncher::mountDisk()
{
    if (!m_mountDiskController)
        m_mountDiskController = new KVMountDiskController(m_window);
    m_mountDiskController->setDisks(m_disks);
    m_mountDiskController->updateTable();
    m_mountDiskController->open();
}
