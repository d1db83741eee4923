#pragma once

#include "model/KVVolumeItem.h"

#include <QAbstractTableModel>
#include <QPointer>
#include <QStringList>

#include <functional>

class QTableView;

// The list of disks in the encrypt-disk and mount-disk wizards: a table model
// over volume items whose columns are named by identifiers ("diskName",
// "size", ...), each cell's text given by the wizard, and the set-up of the
// table view that shows it (header cells, row views, single-row selection).
class KVDiskTable : public QAbstractTableModel
{
    Q_OBJECT

public:
    struct Column
    {
        QString identifier;
        QString title;
    };
    using CellText = std::function<QString(const KVVolumeItem &item, const QString &columnIdentifier)>;

    KVDiskTable(QTableView *view, QList<Column> columns, CellText cellText);

    // Shows these items from now on; the selection is dropped.
    void reloadData(const QList<KVVolumeItemPtr> &items);
    const QList<KVVolumeItemPtr> &items() const { return m_items; }
    // The item of the selected row, or none.
    KVVolumeItemPtr selectedItem() const;
    int selectedRow() const;
    void deselectAll();

    // The item's totalSize as a file size in decimal units with two fraction digits.
    static QString createSizeInfoFromVolumeItem(const KVVolumeItem &item);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    void selectionDidChange();

private:
    QPointer<QTableView> m_view;
    QList<Column> m_columns;
    CellText m_cellText;
    QList<KVVolumeItemPtr> m_items;
};
