#pragma once

#include <QWidget>

// A plain area that says when the pointer comes in and goes out, so that its
// owner can show what the area offers only while it is pointed at.
class KVHoverArea : public QWidget
{
    Q_OBJECT

public:
    explicit KVHoverArea(QWidget *parent = nullptr);

Q_SIGNALS:
    void mouseDidEnter();
    void mouseDidExit();

protected:
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
