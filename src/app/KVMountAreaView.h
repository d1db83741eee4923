#pragma once

#include <QWidget>

// The framed place where a disk image can be dropped to be mounted. It lights
// up while an acceptable file is dragged over the window.
class KVMountAreaView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool active READ isActive WRITE setActive)

public:
    explicit KVMountAreaView(QWidget *parent = nullptr);

    bool isActive() const { return m_active; }
    void setActive(bool active);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_active = false;
};
