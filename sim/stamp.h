#pragma once

#include <atomic>
#include <cstdint>

namespace irmsim {

/// A number never given before in this process. Thread-safe.
inline std::uint64_t newStamp() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace irmsim
