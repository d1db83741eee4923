#pragma once

#include "KVCommand.h"
#include "model/KVVolumeItem.h"

// Which commands may be chosen now. A command that acts on the selected
// volume needs the kind of volume it is made for; the first rule that refuses
// decides, and a command no rule refuses is always available. Unmounting
// everything needs something mounted.
class KVCommandValidation
{
public:
    KVCommandValidation() = delete;

    static bool isEnabled(KVCommand command, const KVVolumeItemPtr &selection, bool anyVolumeMounted);
};
