#include "KVOutlineView.h"

#include "KVFavouritesDrop.h"
#include "KVSidebarModel.h"
#include "controls/KVColors.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>

namespace {

bool carriesFavourite(const QMimeData *data)
{
    return data && (data->hasFormat(KVFavouritesDrop::ItemFormat) || data->hasFormat(KVFavouritesDrop::FolderFormat));
}

bool sameFolder(const std::weak_ptr<KVFavouriteFolder> &remembered, const KVFavouriteFolderPtr &folder)
{
    return !remembered.owner_before(folder) && !folder.owner_before(remembered);
}

} // namespace

KVOutlineView::KVOutlineView(QWidget *parent)
    : QTreeView(parent)
    , m_delegate(new KVSidebarItemDelegate(&m_interaction, this))
    , m_contextMenu(new QMenu(this))
{
    setObjectName(QStringLiteral("sidebar"));
    setItemDelegate(m_delegate);
    setHeaderHidden(true);
    header()->setStretchLastSection(true);
    setIndentation(0);
    setRootIsDecorated(false);
    setUniformRowHeights(false);
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setMouseTracking(true);
    viewport()->setMouseTracking(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DropOnly);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(true);

    QPalette colours = palette();
    colours.setColor(QPalette::Base, KVColors::kvDarkGrey());
    colours.setColor(QPalette::Window, KVColors::kvDarkGrey());
    colours.setColor(QPalette::Text, KVColors::kvWhiteText());
    colours.setColor(QPalette::WindowText, KVColors::kvWhiteText());
    colours.setColor(QPalette::Highlight, KVColors::kvSelectOutline());
    colours.setColor(QPalette::HighlightedText, Qt::white);
    setPalette(colours);
    viewport()->setAutoFillBackground(true);

    m_contextMenu->setObjectName(QStringLiteral("favouritesContextMenu"));
    m_renameAction = m_contextMenu->addAction(tr("Rename"), this, [this] {
        if (m_contextRow.isValid())
            edit(m_contextRow);
    });
    m_renameAction->setObjectName(QStringLiteral("renameFavouriteFolderAction"));
    QAction *deleteAction = m_contextMenu->addAction(tr("Delete"), this, [this] {
        if (m_contextRow.isValid())
            Q_EMIT deleteRequested(m_contextRow);
    });
    deleteAction->setObjectName(QStringLiteral("deleteFavouriteAction"));

    connect(this, &QTreeView::expanded, this, [this](const QModelIndex &index) { rememberExpansion(index, true); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) { rememberExpansion(index, false); });
}

KVSidebarModel *KVOutlineView::sidebarModel() const
{
    return qobject_cast<KVSidebarModel *>(model());
}

void KVOutlineView::setSidebarModel(KVSidebarModel *model)
{
    setModel(model);
}

void KVOutlineView::rememberExpansion(const QModelIndex &index, bool expanded)
{
    const KVSidebarModel *model = sidebarModel();
    if (const KVFavouriteFolderPtr folder = model->folder(index)) {
        std::erase_if(m_foldedFolders, [&folder](const std::weak_ptr<KVFavouriteFolder> &remembered) {
            return remembered.expired() || sameFolder(remembered, folder);
        });
        if (!expanded)
            m_foldedFolders.push_back(folder);
    } else if (model->isSection(index)) {
        if (expanded)
            m_foldedSections.remove(index.data().toString());
        else
            m_foldedSections.insert(index.data().toString());
    }
}

bool KVOutlineView::isFoldedAway(const QModelIndex &index) const
{
    const KVSidebarModel *model = sidebarModel();
    if (model->isSection(index))
        return m_foldedSections.contains(index.data().toString());
    const KVFavouriteFolderPtr folder = model->folder(index);
    return std::any_of(
        m_foldedFolders.begin(), m_foldedFolders.end(),
        [&folder](const std::weak_ptr<KVFavouriteFolder> &remembered) { return sameFolder(remembered, folder); });
}

void KVOutlineView::restoreExpansion()
{
    // Right after a rebuild the view lays itself out later anyway, so each
    // expansion only records the state.
    for (const QModelIndex &index : sidebarModel()->expandableIndexes()) {
        if (!isFoldedAway(index))
            expand(index);
    }
}

QRect KVOutlineView::rowRect(const QModelIndex &index) const
{
    const QRect cell = visualRect(index);
    return cell.isValid() ? QRect(0, cell.top(), viewport()->width(), cell.height()) : QRect();
}

QRect KVOutlineView::partRect(const QModelIndex &index, Part part) const
{
    return KVSidebarItemDelegate::partRect(*sidebarModel(), index, rowRect(index), part);
}

KVOutlineView::Part KVOutlineView::partAt(const QModelIndex &index, const QPoint &point) const
{
    return KVSidebarItemDelegate::partAt(*sidebarModel(), index, rowRect(index), point);
}

void KVOutlineView::drawRow(QPainter *painter, const QStyleOptionViewItem &options, const QModelIndex &index) const
{
    // One column, drawn across the whole row: no indentation, branches or
    // style-drawn selection, the rows draw all of that themselves.
    QStyleOptionViewItem option = options;
    option.rect = QRect(0, options.rect.top(), viewport()->width(), options.rect.height());
    option.state.setFlag(QStyle::State_Selected, selectionModel() && selectionModel()->isSelected(index));
    option.state.setFlag(QStyle::State_Open, isExpanded(index));
    m_delegate->paint(painter, option, index);
    // The keyboard's place is always visible, whatever the row draws itself.
    if (hasFocus() && index == currentIndex()) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(KVColors::kvWhiteText(), 2.0, Qt::DotLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(option.rect).adjusted(2, 2, -2, -2), 4, 4);
        painter->restore();
    }
}

void KVOutlineView::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex current = currentIndex();
    const KVSidebarModel *model = sidebarModel();
    if (!current.isValid() || !model || state() == EditingState) {
        QTreeView::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (model->favouriteItem(current))
            Q_EMIT favouriteActivated(current);
        else if (model->volume(current))
            selectionModel()->select(current, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        else
            setExpanded(current, !isExpanded(current));
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (model->favouriteItem(current) || model->folder(current)) {
            Q_EMIT deleteRequested(current);
            return;
        }
        break;
    default:
        break;
    }
    QTreeView::keyPressEvent(event);
}

bool KVOutlineView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave)
        setHover(QModelIndex(), QPoint());
    return QTreeView::viewportEvent(event);
}

void KVOutlineView::updateRow(const QModelIndex &index)
{
    if (index.isValid())
        viewport()->update(rowRect(index));
}

void KVOutlineView::setHover(const QModelIndex &index, const QPoint &point)
{
    const QPersistentModelIndex previous = m_interaction.hovered;
    m_interaction.hovered = index;
    m_interaction.hoverPoint = point;
    if (previous != index)
        updateRow(previous);
    updateRow(index);
}

void KVOutlineView::mousePressEvent(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    const QModelIndex index = indexAt(point);
    const Part part = partAt(index, point);
    m_pressPoint = point;
    m_pressedPart = part;
    m_interaction.pressed = QPersistentModelIndex();
    const bool selectsRow = sidebarModel()->holds<KVVolumeItemPtr>(index) && part == Part::Row;
    if (event->button() != Qt::LeftButton || !index.isValid() || selectsRow) {
        QTreeView::mousePressEvent(event);
        return;
    }
    // Buttons, section headers and favourites act when the button comes up,
    // or start a drag; a press alone changes nothing but the focus.
    setFocus(Qt::MouseFocusReason);
    m_interaction.pressed = index;
    updateRow(index);
    event->accept();
}

void KVOutlineView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    const QPersistentModelIndex pressed = m_interaction.pressed;
    if ((event->buttons() & Qt::LeftButton) && pressed.isValid() && (pressed.flags() & Qt::ItemIsDragEnabled)
        && (point - m_pressPoint).manhattanLength() >= QApplication::startDragDistance()) {
        startFavouriteDrag(pressed);
        return;
    }
    setHover(indexAt(point), point);
    QTreeView::mouseMoveEvent(event);
}

void KVOutlineView::mouseReleaseEvent(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    const QModelIndex index = indexAt(point);
    const QPersistentModelIndex pressed = m_interaction.pressed;
    m_interaction.pressed = QPersistentModelIndex();
    updateRow(pressed);
    if (event->button() != Qt::LeftButton || !pressed.isValid() || pressed != index
        || partAt(index, point) != m_pressedPart) {
        QTreeView::mouseReleaseEvent(event);
        return;
    }
    switch (m_pressedPart) {
    case Part::UnmountButton:
        Q_EMIT unmountRequested(index);
        break;
    case Part::RenamePen:
        edit(index);
        break;
    case Part::AddFolderButton:
        Q_EMIT addFolderRequested();
        break;
    case Part::Disclosure:
        setExpanded(index, !isExpanded(index));
        break;
    case Part::Row:
        if (sidebarModel()->holds<KVFavouriteItemPtr>(index))
            Q_EMIT favouriteActivated(index);
        break;
    case Part::RemoveButton:
    case Part::None:
        break;
    }
    event->accept();
}

void KVOutlineView::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    const KVSidebarModel *model = sidebarModel();
    const bool folder = model->holds<KVFavouriteFolderPtr>(index);
    if (!folder && !model->holds<KVFavouriteItemPtr>(index)) {
        event->ignore();
        return;
    }
    m_contextRow = index;
    m_renameAction->setVisible(folder);
    m_contextMenu->popup(event->globalPos());
    event->accept();
}

QPixmap KVOutlineView::rowPixmap(const QModelIndex &index) const
{
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = QRect(QPoint(0, 0), rowRect(index).size());
    const qreal ratio = devicePixelRatioF();
    QPixmap pixmap(option.rect.size() * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setOpacity(0.85);
    m_delegate->paint(&painter, option, index);
    return pixmap;
}

void KVOutlineView::startFavouriteDrag(const QModelIndex &index)
{
    m_interaction.pressed = QPersistentModelIndex();
    QMimeData *data = model()->mimeData({index});
    if (!data)
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    drag->setPixmap(rowPixmap(index));
    drag->setHotSpot(m_pressPoint - rowRect(index).topLeft());
    setRemoveButtonShown(true);
    Q_EMIT favouriteDragStarted();
    // The drop may rebuild the model: `index` is not used after this.
    drag->exec(Qt::MoveAction | Qt::CopyAction | Qt::LinkAction, Qt::MoveAction);
    setRemoveButtonHighlighted(false);
    setRemoveButtonShown(false);
    Q_EMIT favouriteDragEnded();
}

void KVOutlineView::setRemoveButtonShown(bool shown)
{
    m_interaction.removeButtonShown = shown;
    updateRow(sidebarModel()->favouriteMenuIndex());
}

void KVOutlineView::setRemoveButtonHighlighted(bool highlighted)
{
    if (m_interaction.removeButtonHighlighted == highlighted)
        return;
    m_interaction.removeButtonHighlighted = highlighted;
    // No drop indicator while the favourite would be removed rather than moved.
    setDropIndicatorShown(!highlighted);
    viewport()->update();
}

bool KVOutlineView::isOverRemoveButton(const QPoint &point, const QMimeData *data) const
{
    return m_interaction.removeButtonShown && carriesFavourite(data)
           && partRect(sidebarModel()->favouriteMenuIndex(), Part::RemoveButton).contains(point);
}

void KVOutlineView::dragMoveEvent(QDragMoveEvent *event)
{
    if (isOverRemoveButton(event->position().toPoint(), event->mimeData())) {
        setRemoveButtonHighlighted(true);
        event->setDropAction(Qt::MoveAction);
        event->accept();
        return;
    }
    setRemoveButtonHighlighted(false);
    QTreeView::dragMoveEvent(event);
}

void KVOutlineView::dragLeaveEvent(QDragLeaveEvent *event)
{
    setRemoveButtonHighlighted(false);
    QTreeView::dragLeaveEvent(event);
}

void KVOutlineView::dropEvent(QDropEvent *event)
{
    if (!isOverRemoveButton(event->position().toPoint(), event->mimeData())) {
        QTreeView::dropEvent(event);
        return;
    }
    setRemoveButtonHighlighted(false);
    event->setDropAction(Qt::MoveAction);
    event->accept();
    stopAutoScroll();
    setState(QAbstractItemView::NoState);
    Q_EMIT favouriteDroppedOnRemoveButton(*event->mimeData());
}
