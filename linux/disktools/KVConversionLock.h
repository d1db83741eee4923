#pragma once

#include <QString>

#include <sys/types.h>

namespace kvlinux {

// Held while a partition is being converted, by the command that starts the
// conversion and then by the process that carries it out, so that a second
// conversion of the same partition is refused.
class KVConversionLock
{
public:
    KVConversionLock(const QString &directory, dev_t partition);
    ~KVConversionLock();
    KVConversionLock(const KVConversionLock &) = delete;
    KVConversionLock &operator=(const KVConversionLock &) = delete;

    bool tryAcquire();
    bool acquire(); // waits
    void release();

private:
    bool lock(bool wait);

    QString m_path;
    int m_fd = -1;
};

} // namespace kvlinux
