#include "KVWindowActions.h"

#include "KVCommandValidation.h"

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QMenuBar>

KVWindowActions::KVWindowActions(QObject *parent)
    : QObject(parent)
{
    add(KVCommand::CreateDiskImage, QStringLiteral("createDiskImage"), tr("&New Disk Image…"), QKeySequence(tr("Ctrl+N")));
    add(KVCommand::MountDiskImage, QStringLiteral("mountDiskImage"), tr("&Open Disk Image…"), QKeySequence(tr("Ctrl+O")));
    add(KVCommand::EncryptDisk, QStringLiteral("encryptDisk"), tr("&Encrypt Disk…"));
    add(KVCommand::MountDisk, QStringLiteral("mountDisk"), tr("&Mount Disk…"));
    add(KVCommand::AddFavouriteFolder, QStringLiteral("addFavouriteFolder"), tr("New Favorites &Folder"));
    add(KVCommand::Preferences, QStringLiteral("showPreferences"), tr("&Preferences…"), QKeySequence(tr("Ctrl+,")))
        ->setMenuRole(QAction::PreferencesRole);
    add(KVCommand::Quit, QStringLiteral("quit"), tr("&Quit"), QKeySequence(tr("Ctrl+Q")))->setMenuRole(QAction::QuitRole);

    add(KVCommand::EditVolumeName, QStringLiteral("editVolumeName"), tr("&Rename"), QKeySequence(Qt::Key_F2));
    add(KVCommand::RevealInFinder, QStringLiteral("revealInFinder"), tr("&Show in Files"));
    add(KVCommand::OpenAddToFavouritePullDown, QStringLiteral("openAddToFavouritePullDown"), tr("Add to &Favorites"));
    add(KVCommand::ChangePassword, QStringLiteral("changePassword"), tr("&Change Password…"));
    add(KVCommand::EraseKeys, QStringLiteral("eraseKeys"), tr("Erase &Key…"));
    add(KVCommand::Resize, QStringLiteral("resize"), tr("Re&size…"));
    add(KVCommand::Compact, QStringLiteral("compact"), tr("Com&pact…"));
    add(KVCommand::Decrypt, QStringLiteral("decrypt"), tr("&Decrypt…"));
    add(KVCommand::UnmountCurrentVolume, QStringLiteral("unmountCurrentVolume"), tr("&Unmount"),
        QKeySequence(tr("Ctrl+E")));
    add(KVCommand::UnmountAll, QStringLiteral("unmountAll"), tr("Unmount &All"), QKeySequence(tr("Ctrl+Shift+E")))
        ->setIcon(QIcon(QStringLiteral(":/icons/UnmountAllIcon.svg")));

    add(KVCommand::ShowTips, QStringLiteral("showtips"), tr("Show &Tips"))
        ->setIcon(QIcon(QStringLiteral(":/icons/TipsIcon.svg")));
    add(KVCommand::ShowHelp, QStringLiteral("showHelp"), tr("Korvelle &Help"), QKeySequence(Qt::Key_F1));
    add(KVCommand::ShowEncryptionHelp, QStringLiteral("showEncryptionHelp"), tr("How Your Data Is &Encrypted"));
    add(KVCommand::ShowTroubleshootingHelp, QStringLiteral("showTroubleshootingHelp"), tr("&Troubleshooting"));
    add(KVCommand::About, QStringLiteral("about"), tr("&About Korvelle"))->setMenuRole(QAction::AboutRole);
}

QAction *KVWindowActions::add(KVCommand command, const QString &name, const QString &text, const QKeySequence &shortcut)
{
    auto *action = new QAction(text, this);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, [this, command] { Q_EMIT triggered(command); });
    m_actions.insert(command, action);
    return action;
}

void KVWindowActions::populate(QMenuBar *menuBar, QMenu *addToFavouritesMenu)
{
    const auto fill = [this](QMenu *menu, std::initializer_list<KVCommand> commands) {
        for (KVCommand command : commands)
            menu->addAction(action(command));
    };
    QMenu *file = menuBar->addMenu(tr("&File"));
    file->setObjectName(QStringLiteral("fileMenu"));
    fill(file, {KVCommand::CreateDiskImage, KVCommand::MountDiskImage, KVCommand::EncryptDisk, KVCommand::MountDisk});
    file->addSeparator();
    fill(file, {KVCommand::AddFavouriteFolder});
    file->addSeparator();
    fill(file, {KVCommand::Preferences});
    file->addSeparator();
    fill(file, {KVCommand::Quit});

    QMenu *volume = menuBar->addMenu(tr("&Volume"));
    volume->setObjectName(QStringLiteral("volumeMenu"));
    fill(volume, {KVCommand::EditVolumeName, KVCommand::RevealInFinder});
    // The favourites folders to add to are the window's own pull-down menu.
    action(KVCommand::OpenAddToFavouritePullDown)->setMenu(addToFavouritesMenu);
    fill(volume, {KVCommand::OpenAddToFavouritePullDown});
    volume->addSeparator();
    fill(volume, {KVCommand::ChangePassword, KVCommand::EraseKeys, KVCommand::Resize, KVCommand::Compact,
                  KVCommand::Decrypt});
    volume->addSeparator();
    fill(volume, {KVCommand::UnmountCurrentVolume, KVCommand::UnmountAll});

    QMenu *help = menuBar->addMenu(tr("&Help"));
    help->setObjectName(QStringLiteral("helpMenu"));
    fill(help, {KVCommand::ShowTips});
    help->addSeparator();
    fill(help, {KVCommand::ShowHelp, KVCommand::ShowEncryptionHelp, KVCommand::ShowTroubleshootingHelp});
    help->addSeparator();
    fill(help, {KVCommand::About});
}

void KVWindowActions::updateActionState(const KVVolumeItemPtr &selection, bool anyVolumeMounted)
{
    for (auto it = m_actions.cbegin(); it != m_actions.cend(); ++it)
        it.value()->setEnabled(KVCommandValidation::isEnabled(it.key(), selection, anyVolumeMounted));
}
