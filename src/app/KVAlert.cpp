#include "KVAlert.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QMessageBox>
#include <QRegularExpression>
#include <QSpacerItem>

namespace {

// Room the window manager takes from a title bar for its buttons and margins.
constexpr int TitleBarChrome = 160;

// A message box sizes itself to its texts, not to its title: without this the
// window manager cuts a title longer than the texts ("Unm…elle").
void widenToTitle(QMessageBox *alert)
{
    auto *layout = qobject_cast<QGridLayout *>(alert->layout());
    if (!layout)
        return;
    const QString shownTitle = QApplication::applicationDisplayName().isEmpty()
                                   ? alert->windowTitle()
                                   : alert->windowTitle() + QStringLiteral(" — ")
                                         + QApplication::applicationDisplayName();
    const int width = QFontMetrics(QApplication::font("QMdiSubWindowTitleBar")).horizontalAdvance(shownTitle)
                      + TitleBarChrome;
    layout->addItem(new QSpacerItem(width, 0, QSizePolicy::Minimum, QSizePolicy::Fixed), layout->rowCount(), 0, 1,
                    layout->columnCount());
}

} // namespace

namespace KVAlert {

QString shownText(const QString &message)
{
    // Lines the tools print start with their own name ("hdiutil: attach
    // failed - image not recognized"); the user reads the line without it.
    static const QRegularExpression toolName(QStringLiteral("^(hdiutil|diskutil|system_profiler): +"));
    const QRegularExpressionMatch match = toolName.match(message);
    if (!match.hasMatch())
        return message;
    QString rest = message.mid(match.capturedLength());
    if (!rest.isEmpty())
        rest[0] = rest[0].toUpper();
    return rest;
}

QMessageBox *showError(QWidget *parent, const KVAppError &error)
{
    auto *alert = new QMessageBox(QMessageBox::Warning, error.localizedDescription(), error.localizedDescription(),
                                  QMessageBox::Ok, parent);
    alert->setObjectName(QStringLiteral("errorAlert"));
    alert->setInformativeText(shownText(error.localizedRecoverySuggestion()));
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    widenToTitle(alert);
    alert->open();
    return alert;
}

} // namespace KVAlert
