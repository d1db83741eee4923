#include "KVImageMountSheetController.h"

#include "KVAlert.h"
#include "KVMountSheet.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"

KVImageMountSheetController::KVImageMountSheetController(KVMountSheet *sheet, KVSheetReturnCode afterAlert,
                                                         QObject *parent)
    : QObject(parent)
    , m_sheet(sheet)
    , m_afterAlert(afterAlert)
{
}

void KVImageMountSheetController::setDi(KVDiskImage *di)
{
    m_di = di;
}

KVDiskImage *KVImageMountSheetController::di() const
{
    return m_di;
}

void KVImageMountSheetController::mount(const Request &request)
{
    m_sheet->disableButtons();
    m_di->mountDiskImage(request.imagePath, m_sheet->password(), request.readOnly, request.mountRoot,
                         request.openAfterMount, [self = QPointer(this)](const KVOptionalError &error) {
                             KVMainQueue::post(self, [self, error] { self->mountDidEnd(error); });
                         });
}

QMessageBox *KVImageMountSheetController::showError(const KVAppError &error) const
{
    KVSystemLog::write(QStringLiteral("Error: %1").arg(error.debugDescription()));
    return KVAlert::showError(m_sheet->parentWidget(), error);
}

void KVImageMountSheetController::mountDidEnd(const KVOptionalError &error)
{
    if (error && KVMountSheet::showsInSheet(*error)) {
        m_sheet->showErrorNotification(error->localizedFailureReason());
        m_sheet->enableButtons();
        return;
    }
    if (error)
        showError(*error);
    m_sheet->endSheet(error ? m_afterAlert : KVSheetReturnCode::Succeeded);
    Q_EMIT mountEnded();
}
