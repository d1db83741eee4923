#pragma once

#include "model/KVVolumeItem.h"

#include <QList>
#include <QPair>
#include <QWidget>

class KVActionMenuView;
class KVCustomProgressIndicatorView;
class KVElidedLabel;
class KVPopover;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

// The right side of the main window: the welcome tip, the placeholder shown
// when nothing is selected, or the description of the selected volume with
// its commands. The view only shows what it is given and reports what the
// user asks for; the controller decides.
class KVDetailPaneView : public QWidget
{
    Q_OBJECT

public:
    explicit KVDetailPaneView(QWidget *parent = nullptr);

    KVActionMenuView *actionMenu() const { return m_actionMenu; }

    // Nothing is selected: the welcome tip, or else the placeholder.
    void showNoSelection(bool welcomeTip);
    // The volume's name, mount point, location or status, space and icon.
    void showVolume(const KVVolumeItem &volume);

    // Rename in place: the name becomes editable with all of it selected.
    // Return or leaving the field ends it with renameFinished(), Escape with
    // renameCancelled(); either way the field is read-only and empty again
    // until the volume is shown anew.
    void beginRenaming();
    bool isRenaming() const { return m_renaming; }

    // The more-info popover, next to its button.
    void showMoreInfo();

    // A path with the home folder written as "~".
    static QString abbreviatingHome(const QString &path);

Q_SIGNALS:
    void commandChosen(const QString &identifier);
    void renameFinished(const QString &newName);
    void renameCancelled();
    void revealRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *createTipView();
    QWidget *createPlaceholderView();
    QWidget *createVolumeInfoView();
    void endRenaming(bool commit);
    // The name in the title, cut in the middle to the field's width.
    void showName();
    void fillMoreInfo(const KVVolumeItem &volume);

    QWidget *m_tipView = nullptr;
    QWidget *m_placeholderView = nullptr;
    QWidget *m_volumeInfoView = nullptr;
    QLabel *m_image = nullptr;
    QLineEdit *m_volumeName = nullptr;
    KVElidedLabel *m_mountPointInfo = nullptr;
    QLabel *m_locationOrStatusLabel = nullptr;
    KVElidedLabel *m_locationOrStatusInfo = nullptr;
    KVCustomProgressIndicatorView *m_spaceBar = nullptr;
    QLabel *m_spaceInfo = nullptr;
    QPushButton *m_revealButton = nullptr;
    QToolButton *m_moreInfoButton = nullptr;
    KVPopover *m_moreInfoPopover = nullptr;
    QLabel *m_moreInfoText = nullptr;
    KVActionMenuView *m_actionMenu = nullptr;
    bool m_renaming = false;
    // The volume's name on one line, and what the field held as a rename began.
    QString m_shownName;
    QString m_nameBeforeRenaming;
};
