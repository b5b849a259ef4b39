#pragma once

#include "device/registers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace irmsim {

/// Whether two runs of bytes have one in common.
inline bool meet(std::uint32_t a, std::size_t aLength, std::uint32_t b, std::size_t bLength) {
    return a < b + bLength && b < a + aLength;
}

/// The bytes that one transfer reads.
class Window {
public:
    Window(std::uint32_t address, std::uint8_t* bytes, std::size_t length)
        : m_address(address), m_bytes(bytes), m_length(length) {}

    bool covers(std::uint32_t address, std::size_t length) const {
        return meet(m_address, m_length, address, length);
    }

    void put(std::uint32_t address, const std::uint8_t* bytes, std::size_t length) {
        if (!covers(address, length))
            return;
        const std::size_t skip = address < m_address ? m_address - address : 0;
        const std::size_t at = address > m_address ? address - m_address : 0;
        std::memcpy(m_bytes + at, bytes + skip, std::min(length - skip, m_length - at));
    }

    /// The value of a register, as wide as it is read.
    template <typename R, typename W>
    void put(const irmcore::reg::Register<R, W>& r, std::uint64_t value) {
        putValue(r.address, value, irmcore::reg::wireWidth<R>());
    }
    template <typename R, typename W>
    void put(const irmcore::reg::Register<R, W>& r, unsigned offset, std::uint64_t value) {
        putValue(r.address + offset, value, irmcore::reg::wireWidth<R>());
    }

private:
    void putValue(std::uint32_t address, std::uint64_t value, std::size_t width) {
        std::array<std::uint8_t, 8> bytes{};
        for (std::size_t i = 0; i < width; ++i)
            bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
        put(address, bytes.data(), width);
    }

    std::uint32_t m_address;
    std::uint8_t* m_bytes;
    std::size_t m_length;
};

} // namespace irmsim
