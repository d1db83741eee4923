#pragma once

// The application on Korvelle's own Linux tools, with a private harness:
// what the tests with real encrypted images share.

#include "app/KVAppDelegate.h"
#include "app/KVMainWindow.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVWorkspaceNotifications.h"

#include "KVImageToolHarness.h"

#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <atomic>
#include <memory>

struct KVLinuxSession
{
    kvlinux::KVImageToolHarness harness;
    QTemporaryDir recent;
    std::unique_ptr<KVAppDelegate> delegate;

    bool start()
    {
        if (!harness.isValid())
            return false;
        // The tools keep what is attached in the runtime directory they are given.
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(harness.runtimeDirectory()));
        delegate = std::make_unique<KVAppDelegate>(KVAppDelegate::Services{
            KVToolPaths{QStringLiteral(KV_TEST_HDIUTIL), QStringLiteral(KV_TEST_DISKUTIL), QString()},
            KVWorkspaceNotifications::shared(), KVRecentDocuments(recent.filePath(QStringLiteral("recent.xbel")))});
        delegate->applicationDidFinishLaunching();
        delegate->mainWindow()->show();
        return QTest::qWaitForWindowExposed(delegate->mainWindow());
    }

    // Attaches through the application's image engine, under the harness's mount root.
    KVOptionalError mount(const QString &image, const QString &password = QStringLiteral("correct horse"))
    {
        std::atomic<bool> attached{false};
        KVOptionalError attachError;
        delegate->di()->mountDiskImage(image, password, false, QUrl::fromLocalFile(harness.mountRoot()), false,
                                       [&](const KVOptionalError &error) {
                                           attachError = error;
                                           attached = true;
                                       });
        if (!QTest::qWaitFor([&] { return attached.load(); }, 60000))
            return KVAppError(QStringLiteral("test"), -1, QStringLiteral("attach did not finish"), QString());
        return attachError;
    }
};
