#pragma once

#include <cstddef>

namespace kvlinux {

// Locked, dump-excluded memory for the key schedules that OpenSSL's cipher
// contexts keep. OpenSSL allocates those contexts itself, on its ordinary
// heap; once installed, whatever it allocates while a Scope is open comes
// from its secure heap instead: one small arena, locked into RAM (within an
// ordinary user's RLIMIT_MEMLOCK), kept out of core dumps, with guard pages
// around it and wiped when freed. When the arena is full an allocation in a
// Scope fails, so a key schedule never lands in ordinary memory.
class KVKeyMemory
{
public:
    // Must run before OpenSSL allocates anything. arenaSize: a power of two.
    // False when the arena cannot be made or locked.
    static bool install(size_t arenaSize);
    // Bytes of the arena in use.
    static size_t used();

    class Scope
    {
    public:
        Scope();
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;
    };
};

} // namespace kvlinux
