#pragma once

#include <atomic>
#include <string>

struct fuse_session;

namespace kvlinux {

class KVPayloadViews;

// A FUSE file system with one file, "payload": the decrypted payload of one
// image. It lives as long as somebody needs it: while the program that started
// it keeps the control connection open, and after that for as long as the
// payload is open (by a loop device or fuse2fs). Then it unmounts itself.
class KVImagefs
{
public:
    KVImagefs(KVPayloadViews &payload, bool readOnly);
    ~KVImagefs();

    // Mounts at mountPoint; returns 0 or -errno.
    int mount(const std::string &mountPoint, const std::string &name);
    // Serves requests until the file system is unmounted. controlFd is the
    // connection to the starter; its end (EOF) lets the file system go once
    // the payload is no longer open.
    int serve(int controlFd);

    static constexpr const char *payloadName = "payload";

private:
    friend struct KVImagefsOperations;

    void opened();
    void released();
    void watch(int controlFd);
    void unmountLazily();

    KVPayloadViews &m_payload;
    const bool m_readOnly;
    fuse_session *m_session = nullptr;
    std::string m_mountPoint;
    std::atomic<int> m_openFiles{0};
    int m_wakePipe[2] = {-1, -1};
};

} // namespace kvlinux
