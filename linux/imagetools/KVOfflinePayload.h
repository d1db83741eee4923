#pragma once

#include "KVImageError.h"
#include "KVPayloadSession.h"

namespace kvlinux {

class KVAttachmentRegistry;
class KVLuksImage;
class KVSecureBytes;

// The decrypted payload of an image that is not attached, served for as long
// as one run works on it (mkfs, e2fsck, resize2fs, dumpe2fs), in a private
// session directory that is removed again afterwards.
class KVOfflinePayload
{
public:
    KVOfflinePayload(const KVAttachmentRegistry &registry, QString imagefs);
    ~KVOfflinePayload();
    KVOfflinePayload(const KVOfflinePayload &) = delete;
    KVOfflinePayload &operator=(const KVOfflinePayload &) = delete;

    // TryAgain when someone else serves the image: it is attached.
    KVImageResult open(const KVLuksImage &image, const KVSecureBytes &volumeKey, bool readOnly);
    QString path() const { return m_session.payloadPath(); }
    // Ends the session once everything is written back to the image.
    KVImageResult close();

private:
    const KVAttachmentRegistry &m_registry;
    QString m_imagefs;
    QString m_directory;
    KVPayloadSession m_session;
};

} // namespace kvlinux
