#pragma once

#include "model/KVAppError.h"
#include "wizards/KVDiskListWizard.h"

#include <memory>
#include <optional>

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
class KVEncryptDiskWizardController : public KVDiskListWizard
{
    Q_OBJECT

public:
    explicit KVEncryptDiskWizardController(QWidget *parent = nullptr);
    ~KVEncryptDiskWizardController() override;

    KVPhaseProgress *phaseProgress() const { return m_phaseProgress; }
    KVNewPasswordForm *newPasswordForm() const;
    int progressCounter() const;
    QString finishImageName() const;

    // The stage a line of the tool's output announces, or nothing.
    static bool isStageLine(const QString &line);

public Q_SLOTS:
    void reset() override;
    void prepareFinishScreenWithError(const KVAppError &error);

protected:
    void updateButtons() override;
    void performAction(const QString &identifier) override;
    // Also asks the engine for the mounted disks again, so that the converting
    // volume shows under "Mounted".
    void finish() override;

private:
    void passwordsEdited();
    void encrypt();
    void encryptionProgress(const std::optional<QString> &line, bool finished, const KVOptionalError &error);

    std::unique_ptr<Ui::EncryptDiskWizard> m_ui;
    std::unique_ptr<KVFinishScreen> m_finishScreen;
    KVPhaseProgress *m_phaseProgress = nullptr; // a child
};
