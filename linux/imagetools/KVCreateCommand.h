#pragma once

#include "KVHdiutilCommand.h"

namespace kvlinux {

// hdiutil create -verbose -stdinpass -puppetstrings -fs "Journaled HFS+"
//   -type SPARSE [-size Nm] [-volname V] -encryption AES-128|AES-256 [-attach]
//   PATH
// writes PATH.sparseimage: a LUKS2 image with ext4 inside (Linux's journaled
// file system stands in for Journaled HFS+).
class KVCreateCommand : public KVHdiutilCommand
{
public:
    using KVHdiutilCommand::KVHdiutilCommand;

    int run(const KVHdiutilArguments &arguments) override;

    static constexpr quint64 minimumPayload = 1 << 20;

private:
    struct Request
    {
        QString target;
        quint64 payloadSize = 0;
        int volumeKeySize = 0;
        QString volumeName;
    };
    std::optional<KVImageError> validate(const KVHdiutilArguments &arguments, Request &request) const;
    // Writes the image under a temporary name and moves it into place only
    // when it is complete, so that a failure never leaves a half image.
    KVImageResult create(const Request &request, const KVSecureBytes &password,
                         KVSecureBytes &volumeKey);
    KVImageResult formatPayload(const QString &image, const KVSecureBytes &volumeKey,
                                const QString &volumeName);
    void printFailure(const KVImageError &error) const;
};

} // namespace kvlinux
