#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

class KVLuksImage;

// hdiutil resize -size -stdinpass 2048m IMAGE   (grow or shrink, detached only)
// hdiutil resize -limits -stdinpass -plist IMAGE
class KVResizeCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

    // The largest size we offer: ext4 with 4 KiB blocks goes much further,
    // but 16 TiB is beyond any sparse image one keeps in a file.
    static constexpr quint64 maximumPayload = quint64(1) << 44;

private:
    struct Limits
    {
        quint64 minimum = 0;
        quint64 current = 0;
        quint64 maximum = 0;
    };
    KVImageResult limits(const QString &imagePath, Limits &limits);
    KVImageResult resize(const QString &imagePath, quint64 newSize);
    KVImageResult grow(const KVLuksImage &image, const KVSecureBytes &volumeKey, quint64 current,
                       quint64 newSize);
    KVImageResult shrink(const KVLuksImage &image, const KVSecureBytes &volumeKey, quint64 newSize);
    static KVImageResult ensureRoomFor(const QString &payload, quint64 blocks);
    void printLimits(const Limits &limits, bool plist) const;
};

} // namespace kvlinux
