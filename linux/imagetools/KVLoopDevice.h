#pragma once

#include "KVImageError.h"

#include <QString>

namespace kvlinux {

// A loop device over a payload file, configured in one step (LOOP_CONFIGURE):
// 4096-byte blocks, direct I/O (no second page cache) and autoclear, so the
// device disappears by itself when its last user (the mounted file system)
// lets go. Until then this object holds it open.
class KVLoopDevice
{
public:
    KVLoopDevice() = default;
    // Lets go of the device; with nobody else holding it, it goes away.
    ~KVLoopDevice();
    KVLoopDevice(const KVLoopDevice &) = delete;
    KVLoopDevice &operator=(const KVLoopDevice &) = delete;

    KVImageResult attach(const QString &file, bool readOnly);
    const QString &path() const { return m_path; }

    // The file behind /dev/loopN, from sysfs; empty when the device is unused.
    static QString backingFile(const QString &device);
    // Unbinds a device whose file system is already gone (crash clean-up).
    static void detach(const QString &device);

private:
    int m_fd = -1;
    QString m_path;
};

} // namespace kvlinux
