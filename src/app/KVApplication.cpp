#include "KVApplication.h"

#include "KVMainWindow.h"

#include <QIcon>

KVApplication::KVApplication(int &argc, char **argv)
    : QApplication(argc, argv)
{
    setOrganizationName(QStringLiteral("Korvelle"));
    setApplicationName(QStringLiteral("Korvelle"));
    setApplicationDisplayName(QStringLiteral("Korvelle"));
    setDesktopFileName(QStringLiteral("korvelle"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/Korvelle.svg")));
}

KVApplication::~KVApplication() = default;

int KVApplication::run()
{
    m_mainWindow = std::make_unique<KVMainWindow>();
    m_mainWindow->show();
    return exec();
}
