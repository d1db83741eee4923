#include "KVApplication.h"

#include "KVAppDelegate.h"
#include "KVMainWindow.h"
#include "platform/KVSingleInstance.h"

#include <QIcon>

KVApplication::KVApplication(int &argc, char **argv)
    : QApplication(argc, argv)
    , m_instance(new KVSingleInstance(QStringLiteral("org.korvelle.Korvelle"), this))
{
    setOrganizationName(QStringLiteral("Korvelle"));
    setApplicationName(QStringLiteral("Korvelle"));
    setApplicationDisplayName(QStringLiteral("Korvelle"));
    setDesktopFileName(QStringLiteral("org.korvelle.Korvelle"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/Korvelle.svg")));
    // Quitting may have to wait for volumes to unmount: the controller decides.
    setQuitOnLastWindowClosed(false);
}

KVApplication::~KVApplication() = default;

int KVApplication::run()
{
    const QStringList files = arguments().mid(1);
    if (!m_instance->claim(files))
        return 0;

    m_delegate = std::make_unique<KVAppDelegate>(KVAppDelegate::Services{});
    connect(m_delegate.get(), &KVAppDelegate::terminate, this, &QCoreApplication::quit);
    connect(m_instance, &KVSingleInstance::activated, this, [this] {
        m_delegate->applicationShouldHandleReopen(m_delegate->mainWindow()->isVisible());
        m_delegate->mainWindow()->raise();
        m_delegate->mainWindow()->activateWindow();
    });
    connect(m_instance, &KVSingleInstance::fileOpened, m_delegate.get(), &KVAppDelegate::openFile);

    m_delegate->applicationDidFinishLaunching();
    m_delegate->mainWindow()->show();
    for (const QString &file : files)
        m_delegate->openFile(file);
    const int status = exec();
    m_delegate.reset();
    return status;
}
