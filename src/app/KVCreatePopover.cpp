#include "KVCreatePopover.h"

#include "ui_CreatePopover.h"

#include <QCommandLinkButton>


KVCreatePopover::KVCreatePopover(QWidget *parent)
    : KVPopover(Behaviour::Transient, parent)
    , m_ui(std::make_unique<Ui::CreatePopover>())
{
    setObjectName(QStringLiteral("createToolbarPopOver"));
    auto *content = new QWidget;
    m_ui->setupUi(content);
    content->setMinimumWidth(320);
    for (QCommandLinkButton *button : {m_ui->createImageButton, m_ui->encryptDiskButton, m_ui->mountDiskButton})
        button->setIconSize(QSize(32, 32));
    setContent(content);

    const auto choose = [this](QAbstractButton *button, void (KVCreatePopover::*chosen)()) {
        connect(button, &QAbstractButton::clicked, this, [this, chosen] {
            hide();
            Q_EMIT(this->*chosen)();
        });
    };
    choose(m_ui->createImageButton, &KVCreatePopover::createDiskImageChosen);
    choose(m_ui->encryptDiskButton, &KVCreatePopover::encryptDiskChosen);
    choose(m_ui->mountDiskButton, &KVCreatePopover::mountDiskChosen);
}

KVCreatePopover::~KVCreatePopover() = default;
