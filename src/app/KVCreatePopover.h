#pragma once

#include "controls/KVPopover.h"

#include <memory>

namespace Ui {
class CreatePopover;
}

// What the toolbar's create button offers: a new disk image, an encrypted
// disk, or an encrypted disk mounted. Choosing one closes the popover.
class KVCreatePopover : public KVPopover
{
    Q_OBJECT

public:
    explicit KVCreatePopover(QWidget *parent);
    ~KVCreatePopover() override;

Q_SIGNALS:
    void createDiskImageChosen();
    void encryptDiskChosen();
    void mountDiskChosen();

private:
    std::unique_ptr<Ui::CreatePopover> m_ui;
};
