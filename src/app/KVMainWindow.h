#pragma once

#include <QMainWindow>

class QTreeView;
class QStandardItemModel;

// The single main window: the sidebar on the left, the detail pane on the right.
class KVMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit KVMainWindow(QWidget *parent = nullptr);

    QTreeView *sidebar() const { return m_sidebar; }

private:
    QTreeView *m_sidebar;
    QStandardItemModel *m_sidebarModel;
};
