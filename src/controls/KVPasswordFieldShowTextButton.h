#pragma once

#include <QAbstractButton>
#include <QSvgRenderer>

// The small borderless eye at the right edge of a password field. It never
// takes the keyboard focus, so clicking it leaves the caret where it was, and
// it draws its artwork only: no bevel, no highlight while pressed.
class KVPasswordFieldShowTextButton : public QAbstractButton
{
    Q_OBJECT

public:
    explicit KVPasswordFieldShowTextButton(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QSvgRenderer m_artwork;
};
