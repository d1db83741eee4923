#pragma once

#include "KVMountSheet.h"

#include <QUrl>

#include <memory>

namespace Ui {
class MountImageSheet;
}

// The sheet that asks for the password of a disk image chosen in the open
// panel, dropped on the window or handed over by the system, with the
// options of the attach: read-only, and the folder to mount under.
class KVMountImageSheet : public KVMountSheet
{
    Q_OBJECT

public:
    explicit KVMountImageSheet(QWidget *parent = nullptr);
    ~KVMountImageSheet() override;

    void setImagePath(const QString &path);
    // The image the sheet asks the password of, as it was set.
    const QString &imagePath() const { return m_imagePath; }
    bool readOnly() const;
    // The folder to mount under, as a directory URL; empty when none is given.
    QUrl mountRoot() const;
    // Buttons enabled, password, read-only and folder cleared, no failure
    // text, the focus in the password field.
    void reset();

    // "~" stands for the home folder, and a relative path is taken from there.
    static QUrl mountRootFromText(const QString &text);

private:
    std::unique_ptr<Ui::MountImageSheet> m_ui;
    QString m_imagePath;
};
