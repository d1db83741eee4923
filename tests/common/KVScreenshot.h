#pragma once

#include <QDir>
#include <QWidget>

// Saves a picture of a widget when KV_SCREENSHOT_DIR names a folder, so that a
// person can look at what a test drove. Tests never depend on it.
inline void kvSaveScreenshot(QWidget *widget, const QString &name)
{
    const QString dir = qEnvironmentVariable("KV_SCREENSHOT_DIR");
    if (dir.isEmpty())
        return;
    QDir().mkpath(dir);
    widget->grab().save(QDir(dir).filePath(name + QStringLiteral(".png")));
}
