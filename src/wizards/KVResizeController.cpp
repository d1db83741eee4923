#include "KVResizeController.h"

#include "ui_Resize.h"

#include "app/KVAlert.h"
#include "app/KVSheetReturnCode.h"
#include "controls/KVSizeValueTransformer.h"
#include "platform/KVMainQueue.h"
#include "wizards/KVSensitiveString.h"

#include <QDir>
#include <QEvent>
#include <QLocale>

#include <cmath>

namespace {

QString sizeText(double bytes)
{
    return QLocale().formattedDataSize(qint64(bytes), 1, QLocale::DataSizeSIFormat);
}

// What one resize needs after the buttons were pressed: copied on the GUI
// thread, so that the engine's blocks never read the dialog.
struct ResizeJob
{
    QPointer<KVDiskImage> di;
    QString location;
    float sizeInM = 0;
    KVSensitiveString password;
    bool readOnly = false;
    QUrl mountRoot;
};

} // namespace

KVResizeController::KVResizeController(QWidget *parent)
    : QDialog(parent, Qt::Sheet)
    , m_ui(std::make_unique<Ui::Resize>())
{
    m_ui->setupUi(this);
    setWindowModality(Qt::WindowModal);
    for (QAbstractButton *button : {static_cast<QAbstractButton *>(m_ui->resizeButton),
                                    static_cast<QAbstractButton *>(m_ui->cancelButton)}) {
        connect(button, &QAbstractButton::clicked, this,
                [this, button] { buttons(button->property("identifier").toString()); });
    }
    connect(m_ui->resizeSlider, &LogarithmicSlider::positionChanged, this, &KVResizeController::changeSlider);
    m_ui->spaceIndicator->setTextFields(m_ui->usedSpaceField, m_ui->freeSpaceField);
    m_ui->spaceIndicator->installEventFilter(this);
}

KVResizeController::~KVResizeController() = default;

void KVResizeController::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_windowDidAlreadyLoad)
        windowDidLoad();
}

bool KVResizeController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui->spaceIndicator && (event->type() == QEvent::Move || event->type() == QEvent::Resize))
        placeSpaceIndicatorFields();
    return QDialog::eventFilter(watched, event);
}

void KVResizeController::windowDidLoad()
{
    m_ui->spaceIndicator->setHeight(6);
    // The used space first: the sizes show the share it takes.
    if (m_usedSpace == 0)
        m_usedSpace = m_usedSpaceTemp;
    updateSizes();
    m_windowDidAlreadyLoad = true;
}

void KVResizeController::setDictFromLimits(const QVariantMap &limits)
{
    m_dictFromLimits = limits;
    if (m_windowDidAlreadyLoad)
        updateSizes();
}

void KVResizeController::setCurrentSelection(const KVVolumeItemPtr &item)
{
    m_volumeLocation = item ? item->location() : QString();
    m_volumeReadOnly = item && item->readOnly();
    // The folder that holds the mount point: the image is mounted again under it.
    const QString mountPoint = item ? QDir::cleanPath(item->mountPoint()) : QString();
    const QString parent = mountPoint.section(u'/', 0, -2);
    m_volumeMountPath = mountPoint.isEmpty() ? QUrl() : QUrl::fromLocalFile(parent.isEmpty() ? u"/"_qs : parent + u'/');
    const qint64 used = item ? item->usedSpace() : 0;
    if (m_windowDidAlreadyLoad) {
        m_usedSpace = used;
        updateUsedSpacePercentage();
    } else {
        m_usedSpaceTemp = used;
    }
    m_currentSelection = item;
}

void KVResizeController::setVolumePassword(const QString &password)
{
    m_volumePassword = password;
}

void KVResizeController::updateSizes()
{
    const QVariantMap entry = m_dictFromLimits.value(u"subcontent-list"_qs).toList().value(0).toMap();
    m_minSize = entry.value(u"content-min-length"_qs).toDouble() * 512;
    const double current = entry.value(u"content-length"_qs).toDouble() * 512;
    if (m_minSize == 0)
        m_minSize = current;
    m_minSizeSliderValue = m_minSize > 0 ? std::log10(m_minSize) : 0;
    const double step = (kMaxSizeSliderValue - m_minSizeSliderValue) / 3;
    m_ui->minSizeLabel->setText(sizeText(m_minSize));
    m_ui->mid1SizeLabel->setText(sizeText(std::pow(10.0f, float(m_minSizeSliderValue + step))));
    m_ui->mid2SizeLabel->setText(sizeText(std::pow(10.0f, float(m_minSizeSliderValue + 2 * step))));
    m_updatingSlider = true;
    m_ui->resizeSlider->setPositionRange(float(m_minSizeSliderValue), float(kMaxSizeSliderValue));
    m_updatingSlider = false;
    // A minimum above the current size (a full volume) opens at the minimum:
    // the slider offers nothing smaller.
    setSizeSliderValue(std::max(current, m_minSize));
    setButtonsEnabled(m_ui->cancelButton->isEnabled());
}

bool KVResizeController::hasLimits() const
{
    return m_minSize > 0 && m_sizeSliderValue > 0;
}

void KVResizeController::setSizeSliderValue(double bytes)
{
    m_sizeSliderValue = bytes;
    showSizeSliderValue();
    updateUsedSpacePercentage();
}

void KVResizeController::showSizeSliderValue()
{
    m_updatingSlider = true;
    m_ui->resizeSlider->setPosition(KVSizeValueTransformer::transformedValue(float(m_sizeSliderValue)));
    m_updatingSlider = false;
    showNewSize();
    m_ui->spaceIndicator->setMinimum(0);
    m_ui->spaceIndicator->setMaximum(m_sizeSliderValue);
}

void KVResizeController::showNewSize()
{
    m_ui->newSizeLabel->setText(hasLimits() ? tr("New size: %1").arg(sizeText(m_sizeSliderValue))
                                            : tr("The size limits of this Disk Image could not be read."));
}

void KVResizeController::changeSlider()
{
    if (m_updatingSlider)
        return;
    // The slider never goes below its minimum, so neither does the size.
    m_sizeSliderValue = std::max<double>(
        KVSizeValueTransformer::reverseTransformedValue(m_ui->resizeSlider->position()), m_minSize);
    showNewSize();
    m_ui->spaceIndicator->setMaximum(m_sizeSliderValue);
    updateUsedSpacePercentage();
}

QString KVResizeController::usedSpacePercentageText(qint64 usedSpace, double size)
{
    const float share = float(usedSpace) / float(size) * 100.0f;
    return QString::asprintf("%d %%", std::isfinite(share) ? int(share) : 0);
}

void KVResizeController::updateUsedSpacePercentage()
{
    m_usedSpacePercentage = usedSpacePercentageText(m_usedSpace, m_sizeSliderValue);
    m_ui->usedSpacePercentageLabel->setText(m_usedSpacePercentage);
    m_ui->spaceIndicator->setValue(double(m_usedSpace));
    m_ui->usedSpaceField->setText(tr("%1 used").arg(sizeText(double(m_usedSpace))));
    m_ui->freeSpaceField->setText(
        tr("%1 free").arg(sizeText(std::max(0.0, m_sizeSliderValue - double(m_usedSpace)))));
}

void KVResizeController::placeSpaceIndicatorFields()
{
    // The indicator moves its fields sideways; they sit beneath the bar.
    const QRect bar = m_ui->spaceIndicator->geometry();
    const int top = m_ui->spaceIndicator->parentWidget()->mapTo(this, bar.bottomLeft()).y() + 4;
    m_ui->usedSpaceField->move(m_ui->usedSpaceField->x(), top);
    m_ui->freeSpaceField->move(m_ui->freeSpaceField->x(), top + m_ui->usedSpaceField->height());
    m_ui->usedSpaceField->raise();
    m_ui->freeSpaceField->raise();
}

void KVResizeController::buttons(const QString &identifier)
{
    if (identifier == u"resize") {
        resizeVolume();
    } else if (identifier == u"cancel" || identifier == u"exit") {
        reset();
        done(int(identifier == u"cancel" ? KVSheetReturnCode::Cancelled : KVSheetReturnCode::Finished));
    }
}

void KVResizeController::reject()
{
    if (m_ui->cancelButton->isEnabled())
        m_ui->cancelButton->click();
}

void KVResizeController::reset()
{
    setButtonsEnabled(true);
    cleanPasswords();
}

void KVResizeController::setButtonsEnabled(bool enabled)
{
    m_ui->resizeButton->setEnabled(enabled && hasLimits());
    m_ui->cancelButton->setEnabled(enabled);
}

void KVResizeController::cleanPasswords()
{
    kvWipeString(m_volumePassword);
}

void KVResizeController::resizeVolume()
{
    if (!m_di || !m_currentSelection)
        return;
    setButtonsEnabled(false);
    auto job = std::make_shared<ResizeJob>();
    job->di = m_di;
    job->location = m_volumeLocation;
    job->sizeInM = float(m_sizeSliderValue / 1000000);
    job->password = KVSensitiveString(m_volumePassword);
    job->readOnly = m_volumeReadOnly;
    job->mountRoot = m_volumeMountPath;
    const QPointer<KVResizeController> self(this);

    // The chained engine calls are queued straight from the blocks (engines
    // take calls from any thread); everything the user sees happens on the
    // GUI thread.
    m_di->unmountVolume(m_currentSelection, false, [self, job](const KVOptionalError &unmountError) {
        if (unmountError) {
            KVMainQueue::post(self, [self, error = *unmountError] { self->showErrorAndEnd(error); });
            return;
        }
        if (!job->di)
            return;
        job->di->resize(job->location, job->sizeInM, job->password.value(),
                        [self, job](const KVOptionalError &resizeError) {
            if (resizeError) {
                KVMainQueue::post(self, [self, error = *resizeError] {
                    KVAlert::showError(self->parentWidget(), error);
                    self->done(int(KVSheetReturnCode::Cancelled));
                });
            }
            // The volume comes back even when the resize failed.
            if (!job->di)
                return;
            job->di->mountDiskImage(job->location, job->password.value(), job->readOnly, job->mountRoot, false,
                                    [self, resizeFailed = resizeError.has_value()](const KVOptionalError &mountError) {
                KVMainQueue::post(self, [self, resizeFailed, mountError] {
                    if (mountError)
                        KVAlert::showError(self->parentWidget(), *mountError);
                    self->reset();
                    // After a failed resize the sheet has ended already.
                    if (!resizeFailed)
                        self->done(int(mountError ? KVSheetReturnCode::Cancelled : KVSheetReturnCode::Succeeded));
                });
            });
            job->password.wipe();
        });
    });
}

void KVResizeController::showErrorAndEnd(const KVAppError &error)
{
    KVAlert::showError(parentWidget(), error);
    reset();
    done(int(KVSheetReturnCode::Cancelled));
}
