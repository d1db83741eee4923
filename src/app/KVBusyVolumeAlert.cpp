#include "KVBusyVolumeAlert.h"

#include "KVAlert.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace KVBusyVolumeAlert {

void show(QWidget *parent, const KVAppError &error, const QString &processes, std::function<void()> forceUnmount)
{
    auto *alert = new QMessageBox(QMessageBox::Warning, error.localizedDescription(), error.localizedDescription(),
                                  QMessageBox::Ok, parent);
    alert->setObjectName(QStringLiteral("busyVolumeAlert"));
    alert->setInformativeText(KVAlert::shownText(error.localizedRecoverySuggestion()));
    alert->setDetailedText(
        processes.isEmpty()
            ? QCoreApplication::translate("KVBusyVolumeAlert", "No process of yours has files open on this volume.")
            : QCoreApplication::translate("KVBusyVolumeAlert", "Processes using the volume:") + u'\n' + processes);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    if (forceUnmount) {
        QPushButton *force = alert->addButton(QCoreApplication::translate("KVBusyVolumeAlert", "Force Unmount"),
                                              QMessageBox::DestructiveRole);
        force->setObjectName(QStringLiteral("forceUnmountButton"));
        QObject::connect(alert, &QMessageBox::buttonClicked, alert,
                         [force, forceUnmount = std::move(forceUnmount)](QAbstractButton *clicked) {
                             if (clicked == force)
                                 forceUnmount();
                         });
    }
    alert->setDefaultButton(QMessageBox::Ok);
    // The details are the point of this alert: shown, not behind a button.
    for (QAbstractButton *button : alert->buttons()) {
        if (alert->buttonRole(button) == QMessageBox::ActionRole)
            button->click();
    }
    alert->open();
}

} // namespace KVBusyVolumeAlert
