#include "KVDiskTableHeaderCell.h"

#include "controls/KVColors.h"

#include <QPainter>

namespace {

constexpr int TitleInset = 6;

} // namespace

KVDiskTableHeaderCell::KVDiskTableHeaderCell(QWidget *parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setFixedHeight(HeaderHeight);
    setHighlightSections(false);
    setSectionsClickable(false);
}

QColor KVDiskTableHeaderCell::titleColour()
{
    return KVColors::fromHsb(0.906f, 0.0f, 0.199f);
}

QFont KVDiskTableHeaderCell::titleFont() const
{
    QFont bold = font();
    bold.setBold(true);
    bold.setPointSizeF(TitlePointSize);
    return bold;
}

QSize KVDiskTableHeaderCell::sizeHint() const
{
    return {QHeaderView::sizeHint().width(), HeaderHeight};
}

void KVDiskTableHeaderCell::paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const
{
    painter->save();
    painter->fillRect(rect, KVColors::fromHsb(0.906f, 0.0f, 0.975f));
    painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1), KVColors::fromHsb(0.906f, 0.0f, 0.8f));
    if (logicalIndex > 0)
        painter->fillRect(QRect(rect.left(), rect.top() + 5, 1, rect.height() - 10), KVColors::fromHsb(0.906f, 0.0f, 0.85f));
    painter->setFont(titleFont());
    painter->setPen(titleColour());
    const QString title = model() ? model()->headerData(logicalIndex, orientation(), Qt::DisplayRole).toString() : QString();
    painter->drawText(rect.adjusted(TitleInset, 0, -TitleInset, 0), Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(title, Qt::ElideRight, rect.width() - 2 * TitleInset));
    painter->restore();
}
