#pragma once

#include "model/KVAppError.h"
#include "wizards/KVSlidingWizard.h"

#include <QPointer>

#include <memory>
#include <optional>

class KVDisk;
class KVDiskTable;
class KVFinishScreen;
class KVNewPasswordForm;
class KVPhaseProgress;

namespace Ui {
class EncryptDiskWizard;
}

// The wizard that turns a partition into an encrypted volume, in four sliding
// steps: partition; passphrase; preparation progress; result.
//
// The shell hands it the disk engine (setDisks), calls updateTable() and
// shows it. "Encrypt" starts the engine's conversion and empties the
// passphrase fields at once. The tool's four stage lines ("Started",
// "Resizing", "Creating Core Storage", "Encryption in progress") fill the
// progress step; the result step shows success, or the error's texts 0.8 s
// after a failure. The conversion itself goes on in the background: "Finish"
// asks the engine for the mounted disks again, so that the converting volume
// shows under "Mounted" with its progress. Every close resets the wizard and
// empties the engine's list of partitions.
class KVEncryptDiskWizardController : public KVSlidingWizard
{
    Q_OBJECT

public:
    explicit KVEncryptDiskWizardController(QWidget *parent = nullptr);
    ~KVEncryptDiskWizardController() override;

    KVDisk *disks() const;
    void setDisks(KVDisk *disks);

    KVDiskTable *diskTable() const { return m_table; }
    KVPhaseProgress *phaseProgress() const { return m_phaseProgress; }
    KVNewPasswordForm *newPasswordForm() const;
    int progressCounter() const;
    QString finishImageName() const;

    // The stage a line of the tool's output announces, or nothing.
    static bool isStageLine(const QString &line);

public Q_SLOTS:
    void updateTable();
    // By identifier: "continue", "create", "goBack", "cancel", "exit".
    void wizardButtons(const QString &identifier) override;
    void reset();
    void prepareFinishScreenWithError(const KVAppError &error);

protected:
    void updateButtons() override;

private:
    void tableDidLoad(const KVOptionalError &error);
    void reloadTable();
    void passwordsEdited();
    void encrypt();
    void encryptionProgress(const std::optional<QString> &line, bool finished, const KVOptionalError &error);
    void exit();

    std::unique_ptr<Ui::EncryptDiskWizard> m_ui;
    std::unique_ptr<KVFinishScreen> m_finishScreen;
    KVPhaseProgress *m_phaseProgress = nullptr; // a child
    KVDiskTable *m_table = nullptr;             // a child of the table view
    QPointer<KVDisk> m_disks;
    // Counts the showings, so that a late answer for an earlier one changes nothing.
    int m_run = 0;
};
