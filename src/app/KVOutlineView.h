#pragma once

#include "favourites/KVFavouriteFolder.h"
#include "KVSidebarItemDelegate.h"

#include <QSet>
#include <QTreeView>

#include <vector>

class KVSidebarModel;
class QMenu;

// The sidebar's outline: draws its rows edge to edge on the dark sidebar,
// turns clicks on a row's buttons into requests, drags favourites (only they
// can be dragged) and takes them back, onto another place or onto the remove
// button that shows while a favourite is dragged. Only volume rows select.
// Everything a click does can be done from the keyboard, with the focus shown.
class KVOutlineView : public QTreeView
{
    Q_OBJECT

public:
    using Part = KVSidebarItemDelegate::Part;

    explicit KVOutlineView(QWidget *parent = nullptr);

    KVSidebarModel *sidebarModel() const;
    void setSidebarModel(KVSidebarModel *model);

    // Expands every section and folder that the user has not folded away; the
    // model loses that state when it is rebuilt.
    void restoreExpansion();

    // The row of the last context-menu request, and that menu.
    const QPersistentModelIndex &contextRow() const { return m_contextRow; }
    QMenu *contextMenu() const { return m_contextMenu; }

    bool removeButtonShown() const { return m_interaction.removeButtonShown; }
    bool removeButtonHighlighted() const { return m_interaction.removeButtonHighlighted; }

    // The whole row of `index` in viewport coordinates, and a part of it.
    QRect rowRect(const QModelIndex &index) const;
    QRect partRect(const QModelIndex &index, Part part) const;

Q_SIGNALS:
    void unmountRequested(const QModelIndex &index);
    void favouriteActivated(const QModelIndex &index);
    void addFolderRequested();
    void deleteRequested(const QModelIndex &index);
    void favouriteDroppedOnRemoveButton(const QMimeData &data);
    void favouriteDragStarted();
    void favouriteDragEnded();

protected:
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool viewportEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    // Arrows move, Enter mounts a favourite, selects a volume or folds a
    // folder, Delete removes a favourite.
    void keyPressEvent(QKeyEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    Part partAt(const QModelIndex &index, const QPoint &point) const;
    void startFavouriteDrag(const QModelIndex &index);
    QPixmap rowPixmap(const QModelIndex &index) const;
    void setHover(const QModelIndex &index, const QPoint &point);
    void updateRow(const QModelIndex &index);
    bool isOverRemoveButton(const QPoint &point, const QMimeData *data) const;
    void setRemoveButtonShown(bool shown);
    void setRemoveButtonHighlighted(bool highlighted);
    void rememberExpansion(const QModelIndex &index, bool expanded);
    bool isFoldedAway(const QModelIndex &index) const;

    KVSidebarInteraction m_interaction;
    KVSidebarItemDelegate *m_delegate;
    QPoint m_pressPoint;
    Part m_pressedPart = Part::None;
    QMenu *m_contextMenu;
    QAction *m_renameAction;
    QPersistentModelIndex m_contextRow;
    QSet<QString> m_foldedSections;
    std::vector<std::weak_ptr<KVFavouriteFolder>> m_foldedFolders;
};
