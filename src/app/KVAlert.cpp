#include "KVAlert.h"

#include <QMessageBox>

namespace KVAlert {

void showError(QWidget *parent, const KVAppError &error)
{
    auto *alert = new QMessageBox(QMessageBox::Warning, error.localizedDescription(), error.localizedDescription(),
                                  QMessageBox::Ok, parent);
    alert->setObjectName(QStringLiteral("errorAlert"));
    alert->setInformativeText(error.localizedRecoverySuggestion());
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    alert->open();
}

} // namespace KVAlert
