#pragma once

#include <cstdint>
#include <mutex>

namespace irmsim {

/// A number never given before in this process. Thread-safe.
inline std::uint64_t newStamp() {
    // Not an atomic: the board's processor has none of 64 bits, and what stands in for them is a
    // library that a program with the preloaded object need not have.
    static std::mutex lock;
    static std::uint64_t last = 0;
    const std::lock_guard<std::mutex> hold(lock);
    return ++last;
}

} // namespace irmsim
