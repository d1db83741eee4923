#include "KVDetailPaneView.h"

#include "KVActionMenuView.h"
#include "controls/KVColors.h"
#include "controls/KVCustomProgressIndicatorView.h"
#include "controls/KVElidedLabel.h"
#include "controls/KVPopover.h"
#include "model/KVDisplayText.h"

#include <QDir>
#include <QEvent>
#include <QFontMetrics>
#include <QFrame>
#include <QGridLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int LargeIconSize = 128;
// What a line edit keeps free around its text, and room for the cursor.
constexpr int FieldTextMargins = 8;

QString byteCount(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

template<typename Label = QLabel>
Label *greyLabel(const QString &text = QString())
{
    auto *label = new Label;
    label->setText(text);
    QPalette colours = label->palette();
    colours.setColor(QPalette::WindowText, KVColors::kvDarkGrey());
    label->setPalette(colours);
    return label;
}

QLabel *wrappingLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

KVDetailPaneView::KVDetailPaneView(QWidget *parent)
    : QWidget(parent)
{
    m_tipView = createTipView();
    m_placeholderView = createPlaceholderView();
    m_volumeInfoView = createVolumeInfoView();
    setObjectName(QStringLiteral("detailView"));
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, KVColors::kvDetailViewBackground());
    setPalette(colours);
    setMinimumWidth(420);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 18);
    layout->addWidget(m_tipView, 1);
    layout->addWidget(m_placeholderView, 1);
    layout->addWidget(m_volumeInfoView, 1);
    // The commands stay in their place, inactive while nothing is selected.
    auto *rule = new QFrame;
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);
    layout->addWidget(rule);
    layout->addWidget(m_actionMenu);
    showNoSelection(false);
}

QWidget *KVDetailPaneView::createTipView()
{
    auto *view = new QFrame;
    view->setObjectName(QStringLiteral("detailTipView"));
    auto *layout = new QVBoxLayout(view);
    layout->addStretch(1);
    auto *icon = new QLabel;
    icon->setPixmap(QIcon(QStringLiteral(":/icons/Korvelle.svg")).pixmap(96, 96));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);
    auto *heading = wrappingLabel(tr("Welcome to Korvelle"));
    QFont headingFont = heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.6);
    headingFont.setBold(true);
    heading->setFont(headingFont);
    layout->addWidget(heading);
    layout->addSpacing(8);
    layout->addWidget(wrappingLabel(
        tr("Encrypted disk images and encrypted disks appear on the left once they are mounted. "
           "Choose one to see it here with its commands.")));
    layout->addWidget(wrappingLabel(
        tr("To mount an encrypted disk image, drop it on the area at the bottom left or open it from the File menu. "
           "To make a new one, or to encrypt a disk, use the Create button in the toolbar.")));
    layout->addStretch(2);
    return view;
}

QWidget *KVDetailPaneView::createPlaceholderView()
{
    auto *view = new QFrame;
    view->setObjectName(QStringLiteral("detailPlaceholderView"));
    auto *layout = new QVBoxLayout(view);
    layout->addStretch(1);
    auto *image = new QLabel;
    image->setObjectName(QStringLiteral("detailPlaceholderImageView"));
    image->setPixmap(QIcon(QStringLiteral(":/icons/Korvelle.svg")).pixmap(LargeIconSize, LargeIconSize, QIcon::Disabled));
    image->setAlignment(Qt::AlignCenter);
    layout->addWidget(image);
    QLabel *text = greyLabel(tr("No Volume Selected"));
    text->setAlignment(Qt::AlignCenter);
    layout->addWidget(text);
    layout->addStretch(2);
    return view;
}

QWidget *KVDetailPaneView::createVolumeInfoView()
{
    auto *view = new QWidget;
    view->setObjectName(QStringLiteral("volumeInfoView"));

    m_image = new QLabel;
    m_image->setObjectName(QStringLiteral("detailViewImage"));
    m_image->setFixedSize(LargeIconSize, LargeIconSize);

    m_volumeName = new QLineEdit;
    m_volumeName->setObjectName(QStringLiteral("volumeName"));
    m_volumeName->setReadOnly(true);
    m_volumeName->setFrame(false);
    m_volumeName->setMaxLength(255);
    QFont nameFont = m_volumeName->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.5);
    nameFont.setBold(true);
    m_volumeName->setFont(nameFont);
    m_volumeName->setToolTip(tr("Double-click to rename"));
    // Until a rename begins the name reads as a title, not as a field.
    m_volumeName->setStyleSheet(QStringLiteral("QLineEdit[readOnly=\"true\"] { background: transparent; }"));
    m_volumeName->installEventFilter(this);
    connect(m_volumeName, &QLineEdit::editingFinished, this, [this] { endRenaming(true); });

    auto *rename = new QToolButton;
    rename->setObjectName(QStringLiteral("renameButton"));
    rename->setIcon(QIcon(QStringLiteral(":/icons/RenamePenIcon.svg")));
    rename->setAutoRaise(true);
    rename->setToolTip(tr("Rename"));
    connect(rename, &QToolButton::clicked, this, &KVDetailPaneView::beginRenaming);

    m_mountPointInfo = greyLabel<KVElidedLabel>();
    m_mountPointInfo->setObjectName(QStringLiteral("mountPointInfo"));
    m_mountPointInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_locationOrStatusLabel = greyLabel();
    m_locationOrStatusLabel->setObjectName(QStringLiteral("locationOrStatusLabel"));
    m_locationOrStatusInfo = new KVElidedLabel;
    m_locationOrStatusInfo->setObjectName(QStringLiteral("locationOrStatusInfo"));
    m_locationOrStatusInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_spaceBar = new KVCustomProgressIndicatorView;
    m_spaceBar->setObjectName(QStringLiteral("spaceProgressBar"));
    m_spaceBar->setHeight(8);
    m_spaceBar->setMinimumWidth(220);
    m_spaceInfo = greyLabel();
    m_spaceInfo->setObjectName(QStringLiteral("spaceInfo"));

    m_revealButton = new QPushButton(tr("Show in Files"));
    m_revealButton->setObjectName(QStringLiteral("revealInFinderButton"));
    connect(m_revealButton, &QPushButton::clicked, this, &KVDetailPaneView::revealRequested);
    m_moreInfoButton = new QToolButton;
    m_moreInfoButton->setObjectName(QStringLiteral("moreInfoButton"));
    m_moreInfoButton->setText(tr("More Info"));
    connect(m_moreInfoButton, &QToolButton::clicked, this, &KVDetailPaneView::showMoreInfo);

    m_moreInfoPopover = new KVPopover(KVPopover::Behaviour::Transient, this);
    m_moreInfoPopover->setObjectName(QStringLiteral("moreInfoPopOver"));
    m_moreInfoText = new QLabel;
    m_moreInfoText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_moreInfoPopover->setContent(m_moreInfoText);

    m_actionMenu = new KVActionMenuView;
    connect(m_actionMenu, &KVActionMenuView::commandChosen, this, &KVDetailPaneView::commandChosen);

    auto *nameRow = new QHBoxLayout;
    nameRow->setSpacing(2);
    nameRow->addWidget(m_volumeName, 1);
    nameRow->addWidget(rename);

    auto *facts = new QGridLayout;
    facts->setHorizontalSpacing(8);
    m_locationOrStatusLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    facts->addWidget(m_locationOrStatusLabel, 0, 0);
    facts->addWidget(m_locationOrStatusInfo, 0, 1);
    facts->setColumnStretch(1, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_revealButton);
    buttons->addWidget(m_moreInfoButton);
    buttons->addStretch(1);

    auto *text = new QVBoxLayout;
    text->setSpacing(6);
    text->addLayout(nameRow);
    text->addWidget(m_mountPointInfo);
    text->addSpacing(6);
    text->addLayout(facts);
    text->addSpacing(6);
    text->addWidget(m_spaceBar);
    text->addWidget(m_spaceInfo);
    text->addSpacing(6);
    text->addLayout(buttons);

    auto *top = new QHBoxLayout;
    top->setSpacing(20);
    top->addWidget(m_image, 0, Qt::AlignTop);
    top->addLayout(text, 1);

    auto *layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addStretch(1);
    return view;
}

void KVDetailPaneView::showNoSelection(bool welcomeTip)
{
    m_moreInfoPopover->hide();
    m_actionMenu->setActive(false);
    m_volumeInfoView->hide();
    m_tipView->setVisible(welcomeTip);
    m_placeholderView->setVisible(!welcomeTip);
}

void KVDetailPaneView::showVolume(const KVVolumeItem &volume)
{
    m_tipView->hide();
    m_placeholderView->hide();
    m_volumeInfoView->show();
    m_actionMenu->setActive(!volume.isSystemPartition());

    m_shownName = KVDisplayText::singleLine(volume.name());
    if (!m_renaming)
        showName();
    const auto shownPath = [](const QString &path) { return KVDisplayText::singleLine(abbreviatingHome(path)); };
    m_mountPointInfo->setFullText(shownPath(volume.mountPoint()));

    const KVVolumeKind kind = volume.type();
    if (kind == KVVolumeKind::DiskImage) {
        m_image->setPixmap(QIcon(QStringLiteral(":/icons/DiskImageMountedIconLarge.svg")).pixmap(LargeIconSize, LargeIconSize));
        m_locationOrStatusLabel->setText(tr("Location:"));
        m_locationOrStatusInfo->setFullText(shownPath(volume.location()));
    } else if (kind == KVVolumeKind::Disk) {
        m_image->setPixmap(QIcon(QStringLiteral(":/icons/DiskIconLarge.svg")).pixmap(LargeIconSize, LargeIconSize));
        m_locationOrStatusLabel->setText(tr("Status:"));
        m_locationOrStatusInfo->setFullText(KVDisplayText::singleLine(volume.statusVisible()));
    }
    m_actionMenu->showCommandsFor(kind);

    const bool sized = volume.totalSize() > 0;
    m_spaceBar->setVisible(sized);
    m_spaceInfo->setVisible(sized);
    if (sized) {
        m_spaceBar->setMinimum(0);
        m_spaceBar->setMaximum(double(volume.totalSize()));
        m_spaceBar->setValue(double(volume.usedSpace()));
        m_spaceInfo->setText(tr("%1 used of %2, %3 free")
                                 .arg(byteCount(volume.usedSpace()), byteCount(volume.totalSize()),
                                      byteCount(volume.freeSpace())));
    }
    m_revealButton->setEnabled(!volume.mountPoint().isEmpty());
    fillMoreInfo(volume);
}

void KVDetailPaneView::fillMoreInfo(const KVVolumeItem &volume)
{
    QList<QPair<QString, QString>> rows;
    auto add = [&rows](const QString &label, const QString &value) {
        if (!value.isEmpty())
            rows.append({label, KVDisplayText::shortened(value, KVDisplayText::MaximumPathLength)});
    };
    add(tr("Kind:"), volume.type() == KVVolumeKind::DiskImage ? tr("Encrypted disk image") : tr("Encrypted disk"));
    add(tr("File system:"), volume.fileSystemName());
    add(tr("Device:"), volume.diskIdentifier());
    add(tr("Volume UUID:"), volume.uuid());
    add(tr("Logical volume:"), volume.logicalVolumeUUID());
    if (volume.totalSize() > 0) {
        add(tr("Capacity:"), byteCount(volume.totalSize()));
        add(tr("Available:"), byteCount(volume.freeSpace()));
        add(tr("Used:"), tr("%1 (%2)").arg(byteCount(volume.usedSpace()), volume.usedSpacePercentage()));
    }
    add(tr("Access:"), volume.readOnly() ? tr("Read only") : tr("Read and write"));

    QString html = QStringLiteral("<table cellspacing=\"3\">");
    for (const auto &[label, value] : rows)
        html += QStringLiteral("<tr><td align=\"right\"><b>%1</b></td><td>%2</td></tr>")
                    .arg(label.toHtmlEscaped(), value.toHtmlEscaped());
    m_moreInfoText->setText(html + QStringLiteral("</table>"));
}

void KVDetailPaneView::showMoreInfo()
{
    m_moreInfoPopover->showRelativeTo(m_moreInfoButton, Qt::BottomEdge);
}

void KVDetailPaneView::beginRenaming()
{
    if (m_volumeInfoView->isHidden())
        return;
    m_renaming = true;
    // The whole name is edited, not the shortened title.
    m_volumeName->setText(m_shownName);
    m_nameBeforeRenaming = m_volumeName->text();
    m_volumeName->setReadOnly(false);
    m_volumeName->style()->polish(m_volumeName);
    m_volumeName->setFocus(Qt::OtherFocusReason);
    m_volumeName->selectAll();
}

void KVDetailPaneView::endRenaming(bool commit)
{
    if (!m_renaming)
        return;
    m_renaming = false;
    const QString newName = m_volumeName->text();
    m_volumeName->setReadOnly(true);
    m_volumeName->style()->polish(m_volumeName);
    m_volumeName->clear();
    // A name left as it was renames nothing, also when what was shown of it
    // differs from the name itself.
    if (commit && newName != m_nameBeforeRenaming)
        Q_EMIT renameFinished(newName);
    else
        Q_EMIT renameCancelled();
}

bool KVDetailPaneView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_volumeName) {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape
            && m_renaming) {
            endRenaming(false);
            return true;
        }
        if (event->type() == QEvent::MouseButtonDblClick && !m_renaming) {
            beginRenaming();
            return true;
        }
        if ((event->type() == QEvent::Resize || event->type() == QEvent::Show) && !m_renaming)
            showName();
        // Leaving the field ends the rename even when nothing was typed.
        if (event->type() == QEvent::FocusOut && m_renaming)
            endRenaming(true);
    }
    return QWidget::eventFilter(watched, event);
}

void KVDetailPaneView::showName()
{
    // Before it is laid out the field has no width of its own to go by.
    const int room = m_volumeName->contentsRect().width() - FieldTextMargins;
    m_volumeName->setText(m_volumeName->isVisible() && room > 0
                              ? m_volumeName->fontMetrics().elidedText(m_shownName, Qt::ElideMiddle, room)
                              : KVDisplayText::shortened(m_shownName));
    m_volumeName->setCursorPosition(0);
}

QString KVDetailPaneView::abbreviatingHome(const QString &path)
{
    const QString home = QDir::homePath();
    if (path == home)
        return QStringLiteral("~");
    if (home != u"/" && path.startsWith(home + u'/'))
        return u'~' + path.mid(home.size());
    return path;
}
