#include "KVUnmountController.h"

#include "KVAlert.h"
#include "KVBusyVolumeAlert.h"
#include "KVQuitCoordinator.h"
#include "diskimage/KVDiskImage.h"
#include "model/KVLocalization.h"
#include "platform/KVMainQueue.h"
#include "platform/KVSystemLog.h"
#include "platform/KVVolumeUsers.h"
#include "settings/KVPreferences.h"

#include <QWidget>

KVUnmountController::KVUnmountController(KVQuitCoordinator *quit, QWidget *window, QObject *parent)
    : QObject(parent)
    , m_quit(quit)
    , m_window(window)
{
}

bool KVUnmountController::forceUnmount() const
{
    if (m_quit->isQuitting())
        return KVPreferences::prefAutoUnmountVolumes() && KVPreferences::prefForceAutoUnmount();
    return KVPreferences::prefForceUnmount();
}

void KVUnmountController::unmountAll(const QList<KVVolumeItemPtr> &volumes)
{
    // A copy: nothing may change the list while it is walked.
    const QList<KVVolumeItemPtr> walked = volumes;
    for (const KVVolumeItemPtr &item : walked)
        unmountVolume(item);
}

void KVUnmountController::unmountVolume(const KVVolumeItemPtr &item)
{
    unmount(item, forceUnmount());
}

void KVUnmountController::unmount(const KVVolumeItemPtr &item, bool force)
{
    const bool unmountable = item && (item->type() == KVVolumeKind::DiskImage || item->type() == KVVolumeKind::Disk);
    if (!unmountable || item->isSystemPartition() || !m_di)
        return;
    // Decided now, on the GUI thread: the completion may come on a worker thread.
    const KVQuitCoordinator::Report reportToQuit =
        m_quit->reportFor(item->name(), KVPreferences::prefAutoUnmountVolumes());
    const QPointer<KVUnmountController> self(this);
    auto report = [self, item, force](const KVOptionalError &error, const QString &processes) {
        KVSystemLog::write(QStringLiteral("Unmount volume error: %1").arg(error->debugDescription()));
        if (error->localizedFailureReason() != KVLocalization::tr("hdiutil ended abnormally.") && self)
            self->showFailure(item, *error, processes, !force);
    };
    auto completion = onGuiThread(self, item->mountPoint(), std::move(report));
    auto quitFailed = [self, name = item->name(), duringQuit = m_quit->isQuitting()](const KVAppError &error) {
        if (duringQuit)
            KVMainQueue::post(self, [self, name, error] { Q_EMIT self->quitUnmountFailed(name, error); });
    };
    m_di->unmountVolume(item, force, [reportToQuit, completion, quitFailed](const KVOptionalError &error) {
        // Posted before the quit hears of it, so that it is told before the quit ends.
        if (error)
            quitFailed(*error);
        // During a quit a failure counts like a success and is neither logged nor shown.
        if (reportToQuit() || !error)
            return;
        completion(error);
    });
}

void KVUnmountController::unmountAutomatically(const KVVolumeItemPtr &item, AutomaticDone done)
{
    if (!m_di) {
        done(KVAppError(KVAppErrorDomain, 0, tr("The volume could not be unmounted."), QString()), QString());
        return;
    }
    m_di->unmountVolume(item, KVPreferences::prefForceAutoUnmount(),
                        onGuiThread(QPointer(this), item->mountPoint(), std::move(done)));
}

void KVUnmountController::unmountForCommand(const KVVolumeItemPtr &item, std::function<void()> unmounted,
                                            std::function<void(const KVAppError &error)> failed)
{
    if (!m_di)
        return;
    const QPointer<KVUnmountController> self(this);
    auto report = [self, item, unmounted = std::move(unmounted), failed = std::move(failed)](
                      const KVOptionalError &error, const QString &processes) {
        if (!error) {
            unmounted();
            return;
        }
        if (failed)
            failed(*error);
        if (self)
            self->showFailure(item, *error, processes, false);
    };
    m_di->unmountVolume(item, false, onGuiThread(self, item->mountPoint(), std::move(report)));
}

std::function<void(const KVOptionalError &)>
KVUnmountController::onGuiThread(QPointer<KVUnmountController> self, const QString &mountPoint,
                                 std::function<void(const KVOptionalError &error, const QString &processes)> report)
{
    return [self, mountPoint, report = std::move(report)](const KVOptionalError &error) {
        QString processes;
        if (error && error->is(KVAppErrorCode::ResourceBusy))
            processes = KVVolumeUsers::describe(KVVolumeUsers::processesUsing(mountPoint));
        KVMainQueue::post(self, [report, error, processes] { report(error, processes); });
    };
}

void KVUnmountController::showFailure(const KVVolumeItemPtr &item, const KVAppError &error, const QString &processes,
                                      bool offerForce)
{
    if (!error.is(KVAppErrorCode::ResourceBusy)) {
        KVAlert::showError(m_window, error);
        return;
    }
    std::function<void()> forceUnmount;
    if (offerForce)
        forceUnmount = [self = QPointer(this), item] {
            if (self)
                self->unmount(item, true);
        };
    KVBusyVolumeAlert::show(m_window, error, processes, std::move(forceUnmount));
}
