#pragma once

#include <QStyledItemDelegate>

// Draws the rows of the disk tables: a flat background, and a selected row in
// the application's accent colour with its outline, rather than the style's
// highlight, so that both tables look like the wizards' other controls.
class KVDiskTableRowView : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit KVDiskTableRowView(QObject *parent = nullptr);

    static QColor selectionFillColour();
    static QColor selectionOutlineColour();

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
