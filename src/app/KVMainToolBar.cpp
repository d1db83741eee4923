#include "KVMainToolBar.h"

#include "KVCreatePopover.h"
#include "KVWindowActions.h"

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QToolButton>

namespace {

QToolButton *toolButton(const QString &name)
{
    auto *button = new QToolButton;
    button->setObjectName(name);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    return button;
}

} // namespace

KVMainToolBar::KVMainToolBar(KVWindowActions *actions, QMenu *addToFavouritesMenu, QWidget *parent)
    : QToolBar(tr("Volume"), parent)
{
    setObjectName(QStringLiteral("toolbar"));
    setMovable(false);
    setFloatable(false);
    setIconSize(QSize(16, 16));

    m_createButton = toolButton(QStringLiteral("createButton"));
    m_createButton->setText(tr("Create"));
    m_createButton->setIcon(QIcon(QStringLiteral(":/icons/CreateIcon.svg")));
    m_createButton->setToolTip(tr("Create a disk image, encrypt a disk or mount a disk"));
    addWidget(m_createButton);
    m_createPopover = new KVCreatePopover(m_createButton);
    // The popover offers the same commands as the menu bar.
    connect(m_createPopover, &KVCreatePopover::createDiskImageChosen, actions->action(KVCommand::CreateDiskImage),
            &QAction::trigger);
    connect(m_createPopover, &KVCreatePopover::encryptDiskChosen, actions->action(KVCommand::EncryptDisk),
            &QAction::trigger);
    connect(m_createPopover, &KVCreatePopover::mountDiskChosen, actions->action(KVCommand::MountDisk),
            &QAction::trigger);
    connect(m_createButton, &QToolButton::clicked, this,
            [this] { m_createPopover->showRelativeTo(m_createButton, Qt::BottomEdge); });

    auto *unmountAll = toolButton(QStringLiteral("unmountAll"));
    unmountAll->setDefaultAction(actions->action(KVCommand::UnmountAll));
    addWidget(unmountAll);

    auto *spacer = new QWidget;
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(spacer);

    m_addToFavouritesButton = toolButton(QStringLiteral("addToFavouritePullDown"));
    m_addToFavouritesButton->setText(tr("Add to Favorites"));
    m_addToFavouritesButton->setIcon(QIcon(QStringLiteral(":/icons/FavouriteDiskImageIcon.svg")));
    m_addToFavouritesButton->setMenu(addToFavouritesMenu);
    m_addToFavouritesButton->setPopupMode(QToolButton::InstantPopup);
    addWidget(m_addToFavouritesButton);

    auto *tips = toolButton(QStringLiteral("showtipsButton"));
    tips->setDefaultAction(actions->action(KVCommand::ShowTips));
    tips->setToolButtonStyle(Qt::ToolButtonIconOnly);
    addWidget(tips);
}
