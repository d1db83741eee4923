#define FUSE_USE_VERSION FUSE_MAKE_VERSION(3, 14)
#include "KVImagefs.h"

#include "KVPayloadViews.h"

#include <cerrno>
#include <cstring>
#include <fuse3/fuse_lowlevel.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace kvlinux {

namespace {

constexpr fuse_ino_t payloadIno = 2;
constexpr double attributeTimeout = 1.0;
constexpr unsigned maxThreads = 4;

KVImagefs &self(fuse_req_t req)
{
    return *static_cast<KVImagefs *>(fuse_req_userdata(req));
}

} // namespace

// The low-level operations, a friend of KVImagefs so that they can reach it.
struct KVImagefsOperations
{
    static KVImagefs &fs(fuse_req_t req) { return self(req); }

    static void fillAttributes(KVImagefs &fs, fuse_ino_t ino, struct stat &st)
    {
        std::memset(&st, 0, sizeof st);
        st.st_ino = ino;
        st.st_uid = getuid();
        st.st_gid = getgid();
        if (ino == FUSE_ROOT_ID) {
            st.st_mode = S_IFDIR | 0500;
            st.st_nlink = 2;
        } else {
            st.st_mode = S_IFREG | (fs.m_readOnly ? 0400 : 0600);
            st.st_nlink = 1;
            st.st_size = off_t(fs.m_payload.size());
            st.st_blksize = blksize_t(4096);
            st.st_blocks = blkcnt_t(st.st_size / 512);
        }
    }

    static void init(void *, fuse_conn_info *conn)
    {
        // Large requests keep a loop device on top of us fast.
        conn->max_write = 1 << 20;
        conn->max_read = 1 << 20;
        conn->want &= ~unsigned(FUSE_CAP_WRITEBACK_CACHE);
    }

    static void lookup(fuse_req_t req, fuse_ino_t parent, const char *name)
    {
        if (parent != FUSE_ROOT_ID || std::strcmp(name, KVImagefs::payloadName) != 0) {
            fuse_reply_err(req, ENOENT);
            return;
        }
        fuse_entry_param entry{};
        entry.ino = payloadIno;
        entry.attr_timeout = attributeTimeout;
        entry.entry_timeout = attributeTimeout;
        fillAttributes(fs(req), payloadIno, entry.attr);
        fuse_reply_entry(req, &entry);
    }

    static void getattr(fuse_req_t req, fuse_ino_t ino, fuse_file_info *)
    {
        if (ino != FUSE_ROOT_ID && ino != payloadIno) {
            fuse_reply_err(req, ENOENT);
            return;
        }
        struct stat st;
        fillAttributes(fs(req), ino, st);
        fuse_reply_attr(req, &st, attributeTimeout);
    }

    // The payload's size is the image file's business (it changes only while
    // nothing is attached); times and modes are fixed. Tools that try to
    // truncate the payload (resize2fs does on a regular file) are told no.
    static void setattr(fuse_req_t req, fuse_ino_t ino, struct stat *, int toSet, fuse_file_info *)
    {
        if (toSet & FUSE_SET_ATTR_SIZE) {
            fuse_reply_err(req, EPERM);
            return;
        }
        getattr(req, ino, nullptr);
    }

    static void open(fuse_req_t req, fuse_ino_t ino, fuse_file_info *fi)
    {
        if (ino != payloadIno) {
            fuse_reply_err(req, EISDIR);
            return;
        }
        if (fs(req).m_readOnly && (fi->flags & O_ACCMODE) != O_RDONLY) {
            fuse_reply_err(req, EROFS);
            return;
        }
        // A loop device opens with O_DIRECT and bypasses the page cache here
        // (the file system above caches); fuse2fs and e2fsprogs read small
        // blocks and gain from the cache and its read-ahead. Whatever was
        // cached is dropped on every open.
        fi->keep_cache = 0;
        // A reply frees the request: nothing may reach it through req after.
        KVImagefs &imagefs = fs(req);
        imagefs.opened();
        if (fuse_reply_open(req, fi) != 0)
            imagefs.released();
    }

    static void release(fuse_req_t req, fuse_ino_t, fuse_file_info *)
    {
        KVImagefs &imagefs = fs(req);
        fuse_reply_err(req, 0);
        imagefs.released();
    }

    static void read(fuse_req_t req, fuse_ino_t, size_t size, off_t offset, fuse_file_info *)
    {
        // The data stays in the view's buffer until the reply has copied it.
        auto view = fs(req).m_payload.lease();
        const uint8_t *data = nullptr;
        const ssize_t n = view->read(uint64_t(offset), size, &data);
        if (n < 0)
            fuse_reply_err(req, int(-n));
        else
            fuse_reply_buf(req, reinterpret_cast<const char *>(data), size_t(n));
    }

    static void write(fuse_req_t req, fuse_ino_t, const char *buf, size_t size, off_t offset,
                      fuse_file_info *)
    {
        if (fs(req).m_readOnly) {
            fuse_reply_err(req, EROFS);
            return;
        }
        const ssize_t n = fs(req).m_payload.lease()->write(uint64_t(offset),
                                                           reinterpret_cast<const uint8_t *>(buf), size);
        if (n < 0)
            fuse_reply_err(req, int(-n));
        else
            fuse_reply_write(req, size_t(n));
    }

    static void flush(fuse_req_t req, fuse_ino_t, fuse_file_info *)
    {
        fuse_reply_err(req, 0);
    }

    static void fsync(fuse_req_t req, fuse_ino_t, int, fuse_file_info *)
    {
        fuse_reply_err(req, -fs(req).m_payload.sync());
    }

    // A loop device turns discards and write-zeroes alike into hole punches,
    // so both become encrypted zeros (see KVPayloadFile::zero). Plain
    // preallocation inside the payload has nothing to do.
    static void fallocate(fuse_req_t req, fuse_ino_t, int mode, off_t offset, off_t length,
                          fuse_file_info *)
    {
        KVImagefs &imagefs = fs(req);
        const bool beyondEnd = uint64_t(offset + length) > imagefs.m_payload.size();
        if (imagefs.m_readOnly) {
            fuse_reply_err(req, EROFS);
        } else if (mode == 0) {
            fuse_reply_err(req, beyondEnd ? EOPNOTSUPP : 0);
        } else if (mode == (FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE)
                   || mode == FALLOC_FL_ZERO_RANGE
                   || mode == (FALLOC_FL_ZERO_RANGE | FALLOC_FL_KEEP_SIZE)) {
            fuse_reply_err(req, -imagefs.m_payload.lease()->zero(uint64_t(offset), uint64_t(length)));
        } else {
            fuse_reply_err(req, EOPNOTSUPP);
        }
    }

    static void readdir(fuse_req_t req, fuse_ino_t ino, size_t size, off_t offset, fuse_file_info *)
    {
        if (ino != FUSE_ROOT_ID) {
            fuse_reply_err(req, ENOTDIR);
            return;
        }
        struct Entry { const char *name; fuse_ino_t ino; mode_t mode; };
        const Entry entries[] = {{".", FUSE_ROOT_ID, S_IFDIR}, {"..", FUSE_ROOT_ID, S_IFDIR},
                                 {KVImagefs::payloadName, payloadIno, S_IFREG}};
        char buffer[512];
        size_t used = 0;
        for (off_t i = offset; i < off_t(std::size(entries)); ++i) {
            struct stat st{};
            st.st_ino = entries[i].ino;
            st.st_mode = entries[i].mode;
            const size_t need = fuse_add_direntry(req, buffer + used, std::min(size, sizeof buffer) - used,
                                                  entries[i].name, &st, i + 1);
            if (used + need > std::min(size, sizeof buffer))
                break;
            used += need;
        }
        fuse_reply_buf(req, buffer, used);
    }
};

KVImagefs::KVImagefs(KVPayloadViews &payload, bool readOnly)
    : m_payload(payload), m_readOnly(readOnly)
{
}

KVImagefs::~KVImagefs()
{
    if (m_session) {
        fuse_session_unmount(m_session);
        fuse_session_destroy(m_session);
    }
    for (int fd : m_wakePipe)
        if (fd >= 0)
            close(fd);
}

int KVImagefs::mount(const std::string &mountPoint, const std::string &name)
{
    static const fuse_lowlevel_ops operations = [] {
        fuse_lowlevel_ops ops{};
        ops.init = KVImagefsOperations::init;
        ops.lookup = KVImagefsOperations::lookup;
        ops.getattr = KVImagefsOperations::getattr;
        ops.setattr = KVImagefsOperations::setattr;
        ops.open = KVImagefsOperations::open;
        ops.release = KVImagefsOperations::release;
        ops.read = KVImagefsOperations::read;
        ops.write = KVImagefsOperations::write;
        ops.flush = KVImagefsOperations::flush;
        ops.fsync = KVImagefsOperations::fsync;
        ops.fallocate = KVImagefsOperations::fallocate;
        ops.readdir = KVImagefsOperations::readdir;
        return ops;
    }();

    if (pipe2(m_wakePipe, O_CLOEXEC) != 0)
        return -errno;
    const std::string options = "fsname=" + name + ",subtype=korvelle,default_permissions,max_read="
        + std::to_string(m_payload.maxRequest()) + (m_readOnly ? ",ro" : "");
    std::vector<std::string> argv = {"imagefs", "-o", options};
    std::vector<char *> pointers;
    for (auto &arg : argv)
        pointers.push_back(arg.data());
    fuse_args args = FUSE_ARGS_INIT(int(pointers.size()), pointers.data());
    m_session = fuse_session_new(&args, &operations, sizeof operations, this);
    // Parsing may have copied the list into memory of its own.
    fuse_opt_free_args(&args);
    if (!m_session)
        return -EINVAL;
    if (fuse_session_mount(m_session, mountPoint.c_str()) != 0) {
        fuse_session_destroy(m_session);
        m_session = nullptr;
        // Where /dev/fuse is closed to ordinary users, say so.
        return access("/dev/fuse", R_OK | W_OK) == 0 ? -EIO : -errno;
    }
    m_mountPoint = mountPoint;
    return 0;
}

int KVImagefs::serve(int controlFd)
{
    std::thread watcher([this, controlFd] { watch(controlFd); });
    fuse_set_signal_handlers(m_session);
    // A few threads: while one waits for the disk another encrypts. Each
    // borrows a view with its own buffer, so that none allocates while
    // serving writeback, once the views exist.
    fuse_loop_config *config = fuse_loop_cfg_create();
    fuse_loop_cfg_set_max_threads(config, maxThreads);
    fuse_loop_cfg_set_idle_threads(config, maxThreads);
    const int result = fuse_session_loop_mt(m_session, config);
    fuse_loop_cfg_destroy(config);
    fuse_remove_signal_handlers(m_session);
    // The loop ends when the kernel drops the connection (after our lazy
    // unmount) or on a signal; either way the watcher must be released.
    const char bye = 0;
    (void)!::write(m_wakePipe[1], &bye, 1);
    watcher.join();
    return result;
}

void KVImagefs::opened()
{
    ++m_openFiles;
}

void KVImagefs::released()
{
    if (--m_openFiles == 0) {
        const char wake = 1;
        (void)!::write(m_wakePipe[1], &wake, 1);
    }
}

// Waits until the starter has gone and nobody has the payload open, then
// detaches the mount; the kernel ends the session once the last user is gone.
void KVImagefs::watch(int controlFd)
{
    bool starterGone = false;
    for (;;) {
        pollfd fds[2] = {{m_wakePipe[0], POLLIN, 0}, {controlFd, POLLIN, 0}};
        const int n = poll(fds, starterGone ? 1 : 2, -1);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return;
        if (fds[0].revents & POLLIN) {
            char byte = 1;
            if (::read(m_wakePipe[0], &byte, 1) == 1 && byte == 0)
                return; // the session has ended
        }
        if (!starterGone && (fds[1].revents & (POLLIN | POLLHUP | POLLERR))) {
            char ignored[64];
            const ssize_t got = ::read(controlFd, ignored, sizeof ignored);
            starterGone = got <= 0 && !(got < 0 && errno == EINTR);
        }
        if (starterGone && m_openFiles.load() == 0) {
            unmountLazily();
            return;
        }
    }
}

void KVImagefs::unmountLazily()
{
    if (geteuid() == 0) {
        umount2(m_mountPoint.c_str(), MNT_DETACH);
        return;
    }
    // An ordinary user unmounts through the set-uid helper, as libfuse does.
    const char *argv[] = {"fusermount3", "-u", "-q", "-z", "--", m_mountPoint.c_str(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd <= 2; ++fd)
        posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_RDWR, 0);
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, const_cast<char **>(argv), environ) == 0) {
        int status = 0;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

} // namespace kvlinux
