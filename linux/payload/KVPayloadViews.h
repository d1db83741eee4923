#pragma once

#include "KVPayloadFile.h"

#include <memory>
#include <mutex>
#include <vector>

namespace kvlinux {

// The views of one image for the threads that serve it: a request borrows a
// free view for as long as it runs. There are never more views than requests
// running at once, and each keeps its buffer, so after the first requests
// serving allocates nothing.
class KVPayloadViews
{
public:
    KVPayloadViews(int imageFd, uint64_t dataOffset, std::unique_ptr<KVSectorCipher> cipher,
                   size_t maxRequest);

    class Lease
    {
    public:
        Lease(KVPayloadViews &owner, std::unique_ptr<KVPayloadFile> view);
        ~Lease();
        Lease(const Lease &) = delete;
        Lease &operator=(const Lease &) = delete;
        KVPayloadFile *operator->() { return m_view.get(); }

    private:
        KVPayloadViews &m_owner;
        std::unique_ptr<KVPayloadFile> m_view;
    };

    Lease lease();

    uint64_t size() const;
    int sync() const;
    size_t maxRequest() const { return m_maxRequest; }

private:
    const int m_fd;
    const uint64_t m_dataOffset;
    const std::unique_ptr<KVSectorCipher> m_cipher;
    const size_t m_maxRequest;
    std::mutex m_partialSectors;
    std::mutex m_freeLock;
    std::vector<std::unique_ptr<KVPayloadFile>> m_free;
};

} // namespace kvlinux
