#include "KVConversionLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace kvlinux {

KVConversionLock::KVConversionLock(const QString &directory, dev_t partition)
    : m_path(QStringLiteral("%1/convert-%2-%3.lock").arg(directory).arg(major(partition)).arg(minor(partition)))
{
}

KVConversionLock::~KVConversionLock()
{
    release();
}

bool KVConversionLock::lock(bool wait)
{
    if (m_fd < 0)
        m_fd = open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_fd < 0)
        return false;
    int r;
    while ((r = flock(m_fd, LOCK_EX | (wait ? 0 : LOCK_NB))) != 0 && errno == EINTR) {
    }
    return r == 0;
}

bool KVConversionLock::tryAcquire()
{
    return lock(false);
}

bool KVConversionLock::acquire()
{
    return lock(true);
}

void KVConversionLock::release()
{
    if (m_fd >= 0)
        close(m_fd);
    m_fd = -1;
}

} // namespace kvlinux
