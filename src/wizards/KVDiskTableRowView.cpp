#include "KVDiskTableRowView.h"

#include "controls/KVColors.h"

#include <QPainter>

namespace {

constexpr int RowHeight = 24;
constexpr int TextInset = 6;

} // namespace

KVDiskTableRowView::KVDiskTableRowView(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

QColor KVDiskTableRowView::selectionFillColour()
{
    return KVColors::fromHsb(0.589f, 0.319f, 0.897f);
}

QColor KVDiskTableRowView::selectionOutlineColour()
{
    return KVColors::fromHsb(0.611f, 0.781f, 0.862f);
}

QSize KVDiskTableRowView::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    return {QStyledItemDelegate::sizeHint(option, index).width(), RowHeight};
}

void KVDiskTableRowView::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const bool firstColumn = index.column() == 0;
    const bool lastColumn = !index.model() || index.column() == index.model()->columnCount(index.parent()) - 1;
    if (selected) {
        painter->fillRect(option.rect, selectionFillColour());
        // One outline around the whole row: each cell draws its share of it.
        painter->setPen(selectionOutlineColour());
        const QRect r = option.rect;
        painter->drawLine(r.topLeft(), r.topRight());
        painter->drawLine(r.bottomLeft(), r.bottomRight());
        if (firstColumn)
            painter->drawLine(r.topLeft(), r.bottomLeft());
        if (lastColumn)
            painter->drawLine(r.topRight(), r.bottomRight());
    } else if (index.row() % 2 == 1) {
        painter->fillRect(option.rect, KVColors::fromHsb(0.906f, 0.0f, 0.96f));
    }
    painter->setPen(selected ? QColor(Qt::black) : option.palette.color(QPalette::Text));
    painter->setFont(option.font);
    const QString text = index.data(Qt::DisplayRole).toString();
    const QRect textRect = option.rect.adjusted(TextInset, 0, -TextInset, 0);
    painter->drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
                      option.fontMetrics.elidedText(text, Qt::ElideRight, textRect.width()));
    painter->restore();
}
