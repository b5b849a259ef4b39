#pragma once

/// @file
/// Conversions from floating point.

#include <cmath>
#include <cstdint>
#include <limits>

/// Conversions from floating point that are defined for every value. A plain cast of a number
/// that does not fit is undefined, and processors differ on it.
namespace irmcore {

/// `value` cut toward zero; the nearest end of the range when it does not fit, 0 for NaN.
inline std::int32_t truncateToInt(double value) {
    if (std::isnan(value))
        return 0;
    if (value >= 2147483648.0)
        return std::numeric_limits<std::int32_t>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

/// `value` cut toward zero; 0 for negative numbers and NaN, 4294967295 when it is too large.
inline std::uint32_t truncateToUnsigned(double value) {
    if (!(value > 0.0))
        return 0;
    if (value >= 4294967296.0)
        return std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(value);
}

/// The low 16 bits.
constexpr std::uint16_t low16(std::uint32_t value) {
    return static_cast<std::uint16_t>(value & 0xFFFFU);
}

} // namespace irmcore
