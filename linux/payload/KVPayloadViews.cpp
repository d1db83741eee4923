#include "KVPayloadViews.h"

#include <cerrno>
#include <unistd.h>

namespace kvlinux {

KVPayloadViews::KVPayloadViews(int imageFd, uint64_t dataOffset, std::unique_ptr<KVSectorCipher> cipher,
                               size_t maxRequest)
    : m_fd(imageFd), m_dataOffset(dataOffset), m_cipher(std::move(cipher)), m_maxRequest(maxRequest)
{
}

KVPayloadViews::Lease::Lease(KVPayloadViews &owner, std::unique_ptr<KVPayloadFile> view)
    : m_owner(owner), m_view(std::move(view))
{
}

KVPayloadViews::Lease::~Lease()
{
    const std::lock_guard<std::mutex> lock(m_owner.m_freeLock);
    m_owner.m_free.push_back(std::move(m_view));
}

KVPayloadViews::Lease KVPayloadViews::lease()
{
    {
        const std::lock_guard<std::mutex> lock(m_freeLock);
        if (!m_free.empty()) {
            std::unique_ptr<KVPayloadFile> view = std::move(m_free.back());
            m_free.pop_back();
            return Lease(*this, std::move(view));
        }
    }
    return Lease(*this, std::make_unique<KVPayloadFile>(m_fd, m_dataOffset, *m_cipher, m_maxRequest,
                                                        m_partialSectors));
}

uint64_t KVPayloadViews::size() const
{
    return KVPayloadFile::sizeOf(m_fd, m_dataOffset, m_cipher->sectorSize());
}

int KVPayloadViews::sync() const
{
    return fdatasync(m_fd) == 0 ? 0 : -errno;
}

} // namespace kvlinux
