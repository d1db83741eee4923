#pragma once

#include "KVImageError.h"
#include "KVLuksImage.h"
#include "KVProcessIdentity.h"

#include <QString>

namespace kvlinux {

class KVSecureBytes;

// One run of imagefs, the daemon that serves an image's decrypted payload as
// a file in a FUSE mount. The session keeps a control connection to it: while
// the connection is open the daemon stays; once it is closed the daemon stays
// only as long as the payload is open (by a loop device, fuse2fs, mkfs...).
class KVPayloadSession
{
public:
    struct Launch
    {
        QString helper;    // path of the imagefs program
        QString imagePath;
        KVImageGeometry geometry;
        bool readOnly = false;
        bool directIo = false; // the image bypasses the page cache
        QString directory; // empty directory to mount on
        QString name;      // file system name shown in the mount table
    };

    KVPayloadSession() = default;
    ~KVPayloadSession();
    KVPayloadSession(const KVPayloadSession &) = delete;
    KVPayloadSession &operator=(const KVPayloadSession &) = delete;

    // Starts the daemon and hands it the volume key over the control
    // connection. Busy when the image is served already (the daemon holds a
    // lock on it), so two writers can never meet.
    KVImageResult start(const Launch &launch, const KVSecureBytes &volumeKey);

    bool isRunning() const { return m_control >= 0; }
    QString payloadPath() const;
    const KVProcessIdentity &daemon() const { return m_daemon; }

    // Lets the daemon go on alone: it ends when the payload is closed for good.
    void leaveRunning();
    // Ends the session and waits until the daemon has written everything back.
    KVImageResult finish();

private:
    void reap();

    int m_control = -1;
    pid_t m_pid = 0;
    KVProcessIdentity m_daemon;
    QString m_directory;
};

} // namespace kvlinux
