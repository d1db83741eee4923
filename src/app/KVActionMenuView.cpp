#include "KVActionMenuView.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

namespace {

const char *const IdentifierProperty = "identifier";

// A slot of the menu: the button's title and the identifier of its command;
// a null title hides the button.
struct Command
{
    const char *title;
    const char *identifier;
};

struct Layout
{
    std::array<Command, KVActionMenuView::ButtonCount> commands;
    std::array<bool, KVActionMenuView::ButtonCount - 1> separators;
};

// The titles are translated when they are shown.
constexpr Layout ImageLayout{{{{QT_TRANSLATE_NOOP("KVActionMenuView", "Change Password"), "changePW"},
                               {QT_TRANSLATE_NOOP("KVActionMenuView", "Erase Key"), "eraseKey"},
                               {QT_TRANSLATE_NOOP("KVActionMenuView", "Resize"), "resize"},
                               {QT_TRANSLATE_NOOP("KVActionMenuView", "Compact"), "compact"}}},
                             {true, true, true}};
constexpr Layout DiskLayout{{{{nullptr, nullptr},
                              {QT_TRANSLATE_NOOP("KVActionMenuView", "Change Password"), "changePW"},
                              {QT_TRANSLATE_NOOP("KVActionMenuView", "Decrypt"), "decrypt"},
                              {nullptr, nullptr}}},
                            {false, true, false}};

} // namespace

KVActionMenuView::KVActionMenuView(QWidget *parent)
    : QWidget(parent)
    , m_expandImage(new QLabel)
{
    setObjectName(QStringLiteral("actionMenuView"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    m_expandImage->setObjectName(QStringLiteral("amExpandImage"));
    m_expandImage->setPixmap(QIcon(QStringLiteral(":/icons/ActionMenuExpand.svg")).pixmap(12, 12));
    layout->addWidget(m_expandImage);
    for (int index = 0; index < ButtonCount; ++index) {
        auto *button = new QPushButton;
        button->setObjectName(QStringLiteral("amButton%1").arg(index));
        button->setFlat(true);
        button->setCursor(Qt::PointingHandCursor);
        connect(button, &QPushButton::clicked, this, [this, button] { Q_EMIT commandChosen(identifier(button)); });
        layout->addWidget(button);
        m_buttons[index] = button;
        if (index + 1 < ButtonCount) {
            auto *separator = new QFrame;
            separator->setObjectName(QStringLiteral("amSeparator%1").arg(index));
            separator->setFrameShape(QFrame::VLine);
            separator->setFrameShadow(QFrame::Plain);
            separator->setFixedHeight(14);
            layout->addWidget(separator);
            m_separators[index] = separator;
        }
    }
    layout->addStretch(1);
    showCommandsFor(KVVolumeKind::DiskImage);
}

void KVActionMenuView::showCommandsFor(KVVolumeKind kind)
{
    if (kind != KVVolumeKind::DiskImage && kind != KVVolumeKind::Disk)
        return;
    const Layout &layout = kind == KVVolumeKind::DiskImage ? ImageLayout : DiskLayout;
    for (int index = 0; index < ButtonCount; ++index) {
        const Command &command = layout.commands.at(index);
        QPushButton *button = m_buttons.at(index);
        button->setVisible(command.title != nullptr);
        button->setText(command.title ? tr(command.title) : QString());
        button->setProperty(IdentifierProperty, QString::fromLatin1(command.identifier));
    }
    for (int index = 0; index < ButtonCount - 1; ++index)
        m_separators.at(index)->setVisible(layout.separators.at(index));
}

void KVActionMenuView::setActive(bool active)
{
    m_active = active;
    for (QPushButton *button : m_buttons)
        button->setEnabled(active);
}

QString KVActionMenuView::identifier(const QPushButton *button)
{
    return button->property(IdentifierProperty).toString();
}
