#include "KVCommandValidation.h"

bool KVCommandValidation::isEnabled(KVCommand command, const KVVolumeItemPtr &selection, bool anyVolumeMounted)
{
    const bool isImage = selection && selection->type() == KVVolumeKind::DiskImage;
    const bool isDisk = selection && selection->type() == KVVolumeKind::Disk;
    const bool isOwnVolume = selection && !selection->isSystemPartition();
    switch (command) {
    case KVCommand::OpenAddToFavouritePullDown:
    case KVCommand::EraseKeys:
    case KVCommand::Resize:
    case KVCommand::Compact:
        return isImage;
    case KVCommand::UnmountCurrentVolume:
    case KVCommand::ChangePassword:
        return isOwnVolume;
    case KVCommand::Decrypt:
        return isDisk && isOwnVolume;
    case KVCommand::UnmountAll:
        return anyVolumeMounted;
    default:
        return true;
    }
}
