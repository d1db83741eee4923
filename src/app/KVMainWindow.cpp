#include "KVMainWindow.h"

#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTreeView>

KVMainWindow::KVMainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_sidebar(new QTreeView)
    , m_sidebarModel(new QStandardItemModel(this))
{
    setWindowTitle(QStringLiteral("Korvelle"));
    setObjectName(QStringLiteral("mainWindow"));

    // Section titles double as node identities in the sidebar, so they are not translated.
    for (const char *section : {"Favorites", "Mounted"}) {
        auto *header = new QStandardItem(QString::fromLatin1(section));
        header->setSelectable(false);
        header->setEditable(false);
        m_sidebarModel->appendRow(header);
    }
    m_sidebar->setObjectName(QStringLiteral("sidebar"));
    m_sidebar->setModel(m_sidebarModel);
    m_sidebar->header()->hide();
    m_sidebar->expandAll();

    auto *detail = new QLabel(tr("No volume selected"));
    detail->setObjectName(QStringLiteral("detailPlaceholder"));
    detail->setAlignment(Qt::AlignCenter);

    auto *splitter = new QSplitter;
    splitter->addWidget(m_sidebar);
    splitter->addWidget(detail);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({240, 560});
    setCentralWidget(splitter);
    resize(820, 520);
}
