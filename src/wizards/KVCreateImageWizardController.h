#pragma once

#include "model/KVAppError.h"
#include "wizards/KVSlidingWizard.h"

#include <QPointer>
#include <QUrl>

#include <memory>
#include <optional>

class KVDiskImage;
class KVFinishScreen;
class KVNewPasswordForm;
class KVPhaseProgress;

namespace Ui {
class CreateImageWizard;
}

// The wizard that makes a new encrypted disk image, in four sliding steps:
// name, size and encryption; password; creation progress; result.
//
// The shell creates it once and keeps it. Before each showing it hands over
// the image engine (setDi) and the file chosen in the save panel
// (setImagePath, which also makes the file's base name the volume name).
// "Create" removes a file already at that path, starts the engine's creation
// and empties the password fields at once: from then on only the engine holds
// the password. The tool's "MESSAGE" lines move the progress step, its
// "PERCENT:" lines are shown as a number beside it, and the result step shows
// success, or the error's texts 0.8 s after a failure. Every close goes
// through reset(), so a reopened wizard starts at step one with empty fields,
// 100 MB and AES-128.
class KVCreateImageWizardController : public KVSlidingWizard
{
    Q_OBJECT

public:
    static constexpr float DefaultSizeSliderValue = 100'000'000.0f;
    // Hover-area identifiers and the help panel's y origin for each.
    static constexpr int NameHelpY = -392;
    static constexpr int SizeHelpY = -196;
    static constexpr int EncryptionHelpY = 0;

    explicit KVCreateImageWizardController(QWidget *parent = nullptr);
    ~KVCreateImageWizardController() override;

    KVDiskImage *di() const;
    void setDi(KVDiskImage *di);

    QUrl imagePath() const { return m_imagePath; }
    void setImagePath(const QUrl &imagePath);

    // The requested size in bytes; the slider shows it on a logarithmic scale.
    float sizeSliderValue() const { return m_sizeSliderValue; }
    void setSizeSliderValue(float bytes);

    int progressCounter() const;
    KVPhaseProgress *phaseProgress() const { return m_phaseProgress; }
    QString finishImageName() const;
    KVNewPasswordForm *newPasswordForm() const;

    // "AES-128" for row 0, "AES-256" for row 1, nothing for any other row.
    static std::optional<QString> encryptionForRow(int row);
    // "PERCENT:42.187500" gives "42 %"; a negative or unreadable value gives nothing.
    static std::optional<QString> percentText(const QString &line);

public Q_SLOTS:
    void reset() override;
    // A hover area of step one was entered: "step1.name", "step1.size" or "step1.encryption".
    void mouseDidEnter(const QString &identifier);
    void prepareFinishScreenWithError(const KVAppError &error);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void updateButtons() override;
    void performAction(const QString &identifier) override;

private:
    void setUpHelpPanel();
    void showSizeSliderValue();
    void sizeSliderMoved(float position);
    void passwordsEdited();
    void createImage();
    void startEngine(const QString &password);
    void creationProgress(const std::optional<QString> &line, bool finished, const KVOptionalError &error);
    void failAfter(const KVAppError &error, int milliseconds);

    std::unique_ptr<Ui::CreateImageWizard> m_ui;
    std::unique_ptr<KVFinishScreen> m_finishScreen;
    KVPhaseProgress *m_phaseProgress = nullptr; // a child
    QPointer<KVDiskImage> m_di;
    QUrl m_imagePath;
    float m_sizeSliderValue = DefaultSizeSliderValue;
    bool m_showingSize = false;
};
