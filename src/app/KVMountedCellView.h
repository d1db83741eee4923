#pragma once

#include <QCoreApplication>
#include <QRect>
#include <QString>

#include <optional>

class KVCustomProgressIndicatorView;
class KVVolumeItem;
class QFont;
class QPainter;

// The sidebar's row for one mounted volume: its icon and name, beneath the
// name the "used of total" line or, while a disk is being converted, a thin
// progress bar, and at the right the unmount button, which the system's own
// volume does not have. Volumes that are neither images nor disks show their
// name only.
class KVMountedCellView
{
    Q_DECLARE_TR_FUNCTIONS(KVMountedCellView)

public:
    explicit KVMountedCellView(const KVVolumeItem &volume);

    const QString &name() const { return m_name; }
    // The size line; nothing when it is hidden.
    const std::optional<QString> &size() const { return m_size; }
    // The artwork's name; empty for volumes that have none.
    const QString &image() const { return m_image; }
    bool unmountButtonVisible() const { return m_unmountButtonVisible; }
    // The same, without making the rest of the row.
    static bool hasUnmountButton(const KVVolumeItem &volume);
    // The conversion's progress in percent, shown instead of the size.
    const std::optional<double> &encryptionProgress() const { return m_encryptionProgress; }

    // "<used> of <total> used", each figure cut to whole units ("1.50 GB"
    // reads "1 GB") so that the line stays short in a narrow sidebar.
    static QString createSizeInfoFromVolumeItem(const KVVolumeItem &volume);

    // Where the parts sit in a row.
    struct Layout
    {
        QRect image;
        QRect name;
        QRect size;
        QRect encryptionProgress;
        QRect unmountButton;
    };
    static Layout layout(const QRect &row);
    static constexpr int ProgressBarHeight = 6;

    struct State
    {
        bool selected = false;
        bool unmountButtonHovered = false;
        bool unmountButtonPressed = false;
    };
    // Paints the row; `bar` is a progress bar kept for drawing only.
    void paint(QPainter *painter, const QRect &row, const QFont &font, State state,
               KVCustomProgressIndicatorView &bar) const;

private:
    QString m_name;
    std::optional<QString> m_size;
    QString m_image;
    bool m_unmountButtonVisible = false;
    std::optional<double> m_encryptionProgress;
};
