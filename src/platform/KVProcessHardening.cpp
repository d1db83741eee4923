#include "KVProcessHardening.h"

#include <cerrno>
#include <cstring>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace KVProcessHardening {

namespace {

KVAppError systemError(const char *step)
{
    const int error = errno;
    return KVAppError(NSCocoaErrorDomain, error, QString::fromLatin1(step), QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace

KVOptionalError apply()
{
    const rlimit noCore{0, 0};
    if (::setrlimit(RLIMIT_CORE, &noCore) != 0)
        return systemError("setrlimit(RLIMIT_CORE)");
    if (::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0)
        return systemError("prctl(PR_SET_DUMPABLE)");
    return std::nullopt;
}

} // namespace KVProcessHardening
