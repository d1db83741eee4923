#pragma once

// The application on Korvelle's own Linux tools, with a private harness:
// what the tests with real encrypted images share.

#include "app/KVAppDelegate.h"
#include "app/KVMainWindow.h"
#include "diskimage/KVDiskImage.h"
#include "platform/KVUserDefaults.h"
#include "platform/KVWorkspaceNotifications.h"
#include "settings/KVPreferenceKeys.h"

#include "KVImageToolHarness.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <atomic>
#include <memory>

struct KVLinuxSession
{
    // For initTestCase(): why real images cannot be mounted here (then the
    // test skips), or nothing, after pointing the settings at a test area
    // without favourites.
    static QString prepareTestCase()
    {
        const QString unavailable = kvlinux::KVImageToolHarness::kernelPathUnavailable();
        if (!unavailable.isEmpty())
            return QStringLiteral("real images cannot be mounted here: ") + unavailable;
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("KorvelleTests"));
        KVUserDefaults::standard().removeObject(KVFavouritesKey);
        return QString();
    }

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
