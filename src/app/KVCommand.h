#pragma once

// Everything the menu bar and the toolbar can ask of the application.
enum class KVCommand {
    // Creating and opening.
    CreateDiskImage,
    MountDiskImage,
    EncryptDisk,
    MountDisk,
    AddFavouriteFolder,
    Preferences,
    Quit,
    // The selected volume.
    EditVolumeName,
    RevealInFinder,
    OpenAddToFavouritePullDown,
    ChangePassword,
    EraseKeys,
    Resize,
    Compact,
    Decrypt,
    UnmountCurrentVolume,
    UnmountAll,
    // Help.
    ShowTips,
    ShowHelp,
    ShowEncryptionHelp,
    ShowTroubleshootingHelp,
    About,
};
