#pragma once

#include <QFrame>
#include <QPointer>

class QVBoxLayout;

// A bubble that points at the control it belongs to.
//
// A transient popover is a pop-up window: it takes the input until a click
// outside closes it, as a menu does. A persistent one lies over its window
// like a note and stays until it is closed, so that several can be shown at
// once (help notes beside the parts they explain).
class KVPopover : public QFrame
{
    Q_OBJECT

public:
    enum class Behaviour { Transient, Persistent };

    KVPopover(Behaviour behaviour, QWidget *parent);

    Behaviour behaviour() const { return m_behaviour; }
    // What the bubble holds; it is laid out inside the bubble, clear of the arrow.
    void setContent(QWidget *content);
    // The popover lies beside this edge of the anchor and points at it.
    void showRelativeTo(QWidget *anchor, Qt::Edge edge);
    Qt::Edge edge() const { return m_edge; }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();
    // Where the arrow's tip touches the anchor, in the popover's parent.
    QPoint anchorPoint() const;

    Behaviour m_behaviour;
    QVBoxLayout *m_layout;
    Qt::Edge m_edge = Qt::BottomEdge;
    QPointer<QWidget> m_anchor;
    // How far along its side the arrow sits, once the bubble was kept on screen.
    int m_arrowOffset = 0;
};
