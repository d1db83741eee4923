#include "KVDiskTable.h"

#include "wizards/KVDiskTableHeaderCell.h"
#include "wizards/KVDiskTableRowView.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLocale>
#include <QTableView>

KVDiskTable::KVDiskTable(QTableView *view, QList<Column> columns, CellText cellText)
    : QAbstractTableModel(view)
    , m_view(view)
    , m_columns(std::move(columns))
    , m_cellText(std::move(cellText))
{
    auto *header = new KVDiskTableHeaderCell(view);
    view->setHorizontalHeader(header);
    view->setItemDelegate(new KVDiskTableRowView(view));
    view->setModel(this);
    view->verticalHeader()->hide();
    view->verticalHeader()->setDefaultSectionSize(24);
    view->setShowGrid(false);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setFocusPolicy(Qt::StrongFocus);
    header->setStretchLastSection(true);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &KVDiskTable::selectionDidChange);
}

void KVDiskTable::reloadData(const QList<KVVolumeItemPtr> &items)
{
    beginResetModel();
    m_items = items;
    endResetModel();
    Q_EMIT selectionDidChange();
}

int KVDiskTable::selectedRow() const
{
    if (!m_view)
        return -1;
    const QModelIndexList rows = m_view->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

KVVolumeItemPtr KVDiskTable::selectedItem() const
{
    return m_items.value(selectedRow());
}

void KVDiskTable::deselectAll()
{
    if (m_view)
        m_view->clearSelection();
}

QString KVDiskTable::createSizeInfoFromVolumeItem(const KVVolumeItem &item)
{
    return QLocale().formattedDataSize(item.totalSize(), 2, QLocale::DataSizeSIFormat);
}

int KVDiskTable::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

int KVDiskTable::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant KVDiskTable::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_items.size() || index.column() >= m_columns.size())
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return m_cellText(*m_items[index.row()], m_columns[index.column()].identifier);
    if (role == Qt::UserRole)
        return m_columns[index.column()].identifier;
    return {};
}

QVariant KVDiskTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= m_columns.size())
        return {};
    if (role == Qt::DisplayRole)
        return m_columns[section].title;
    if (role == Qt::UserRole)
        return m_columns[section].identifier;
    return {};
}
