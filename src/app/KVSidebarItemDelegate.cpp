#include "KVSidebarItemDelegate.h"

#include "favourites/KVFavouriteItem.h"
#include "KVMountedCellView.h"
#include "KVSidebarStyle.h"
#include "KVSidebarModel.h"
#include "controls/KVColors.h"
#include "controls/KVCustomProgressIndicatorView.h"

#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>

namespace {

const KVSidebarModel *sidebarModel(const QModelIndex &index)
{
    return qobject_cast<const KVSidebarModel *>(index.model());
}

int middle(const QRect &row)
{
    return row.top() + row.height() / 2;
}

// The name of a folder or a favourite image, after its icon.
QRect nameRect(const QRect &row, int left, int right)
{
    return QRect(left, row.top(), right - left, row.height());
}

void drawElided(QPainter *painter, const QRect &rect, const QString &text, Qt::TextElideMode mode,
                Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter)
{
    painter->drawText(rect, alignment | Qt::TextSingleLine, painter->fontMetrics().elidedText(text, mode, rect.width()));
}

// A small chevron pointing right (closed) or down (open).
void drawDisclosure(QPainter *painter, const QRect &rect, bool open, const QColor &colour)
{
    QPainterPath chevron;
    const QPointF centre = QRectF(rect).center();
    if (open) {
        chevron.moveTo(centre + QPointF(-3.5, -1.75));
        chevron.lineTo(centre + QPointF(0, 1.75));
        chevron.lineTo(centre + QPointF(3.5, -1.75));
    } else {
        chevron.moveTo(centre + QPointF(-1.75, -3.5));
        chevron.lineTo(centre + QPointF(1.75, 0));
        chevron.lineTo(centre + QPointF(-1.75, 3.5));
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(chevron);
    painter->restore();
}

} // namespace

KVSidebarItemDelegate::KVSidebarItemDelegate(const KVSidebarInteraction *interaction, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_interaction(interaction)
    , m_progressBar(std::make_unique<KVCustomProgressIndicatorView>())
{
    m_progressBar->setHeight(KVMountedCellView::ProgressBarHeight);
    m_progressBar->setOutlineColor(KVColors::kvLightGreyText());
    m_progressBar->setProgressBarColor(KVColors::kvLightGreyText());
    m_progressBar->setProgressBarOutlineColor(KVColors::kvLightGreyText());
    m_progressBar->setBackgroundColor(Qt::transparent);
    m_progressBar->setAttribute(Qt::WA_DontShowOnScreen);
}

KVSidebarItemDelegate::~KVSidebarItemDelegate() = default;

QRect KVSidebarItemDelegate::partRect(const KVSidebarModel &model, const QModelIndex &index, const QRect &row,
                                      Part part)
{
    const int centre = middle(row);
    switch (part) {
    case Part::Disclosure:
        if (model.isSection(index))
            return row;
        if (model.holds<KVFavouriteFolderPtr>(index) && model.rowCount(index) > 0)
            return QRect(row.left(), row.top(), 24, row.height());
        return {};
    case Part::RenamePen:
        if (model.holds<KVFavouriteFolderPtr>(index))
            return QRect(row.right() - 29, centre - 9, 18, 18);
        return {};
    case Part::UnmountButton:
        if (const KVVolumeItemPtr volume = model.volume(index); volume && KVMountedCellView::hasUnmountButton(*volume))
            return KVMountedCellView::layout(row).unmountButton;
        return {};
    // The two buttons share the row, each wide enough for a translated title.
    case Part::AddFolderButton:
        if (model.holds<KVOutlineFavouriteMenu>(index))
            return QRect(row.left() + 8, centre - 11, qMax(112, row.width() - 126), 22);
        return {};
    case Part::RemoveButton:
        if (model.holds<KVOutlineFavouriteMenu>(index))
            return QRect(row.right() - 110, centre - 12, 100, 24);
        return {};
    case Part::Row:
        return index.isValid() ? row : QRect();
    case Part::None:
        return {};
    }
    return {};
}

KVSidebarItemDelegate::Part KVSidebarItemDelegate::partAt(const KVSidebarModel &model, const QModelIndex &index,
                                                          const QRect &row, const QPoint &point)
{
    if (!index.isValid() || !row.contains(point))
        return Part::None;
    for (const Part part :
         {Part::UnmountButton, Part::RenamePen, Part::AddFolderButton, Part::RemoveButton, Part::Disclosure}) {
        if (partRect(model, index, row, part).contains(point))
            return part;
    }
    return Part::Row;
}

bool KVSidebarItemDelegate::isHovered(const QModelIndex &index, const KVSidebarModel &model, const QRect &row,
                                      Part part) const
{
    return m_interaction->hovered == index && partAt(model, index, row, m_interaction->hoverPoint) == part;
}

QSize KVSidebarItemDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const KVSidebarModel *model = sidebarModel(index);
    return QSize(option.rect.width(),
                 model ? KVSidebarModel::rowHeight(model->node(index)) : KVSidebarModel::RowHeight);
}

void KVSidebarItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const KVSidebarModel *model = sidebarModel(index);
    if (!model)
        return;
    painter->fillRect(option.rect, KVColors::kvDarkGrey());
    if (model->isSection(index))
        paintSection(painter, option, index);
    else if (model->holds<KVFavouriteFolderPtr>(index))
        paintFolder(painter, option, index);
    else if (model->holds<KVFavouriteItemPtr>(index))
        paintFavouriteItem(painter, option, index);
    else if (model->holds<KVOutlineFavouriteMenu>(index))
        paintFavouriteMenu(painter, option, index);
    else if (model->holds<KVOutlinePlaceholder>(index))
        paintPlaceholder(painter, option, index);
    else if (model->holds<KVVolumeItemPtr>(index))
        paintVolume(painter, option, index);
}

void KVSidebarItemDelegate::paintSection(QPainter *painter, const QStyleOptionViewItem &option,
                                         const QModelIndex &index) const
{
    const QRect &row = option.rect;
    QFont font = KVSidebarStyle::font(option.font, 0.82, QFont::Bold);
    font.setCapitalization(QFont::AllUppercase);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    painter->save();
    painter->setFont(font);
    painter->setPen(KVColors::kvLightGreyText());
    const QRect title(row.left() + 14, row.top() + 8, row.width() - 70, row.height() - 10);
    drawElided(painter, title, index.data().toString(), Qt::ElideRight);
    if (m_interaction->hovered == index) {
        // Sections fold away like the system's source lists: the word says which way.
        painter->setFont(KVSidebarStyle::font(option.font, 0.82, QFont::Medium));
        const QString fold = option.state & QStyle::State_Open ? tr("Hide") : tr("Show");
        painter->drawText(QRect(row.right() - 60, title.top(), 48, title.height()), Qt::AlignRight | Qt::AlignVCenter,
                          fold);
    }
    painter->restore();
}

void KVSidebarItemDelegate::paintFolder(QPainter *painter, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    const KVSidebarModel &model = *sidebarModel(index);
    const QRect &row = option.rect;
    const int centre = middle(row);
    painter->save();
    if (model.rowCount(index) > 0)
        drawDisclosure(painter, QRect(row.left() + 8, centre - 5, 10, 10), option.state & QStyle::State_Open,
                       KVColors::kvLightGreyText());
    KVSidebarStyle::paintArtwork(painter, QStringLiteral("FavouriteFolderIcon"),
                                 QRect(row.left() + 24, centre - 8, 16, 16), KVColors::kvLightGreyText());
    const QRect pen = partRect(model, index, row, Part::RenamePen);
    painter->setFont(option.font);
    painter->setPen(KVColors::kvWhiteText());
    drawElided(painter, nameRect(row, row.left() + 47, pen.left() - 4), index.data().toString(), Qt::ElideRight);
    if (m_interaction->hovered == index) {
        const bool onPen = isHovered(index, model, row, Part::RenamePen);
        KVSidebarStyle::paintArtwork(painter, QStringLiteral("RenamePenIcon"), pen.adjusted(3, 3, -3, -3),
                                     onPen ? KVColors::kvWhiteText() : KVColors::kvLightGreyText());
    }
    painter->restore();
}

void KVSidebarItemDelegate::paintFavouriteItem(QPainter *painter, const QStyleOptionViewItem &option,
                                               const QModelIndex &index) const
{
    const QRect &row = option.rect;
    const int centre = middle(row);
    painter->save();
    if (m_interaction->pressed == index)
        painter->fillRect(row, QColor(255, 255, 255, 22));
    else if (m_interaction->hovered == index)
        painter->fillRect(row, QColor(255, 255, 255, 10));
    KVSidebarStyle::paintArtwork(painter, QStringLiteral("FavouriteDiskImageIcon"),
                                 QRect(row.left() + 47, centre - 8, 16, 16));
    painter->setFont(option.font);
    painter->setPen(KVColors::kvWhiteText());
    drawElided(painter, nameRect(row, row.left() + 70, row.right() - 10), index.data().toString(), Qt::ElideMiddle);
    painter->restore();
}

void KVSidebarItemDelegate::paintFavouriteMenu(QPainter *painter, const QStyleOptionViewItem &option,
                                               const QModelIndex &index) const
{
    const KVSidebarModel &model = *sidebarModel(index);
    const QRect &row = option.rect;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setFont(KVSidebarStyle::font(option.font, 0.92));

    const QRect add = partRect(model, index, row, Part::AddFolderButton);
    const bool addHovered = isHovered(index, model, row, Part::AddFolderButton);
    const QColor addColour = addHovered ? KVColors::kvWhiteText() : KVColors::kvLightGreyText();
    KVSidebarStyle::paintArtwork(painter, QStringLiteral("AddFolderIcon"),
                                 QRect(add.left() + 16, middle(add) - 5, 11, 11), addColour);
    painter->setPen(addColour);
    // The title may run on across the row while the remove button is hidden.
    const int titleRight = m_interaction->removeButtonShown ? add.right() : row.right() - 10;
    drawElided(painter, QRect(QPoint(add.left() + 39, add.top()), QPoint(titleRight, add.bottom())),
               index.data().toString(), Qt::ElideRight);

    if (m_interaction->removeButtonShown) {
        const QRect remove = partRect(model, index, row, Part::RemoveButton);
        const bool armed = m_interaction->removeButtonHighlighted;
        painter->setPen(armed ? QPen(QColor(0xe0, 0x5a, 0x4e), 1.0)
                              : QPen(KVColors::kvLightGreyText(), 1.0, Qt::DashLine));
        painter->setBrush(armed ? QColor(0xc0, 0x3b, 0x2f) : QColor(255, 255, 255, 10));
        painter->drawRoundedRect(QRectF(remove).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        const QColor content = armed ? QColor(Qt::white) : KVColors::kvWhiteText();
        KVSidebarStyle::paintArtwork(
            painter, armed ? QStringLiteral("RemoveFavouriteActiveIcon") : QStringLiteral("RemoveFavouriteIcon"),
            QRect(remove.left() + 9, middle(remove) - 7, 14, 14), content);
        painter->setPen(content);
        drawElided(painter, remove.adjusted(29, 0, -6, 0), tr("Remove"), Qt::ElideRight);
    }
    painter->restore();
}

void KVSidebarItemDelegate::paintPlaceholder(QPainter *painter, const QStyleOptionViewItem &option,
                                             const QModelIndex &index) const
{
    const QRect &row = option.rect;
    painter->save();
    painter->setOpacity(0.3);
    KVSidebarStyle::paintArtwork(painter, QStringLiteral("DiskImageMountedIcon"),
                                 QRect(row.center().x() - 18, row.top() + 24, 36, 36));
    painter->setOpacity(1.0);
    painter->setFont(KVSidebarStyle::font(option.font, 1.0, QFont::DemiBold));
    painter->setPen(KVColors::kvLightGreyText());
    drawElided(painter, QRect(row.left() + 12, row.top() + 68, row.width() - 24, 20), index.data().toString(),
               Qt::ElideRight, Qt::AlignCenter);
    painter->setFont(KVSidebarStyle::font(option.font, 0.85));
    painter->setPen(KVColors::kvLightGreyText().darker(125));
    painter->drawText(QRect(row.left() + 16, row.top() + 90, row.width() - 32, 36),
                      Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, tr("Drop a disk image below to mount it."));
    painter->restore();
}

void KVSidebarItemDelegate::paintVolume(QPainter *painter, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    const KVSidebarModel &model = *sidebarModel(index);
    KVMountedCellView::State state;
    state.selected = (option.state & QStyle::State_Selected) || model.isDrawnSelected(index);
    state.unmountButtonHovered = isHovered(index, model, option.rect, Part::UnmountButton);
    state.unmountButtonPressed = state.unmountButtonHovered && m_interaction->pressed == index;
    KVMountedCellView(*model.volume(index)).paint(painter, option.rect, option.font, state, *m_progressBar);
}

QWidget *KVSidebarItemDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    // Black on white while the name is being edited, as a text field should be.
    auto *field = new QLineEdit(parent);
    field->setObjectName(QStringLiteral("favouriteFolderNameField"));
    field->setFrame(false);
    QPalette palette = field->palette();
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    field->setPalette(palette);
    return field;
}

void KVSidebarItemDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    auto *field = static_cast<QLineEdit *>(editor);
    field->setText(index.data(Qt::EditRole).toString());
    field->selectAll();
}

void KVSidebarItemDelegate::setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const
{
    model->setData(index, static_cast<QLineEdit *>(editor)->text());
}

void KVSidebarItemDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                                 const QModelIndex &index) const
{
    const KVSidebarModel *model = sidebarModel(index);
    const QRect pen = model ? partRect(*model, index, option.rect, Part::RenamePen) : option.rect;
    editor->setGeometry(nameRect(option.rect, option.rect.left() + 44, pen.left() - 4).adjusted(0, 2, 0, -2));
}
