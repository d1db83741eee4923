#pragma once

#include <QObject>

#include <array>
#include <memory>

class KVPopover;
class QWidget;

namespace Ui {
class HelpPopovers;
}

// Four notes that explain the window's parts, shown beside them all at once:
// the favourites-and-mounted list, the commands of the selected volume, the
// create button and the drop area. They come and go together.
class KVHelpPopovers : public QObject
{
    Q_OBJECT

public:
    enum Note { Favourites, ActionMenu, Create, DropArea, NoteCount };

    // The parts of the window that the notes point at, in the order of Note.
    using Anchors = std::array<QWidget *, NoteCount>;

    explicit KVHelpPopovers(QWidget *window);
    ~KVHelpPopovers() override;

    // Closes all notes when any is shown, otherwise shows all four.
    void toggle(const Anchors &anchors);
    bool isAnyShown() const;
    KVPopover *note(Note which) const { return m_notes.at(which); }

private:
    std::unique_ptr<Ui::HelpPopovers> m_ui;
    std::array<KVPopover *, NoteCount> m_notes{};
};
