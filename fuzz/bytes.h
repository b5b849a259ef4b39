#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

namespace irmfuzz {

/// An input as a source of values, taken from its front. Beyond its end all are 0.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    bool empty() const { return m_left == 0; }

    /// A value of any plain type; of a floating-point one any, also NaN.
    template <typename T>
    T take() {
        static_assert(std::is_trivially_copyable_v<T> && !std::is_enum_v<T>);
        T value{};
        if constexpr (std::is_same_v<T, bool>)
            value = (take<std::uint8_t>() & 1U) != 0;
        else
            m_left -= copy(&value, sizeof value);
        return value;
    }

    /// Any number as an enumeration, so not only its own.
    template <typename T>
    T takeEnum() {
        return static_cast<T>(take<std::underlying_type_t<T>>());
    }

    /// 0 to `n` - 1.
    unsigned below(unsigned n) { return take<std::uint8_t>() % n; }

    /// `n` bytes.
    std::vector<std::uint8_t> bytes(std::size_t n) {
        std::vector<std::uint8_t> all(n);
        m_left -= copy(all.data(), n);
        return all;
    }

private:
    std::size_t copy(void* out, std::size_t n) {
        const std::size_t taken = std::min(n, m_left);
        if (taken > 0)
            std::memcpy(out, m_data, taken);
        m_data += taken;
        return taken;
    }

    const std::uint8_t* m_data;
    std::size_t m_left;
};

} // namespace irmfuzz
