#include "KVMainWindow.h"

#include "KVActionMenuView.h"
#include "KVDetailPaneView.h"
#include "KVHelpPopovers.h"
#include "KVMainToolBar.h"
#include "KVWindowActions.h"
#include "KVHoverArea.h"
#include "KVMountAreaView.h"
#include "KVOutlineView.h"
#include "settings/KVPreferenceKeys.h"
#include "KVSidebarModel.h"
#include "KVSidebarStyle.h"
#include "controls/KVColors.h"
#include "model/KVDisplayText.h"
#include "platform/KVUserDefaults.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QFileInfo>
#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QSplitter>
#include <QToolButton>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

// The drop area's fade, before "animationDurationMultiplier" scales it.
constexpr double MountAreaFadeMs = 300.0;
constexpr double LongestFadeMs = 60000.0;

// The local files of a drag; nothing when the drag holds anything else.
QStringList fileNames(const QMimeData *data)
{
    QStringList names;
    if (!data)
        return names;
    for (const QUrl &url : data->urls()) {
        if (!url.isLocalFile())
            return {};
        names.append(url.toLocalFile());
    }
    return names;
}

} // namespace

KVMainWindow::KVMainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_sidebarModel(new KVSidebarModel(this))
    , m_sidebar(new KVOutlineView)
    , m_detailPane(new KVDetailPaneView)
    , m_addToFavouritesMenu(new QMenu(this))
    , m_mountAreaFade(new QParallelAnimationGroup(this))
{
    setWindowTitle(QStringLiteral("Korvelle"));
    setObjectName(QStringLiteral("mainWindow"));
    setAcceptDrops(true);
    m_sidebar->setSidebarModel(m_sidebarModel);

    m_actions = new KVWindowActions(this);
    m_actions->populate(menuBar(), m_addToFavouritesMenu);
    connect(m_actions, &KVWindowActions::triggered, this, &KVMainWindow::performCommand);
    m_toolBar = new KVMainToolBar(m_actions, m_addToFavouritesMenu, this);
    addToolBar(m_toolBar);

    auto *splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("splitView"));
    splitter->setHandleWidth(1);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(createSidebarPane());
    splitter->addWidget(m_detailPane);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({250, 610});
    QPalette splitColours = splitter->palette();
    splitColours.setColor(QPalette::Window, KVColors::kvSelectOutline());
    splitter->setPalette(splitColours);
    setCentralWidget(splitter);
    m_splitter = splitter;
    resize(860, 560);
    connectSidebar();

    reloadSidebar({}, {}, nullptr);
    setAddToFavouritesEnabled(false);
}

KVMainWindow::~KVMainWindow()
{
    // A folder rename still open would be committed when the window hides on
    // its way out, and reach a controller that is itself being torn down:
    // letting go of the model closes the field without committing.
    m_sidebar->setModel(nullptr);
}

void KVMainWindow::performCommand(KVCommand command)
{
    switch (command) {
    case KVCommand::Quit: Q_EMIT closeRequested(); break;
    case KVCommand::Preferences: Q_EMIT preferencesRequested(); break;
    case KVCommand::MountDiskImage: Q_EMIT mountDiskImageRequested(); break;
    case KVCommand::AddFavouriteFolder: Q_EMIT addFavouriteFolderRequested(); break;
    case KVCommand::EditVolumeName: m_detailPane->beginRenaming(); break;
    case KVCommand::ShowTips: showTips(); break;
    case KVCommand::ShowHelp: showHelp(KVHelpBrowser::Page::Help); break;
    case KVCommand::ShowEncryptionHelp: showHelp(KVHelpBrowser::Page::Encryption); break;
    case KVCommand::ShowTroubleshootingHelp: showHelp(KVHelpBrowser::Page::Troubleshooting); break;
    case KVCommand::About: showAbout(); break;
    default: Q_EMIT commandRequested(command); break;
    }
}

void KVMainWindow::showTips()
{
    if (!m_helpPopovers)
        m_helpPopovers = new KVHelpPopovers(this);
    m_helpPopovers->toggle({m_sidebar, m_detailPane->actionMenu(), m_toolBar->createButton(), m_outerMountArea});
}

void KVMainWindow::showHelp(KVHelpBrowser::Page page)
{
    if (!m_helpBrowser)
        m_helpBrowser = new KVHelpBrowser(this);
    m_helpBrowser->showPage(page);
}

void KVMainWindow::showAbout()
{
    auto *about = new QMessageBox(QMessageBox::NoIcon, tr("About Korvelle"),
                                  tr("<h3>Korvelle %1</h3>").arg(QCoreApplication::applicationVersion()),
                                  QMessageBox::Ok, this);
    about->setObjectName(QStringLiteral("aboutBox"));
    about->setIconPixmap(QIcon(QStringLiteral(":/icons/Korvelle.svg")).pixmap(64, 64));
    about->setInformativeText(tr("Encrypted disk images and encrypted disks, without a terminal."));
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
}

void KVMainWindow::updateActionState(const KVVolumeItemPtr &selection, bool anyVolumeMounted)
{
    m_actions->updateActionState(selection, anyVolumeMounted);
}

QWidget *KVMainWindow::createSidebarPane()
{
    auto *pane = new QWidget;
    pane->setObjectName(QStringLiteral("sidebarPane"));
    pane->setMinimumWidth(210);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_sidebar, 1);
    layout->addWidget(createMountArea());
    connect(m_sidebar, &KVOutlineView::addFolderRequested, this, &KVMainWindow::addFavouriteFolderRequested);
    return pane;
}

QWidget *KVMainWindow::createMountArea()
{
    m_outerMountArea = new KVHoverArea;
    m_outerMountArea->setObjectName(QStringLiteral("outerMountArea"));
    m_outerMountArea->setFixedHeight(96);
    auto *outerLayout = new QVBoxLayout(m_outerMountArea);
    outerLayout->setContentsMargins(12, 12, 12, 12);

    m_innerMountArea = new KVMountAreaView;
    m_innerMountArea->setObjectName(QStringLiteral("innerMountArea"));
    outerLayout->addWidget(m_innerMountArea);

    // Three parts in one place: the label at rest, the button and its caption
    // while the pointer is over the area.
    m_mountVolumeLabel = new QLabel(tr("Drop a disk image to mount it"));
    m_mountVolumeLabel->setObjectName(QStringLiteral("mountVolumeLabel"));
    m_mountVolumeLabel->setAlignment(Qt::AlignCenter);
    m_mountVolumeLabel->setWordWrap(true);
    m_mountVolumeLabel->setAttribute(Qt::WA_TransparentForMouseEvents);

    auto *openButton = new QPushButton(tr("Open Disk Image…"));
    openButton->setObjectName(QStringLiteral("mountDiskImageButton"));
    openButton->setCursor(Qt::PointingHandCursor);
    openButton->setStyleSheet(
        QStringLiteral(
            "QPushButton { color: %1; background: rgba(255,255,255,22); border: 1px solid rgba(255,255,255,40);"
            " border-radius: 5px; padding: 3px 12px; }"
            "QPushButton:hover { background: rgba(255,255,255,36); }"
            "QPushButton:pressed { background: rgba(255,255,255,14); }")
            .arg(KVColors::kvWhiteText().name()));
    connect(openButton, &QPushButton::clicked, this, &KVMainWindow::mountDiskImageRequested);

    auto *caption = new QLabel(tr("sparseimage, sparsebundle or dmg"));
    caption->setObjectName(QStringLiteral("mountAreaCaption"));
    caption->setAlignment(Qt::AlignCenter);
    caption->setFont(KVSidebarStyle::font(caption->font(), 0.82));
    QPalette captionColours = caption->palette();
    captionColours.setColor(QPalette::WindowText, KVColors::kvLightGreyText());
    caption->setPalette(captionColours);

    auto *grid = new QGridLayout(m_innerMountArea);
    grid->setContentsMargins(8, 6, 8, 6);
    grid->setVerticalSpacing(3);
    grid->addWidget(m_mountVolumeLabel, 0, 0, 2, 1);
    grid->addWidget(openButton, 0, 0, Qt::AlignHCenter | Qt::AlignBottom);
    grid->addWidget(caption, 1, 0, Qt::AlignHCenter | Qt::AlignTop);

    const std::array<QWidget *, 3> parts{m_mountVolumeLabel, openButton, caption};
    for (size_t part = 0; part < parts.size(); ++part) {
        m_mountAreaOpacity[part] = new QGraphicsOpacityEffect(parts[part]);
        m_mountAreaOpacity[part]->setOpacity(part == 0 ? 1.0 : 0.0);
        parts[part]->setGraphicsEffect(m_mountAreaOpacity[part]);
    }
    setMountVolumeLabelColour(KVColors::kvLightGreyText());

    connect(m_outerMountArea, &KVHoverArea::mouseDidEnter, this, &KVMainWindow::mouseDidEnter);
    connect(m_outerMountArea, &KVHoverArea::mouseDidExit, this, &KVMainWindow::mouseDidExit);
    return m_outerMountArea;
}

qreal KVMainWindow::mountAreaOpacity(int part) const
{
    return m_mountAreaOpacity.at(size_t(part))->opacity();
}

void KVMainWindow::setMountVolumeLabelColour(const QColor &colour)
{
    QPalette colours = m_mountVolumeLabel->palette();
    colours.setColor(QPalette::WindowText, colour);
    m_mountVolumeLabel->setPalette(colours);
}

void KVMainWindow::mouseDidEnter()
{
    // While a file is dragged over the window the label stays: it says what a drop does.
    if (!m_innerMountArea->isActive())
        fadeMountArea(0.0, 1.0);
}

void KVMainWindow::mouseDidExit()
{
    fadeMountArea(1.0, 0.0);
}

void KVMainWindow::fadeMountArea(qreal labelOpacity, qreal offersOpacity)
{
    const double multiplier = KVUserDefaults::standard().doubleForKey(KVAnimationDurationMultiplierKey);
    const double duration =
        std::isfinite(multiplier) ? std::clamp(MountAreaFadeMs * multiplier, 0.0, LongestFadeMs) : 0.0;
    m_mountAreaFade->stop();
    m_mountAreaFade->clear();
    for (size_t part = 0; part < m_mountAreaOpacity.size(); ++part) {
        auto *fade = new QPropertyAnimation(m_mountAreaOpacity[part], "opacity");
        fade->setDuration(int(duration));
        fade->setEndValue(part == 0 ? labelOpacity : offersOpacity);
        m_mountAreaFade->addAnimation(fade);
    }
    m_mountAreaFade->start();
}

void KVMainWindow::reloadSidebar(const QList<KVFavouriteFolderPtr> &favourites, const QList<KVVolumeItemPtr> &volumes,
                                 const KVVolumeItemPtr &selection)
{
    m_sidebarModel->reload(favourites, volumes, selection);
    m_sidebar->restoreExpansion();
}

void KVMainWindow::setAddToFavouritesEnabled(bool enabled)
{
    m_toolBar->addToFavouritesButton()->setEnabled(enabled);
}

void KVMainWindow::focusSidebar()
{
    m_sidebar->setFocus(Qt::OtherFocusReason);
}

void KVMainWindow::connectSidebar()
{
    connect(m_sidebar, &KVOutlineView::unmountRequested, this, [this](const QModelIndex &index) {
        if (const KVVolumeItemPtr volume = m_sidebarModel->volume(index))
            Q_EMIT unmountRequested(volume);
    });
    connect(m_sidebar, &KVOutlineView::favouriteActivated, this, [this](const QModelIndex &index) {
        Q_EMIT favouriteActivated(m_sidebarModel->favouriteItem(index));
    });
    connect(m_sidebar, &KVOutlineView::deleteRequested, this, [this](const QModelIndex &index) {
        if (const KVFavouriteItemPtr item = m_sidebarModel->favouriteItem(index))
            Q_EMIT favouriteItemDeleteRequested(item);
        else if (const KVFavouriteFolderPtr folder = m_sidebarModel->folder(index))
            Q_EMIT favouriteFolderDeleteRequested(folder);
    });
    connect(m_sidebar, &KVOutlineView::favouriteDroppedOnRemoveButton, this,
            &KVMainWindow::favouriteDroppedOnRemoveButton);
    connect(m_sidebar->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        // The row drawn selected since the last rebuild gives way to the user's choice.
        m_sidebarModel->clearDrawnSelection();
        const QModelIndexList selected = m_sidebar->selectionModel()->selectedRows();
        Q_EMIT volumeSelected(selected.isEmpty() ? nullptr : m_sidebarModel->volume(selected.first()));
    });
    connect(m_sidebarModel, &KVSidebarModel::favouriteFolderRenamed, this, &KVMainWindow::favouriteFolderRenamed);
}

bool KVMainWindow::acceptsDroppedFiles(const QStringList &fileNames)
{
    return fileNames.size() == 1 && QFileInfo(fileNames.first()).suffix() == u"sparseimage";
}

void KVMainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!acceptsDroppedFiles(fileNames(event->mimeData()))) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    showDropHighlight(true);
}

void KVMainWindow::dragMoveEvent(QDragMoveEvent *event)
{
    if (acceptsDroppedFiles(fileNames(event->mimeData()))) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void KVMainWindow::dragLeaveEvent(QDragLeaveEvent *event)
{
    event->accept();
    showDropHighlight(false);
}

void KVMainWindow::dropEvent(QDropEvent *event)
{
    const QStringList names = fileNames(event->mimeData());
    if (!acceptsDroppedFiles(names)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Q_EMIT fileDropped(QFileInfo(names.first()).absoluteFilePath());
    showDropHighlight(false);
}

void KVMainWindow::showDropHighlight(bool shown)
{
    m_innerMountArea->setActive(shown);
    setMountVolumeLabelColour(shown ? KVColors::kvWhiteText() : KVColors::kvLightGreyText());
}

void KVMainWindow::closeEvent(QCloseEvent *event)
{
    if (m_closeAllowed) {
        event->accept();
        return;
    }
    event->ignore();
    Q_EMIT closeButtonClicked();
}

void KVMainWindow::allowClose()
{
    m_closeAllowed = true;
}

void KVMainWindow::showQuitWaitingFor(const QStringList &volumeNames)
{
    if (volumeNames.isEmpty()) {
        statusBar()->clearMessage();
        return;
    }
    QStringList quoted;
    for (const QString &name : volumeNames)
        quoted.append(tr("“%1”").arg(KVDisplayText::inSentence(name)));
    statusBar()->showMessage(tr("Quitting as soon as %1 can be unmounted…", nullptr, int(volumeNames.size()))
                                 .arg(QLocale().createSeparatedList(quoted)));
}
