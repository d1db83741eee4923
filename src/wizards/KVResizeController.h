#pragma once

#include "diskimage/KVDiskImage.h"
#include "model/KVVolumeItem.h"

#include <QDialog>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>

#include <memory>

namespace Ui {
class Resize;
}

// The sheet that gives a mounted encrypted disk image a new size.
//
// The shell prepares it for each use: the image engine (setDi), the image's
// limits as the engine read them (setDictFromLimits), the volume
// (setCurrentSelection) and the image's password (setVolumePassword), then
// opens it. These setters work before and after the window is first shown.
//
// The slider runs on a logarithmic scale from the smallest size the image's
// content allows up to a fixed 10^11 bytes, and opens at the current size.
// "Resize" unmounts the volume, resizes the image and mounts it again under
// the folder it was mounted in, read-only if it was, even after a failed
// resize so that the user gets the volume back. The sheet ends itself with
// KVSheetReturnCode::Succeeded or Cancelled; the password is wiped at every
// end.
class KVResizeController : public QDialog
{
    Q_OBJECT

public:
    static constexpr double kMaxSizeSliderValue = 11.0; // log10 of 10^11 bytes

    explicit KVResizeController(QWidget *parent = nullptr);
    ~KVResizeController() override;

    void setDi(KVDiskImage *di) { m_di = di; }
    KVDiskImage *di() const { return m_di; }

    const KVVolumeItemPtr &currentSelection() const { return m_currentSelection; }
    void setCurrentSelection(const KVVolumeItemPtr &item);
    const QVariantMap &dictFromLimits() const { return m_dictFromLimits; }
    void setDictFromLimits(const QVariantMap &limits);
    void setVolumePassword(const QString &password);
    bool hasVolumePassword() const { return !m_volumePassword.isEmpty(); }

    QString volumeLocation() const { return m_volumeLocation; }
    bool volumeReadOnly() const { return m_volumeReadOnly; }
    QUrl volumeMountPath() const { return m_volumeMountPath; }

    qint64 usedSpace() const { return m_usedSpace; }
    QString usedSpacePercentage() const { return m_usedSpacePercentage; }
    double minSize() const { return m_minSize; }
    double minSizeSliderValue() const { return m_minSizeSliderValue; }
    double maxSizeSliderValue() const { return kMaxSizeSliderValue; }
    // The chosen size in bytes; the slider shows it through KVSizeValueTransformer.
    double sizeSliderValue() const { return m_sizeSliderValue; }
    void setSizeSliderValue(double bytes);

    // "%d %%" of used / size, the quotient in single precision and truncated.
    static QString usedSpacePercentageText(qint64 usedSpace, double size);

public Q_SLOTS:
    // By the button's identifier: "resize", "cancel" or "exit".
    void buttons(const QString &identifier);
    // Buttons enabled and the password wiped.
    void reset();
    void reject() override;

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void windowDidLoad();
    void updateSizes();
    void updateUsedSpacePercentage();
    void showSizeSliderValue();
    void showNewSize();
    // Limits were read: without them there is nothing to offer.
    bool hasLimits() const;
    void changeSlider();
    void placeSpaceIndicatorFields();
    void setButtonsEnabled(bool enabled);
    void cleanPasswords();

    void resizeVolume();
    void unmountDidEnd(const KVOptionalError &error);
    void resizeDidEnd(const KVOptionalError &error);
    void mountDidEnd(const KVOptionalError &error);
    void showErrorAndEnd(const KVAppError &error);

    std::unique_ptr<Ui::Resize> m_ui;
    QPointer<KVDiskImage> m_di;
    KVVolumeItemPtr m_currentSelection;
    QVariantMap m_dictFromLimits;
    QString m_volumeLocation;
    bool m_volumeReadOnly = false;
    QUrl m_volumeMountPath;
    qint64 m_usedSpace = 0;
    qint64 m_usedSpaceTemp = 0;
    QString m_usedSpacePercentage;
    QString m_volumePassword;
    double m_minSize = 0;
    double m_minSizeSliderValue = 0;
    double m_sizeSliderValue = 0;
    bool m_windowDidAlreadyLoad = false;
    bool m_updatingSlider = false;
};
