#pragma once

#include "model/KVVolumeKind.h"

#include <QWidget>

#include <array>

class QFrame;
class QLabel;
class QPushButton;

// The row of commands for the selected volume: up to four buttons with
// separators between them. Which buttons show, and what each one is, depends
// on the kind of volume; a button reports the identifier of its command.
class KVActionMenuView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int ButtonCount = 4;

    explicit KVActionMenuView(QWidget *parent = nullptr);

    // Images offer four commands, disks two; any other kind leaves the
    // buttons as they are.
    void showCommandsFor(KVVolumeKind kind);
    // An inactive menu shows its buttons but none of them can be pressed.
    void setActive(bool active);
    bool isActive() const { return m_active; }

    QPushButton *button(int index) const { return m_buttons.at(index); }
    // The command a button stands for, as the dispatcher knows it.
    static QString identifier(const QPushButton *button);

Q_SIGNALS:
    void commandChosen(const QString &identifier);

private:
    std::array<QPushButton *, ButtonCount> m_buttons{};
    std::array<QFrame *, ButtonCount - 1> m_separators{};
    QLabel *m_expandImage;
    bool m_active = true;
};
