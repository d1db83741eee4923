#include "KVHelpPopovers.h"

#include "controls/KVPopover.h"
#include "ui_HelpPopovers.h"

#include <QLabel>

#include <algorithm>

namespace {

constexpr int NoteWidth = 210;

} // namespace

KVHelpPopovers::KVHelpPopovers(QWidget *window)
    : QObject(window)
    , m_ui(std::make_unique<Ui::HelpPopovers>())
{
    // The form only carries the texts; each goes into a note of its own.
    auto *form = new QWidget;
    m_ui->setupUi(form);
    const std::array<QLabel *, NoteCount> texts{m_ui->favouritesHelp, m_ui->actionMenuHelp, m_ui->createHelp,
                                                m_ui->dropAreaHelp};
    for (int index = 0; index < NoteCount; ++index) {
        auto *note = new KVPopover(KVPopover::Behaviour::Persistent, window);
        note->setObjectName(texts[index]->objectName() + QStringLiteral("PopOver"));
        texts[index]->setFixedWidth(NoteWidth);
        note->setContent(texts[index]);
        m_notes[index] = note;
    }
    delete form;
}

KVHelpPopovers::~KVHelpPopovers() = default;

bool KVHelpPopovers::isAnyShown() const
{
    return std::any_of(m_notes.cbegin(), m_notes.cend(), [](const KVPopover *note) { return !note->isHidden(); });
}

void KVHelpPopovers::toggle(const Anchors &anchors)
{
    if (isAnyShown()) {
        for (KVPopover *note : m_notes)
            note->hide();
        return;
    }
    // The commands run along the foot of the pane and the drop area sits at
    // the foot of the sidebar: their notes stand above them, clear of each other.
    static constexpr std::array<Qt::Edge, NoteCount> edges{Qt::RightEdge, Qt::TopEdge, Qt::BottomEdge,
                                                           Qt::TopEdge};
    for (int index = 0; index < NoteCount; ++index)
        m_notes[index]->showRelativeTo(anchors[index], edges[index]);
}
