#include "KVMainWindow.h"

#include "KVFavouriteItem.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QStandardItemModel>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

namespace {

QStandardItem *row(const QString &text, bool selectable = false)
{
    auto *item = new QStandardItem(text);
    item->setSelectable(selectable);
    item->setEditable(false);
    return item;
}

} // namespace

KVMainWindow::KVMainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_sidebar(new QTreeView)
    , m_sidebarModel(new QStandardItemModel(this))
    , m_detail(new QLabel)
    , m_addToFavouritesMenu(new QMenu(this))
{
    setWindowTitle(QStringLiteral("Korvelle"));
    setObjectName(QStringLiteral("mainWindow"));

    m_sidebar->setObjectName(QStringLiteral("sidebar"));
    m_sidebar->setModel(m_sidebarModel);
    m_sidebar->header()->hide();

    m_detail->setObjectName(QStringLiteral("detailPlaceholder"));
    m_detail->setAlignment(Qt::AlignCenter);

    QMenu *application = menuBar()->addMenu(tr("&Korvelle"));
    QAction *preferences = application->addAction(tr("&Preferences…"), this, &KVMainWindow::preferencesRequested);
    preferences->setMenuRole(QAction::PreferencesRole);
    preferences->setShortcut(QKeySequence::Preferences);
    application->addSeparator();
    QAction *quit = application->addAction(tr("&Quit"), this, &KVMainWindow::closeRequested);
    quit->setMenuRole(QAction::QuitRole);
    quit->setShortcut(QKeySequence::Quit);

    auto *addToFavourites = new QToolButton;
    addToFavourites->setObjectName(QStringLiteral("addToFavouritePullDown"));
    addToFavourites->setText(tr("Add to Favorites"));
    addToFavourites->setMenu(m_addToFavouritesMenu);
    addToFavourites->setPopupMode(QToolButton::InstantPopup);
    auto *toolbar = addToolBar(tr("Volume"));
    toolbar->setObjectName(QStringLiteral("toolbar"));
    toolbar->addWidget(addToFavourites);

    auto *splitter = new QSplitter;
    splitter->addWidget(m_sidebar);
    splitter->addWidget(m_detail);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({240, 560});
    setCentralWidget(splitter);
    resize(820, 520);

    reloadSidebar({}, {}, nullptr);
    showDetails(nullptr);
}

void KVMainWindow::reloadSidebar(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                                 const KVVolumeItemPtr &)
{
    m_sidebarModel->clear();
    // Section titles double as node identities in the sidebar, so they are not translated.
    QStandardItem *favouritesSection = row(QStringLiteral("Favorites"));
    for (const KVFavouriteFolderPtr &folder : favourites) {
        QStandardItem *folderRow = row(folder->name());
        for (const KVFavouriteItemPtr &item : folder->content())
            folderRow->appendRow(row(item->name()));
        favouritesSection->appendRow(folderRow);
    }
    QStandardItem *mountedSection = row(QStringLiteral("Mounted"));
    for (const KVVolumeItemPtr &volume : volumes)
        mountedSection->appendRow(row(volume->name(), true));
    m_sidebarModel->appendRow(favouritesSection);
    m_sidebarModel->appendRow(mountedSection);
    m_sidebar->expandAll();
}

void KVMainWindow::showDetails(const KVVolumeItemPtr &volume)
{
    m_detail->setText(volume ? volume->name() : tr("No volume selected"));
}

void KVMainWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    Q_EMIT closeRequested();
}
