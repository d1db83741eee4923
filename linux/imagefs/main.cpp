// imagefs: serves the decrypted payload of one LUKS2 image as a file in a
// FUSE mount, for a loop device (as root) or fuse2fs (as an ordinary user).
//
// imagefs --image PATH --offset BYTES --key-size BYTES --sector-size BYTES
//         --mountpoint DIR --name NAME --control-fd FD [--read-only] [--direct-io]
//
// The volume key arrives on the control connection (never in argv, the
// environment or a file); the answer is "OK" once mounted or "ERR <errno>".

#include "KVImagefs.h"
#include "KVImagefsOptions.h"
#include "KVKeyMemory.h"
#include "KVPayloadViews.h"
#include "KVSecureBytes.h"
#include "KVSectorCipher.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace kvlinux;

namespace {

constexpr size_t maxRequest = 1 << 20;
// Room for the key schedules of about 25 ciphers (2.5 KiB each): one per
// worker thread's view and the original, with room to spare, well within the
// 8 MiB that an ordinary user may lock by default.
constexpr size_t keyArenaSize = 64 * 1024;

// Nothing of this process may end up on disk: no core dumps, no ptrace by
// other processes of the user. As root it may also lock all of its memory and
// write back on behalf of the kernel (it serves a loop device).
void harden()
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    prctl(PR_SET_IO_FLUSHER, 1, 0, 0, 0);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
}

bool readExactly(int fd, uint8_t *into, size_t size)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t n = read(fd, into + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += size_t(n);
    }
    return true;
}

void answer(int fd, int error)
{
    const std::string text = error == 0 ? "OK\n" : "ERR " + std::to_string(error) + "\n";
    (void)!write(fd, text.data(), text.size());
}

// While we serve the image nobody else may write it: a second attach, a
// resize or a compact would corrupt it. Open-file-description locks stay with
// this process's descriptor and do not mix with libcryptsetup's flock().
bool lockImage(int fd, bool readOnly)
{
    struct flock lock{};
    lock.l_type = readOnly ? F_RDLCK : F_WRLCK;
    lock.l_whence = SEEK_SET;
    return fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

// With --direct-io the image bypasses the page cache: the file system above
// caches the plaintext already, a second copy of the ciphertext would only
// cost memory and a copy per request. Where the image's file system cannot
// do direct I/O, the cache it is.
int openImage(const KVImagefsOptions &options)
{
    const int access = (options.readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    if (options.directIo) {
        const int fd = open(options.image.c_str(), access | O_DIRECT);
        if (fd >= 0 || errno != EINVAL)
            return fd;
    }
    return open(options.image.c_str(), access);
}

} // namespace

int main(int argc, char **argv)
{
    const bool keyMemoryLocked = KVKeyMemory::install(keyArenaSize);
    harden();
    const std::optional<KVImagefsOptions> options =
        KVImagefsOptions::parse(std::vector<std::string>(argv + 1, argv + argc));
    if (!options)
        return 2;
    const int control = options->controlFd;
    close_range(3, unsigned(control) - 1, 0);
    close_range(unsigned(control) + 1, ~0U, 0);

    KVSecureBytes key(options->keySize);
    if (!readExactly(control, key.data(), key.size()))
        return 3;
    // The key is never kept in memory that could be swapped out or dumped.
    if (!keyMemoryLocked || !key.isLocked()) {
        answer(control, ENOMEM);
        return 1;
    }

    const int image = openImage(*options);
    if (image < 0) {
        answer(control, errno);
        return 1;
    }
    if (!lockImage(image, options->readOnly)) {
        answer(control, EBUSY);
        return 1;
    }

    auto cipher = std::make_unique<KVSectorCipher>(key.data(), key.size(), options->sectorSize);
    key = KVSecureBytes(); // the cipher holds the key schedule now; wipe ours
    if (!cipher->isValid()) {
        answer(control, EINVAL);
        return 1;
    }
    KVPayloadViews payload(image, options->offset, std::move(cipher), maxRequest);
    if (geteuid() == 0) {
        // Worker threads need little stack; all of it is locked below.
        setenv("FUSE_THREAD_STACK", "262144", 1);
        mlockall(MCL_CURRENT | MCL_FUTURE);
    }

    KVImagefs imagefs(payload, options->readOnly);
    if (const int err = imagefs.mount(options->mountPoint, options->name)) {
        answer(control, -err);
        return 1;
    }
    answer(control, 0);
    imagefs.serve(control);
    payload.sync();
    return 0;
}
