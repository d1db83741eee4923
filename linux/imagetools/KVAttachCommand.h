#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

class KVLuksImage;

// hdiutil attach -verbose -stdinpass -puppetstrings IMAGE [-readonly]
//                [-autoopen] [-mountroot DIR]
class KVAttachCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

    // Attaches an image whose volume key is at hand (create -attach has it
    // already) and prints its devices as hdiutil does.
    KVImageResult attachUnlocked(const KVLuksImage &image, const KVSecureBytes &volumeKey,
                                 bool readOnly, const QString &mountRoot, KVAttachment &record);

    // Where volumes go without -mountroot: /media/root for root, as udisks
    // would mount them, and ~/Volumes for everybody else.
    static QString defaultMountRoot();

    void printFailure(const KVImageError &error) const;

private:
    void printDevices(const KVAttachment &record) const;
    static void openInFileManager(const QString &folder);
};

} // namespace kvlinux
