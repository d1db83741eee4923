#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

#include <memory>

class KVCustomProgressIndicatorView;
class KVSidebarModel;

// What the outline knows of the pointer and of a favourite being dragged,
// for the rows to draw themselves accordingly.
struct KVSidebarInteraction
{
    QPersistentModelIndex hovered;
    QPoint hoverPoint; // in viewport coordinates
    QPersistentModelIndex pressed;
    bool removeButtonShown = false;       // while a favourite is dragged
    bool removeButtonHighlighted = false; // while it is over the remove button
};

// Draws every row of the sidebar on the application's dark grey, and tells
// where the clickable parts of a row are. Folder names are renamed in place
// with a line edit.
class KVSidebarItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    enum class Part { None, Row, Disclosure, UnmountButton, RenamePen, AddFolderButton, RemoveButton };

    KVSidebarItemDelegate(const KVSidebarInteraction *interaction, QObject *parent = nullptr);
    ~KVSidebarItemDelegate() override;

    // Where `part` of row `index`, drawn in `row`, is; empty when the row has none.
    static QRect partRect(const KVSidebarModel &model, const QModelIndex &index, const QRect &row, Part part);
    // The part under `point`: a button, the disclosure, or the row itself.
    static Part partAt(const KVSidebarModel &model, const QModelIndex &index, const QRect &row, const QPoint &point);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

private:
    bool isHovered(const QModelIndex &index, const KVSidebarModel &model, const QRect &row, Part part) const;
    void paintSection(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintFolder(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintFavouriteItem(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintFavouriteMenu(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintPlaceholder(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;
    void paintVolume(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const;

    const KVSidebarInteraction *m_interaction;
    // Never shown: it draws the conversion bars of the volume rows.
    std::unique_ptr<KVCustomProgressIndicatorView> m_progressBar;
};
