#include "KVAutoUnmountController.h"

#include "KVUnmountController.h"
#include "diskimage/KVDiskImage.h"
#include "model/KVDisplayText.h"
#include "platform/KVSystemLog.h"
#include "settings/KVPreferences.h"

#include <QLocale>
#include <QPointer>
#include <QStringList>

struct KVAutoUnmountController::Cue
{
    Reason reason;
    std::function<void()> done;
    int pending = 1; // the cue's own hold until every unmount has started
    QStringList unmounted;
    QList<std::pair<QString, QString>> busy;   // name, processes
    QList<std::pair<QString, QString>> failed; // name, why
};

KVAutoUnmountController::KVAutoUnmountController(KVUnmountController *unmounts, Notify notify, QObject *parent)
    : QObject(parent)
    , m_unmounts(unmounts)
    , m_notify(std::move(notify))
{
}

KVAutoUnmountController::~KVAutoUnmountController() = default;

bool KVAutoUnmountController::mayUnmount(const KVVolumeItemPtr &item) const
{
    const bool unmountable = item && (item->type() == KVVolumeKind::DiskImage || item->type() == KVVolumeKind::Disk);
    return unmountable && !item->isSystemPartition() && !item->mountPoint().isEmpty() && !item->converting()
        && !(m_inUse && m_inUse(item));
}

void KVAutoUnmountController::unmount(const QList<KVVolumeItemPtr> &volumes, Reason reason, std::function<void()> done)
{
    auto cue = std::make_shared<Cue>();
    cue->reason = reason;
    cue->done = std::move(done);
    for (const KVVolumeItemPtr &item : volumes) {
        if (!mayUnmount(item))
            continue;
        ++cue->pending;
        const QString mountPoint = item->mountPoint();
        if (const auto running = m_running.find(mountPoint); running != m_running.end()) {
            running->waiting.append(cue);
            continue;
        }
        m_running.insert(mountPoint, Running{cue, {cue}});
        m_unmounts->unmountAutomatically(item, [self = QPointer(this), mountPoint, name = item->name()](
                                                   const KVOptionalError &error, const QString &processes) {
            if (self)
                self->unmounted(mountPoint, name, error, processes);
        });
    }
    release(cue);
}

void KVAutoUnmountController::unmounted(const QString &mountPoint, const QString &name, const KVOptionalError &error,
                                        const QString &processes)
{
    const Running running = m_running.take(mountPoint);
    if (!running.startedBy)
        return;
    Cue &cue = *running.startedBy;
    if (!error) {
        cue.unmounted.append(name);
    } else {
        KVSystemLog::write(QStringLiteral("Unmount volume error: %1").arg(error->debugDescription()));
        if (error->is(KVAppErrorCode::ResourceBusy))
            cue.busy.append({name, processes});
        else
            cue.failed.append({name, error->localizedDescription()});
    }
    for (const std::shared_ptr<Cue> &waiting : running.waiting)
        release(waiting);
}

void KVAutoUnmountController::release(const std::shared_ptr<Cue> &cue)
{
    if (--cue->pending > 0)
        return;
    report(*cue);
    if (cue->done)
        cue->done();
}

void KVAutoUnmountController::report(const Cue &cue)
{
    if (!m_notify)
        return;
    QStringList quoted;
    for (const QString &name : cue.unmounted)
        quoted.append(tr("“%1”").arg(KVDisplayText::inSentence(name)));
    if (quoted.size() == 1)
        m_notify(tr("Volume unmounted"), tr("Korvelle unmounted %1 %2.").arg(quoted.constFirst(), because(cue.reason)));
    else if (quoted.size() > 1)
        m_notify(tr("Volumes unmounted"), tr("Korvelle unmounted %1 volumes (%2) %3.")
                                              .arg(quoted.size())
                                              .arg(QLocale().createSeparatedList(quoted), because(cue.reason)));
    for (const auto &[name, processes] : cue.busy) {
        const QString users = QString(processes).replace(u'\n', QStringLiteral(", "));
        m_notify(tr("“%1” is still mounted").arg(KVDisplayText::inSentence(name)),
                 users.isEmpty() ? tr("It is in use.") : tr("It is in use by %1.").arg(users));
    }
    for (const auto &[name, why] : cue.failed)
        m_notify(tr("“%1” could not be unmounted").arg(KVDisplayText::inSentence(name)), why);
}

QString KVAutoUnmountController::because(Reason reason)
{
    switch (reason) {
    case Reason::Sleep: return tr("because the computer is going to sleep");
    case Reason::ScreenLock: return tr("because the screen was locked");
    case Reason::Idle: {
        const int minutes = KVPreferences::prefIdleMinutes();
        return minutes == 1 ? tr("after a minute without use") : tr("after %1 minutes without use").arg(minutes);
    }
    }
    return QString();
}
